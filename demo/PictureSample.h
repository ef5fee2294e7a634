// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QTemporaryDir;

/// Puts the same files with the same times into the folder in each run, and makes it the home of this program's user.
void makeSample(const QTemporaryDir& home);

/// What is to be added of them, as paths.
QStringList sampleSelection(const QTemporaryDir& home);
