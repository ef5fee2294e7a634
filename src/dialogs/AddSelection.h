// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"

#include <QList>
#include <QStringList>

/// The absolute forms of those paths that exist, sorted by UTF-16 code units, each once, and none inside another.
QStringList normalizedPaths(const QStringList& paths);

/// What is to be uploaded of `paths`, in their order, without those that no longer exist. A name that is taken gets
/// "-2", "-3" … at its end, after any suffix, so all names differ.
QList<LocalPathSelection> uploadSelections(const QStringList& paths);
