// SPDX-License-Identifier: MIT
#include "ToolPictures.h"

#include "DhtGroups.h"
#include "DhtStatsDialog.h"
#include "GcDialog.h"
#include "LineView.h"
#include "MainWindow.h"
#include "NetworkStatsDialog.h"
#include "PictureSteps.h"
#include "RemoteServicesDialog.h"

#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>

using namespace Qt::StringLiterals;

namespace {

template <typename Dialog> Dialog* openedTool(const MainWindow& window)
{
    auto* dialog = window.findChild<Dialog*>();
    need(dialog, u"a tool's window did not open"_s);
    return dialog;
}

template <typename Dialog> void closeTool(const MainWindow& window)
{
    window.findChild<Dialog*>()->close();
    awaitThat([&window] { return !window.findChild<Dialog*>(); }, u"a tool's window did not close"_s);
}

void awaitText(const QWidget* dialog, const QString& text)
{
    const auto* view = dialog->findChild<LineView*>();
    awaitThat([&] { return view->toPlainText().contains(text); }, u"no text came with: "_s + text);
}

} // namespace

void takeToolPictures(MainWindow& window, const std::function<void(QWidget*, QLatin1StringView)>& take)
{
    window.showRemoteServicesDialog(MainWindow::AuxChildWindow);
    auto* services = openedTool<RemoteServicesDialog>(window);
    const auto* list = services->findChild<QListWidget*>();
    awaitThat([list] { return list->count() > 1; }, u"no services came"_s);
    take(services, "remote-services"_L1);
    closeTool<RemoteServicesDialog>(window);

    window.showDhtStatsDialog(MainWindow::AuxChildWindow);
    auto* dht = openedTool<DhtStatsDialog>(window);
    awaitThat([dht] { return dht->findChild<QTableWidget*>() && !dht->findChild<DhtGroups*>(); }, u"no DHT came"_s);
    take(dht, "dht-stats"_L1);
    closeTool<DhtStatsDialog>(window);

    window.showNetworkDialog(MainWindow::AuxChildWindow);
    auto* network = openedTool<NetworkStatsDialog>(window);
    awaitThat(
        [&] {
            return window.statusLog().constLast().endsWith(u"  Network diagnostics loaded"_s)
                && !network->findChild<LineView*>()->isFilling();
        },
        u"no network came"_s);
    take(network, "network-stats"_L1);
    closeTool<NetworkStatsDialog>(window);

    window.showGcDialog(MainWindow::AuxChildWindow);
    auto* repo = openedTool<GcDialog>(window);
    awaitText(repo, u"NumObjects"_s);
    take(repo, "repo-stats"_L1);
    repo->findChildren<QPushButton*>().last()->click();
    awaitText(repo, u"Collected entries"_s);
    take(repo, "repo-gc"_L1);
    closeTool<GcDialog>(window);
}
