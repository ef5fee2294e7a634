// SPDX-License-Identifier: MIT
#include "SwarmParser.h"

#include "FirstText.h"

#include <QJsonArray>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array addressKeys {"Addr"_L1, "Address"_L1, "addr"_L1, "address"_L1};
constexpr std::array peerKeys {"Peer"_L1, "ID"_L1, "Id"_L1, "id"_L1, "peer"_L1};

QStringList textsOf(const QJsonValue& list)
{
    QStringList texts;
    const QJsonArray values = list.toArray();
    texts.reserve(values.size());
    for (const auto& value : values) {
        if (QString text = value.toString().trimmed(); !text.isEmpty())
            texts.append(std::move(text));
    }
    return texts;
}

void takeConnection(const QJsonValue& value, SwarmPeers& swarm)
{
    if (!value.isObject()) {
        if (QString text = value.toString().trimmed(); !text.isEmpty())
            swarm.peers.append(std::move(text));
        return;
    }
    const QJsonObject connection = value.toObject();
    const QString address = firstText(connection, addressKeys);
    const QString peer = firstText(connection, peerKeys);
    if (!address.isEmpty() && !peer.isEmpty())
        swarm.peersOfAddress[address].append(peer);
    if (!address.isEmpty() || !peer.isEmpty())
        swarm.peers.append(address.isEmpty() ? peer : address);
}

} // namespace

SwarmPeers swarmPeersOf(const QJsonObject& answer)
{
    const QJsonValue listed = answer.value("Peers"_L1);
    if (!listed.isArray())
        return {.peers = stringsOf(answer)};
    SwarmPeers swarm;
    const QJsonArray values = listed.toArray();
    swarm.peers.reserve(values.size());
    for (const auto& value : values)
        takeConnection(value, swarm);
    return swarm;
}

QHash<QString, QStringList> swarmAddrsOf(const QJsonObject& answer)
{
    QHash<QString, QStringList> addresses;
    const QJsonObject peers = answer.value("Addrs"_L1).toObject();
    addresses.reserve(peers.size());
    for (auto peer = peers.constBegin(); peer != peers.constEnd(); ++peer) {
        if (const QString id = peer.key().trimmed(); !id.isEmpty() && peer.value().isArray())
            addresses.insert(id, textsOf(peer.value()));
    }
    return addresses;
}

QStringList stringsOf(const QJsonObject& answer)
{
    return textsOf(answer.value("Strings"_L1));
}

QStringList bootstrapPeersOf(const QJsonObject& answer)
{
    const QJsonValue peers = answer.value("Peers"_L1);
    return textsOf(peers.isArray() ? peers : answer.value("BootstrapPeers"_L1));
}
