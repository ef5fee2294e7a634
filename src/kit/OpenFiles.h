// SPDX-License-Identifier: MIT
#pragma once

class QFileDevice;

/// Raises the soft limit of open files of this process to its hard limit; does nothing where there is no such limit.
/// Returns the soft limit then in force, -1 where it is unknown. An upload keeps many files open.
long long raiseOpenFileLimit();

/// Whether half of the files that this process may have open are open, by the one that was opened last: it has the
/// lowest number that was free. False where there is no such limit.
bool halfOfOpenFilesUsed(const QFileDevice& newest);
