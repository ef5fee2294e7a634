// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Longest Origin value that is sent, in characters.
inline constexpr int maximumOriginLength = 256;

/// The text as a header may hold it: no carriage return, line feed or NUL, trimmed, at most 256 characters.
QString normalizedOriginValue(const QString& text);

/// "Norvo" and the application's version, or "Norvo" alone while no version is set.
QString defaultOriginValue();

/// normalizedOriginValue, or the default where that leaves nothing.
QString effectiveOriginValue(const QString& text);
