// SPDX-License-Identifier: MIT
#pragma once

#include "StatusWindow.h"
#include "ToolWindows.h"

/// A window that opens tool windows. None of them blocks it.
class ToolWindowHost : public StatusWindow
{
    Q_OBJECT

public:
    using AuxWindowMode = ToolWindows::AuxWindowMode;
    using enum ToolWindows::AuxWindowMode;

    explicit ToolWindowHost(QWidget* parent = nullptr);

    /// Open a tool window, or bring the open one to the front in `mode`.
    void showGcDialog(AuxWindowMode mode);
    void showDhtStatsDialog(AuxWindowMode mode);
    void showNetworkDialog(AuxWindowMode mode);
    void showSwarmDialog(AuxWindowMode mode);
    void showConfigDialog(AuxWindowMode mode);
    void showRemoteServicesDialog(AuxWindowMode mode);
    void showStatusLogDialog(AuxWindowMode mode);
    void showRpcLogDialog(AuxWindowMode mode);

protected slots:
    void onGcClicked();
    void onDhtStatsClicked();
    void onConfigClicked();
    void onRemoteServicesClicked();
    void onStatusLogClicked();
    void onLogClicked();

protected:
    ToolWindows* toolWindows;
};
