// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <cstdlib>

/// What each target defines: checks its rule for one input.
void checkInput(const QByteArray& input);

/// Ends the program, which fuzzing and replaying take for a find.
inline void abortIf(bool isBroken)
{
    if (isBroken)
        std::abort();
}
