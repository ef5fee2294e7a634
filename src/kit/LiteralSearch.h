// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

/// The text that a regular expression stands for, as QRegularExpression::escape made it; nothing if it is a pattern.
std::optional<QString> literalOf(const QString& pattern);

/// Whether `text` holds `literal` in any case. Several times as fast as the stock search where both are ASCII.
bool containsIgnoringCase(QStringView text, QStringView literal);
