// SPDX-License-Identifier: MIT
#pragma once

#include "DemoContent.h"

#include <QSet>
#include <QStringList>

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
    /// Bytes kept of each added file, and of all of them together; what is beyond is hashed and thrown away. Its blocks
    /// are listed and counted as if they were there, and only "/cat" breaks off before the first of them.
    qint64 keptOfFile = 1024 * 1024;
    qint64 keptOfAll = 64 * 1024 * 1024;
    /// Names of the remote pinning services that are configured at the start. Here and where one is configured later,
    /// every pin at "failing" fails, "invalid" refuses its key, "unreachable" is not there, "hanging" never answers.
    QStringList remoteServices {};
    std::chrono::milliseconds remotePinTime {4000}; ///< of a remote pin, from queued to pinned or failed
    bool isOffline = false;                         ///< without network, as a node that was started so
    std::chrono::milliseconds publishTime {0};      ///< that publishing or resolving a name takes
    int swarmPeers = 60;                            ///< connections; two of them are to one peer
    int dhtPeers = 300;                             ///< in the routing table of the WAN
    bool hasStorageMax = true;
    int collectedCids = 0;        ///< made-up ones that a garbage collection reports besides those it removes
    bool failsCollecting = false; ///< whether a garbage collection ends with an error
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
    /// Keeps an added block; a leaf without its bytes if they are not wanted or there is no room for them.
    void add(const DemoObject& object, bool keepsBytes);
    /// Takes the place of a pin under the same CID.
    void pin(const DemoPin& pin);
    /// Removes the pins under these binary CIDs.
    void unpin(const QSet<QByteArray>& cids);
    /// The multihashes of what a garbage collection has removed, or why it has removed nothing.
    struct Garbage
    {
        QList<QByteArray> removed {};
        QByteArray error {};
    };
    /// Removes the blocks that no pin accounts for.
    Garbage collectGarbage();
    /// From here on the block is missing, as one that was lost.
    void forget(const Cid& cid);

private:
    DemoOptions choices;
    DemoStore blocks;
    QList<DemoPin> pinned;
    mutable QSet<QByteArray> pinnedCids; ///< filled when it is first asked for
    qint64 leafBytes = 0;                ///< kept of added files
    int changes = 0;
};
