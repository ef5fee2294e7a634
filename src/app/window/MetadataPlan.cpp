// SPDX-License-Identifier: MIT
#include "MetadataPlan.h"

/// Facts that the list brings along cost nothing; set one by one in the table each would be sorted in by itself.
void MetadataPlan::fillIn(QList<PinEntry>& list) const
{
    if (dagSizeCache.isEmpty() && kindCache.isEmpty())
        return;
    for (PinEntry& pin : list) {
        pin.dagSize = dagSizeCache.value(pin.cid, pin.dagSize);
        pin.kind = kindCache.value(pin.cid);
    }
}

void MetadataPlan::startList()
{
    for (QSet<QString>* set : {&refsPending, &metadataTargets, &dagDone, &kindDone, &metadataDone})
        set->clear();
}

QStringList MetadataPlan::takeRefs(const QList<PinEntry>& list)
{
    QStringList cids;
    for (const PinEntry& pin : list) {
        if (cids.size() == refsLimit)
            break;
        if (pin.type != PinType::recursive || pin.cid.isEmpty())
            continue;
        refsPending.insert(pin.cid);
        cids.append(pin.cid);
    }
    return cids;
}

MetadataPlan::Wanted MetadataPlan::addTarget(const QString& cid)
{
    metadataTargets.insert(cid);
    const Wanted wanted {.size = !dagSizeCache.contains(cid), .kind = !kindCache.contains(cid)};
    if (!wanted.size)
        dagDone.insert(cid);
    if (!wanted.kind)
        kindDone.insert(cid);
    if (!wanted.size && !wanted.kind)
        metadataDone.insert(cid);
    return wanted;
}

void MetadataPlan::sizeReceived(const QString& cid, long long bytes)
{
    if (bytes >= 0)
        dagSizeCache.insert(cid, bytes);
    if (metadataTargets.contains(cid))
        dagDone.insert(cid);
    if (kindDone.contains(cid))
        metadataDone.insert(cid);
}

void MetadataPlan::kindReceived(const QString& cid, const QString& kind)
{
    if (!kind.isEmpty())
        kindCache.insert(cid, kind);
    if (metadataTargets.contains(cid))
        kindDone.insert(cid);
    if (dagDone.contains(cid))
        metadataDone.insert(cid);
}
