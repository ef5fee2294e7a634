// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ContentMode.h"
#include "IpfsClient.h"
#include "OriginValue.h"
#include "PinToolBar.h"
#include "RemotePinFlow.h"
#include "ScreenArea.h"
#include "SettingsDialog.h"
#include "StatsFrame.h"

#include <QSettings>
#include <QTimer>

/// A choice in the tool bar that changes here starts a forced refresh, with what is in force by then.
void MainWindow::loadSettings()
{
    WindowSettings stored = WindowSettings::load(*settings);
    client->setEndpoint(stored.host, stored.port);
    toolBar->selectContent(stored.contentMode);
    toolBar->setFilterEnabled(values.contentMode == ContentMode::pinned);
    toolBar->selectFilter(stored.typeFilter);
    stored.contentMode = values.contentMode; // an unknown content is not kept; an unknown filter goes to the node
    values = stored;
    proxyModel->setTypeFilter(values.typeFilter);
    startAutoRefresh();
    if (!values.geometry)
        setWindowState(Qt::WindowMaximized);
    else if (restoreGeometry(*values.geometry))
        keepOnScreen(this);
}

void MainWindow::startAutoRefresh()
{
    autoRefreshTimer->stop();
    if (const int interval = values.autoRefreshMs(); interval > 0)
        autoRefreshTimer->start(interval);
}

void MainWindow::saveSettings()
{
    values.host = client->endpointHost();
    values.port = client->endpointPort();
    values.geometry = saveGeometry();
    values.save(*settings);
}

void MainWindow::onSettingsClicked()
{
    SettingsDialog dialog(this);
    dialog.setTrialMode(isTrial());
    dialog.setHost(client->endpointHost());
    dialog.setPort(client->endpointPort());
    dialog.setPinTypeFilter(values.typeFilter);
    dialog.setRefreshIntervalSeconds(values.refreshIntervalSeconds);
    dialog.setAutoRefresh(values.autoRefresh);
    dialog.setLoadMetadata(values.loadMetadata);
    dialog.setSendOrigin(values.sendOrigin);
    dialog.setOriginValue(values.originValue);
    if (dialog.exec() == QDialog::Accepted)
        applySettings(dialog);
}

/// Drops what is under way at the node, and what is shown of it.
void MainWindow::leaveNode()
{
    dropPlan();
    remotePinFlow->leaveNode();
    dropIpnsChoice();
    client->cancelActiveLoading();
    setRefreshing(false);
    nodeAgent.clear();
    statsFrame->showNoPeer();
    dropRows();
}

void MainWindow::applySettings(const SettingsDialog& dialog)
{
    if (dialog.host() != client->endpointHost() || dialog.port() != client->endpointPort())
        leaveNode();
    client->setEndpoint(dialog.host(), dialog.port());
    values.typeFilter = dialog.pinTypeFilter();
    values.refreshIntervalSeconds = dialog.refreshIntervalSeconds();
    values.autoRefresh = dialog.autoRefresh();
    values.loadMetadata = dialog.loadMetadata();
    values.sendOrigin = dialog.sendOrigin();
    values.originValue = effectiveOriginValue(dialog.originValue());
    values.saveOrigin(*settings);
    toolBar->selectFilter(values.typeFilter);
    startAutoRefresh();
    triggerRefresh(false);
}
