// SPDX-License-Identifier: MIT
#include "ToolWindowHost.h"

ToolWindowHost::ToolWindowHost(QWidget* parent)
    : StatusWindow(parent)
    , toolWindows(new ToolWindows(this))
{
    connect(toolWindows, &ToolWindows::statusMessageRequested, this, &ToolWindowHost::setStatusMessage);
}

void ToolWindowHost::showGcDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::Gc, mode);
}

void ToolWindowHost::showDhtStatsDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::DhtStats, mode);
}

void ToolWindowHost::showNetworkDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::Network, mode);
}

void ToolWindowHost::showSwarmDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::Swarm, mode);
}

void ToolWindowHost::showConfigDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::Config, mode);
}

void ToolWindowHost::showRemoteServicesDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::RemoteServices, mode);
}

void ToolWindowHost::showStatusLogDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::StatusLog, mode);
}

void ToolWindowHost::showRpcLogDialog(AuxWindowMode mode)
{
    toolWindows->show(ToolWindows::RpcLog, mode);
}

void ToolWindowHost::onGcClicked()
{
    showGcDialog(AuxNewWindow);
}

void ToolWindowHost::onDhtStatsClicked()
{
    showDhtStatsDialog(AuxNewWindow);
}

void ToolWindowHost::onConfigClicked()
{
    showConfigDialog(AuxNewWindow);
}

void ToolWindowHost::onRemoteServicesClicked()
{
    showRemoteServicesDialog(AuxNewWindow);
}

void ToolWindowHost::onStatusLogClicked()
{
    showStatusLogDialog(AuxNewWindow);
}

void ToolWindowHost::onLogClicked()
{
    showRpcLogDialog(AuxNewWindow);
}
