// SPDX-License-Identifier: MIT
#include "MetadataQueue.h"

#include <utility>

MetadataQueue::MetadataQueue(int newMostOpen, std::function<void(const QString& cid)> newSend)
    : mostOpen(newMostOpen)
    , send(std::move(newSend))
{
}

bool MetadataQueue::enqueueUnique(const QString& cid)
{
    if (cid.isEmpty())
        return false;
    const qsizetype before = known.size();
    known.insert(cid);
    if (known.size() == before)
        return false;
    queue.append(cid);
    return true;
}

void MetadataQueue::pump()
{
    while (inFlight < mostOpen && !queue.isEmpty()) {
        ++inFlight;
        send(queue.takeFirst());
    }
}

void MetadataQueue::release(const QString& cid)
{
    known.remove(cid);
    if (inFlight > 0) // the replies that a cancel aborts find it at 0 already
        --inFlight;
}

void MetadataQueue::clear()
{
    queue.clear();
    known.clear();
    inFlight = 0;
}
