// SPDX-License-Identifier: MIT
#include "MetadataPlan.h"

#include "Detached.h"

#include <utility>

namespace {

constexpr qsizetype freedAtOnce = 20'000;

} // namespace

/// Facts that the list brings along cost nothing; set one by one in the table each would be sorted in by itself.
void MetadataPlan::KnownFacts::fillIn(QList<PinEntry>& list) const
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
    for (QSet<QString>* set : {&refsPending, &metadataTargets, &dagDone, &kindDone, &metadataDone}) {
        QSet<QString> former = std::exchange(*set, {});
        if (former.size() > freedAtOnce)
            discard(std::move(former));
    }
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
    const Wanted wanted {.size = !known.dagSizeCache.contains(cid), .kind = !known.kindCache.contains(cid)};
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
        known.dagSizeCache.insert(cid, bytes);
    if (metadataTargets.contains(cid))
        dagDone.insert(cid);
    if (kindDone.contains(cid))
        metadataDone.insert(cid);
}

void MetadataPlan::kindReceived(const QString& cid, const QString& kind)
{
    if (!kind.isEmpty())
        known.kindCache.insert(cid, kind);
    if (metadataTargets.contains(cid))
        kindDone.insert(cid);
    if (dagDone.contains(cid))
        metadataDone.insert(cid);
}
