// SPDX-License-Identifier: MIT
#include "DhtText.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

struct DhtText
{
    Q_DECLARE_TR_FUNCTIONS(DhtText)
};

} // namespace

QList<QJsonObject> dhtViews(const QJsonValue& value)
{
    if (value.isObject())
        return {value.toObject()};
    QList<QJsonObject> views;
    const QJsonArray elements = value.toArray();
    views.reserve(elements.size());
    for (const auto& element : elements) {
        if (element.isObject())
            views.append(element.toObject());
    }
    return views;
}

QString dhtViewTitle(const QJsonObject& view)
{
    const QString name = view.value("Name"_L1).toString();
    return DhtText::tr("DHT: %1").arg(name.isEmpty() ? DhtText::tr("DHT") : name);
}

QString dhtBucketTitle(qsizetype index, const QJsonObject& bucket)
{
    const QString number = QString::number(index);
    const QString refresh = bucket.value("LastRefresh"_L1).toString();
    const qsizetype peers = bucket.value("Peers"_L1).toArray().size();
    return peers == 0
        ? DhtText::tr("Bucket %1 — Last refresh: %2 (no peers)").arg(number, refresh)
        : DhtText::tr("Bucket %1 — Last refresh: %2 — %3 peer(s)").arg(number, refresh, QString::number(peers));
}

QStringList dhtPeerColumns()
{
    return {DhtText::tr("Peer ID"), DhtText::tr("Agent"), DhtText::tr("Connected"), DhtText::tr("Last queried"),
            DhtText::tr("Last useful")};
}

QStringList dhtPeerCells(const QJsonObject& peer)
{
    return {peer.value("ID"_L1).toString(), peer.value("AgentVersion"_L1).toString(),
            peer.value("Connected"_L1).toBool() ? DhtText::tr("Yes") : DhtText::tr("No"),
            peer.value("LastQueriedAt"_L1).toString(), peer.value("LastUsefulAt"_L1).toString()};
}
