// SPDX-License-Identifier: MIT
#include "PinListParser.h"
#include "PinLists.h"

#include <algorithm>
#include <cstdlib>

/// Any body gives entries, and sorting leaves each CID once.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    PinList list = parsePinList(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    sortPinsByCid(list.entries);
    const bool rising
        = std::ranges::adjacent_find(list.entries, std::ranges::greater_equal(), &PinEntry::cid) == list.entries.end();
    if (!rising || std::ranges::any_of(list.entries, [](const PinEntry& entry) { return entry.cid.isEmpty(); }))
        std::abort();
    return 0;
}
