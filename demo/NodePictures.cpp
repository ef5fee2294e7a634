// SPDX-License-Identifier: MIT
#include "NodePictures.h"

#include "GradualText.h"
#include "MainWindow.h"
#include "NetworkStatsDialog.h"
#include "PictureSteps.h"
#include "RemoteServicesDialog.h"

#include <QListWidget>

using namespace Qt::StringLiterals;

namespace {

template <typename Dialog, typename HasCome>
void withWindow(MainWindow& window, const HasCome& hasCome, const TakePicture& take)
{
    auto* dialog = window.findChild<Dialog*>();
    need(dialog, u"a node's window did not open"_s);
    awaitThat([&] { return hasCome(*dialog); }, u"no answers came to a node's window"_s);
    take(dialog);
    dialog->close();
    awaitThat([&window] { return !window.findChild<Dialog*>(); }, u"a node's window did not close"_s);
}

} // namespace

void withRemoteServices(MainWindow& window, const TakePicture& take)
{
    window.showRemoteServicesDialog(MainWindow::AuxChildWindow);
    const auto hasCome = [](const QWidget& dialog) { return dialog.findChild<QListWidget*>()->count() > 1; };
    withWindow<RemoteServicesDialog>(window, hasCome, take);
}

void withNetworkStats(MainWindow& window, const TakePicture& take)
{
    window.showNetworkDialog(MainWindow::AuxChildWindow);
    const auto hasCome = [&window](const QWidget& dialog) {
        return window.statusLog().constLast().endsWith(u"  Network diagnostics loaded"_s)
            && dialog.findChild<GradualText*>()->isComplete();
    };
    withWindow<NetworkStatsDialog>(window, hasCome, take);
}
