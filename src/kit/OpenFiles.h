// SPDX-License-Identifier: MIT
#pragma once

/// Raises the soft limit of open files of this process to its hard limit; does nothing where there is no such limit.
/// Returns the soft limit then in force, -1 where it is unknown. An upload keeps each of its files open.
long long raiseOpenFileLimit();
