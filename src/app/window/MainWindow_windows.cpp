// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ConfigDialog.h"
#include "DhtStatsDialog.h"
#include "GcDialog.h"
#include "NetworkStatsDialog.h"
#include "RemoteServicesDialog.h"
#include "RpcLogDialog.h"
#include "StatusLogDialog.h"
#include "SwarmDialog.h"

#include <QCloseEvent>

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
    offerNodeTool<ConfigDialog>(ToolWindows::Config);
    offerNodeTool<NetworkStatsDialog>(ToolWindows::Network);
    offerNodeTool<SwarmDialog>(ToolWindows::Swarm);
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
    ToolWindowHost::closeEvent(event);
    if (event->isAccepted())
        toolWindows->closeFreeWindows();
}
