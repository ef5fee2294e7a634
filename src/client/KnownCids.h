// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// The CIDs of the last list. The entries of the next one share their storage, since it is mostly the same list: texts
/// of half a million CIDs take 70 MB.
class KnownCids
{
public:
    /// Shorter lists are not worth it.
    static constexpr qsizetype fewestWorthSharing = 20'000;

    /// A list is asked for. It may share the texts of the last one that came.
    void beginLoad() { former = latest; }
    const QStringList& ofFormerList() const { return former; }
    /// A list, or one half of it, had these, in the node's order. Of several of one `epoch` the longest counts.
    void note(quint64 epoch, QStringList cids);
    /// The load is over; texts that the new list has not are freed.
    void endLoad();

private:
    QStringList former;
    QStringList latest;
    quint64 latestEpoch = 0;
};
