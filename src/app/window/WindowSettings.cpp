// SPDX-License-Identifier: MIT
#include "WindowSettings.h"

#include "AppSettings.h"
#include "ContentMode.h"
#include "OriginValue.h"
#include "PinEntry.h"

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

WindowSettings WindowSettings::load(const QSettings& store)
{
    WindowSettings values;
    values.host = store.value(hostKey, u"127.0.0.1"_s).toString();
    values.port = static_cast<unsigned short>(store.value(portKey, 5001).toInt());
    values.contentMode = store.value(contentModeKey, ContentMode::pinned).toString();
    values.typeFilter = store.value(typeFilterKey, PinType::recursiveAndDirect).toString();
    values.autoRefresh = store.value(autoRefreshKey, false).toBool();
    values.loadMetadata = store.value(loadMetadataKey, true).toBool();
    values.sendOrigin = store.value(SettingsKeys::sendOrigin, false).toBool();
    values.originValue = store.value(SettingsKeys::originValue).toString();
    if (values.originValue.trimmed().isEmpty())
        values.originValue = defaultOriginValue();
    values.refreshIntervalSeconds = store.value(refreshIntervalKey, 30).toInt();
    if (store.contains(geometryKey))
        values.geometry = store.value(geometryKey).toByteArray();
    return values;
}

void WindowSettings::save(QSettings& store) const
{
    store.setValue(hostKey, host);
    store.setValue(portKey, port);
    store.setValue(contentModeKey, contentMode);
    store.setValue(typeFilterKey, typeFilter);
    store.setValue(autoRefreshKey, autoRefresh);
    store.setValue(loadMetadataKey, loadMetadata);
    store.setValue(SettingsKeys::sendOrigin, sendOrigin);
    store.setValue(SettingsKeys::originValue, originValue);
    store.setValue(refreshIntervalKey, refreshIntervalSeconds);
    if (geometry)
        store.setValue(geometryKey, *geometry);
}

void WindowSettings::saveOrigin(QSettings& store) const
{
    store.setValue(SettingsKeys::sendOrigin, sendOrigin);
    store.setValue(SettingsKeys::originValue, originValue);
    store.sync();
}

int WindowSettings::autoRefreshMs() const
{
    if (!autoRefresh || refreshIntervalSeconds <= 0) // a store may hold anything, and a pause of 0 is no interval
        return 0;
    return std::min(refreshIntervalSeconds, longestTimerInterval) * 1000;
}
