// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QSet>
#include <QString>

#include <functional>

/// A bounded queue of CIDs that one fact is asked for, first in, first out.
class MetadataQueue
{
public:
    /// `newSend` asks for one CID; at most `newMostOpen` are open at a time.
    MetadataQueue(int newMostOpen, std::function<void(const QString& cid)> newSend);

    /// False, and nothing is done, for an empty CID and one that is queued or in flight already.
    bool enqueueUnique(const QString& cid);
    /// Sends as many as may be open.
    void pump();
    /// The CID is done with; pump() then sends the next.
    void release(const QString& cid);
    /// Forgets all, those in flight too, whose release then has no effect.
    void clear();

private:
    QList<QString> queue; ///< not yet sent, oldest first
    QSet<QString> known;  ///< queued or in flight
    int inFlight = 0;     ///< replies open for this queue
    int mostOpen;
    std::function<void(const QString& cid)> send;
};
