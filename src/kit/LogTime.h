// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The local time as "yyyy-MM-dd hh:mm:ss", as log lines begin. Made once a second, since a list that comes in many
/// pieces logs thousands of lines in one.
QString logTime();
