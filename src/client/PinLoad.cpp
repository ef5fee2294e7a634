// SPDX-License-Identifier: MIT
#include "PinLoad.h"

#include <utility>

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
}

void PinLoad::cancel()
{
    ++pinsEpoch;
    resetUnpinnedState();
    compositePins.clear();
    compositePending = 0;
}

std::optional<PinLoad::CompositeHalves> PinLoad::takeCompositeHalf(QList<PinEntry> entries)
{
    if (compositePending > 0)
        --compositePending;
    if (compositePending == 0)
        return CompositeHalves(std::exchange(compositePins, {}), std::move(entries));
    compositePins = std::move(entries);
    return std::nullopt;
}

void PinLoad::takePinnedCids(TextBlock cids)
{
    unpinnedPinnedCids = std::move(cids);
    unpinnedPinsDone = true;
}

std::optional<UnpinnedHalves> PinLoad::takeUnpinnedHalves()
{
    if (!unpinnedFetchActive || !unpinnedPinsDone || !unpinnedRefsDone)
        return std::nullopt;
    UnpinnedHalves halves {.pinned = std::exchange(unpinnedPinnedCids, {}),
                           .localRefs = std::exchange(unpinnedLocalRefs, {})};
    resetUnpinnedState();
    return halves;
}

void PinLoad::resetUnpinnedState()
{
    unpinnedFetchActive = false;
    unpinnedPinsDone = false;
    unpinnedRefsDone = false;
    unpinnedPinnedCids = {};
    unpinnedLocalRefs = {};
}
