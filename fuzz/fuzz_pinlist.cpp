// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "PinListParser.h"
#include "PinLists.h"

#include <algorithm>

/// Any body gives entries, and sorting leaves each CID once.
void checkInput(const QByteArray& input)
{
    PinList list = parsePinList(input);
    sortPinsByCid(list.entries);
    const bool rising
        = std::ranges::adjacent_find(list.entries, std::ranges::greater_equal(), &PinEntry::cid) == list.entries.end();
    abortIf(!rising || std::ranges::any_of(list.entries, [](const PinEntry& entry) { return entry.cid.isEmpty(); }));
}
