// SPDX-License-Identifier: MIT
#include "PinLoad.h"

#include "PinLists.h"

#include <utility>

namespace {

/// A set of half a million that has to grow holds everything up for a tenth of a second. Room for this many costs 5 MB.
constexpr qsizetype expectedRefs = 2'000'000;

} // namespace

void PinLoad::beginPins(bool composite)
{
    ++pinsEpoch;
    compositePins.clear();
    compositePending = composite ? 2 : 0;
}

void PinLoad::beginUnpinned()
{
    ++pinsEpoch;
    resetUnpinnedState();
    unpinnedFetchActive = true;
    unpinnedLocalRefs.reserve(expectedRefs);
}

void PinLoad::cancel()
{
    ++pinsEpoch;
    resetUnpinnedState();
    compositePins.clear();
    compositePending = 0;
}

std::optional<QList<PinEntry>> PinLoad::takeCompositeHalf(QList<PinEntry> entries)
{
    compositePins = mergePinsByCid(std::move(compositePins), std::move(entries));
    if (compositePending > 0)
        --compositePending;
    return compositePending == 0 ? std::optional(std::exchange(compositePins, {})) : std::nullopt;
}

void PinLoad::takePinnedCids(QSet<QString> cids)
{
    unpinnedPinnedCids = std::move(cids);
    unpinnedPinsDone = true;
}

std::optional<QList<PinEntry>> PinLoad::takeUnpinned()
{
    if (!unpinnedFetchActive || !unpinnedPinsDone || !unpinnedRefsDone)
        return std::nullopt;
    QList<PinEntry> unpinned;
    for (const QString& cid : std::as_const(unpinnedLocalRefs)) {
        if (!unpinnedPinnedCids.contains(cid))
            unpinned.append({.cid = cid});
    }
    resetUnpinnedState();
    return unpinned;
}

void PinLoad::resetUnpinnedState()
{
    unpinnedFetchActive = false;
    unpinnedPinsDone = false;
    unpinnedRefsDone = false;
    unpinnedPinnedCids.clear();
    unpinnedLocalRefs.clear();
}
