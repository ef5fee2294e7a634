// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

#include <algorithm>

/// Whether `text` holds `part` in any case. Several times as fast as the stock search where both are ASCII.
bool containsIgnoringCase(QStringView text, QStringView part);

/// Has the processor fetch a text that is searched soon: those of a long list lie all over memory.
inline void fetchAhead([[maybe_unused]] QStringView text)
{
#ifdef __GNUC__
    constexpr qsizetype charactersInALine = 32; // of the cache
    if (text.isEmpty())
        return;
    __builtin_prefetch(text.data());
    __builtin_prefetch(text.data() + std::min(charactersInALine, text.size() - 1));
#endif
}
