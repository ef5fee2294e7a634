// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

/// Whether `text` holds `part` in any case. Several times as fast as the stock search where both are ASCII.
bool containsIgnoringCase(QStringView text, QStringView part);

/// Has the processor fetch a text that is searched soon: those of a long list lie all over memory.
inline void fetchAhead([[maybe_unused]] QStringView text)
{
#ifdef __GNUC__
    __builtin_prefetch(text.data());
    __builtin_prefetch(text.data() + 32); // in the next cache line
#endif
}
