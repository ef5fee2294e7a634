// SPDX-License-Identifier: MIT
#pragma once

#include "PinEntry.h"

#include <QHash>
#include <QList>
#include <QSet>

/// Which facts about the listed CIDs are to be asked for, and which are known. It asks nothing by itself.
class MetadataPlan
{
public:
    /// Ref counts are asked for the first so many recursive pins of a list.
    static constexpr int refsLimit = 500;

    /// Which facts of a CID the node is to be asked for.
    struct Wanted
    {
        bool size = false;
        bool kind = false;
        friend bool operator==(const Wanted&, const Wanted&) = default;
    };

    /// What earlier lists brought.
    struct KnownFacts
    {
        QHash<QString, long long> dagSizeCache {}; ///< bytes, of this run
        QHash<QString, QString> kindCache {};
        /// Puts the sizes and kinds into their entries.
        void fillIn(QList<PinEntry>& list) const;
    };

    const KnownFacts& knownFacts() const { return known; }
    /// Forgets the last list. Sizes and kinds stay known for the whole run.
    void startList();
    /// The CIDs whose ref count is to be asked for, in the order of the list; they count as pending from here on.
    QStringList takeRefs(const QList<PinEntry>& list);
    /// Makes `cid`, which is not empty, a target: its size and kind are wanted for the current list.
    Wanted addTarget(const QString& cid);

    /// Whether this list's plan asked for the ref count that came; once for each CID.
    bool refsReceived(const QString& cid) { return refsPending.remove(cid); }
    /// A negative size is a failure: the target is done and the size stays unknown.
    void sizeReceived(const QString& cid, long long bytes);
    /// An empty kind likewise.
    void kindReceived(const QString& cid, const QString& kind);

    int targetCount() const { return static_cast<int>(metadataTargets.size()); }
    /// Targets whose size and kind have both come, whether or not they could be had.
    int doneCount() const { return static_cast<int>(metadataDone.size()); }

private:
    QSet<QString> refsPending;     ///< recursive pins whose ref count was asked for and has not come
    QSet<QString> metadataTargets; ///< CIDs of the list whose size and kind are wanted
    QSet<QString> dagDone;         ///< targets whose size has come, from cache or node
    QSet<QString> kindDone;
    QSet<QString> metadataDone; ///< targets with both
    KnownFacts known;
};
