// SPDX-License-Identifier: MIT
#pragma once

#include <QSettings>

/// Opens a short-lived view of the program's one settings store (organisation "Norvo", application "settings").
QSettings openAppSettings();

/// The keys that more than one place reads.
namespace SettingsKeys {

inline constexpr QLatin1StringView sendOrigin {"http/sendOrigin"};
inline constexpr QLatin1StringView originValue {"http/originValue"};

} // namespace SettingsKeys
