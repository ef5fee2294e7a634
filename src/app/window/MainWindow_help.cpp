// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ActionBox.h"
#include "ProblemReportDialog.h"
#include "ProductInfo.h"
#include "ShortcutsDialog.h"
#include "UserGuide.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QMenuBar>

using namespace std::chrono_literals;

namespace {

constexpr auto guideMessageShown = 3000ms;

/// There is at most one.
template <typename Dialog, typename Make> Dialog* shownHelp(const QWidget& window, const Make& make)
{
    auto* dialog = window.findChild<Dialog*>();
    if (!dialog) {
        dialog = make();
        dialog->setAttribute(Qt::WA_DeleteOnClose);
    }
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
    return dialog;
}

} // namespace

void MainWindow::openUserGuide()
{
    const QString path = userGuidePath(QCoreApplication::applicationDirPath());
    if (path.isEmpty()) {
        openMessageBox(QMessageBox::Information, tr("User guide"),
                       tr("The user guide is not installed with this program.\n\nSee %1").arg(ProductInfo::webUrl),
                       this);
    } else if (QDesktopServices::openUrl(QUrl::fromLocalFile(path))) {
        showStatusFor(guideMessageShown, tr("Opening the user guide in browser…"));
    } else {
        openMessageBox(QMessageBox::Warning, tr("User guide"),
                       tr("No program could be started to show the user guide:\n%1").arg(path), this);
    }
}

void MainWindow::showShortcuts()
{
    shownHelp<ShortcutsDialog>(*this, [this] { return new ShortcutsDialog(shortcutList(*menuBar()), this); });
}

void MainWindow::reportProblem()
{
    shownHelp<ProblemReportDialog>(*this, [this] {
        return new ProblemReportDialog(this);
    })->showReport({.facts = systemFacts(), .agent = nodeAgent, .statusLog = statusLog()});
}
