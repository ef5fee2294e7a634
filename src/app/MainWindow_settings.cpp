#include "MainWindow.h"

#include "AppSettings.h"
#include "ContentMode.h"
#include "IpfsClient.h"
#include "OriginValue.h"
#include "SettingsDialog.h"

#include <QComboBox>
#include <QTimer>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr auto hostKey = "host"_L1;
constexpr auto portKey = "port"_L1;
constexpr auto contentModeKey = "contentMode"_L1;
constexpr auto typeFilterKey = "typeFilter"_L1;
constexpr auto autoRefreshKey = "autoRefresh"_L1;
constexpr auto loadMetadataKey = "loadMetadata"_L1;
constexpr auto refreshIntervalKey = "refreshInterval"_L1;
constexpr auto geometryKey = "geometry"_L1;
/// Seconds; a timer counts its milliseconds in an int.
constexpr int longestTimerInterval = std::numeric_limits<int>::max() / 1000;

} // namespace

void MainWindow::loadSettings()
{
    client->setEndpoint(settings->value(hostKey, u"127.0.0.1"_s).toString(),
                        static_cast<unsigned short>(settings->value(portKey, 5001).toInt()));

    const QString savedContent = settings->value(contentModeKey, ContentMode::pinned).toString();
    if (const int item = contentCombo->findData(savedContent); item >= 0)
        contentCombo->setCurrentIndex(item);
    filterCombo->setEnabled(contentMode == ContentMode::pinned);

    const QString savedFilter = settings->value(typeFilterKey, PinType::recursiveAndDirect).toString();
    if (const int item = filterCombo->findData(savedFilter); item >= 0)
        filterCombo->setCurrentIndex(item);
    typeFilter = savedFilter;
    proxyModel->setTypeFilter(typeFilter);

    autoRefresh = settings->value(autoRefreshKey, false).toBool();
    loadMetadata = settings->value(loadMetadataKey, true).toBool();
    sendOrigin = settings->value(SettingsKeys::sendOrigin, false).toBool();
    originValue = settings->value(SettingsKeys::originValue).toString();
    if (originValue.trimmed().isEmpty())
        originValue = defaultOriginValue();
    refreshIntervalSeconds = settings->value(refreshIntervalKey, 30).toInt();
    startAutoRefresh();

    if (settings->contains(geometryKey))
        restoreGeometry(settings->value(geometryKey).toByteArray());
    else
        setWindowState(Qt::WindowMaximized);
}

void MainWindow::startAutoRefresh()
{
    if (autoRefresh && refreshIntervalSeconds > 0) // a store may hold anything, and no pause at all is no interval
        autoRefreshTimer->start(std::min(refreshIntervalSeconds, longestTimerInterval) * 1000);
}

void MainWindow::saveSettings()
{
    settings->setValue(hostKey, client->endpointHost());
    settings->setValue(portKey, client->endpointPort());
    settings->setValue(contentModeKey, contentMode);
    settings->setValue(typeFilterKey, typeFilter);
    settings->setValue(autoRefreshKey, autoRefresh);
    settings->setValue(loadMetadataKey, loadMetadata);
    settings->setValue(SettingsKeys::sendOrigin, sendOrigin);
    settings->setValue(SettingsKeys::originValue, originValue);
    settings->setValue(refreshIntervalKey, refreshIntervalSeconds);
    settings->setValue(geometryKey, saveGeometry());
}

void MainWindow::onSettingsClicked()
{
    SettingsDialog dialog(this);
    dialog.setTrialMode(isTrial());
    dialog.setHost(client->endpointHost());
    dialog.setPort(client->endpointPort());
    dialog.setPinTypeFilter(typeFilter);
    dialog.setRefreshIntervalSeconds(refreshIntervalSeconds);
    dialog.setAutoRefresh(autoRefresh);
    dialog.setLoadMetadata(loadMetadata);
    dialog.setSendOrigin(sendOrigin);
    dialog.setOriginValue(originValue);
    if (dialog.exec() == QDialog::Accepted)
        applySettings(dialog);
}

void MainWindow::applySettings(const SettingsDialog& dialog)
{
    client->setEndpoint(dialog.host(), dialog.port());
    typeFilter = dialog.pinTypeFilter();
    refreshIntervalSeconds = dialog.refreshIntervalSeconds();
    autoRefresh = dialog.autoRefresh();
    loadMetadata = dialog.loadMetadata();
    sendOrigin = dialog.sendOrigin();
    originValue = effectiveOriginValue(dialog.originValue());

    // Each request reads these two from the store; all others are written at exit.
    settings->setValue(SettingsKeys::sendOrigin, sendOrigin);
    settings->setValue(SettingsKeys::originValue, originValue);
    settings->sync();

    if (const int item = filterCombo->findData(typeFilter); item >= 0)
        filterCombo->setCurrentIndex(item);
    autoRefreshTimer->stop();
    startAutoRefresh();
    triggerRefresh(false);
}
