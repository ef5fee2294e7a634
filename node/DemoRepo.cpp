// SPDX-License-Identifier: MIT
#include "DemoRepo.h"

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

void DemoRepo::unpin(const QSet<QByteArray>& cids)
{
    if (cids.isEmpty())
        return;
    pinned.removeIf([&cids](const DemoPin& pin) { return cids.contains(cidBytes(pin.cid)); });
    pinnedCids -= cids;
    ++changes;
}

void DemoRepo::forget(const Cid& cid)
{
    blocks.forget(cid);
    ++changes;
}
