// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "DhtStatsDialog.h"
#include "GcDialog.h"
#include "LogTime.h"
#include "RemoteServicesDialog.h"
#include "RpcLogDialog.h"
#include "StatusLogDialog.h"

#include <QCloseEvent>

using namespace Qt::StringLiterals;

/// A dialog for a facility of the node; its messages go to the status line.
template <typename Dialog> void MainWindow::offerNodeTool(ToolWindows::Id id)
{
    toolWindows->setFactory(id, [this] {
        auto* dialog = new Dialog(client, this);
        connect(dialog, &Dialog::statusMessageRequested, this, &MainWindow::setStatusMessage);
        return dialog;
    });
}

void MainWindow::setupToolWindows()
{
    connect(toolWindows, &ToolWindows::statusMessageRequested, this, &MainWindow::setStatusMessage);
    offerNodeTool<GcDialog>(ToolWindows::Gc);
    offerNodeTool<DhtStatsDialog>(ToolWindows::DhtStats);
    offerNodeTool<RemoteServicesDialog>(ToolWindows::RemoteServices);
    toolWindows->setFactory(ToolWindows::StatusLog, [this] { return new StatusLogDialog(this, this); });
    toolWindows->setFactory(ToolWindows::RpcLog, [this] { return new RpcLogDialog(this, this); });
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!mayClose()) {
        event->ignore();
        return;
    }
    QMainWindow::closeEvent(event);
    if (event->isAccepted())
        toolWindows->closeFreeWindows();
}

void MainWindow::onRpcRequestIssued(const QString& requestDescription)
{
    rpcLogLines.append(requestDescription);
    emit rpcLogAppended(requestDescription);
}

void MainWindow::appendToStatusLog(const QString& text)
{
    const QString line = logTime() + u"  "_s + text;
    statusLogLines.append(line);
    emit statusLogAppended(line);
}

void MainWindow::showGcDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::Gc, mode);
}

void MainWindow::showDhtStatsDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::DhtStats, mode);
}

void MainWindow::showNetworkDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::Network, mode);
}

void MainWindow::showSwarmDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::Swarm, mode);
}

void MainWindow::showConfigDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::Config, mode);
}

void MainWindow::showRemoteServicesDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::RemoteServices, mode);
}

void MainWindow::showStatusLogDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::StatusLog, mode);
}

void MainWindow::showRpcLogDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::RpcLog, mode);
}

void MainWindow::onGcClicked()
{
    showGcDialog(AuxNewWindow);
}

void MainWindow::onDhtStatsClicked()
{
    showDhtStatsDialog(AuxNewWindow);
}

void MainWindow::onConfigClicked()
{
    showConfigDialog(AuxNewWindow);
}

void MainWindow::onRemoteServicesClicked()
{
    showRemoteServicesDialog(AuxNewWindow);
}

void MainWindow::onStatusLogClicked()
{
    showStatusLogDialog(AuxNewWindow);
}

void MainWindow::onLogClicked()
{
    showRpcLogDialog(AuxNewWindow);
}
