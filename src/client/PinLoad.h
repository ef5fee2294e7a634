// SPDX-License-Identifier: MIT
#pragma once

#include "PinLists.h"

#include <QList>

#include <optional>
#include <utility>

/// What the client keeps of the load under way: its epoch, and what the halves of a load of two replies have brought.
class PinLoad
{
public:
    /// Grows with each load and each cancel. A reply that carries another one is stale.
    quint64 pinsEpoch = 0;

    void beginPins(bool composite);
    void beginUnpinned();
    void cancel();

    using CompositeHalves = std::pair<QList<PinEntry>, QList<PinEntry>>;

    /// One half of a composite load has brought `entries`, sorted by CID, or none if it failed. Both of them in the
    /// order in which they came, once they are in.
    std::optional<CompositeHalves> takeCompositeHalf(QList<PinEntry> entries);

    bool isUnpinnedActive() const { return unpinnedFetchActive; }
    void addLocalRef(QByteArrayView cid) { unpinnedLocalRefs.append(cid); }
    void endLocalRefs() { unpinnedRefsDone = true; }
    void takePinnedCids(TextBlock cids);
    /// Both halves, once they are in; the state is at rest then.
    std::optional<UnpinnedHalves> takeUnpinnedHalves();
    void resetUnpinnedState();

private:
    QList<PinEntry> compositePins; ///< the half that came first
    int compositePending = 0;      ///< halves still to come

    bool unpinnedFetchActive = false; ///< an unpinned fetch is collecting
    bool unpinnedPinsDone = false;
    bool unpinnedRefsDone = false;
    TextBlock unpinnedPinnedCids; ///< all that the pin list accounts for
    TextBlock unpinnedLocalRefs;
};
