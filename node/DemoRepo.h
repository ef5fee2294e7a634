// SPDX-License-Identifier: MIT
#pragma once

#include "DemoContent.h"

#include <QSet>

#include <chrono>

/// How the demo node is to behave.
struct DemoOptions
{
    quint16 port = 5001;
    int pins = 10;
    int looseBlocks = 0; ///< small blocks that no pin accounts for, besides a few that are always there
    int treeEntries = 0; ///< files under one more pin, named "big tree"; 0 for no such pin
    int chunkBytes = 0;  ///< size of a list's chunks; 0 puts each line into one of its own, as a node does
    std::chrono::milliseconds chunkPause {0};
    std::chrono::milliseconds latency {0}; ///< before each answer
};

/// What the demo node keeps, for its services to share.
class DemoRepo
{
public:
    explicit DemoRepo(const DemoOptions& newOptions);

    const DemoOptions& options() const { return choices; }
    const DemoStore& store() const { return blocks; }
    const QList<DemoPin>& pins() const { return pinned; }
    /// Grows with each change, so that a service knows what it has kept to be old.
    int revision() const { return changes; }

    /// Whether there is a pin under this very CID.
    bool isPinned(const Cid& cid) const;
    /// Removes the pins under these binary CIDs.
    void unpin(const QSet<QByteArray>& cids);
    /// From here on the block is missing, as one that was lost.
    void forget(const Cid& cid);

private:
    DemoOptions choices;
    DemoStore blocks;
    QList<DemoPin> pinned;
    mutable QSet<QByteArray> pinnedCids; ///< filled when it is first asked for
    int changes = 0;
};
