// SPDX-License-Identifier: MIT
#include "SwarmService.h"

#include "DemoPeers.h"
#include "DemoWire.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr auto offlineText = "this action must be run in online mode, try running 'ipfs daemon' first"_L1;

/// The peers that are meant, or why one of the arguments means none.
struct Targets
{
    QList<PeerAddress> peers {};
    QString fault {};
};

Targets targetsOf(const NodeRequest& request)
{
    Targets targets;
    for (const QString& text : request.values(u"arg"_s)) {
        const auto target = parsePeerAddress(text);
        if (!text.startsWith(u'/'))
            return {.fault = u"failed to parse multiaddr \"%1\": must begin with /"_s.arg(text)};
        if (!target)
            return {.fault = u"found no ipfs peers at "_s + text};
        targets.peers.append(*target);
    }
    return targets;
}

NodeAnswer stringsAnswer(const QStringList& strings)
{
    return NodeAnswer::json("{\"Strings\":" + jsonList(strings) + "}\n");
}

NodeAnswer offlineAnswer()
{
    return errorOf(offlineText);
}

} // namespace

/// The first two connections are to one peer. As many peers as connections are known and not connected.
SwarmService::SwarmService(const DemoOptions& options)
    : isOffline(options.isOffline)
{
    const int count = options.swarmPeers;
    for (int i = 0; i < count; ++i) {
        const QString peer = demoPeerId(std::max(i - 1, 0));
        connections.append(
            {.address = demoAddress(i), .peer = peer, .inbound = i % 4 == 1, .latency = 8 + i * 37 % 290});
        known[peer] += demoAddress(i);
        known[peer] += demoAddress(i + count);
    }
    for (int i = 0; i < count; ++i)
        known[demoPeerId(i + count)] = QStringList {demoAddress(i * 2 + count * 2), demoAddress(i * 2 + count * 2 + 1)};
    std::ranges::sort(connections, {}, &Connection::address);
}

QList<NodeCommand> SwarmService::commands()
{
    const auto listen = [this](const NodeRequest&) {
        return isOffline ? offlineAnswer()
                         : stringsAnswer({u"/ip4/127.0.0.1/tcp/4001"_s, u"/ip4/127.0.0.1/udp/4001/quic-v1"_s,
                                          u"/ip4/192.168.1.20/tcp/4001"_s, u"/ip6/::1/tcp/4001"_s});
    };
    NodeCommand peers {.path = "/swarm/peers",
                       .run = [this](const NodeRequest& request) { return listPeers(request); }};
    for (const QString& name : {u"verbose"_s, u"streams"_s, u"latency"_s, u"direction"_s, u"identify"_s})
        peers.options.append({name, NodeOption::Bool});
    return {peers,
            {.path = "/swarm/addrs", .run = [this](const NodeRequest&) { return listAddresses(); }},
            {.path = "/swarm/addrs/listen", .run = listen},
            {.path = "/swarm/connect",
             .argument = u"address"_s,
             .run = [this](const NodeRequest& request) { return connectPeers(request); }},
            {.path = "/swarm/disconnect", .argument = u"address"_s, .run = [this](const NodeRequest& request) {
                 return disconnectPeers(request);
             }}};
}

NodeAnswer SwarmService::listPeers(const NodeRequest& request) const
{
    if (isOffline)
        return offlineAnswer();
    const auto isAsked = [all = isSet(request, u"verbose"_s), &request](const QString& option) {
        return all || isSet(request, option);
    };
    const bool latency = isAsked(u"latency"_s);
    const bool direction = isAsked(u"direction"_s);
    const bool streams = isAsked(u"streams"_s);
    QByteArray peers;
    for (const Connection& connection : connections) {
        peers += (peers.isEmpty() ? "{\"Addr\":" : ",{\"Addr\":") + jsonText(connection.address)
            + ",\"Peer\":" + jsonText(connection.peer);
        if (latency)
            peers += ",\"Latency\":\"" + QByteArray::number(connection.latency) + "ms\"";
        if (direction)
            peers += connection.inbound ? ",\"Direction\":1" : ",\"Direction\":2";
        if (streams)
            peers += ",\"Streams\":[{\"Protocol\":\"/ipfs/bitswap/1.2.0\"},{\"Protocol\":\"/ipfs/kad/1.0.0\"}]";
        peers += ",\"Identify\":{\"ID\":\"\",\"PublicKey\":\"\",\"Addresses\":null,\"AgentVersion\":\"\","
                 "\"Protocols\":null}}";
    }
    return NodeAnswer::json("{\"Peers\":" + (peers.isEmpty() ? "null" : '[' + peers + ']') + "}\n");
}

NodeAnswer SwarmService::listAddresses() const
{
    if (isOffline)
        return offlineAnswer();
    QByteArray entries;
    for (auto peer = known.cbegin(); peer != known.cend(); ++peer)
        entries += (entries.isEmpty() ? "" : ",") + jsonText(peer.key()) + ':' + jsonList(peer.value());
    return NodeAnswer::json("{\"Addrs\":{" + entries + "}}\n");
}

/// The first that cannot be dialled fails the call; those before it stay connected.
NodeAnswer SwarmService::connectPeers(const NodeRequest& request)
{
    const Targets targets = targetsOf(request);
    if (!targets.fault.isEmpty())
        return errorOf(targets.fault);
    QStringList lines;
    for (const auto& [transport, peer] : targets.peers) {
        const QString fault = isOffline ? QString(offlineText) : dial(transport, peer);
        if (!fault.isEmpty())
            return errorOf(u"connect %1 failure: %2"_s.arg(peer, fault));
        lines.append(u"connect %1 success"_s.arg(peer));
    }
    return stringsAnswer(lines);
}

NodeAnswer SwarmService::disconnectPeers(const NodeRequest& request)
{
    const Targets targets = targetsOf(request);
    if (!targets.fault.isEmpty())
        return errorOf(targets.fault);
    QStringList lines;
    for (const auto& [transport, peer] : targets.peers) {
        const QString fault = isOffline ? QString(offlineText) : close(transport, peer);
        lines.append(fault.isEmpty() ? u"disconnect %1 success"_s.arg(peer)
                                     : u"disconnect %1 failure: %2"_s.arg(peer, fault));
    }
    return stringsAnswer(lines);
}

/// A node that is connected to the peer already does not dial.
QString SwarmService::dial(const QString& transport, const QString& peer)
{
    if (peer == selfPeerId)
        return u"failed to dial %1: dial to self attempted"_s.arg(peer);
    if (isConnected(peer))
        return {};
    const QString address = transport.isEmpty() ? known.value(peer).value(0) : transport;
    if (address.isEmpty())
        return u"failed to find any peer in table"_s;
    if (address.startsWith("/ip4/192.0.2."_L1))
        return u"failed to dial %1: all dials failed * [%2] dial backoff: i/o timeout"_s.arg(peer, address);
    const auto next = std::ranges::lower_bound(connections, address, {}, &Connection::address);
    connections.insert(next - connections.begin(), {.address = address, .peer = peer, .latency = 120});
    if (!known.value(peer).contains(address))
        known[peer].append(address);
    return {};
}

QString SwarmService::close(const QString& transport, const QString& peer)
{
    if (!isConnected(peer))
        return u"not connected"_s;
    const auto closed = connections.removeIf([&](const Connection& connection) {
        return connection.peer == peer && (transport.isEmpty() || connection.address == transport);
    });
    return closed > 0 ? QString() : u"conn not found"_s;
}

bool SwarmService::isConnected(const QString& peer) const
{
    return std::ranges::find(connections, peer, &Connection::peer) != connections.end();
}
