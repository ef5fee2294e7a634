// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The guide's file: the installed one, else that of the folder the program was built in; empty if there is neither.
/// `programFolder` is where the program is.
QString userGuidePath(const QString& programFolder);
