// SPDX-License-Identifier: MIT
#include "DemoRepo.h"

#include <algorithm>

DemoRepo::DemoRepo(const DemoOptions& newOptions)
    : choices(newOptions)
    , pinned(demoPins(blocks, newOptions.pins))
{
    for (int i = 1; i <= choices.looseBlocks; ++i)
        blocks.addNote(-i);
    if (choices.treeEntries > 0)
        pinned.append(bigTreePin(blocks, choices.treeEntries));
}

bool DemoRepo::isPinned(const Cid& cid) const
{
    if (pinnedCids.isEmpty()) {
        for (const DemoPin& pin : pinned)
            pinnedCids.insert(cidBytes(pin.cid));
    }
    return pinnedCids.contains(cidBytes(cid));
}

void DemoRepo::add(const DemoObject& object, bool keepsBytes)
{
    ++changes;
    if (!object.isLeaf()) {
        blocks.add(object);
        return;
    }
    const auto known = blocks.find(object.cid);
    if (known && !known->isHollow())
        return;
    DemoObject leaf = object;
    if (keepsBytes && leafBytes + object.content.size() <= choices.keptOfAll)
        leafBytes += object.content.size();
    else
        leaf.block = leaf.content = {};
    blocks.add(leaf);
}

void DemoRepo::pin(const DemoPin& pin)
{
    const auto same = isPinned(pin.cid) ? std::ranges::find(pinned, pin.cid, &DemoPin::cid) : pinned.end();
    if (same == pinned.end())
        pinned.append(pin);
    else
        *same = pin;
    pinnedCids.insert(cidBytes(pin.cid));
    ++changes;
}

void DemoRepo::unpin(const QSet<QByteArray>& cids)
{
    if (cids.isEmpty())
        return;
    pinned.removeIf([&cids](const DemoPin& pin) { return cids.contains(cidBytes(pin.cid)); });
    pinnedCids -= cids;
    ++changes;
}

DemoRepo::Garbage DemoRepo::collectGarbage()
{
    QSet<QByteArray> kept;
    QList<Cid> roots;
    for (const DemoPin& pin : pinned) {
        kept.insert(pin.cid.multihash);
        if (pin.recursive)
            roots.append(pin.cid);
    }
    const auto missing = blocks.walk(roots, [&kept](const Cid& cid) { kept.insert(cid.multihash); });
    if (missing)
        return {.error = "could not retrieve links for " + encodeCid(*missing).toLatin1()};
    Garbage garbage {.removed = blocks.multihashes()};
    garbage.removed.removeIf([&kept](const QByteArray& multihash) { return kept.contains(multihash); });
    for (const QByteArray& multihash : std::as_const(garbage.removed)) {
        const Cid cid {.multihash = multihash};
        const auto object = blocks.find(cid);
        if (object && object->isLeaf()) // what was there at the start takes none of the room for added bytes
            leafBytes = std::max<qint64>(0, leafBytes - object->content.size());
        blocks.forget(cid);
    }
    changes += garbage.removed.isEmpty() ? 0 : 1;
    return garbage;
}

void DemoRepo::forget(const Cid& cid)
{
    blocks.forget(cid);
    ++changes;
}
