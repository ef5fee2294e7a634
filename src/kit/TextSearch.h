// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

/// Whether `text` holds `part` in any case. Several times as fast as the stock search where both are ASCII.
bool containsIgnoringCase(QStringView text, QStringView part);
