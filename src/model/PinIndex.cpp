// SPDX-License-Identifier: MIT
#include "PinIndex.h"

#include <QHashFunctions>

#include <algorithm>
#include <utility>

PinIndex::PinIndex(const QList<PinEntry>& pins)
{
    sorted.reserve(static_cast<size_t>(pins.size()));
    for (int row = 0; row < pins.size(); ++row) {
        if (const QString& cid = pins.at(row).cid; !cid.isEmpty())
            sorted.push_back({.hash = hashOf(cid), .row = row});
    }
    std::ranges::sort(sorted, {}, [](const Slot& slot) { return std::pair(slot.hash, slot.row); });
}

std::vector<int> PinIndex::rowsOf(const QString& cid, const QList<PinEntry>& pins) const
{
    std::vector<int> rows;
    const quint32 hash = hashOf(cid);
    for (auto slot = std::ranges::lower_bound(sorted, hash, {}, &Slot::hash); slot != sorted.end(); ++slot) {
        if (slot->hash != hash)
            break;
        if (pins.at(slot->row).cid == cid)
            rows.push_back(slot->row);
    }
    return rows;
}

quint32 PinIndex::hashOf(const QString& cid)
{
    return static_cast<quint32>(qHash(cid));
}
