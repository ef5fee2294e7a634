// SPDX-License-Identifier: MIT
#include "NetworkSnapshot.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QVariant>

#include <algorithm>
#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestGoodWantlist = 100;

constexpr auto good = "good"_L1;
constexpr auto unknown = "unknown"_L1;

struct Conditions
{
    bool connectivity = false;
    bool routing = false;
    bool exchange = false;
    bool wantlistOverloaded = false;
};

struct Verdict
{
    QLatin1StringView state {};
    int score = 0;
    bool (*fits)(const Conditions&) = nullptr;
};

/// The first that fits.
constexpr std::array verdicts {
    Verdict {good, 85, [](const Conditions& is) { return is.connectivity && is.exchange && !is.wantlistOverloaded; }},
    Verdict {"degraded"_L1, 60, [](const Conditions& is) { return is.connectivity && (is.exchange || is.routing); }},
    Verdict {"poor"_L1, 30, [](const Conditions&) { return true; }}};

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(NetworkSnapshot)
};

QJsonObject statusOf(bool ok, const QString& error)
{
    return {{"ok"_L1, ok}, {"error"_L1, error}};
}

QLatin1StringView directionOf(const QString& peer)
{
    for (const auto word : {"inbound"_L1, "outbound"_L1}) {
        if (peer.contains(word, Qt::CaseInsensitive))
            return word;
    }
    return unknown;
}

/// Members without a value are kept in the format: a node's list says no more of a peer than its address.
QJsonObject swarmSection(const QStringList& peers)
{
    QJsonArray entries;
    int inbound = 0;
    int outbound = 0;
    for (const QString& peer : peers) {
        const QLatin1StringView direction = directionOf(peer);
        inbound += direction == "inbound"_L1 ? 1 : 0;
        outbound += direction == "outbound"_L1 ? 1 : 0;
        entries.append(QJsonObject {{"addr"_L1, peer},
                                    {"direction"_L1, direction},
                                    {"latency_ms"_L1, QJsonValue::Null},
                                    {"muxer"_L1, QString()},
                                    {"peer_id"_L1, QString()},
                                    {"streams"_L1, QJsonArray()}});
    }
    const QJsonObject latency {{"min"_L1, QJsonValue::Null},
                               {"p50"_L1, QJsonValue::Null},
                               {"p95"_L1, QJsonValue::Null},
                               {"max"_L1, QJsonValue::Null}};
    const QJsonObject summary {
        {"count"_L1, peers.size()}, {"inbound"_L1, inbound}, {"outbound"_L1, outbound}, {"latency_ms"_L1, latency}};
    return {{"summary"_L1, summary}, {"peers"_L1, entries}};
}

/// What a view of the DHT, or one of its buckets, counts.
struct PeerCount
{
    qsizetype all = 0;
    qsizetype connected = 0;
};

QJsonObject bucketOf(const QJsonObject& bucket, qsizetype index, PeerCount& total)
{
    QJsonArray entries;
    qsizetype connected = 0;
    const QJsonArray peers = bucket.value("Peers"_L1).toArray();
    for (const auto& value : peers) {
        const QJsonObject peer = value.toObject();
        const bool isConnected = peer.value("Connected"_L1).toBool();
        connected += isConnected ? 1 : 0;
        entries.append(QJsonObject {{"agent_version"_L1, peer.value("AgentVersion"_L1).toString()},
                                    {"connected"_L1, isConnected},
                                    {"last_queried_at"_L1, peer.value("LastQueriedAt"_L1).toString()},
                                    {"last_useful_at"_L1, peer.value("LastUsefulAt"_L1).toString()},
                                    {"peer_id"_L1, peer.value("ID"_L1).toString()}});
    }
    total.all += peers.size();
    total.connected += connected;
    return {{"index"_L1, index},
            {"last_refresh"_L1, bucket.value("LastRefresh"_L1).toString()},
            {"peer_count"_L1, peers.size()},
            {"connected_peer_count"_L1, connected},
            {"peers"_L1, entries}};
}

QJsonObject viewOf(const QJsonObject& view, PeerCount& total)
{
    QJsonArray entries;
    PeerCount count;
    const QJsonArray buckets = view.value("Buckets"_L1).toArray();
    for (qsizetype i = 0; i < buckets.size(); ++i)
        entries.append(bucketOf(buckets.at(i).toObject(), i, count));
    total.all += count.all;
    total.connected += count.connected;
    return {{"name"_L1, view.value("Name"_L1).toString(u"wan"_s)},
            {"bucket_count"_L1, buckets.size()},
            {"peer_count"_L1, count.all},
            {"connected_peer_count"_L1, count.connected},
            {"buckets"_L1, entries}};
}

QJsonArray viewsOf(const QJsonValue& data)
{
    return data.isObject() ? QJsonArray {data} : data.toArray();
}

QJsonObject dhtSection(const QJsonValue& data)
{
    QJsonArray entries;
    PeerCount total;
    qsizetype buckets = 0;
    const QJsonArray views = viewsOf(data);
    for (const auto& view : views) {
        if (!view.isObject())
            continue;
        const QJsonObject entry = viewOf(view.toObject(), total);
        buckets += entry.value("bucket_count"_L1).toInteger();
        entries.append(entry);
    }
    const QJsonObject summary {{"total_dhts"_L1, entries.size()},
                               {"total_buckets"_L1, buckets},
                               {"total_peers"_L1, total.all},
                               {"connected_peers"_L1, total.connected}};
    return {{"summary"_L1, summary}, {"dhts"_L1, entries}};
}

QJsonArray cidsOf(const QJsonArray& wantlist)
{
    QJsonArray cids;
    for (const auto& wanted : wantlist) {
        if (wanted.isObject())
            cids.append(wanted.toObject().value("/"_L1).toString());
    }
    return cids;
}

/// The nearest number of 64 bits, since any text can be a counter.
qint64 boundedSum(qint64 a, qint64 b)
{
    using Limits = std::numeric_limits<qint64>;
    if (b > 0 && a > Limits::max() - b)
        return Limits::max();
    if (b < 0 && a < Limits::min() - b)
        return Limits::min();
    return a + b;
}

QJsonObject bitswapSection(const QJsonObject& stat)
{
    const QJsonArray peers = stat.value("Peers"_L1).toArray();
    const QJsonArray wantlist = stat.value("Wantlist"_L1).toArray();
    const qint64 received = toInt64(stat.value("DataReceived"_L1));
    const qint64 sent = toInt64(stat.value("DataSent"_L1));
    const qint64 duplicate = toInt64(stat.value("DupDataReceived"_L1));
    const QJsonObject counters {{"blocks_received"_L1, toInt64(stat.value("BlocksReceived"_L1))},
                                {"blocks_sent"_L1, toInt64(stat.value("BlocksSent"_L1))},
                                {"data_received_bytes"_L1, received},
                                {"data_sent_bytes"_L1, sent},
                                {"duplicate_blocks_received"_L1, toInt64(stat.value("DupBlksReceived"_L1))},
                                {"duplicate_data_received_bytes"_L1, duplicate},
                                {"messages_received"_L1, toInt64(stat.value("MessagesReceived"_L1))}};
    const double ratio = received < 1 ? 0 : static_cast<double>(duplicate) / static_cast<double>(received);
    return {{"summary"_L1, QJsonObject {{"peer_count"_L1, peers.size()}, {"wantlist_size"_L1, wantlist.size()}}},
            {"counters"_L1, counters},
            {"peers"_L1, QJsonObject {{"ids"_L1, peers}}},
            {"wantlist"_L1, QJsonObject {{"cids"_L1, cidsOf(wantlist)}}},
            {"derived"_L1,
             QJsonObject {{"traffic_total_bytes"_L1, boundedSum(sent, received)}, {"dup_data_ratio"_L1, ratio}}}};
}

QString countText(const QJsonObject& section, QLatin1StringView key)
{
    return QString::number(section.value("summary"_L1).toObject().value(key).toInteger());
}

/// Of the sections as they came out.
QJsonObject healthOf(const NetworkFacts& facts, const QJsonObject& dht, const QJsonObject& bitswap)
{
    const QJsonObject exchanged = bitswap.value("summary"_L1).toObject();
    const Conditions is {
        .connectivity = facts.swarmOk && !facts.swarmPeers.isEmpty(),
        .routing = facts.dhtOk && dht.value("summary"_L1).toObject().value("connected_peers"_L1).toInteger() > 0,
        .exchange = facts.bitswapOk && exchanged.value("peer_count"_L1).toInteger() > 0,
        .wantlistOverloaded = facts.bitswapOk && exchanged.value("wantlist_size"_L1).toInteger() > longestGoodWantlist};
    const bool anyOk = facts.swarmOk || facts.dhtOk || facts.bitswapOk;
    const auto signal
        = [anyOk](QLatin1StringView key, bool isGood, QLatin1StringView otherwise, const QString& message) {
              const QLatin1StringView level = isGood ? good : otherwise;
              return QJsonObject {{"key"_L1, key}, {"level"_L1, anyOk ? level : unknown}, {"message"_L1, message}};
          };
    const QString connected = QString::number(facts.swarmPeers.size());
    const QJsonArray signalList {
        signal("connectivity"_L1, is.connectivity, "poor"_L1,
               facts.swarmOk ? Texts::tr("Connected peers: %1").arg(connected) : facts.swarmError),
        signal("routing"_L1, is.routing, "degraded"_L1,
               facts.dhtOk ? Texts::tr("Connected DHT peers: %1").arg(countText(dht, "connected_peers"_L1))
                           : facts.dhtError),
        signal("exchange"_L1, is.exchange, "degraded"_L1,
               facts.bitswapOk ? Texts::tr("Bitswap peers: %1, wantlist: %2")
                                     .arg(countText(bitswap, "peer_count"_L1), countText(bitswap, "wantlist_size"_L1))
                               : facts.bitswapError)};
    const Verdict verdict = anyOk
        ? *std::ranges::find_if(verdicts, [&is](const Verdict& candidate) { return candidate.fits(is); })
        : Verdict {.state = unknown};
    return {{"state"_L1, verdict.state}, {"score_0_100"_L1, verdict.score}, {"signals"_L1, signalList}};
}

} // namespace

QJsonObject buildSnapshot(const NetworkFacts& facts, const QDateTime& timestamp)
{
    const QJsonObject status {{"swarm_peers"_L1, statusOf(facts.swarmOk, facts.swarmError)},
                              {"dht_stats"_L1, statusOf(facts.dhtOk, facts.dhtError)},
                              {"bitswap_stat"_L1, statusOf(facts.bitswapOk, facts.bitswapError)}};
    const QJsonObject dht = dhtSection(facts.dhtData);
    const QJsonObject bitswap = bitswapSection(facts.bitswapStat);
    return {{"source"_L1, "network_snapshot"_L1},
            {"timestamp"_L1, timestamp.toUTC().toString(Qt::ISODate)},
            {"window_seconds"_L1, 0},
            {"endpoint_status"_L1, status},
            {"swarm"_L1, swarmSection(facts.swarmPeers)},
            {"dht"_L1, dht},
            {"bitswap"_L1, bitswap},
            {"health"_L1, healthOf(facts, dht, bitswap)}};
}

SnapshotView viewOfSnapshot(const QJsonObject& snapshot)
{
    const QJsonObject swarm = snapshot.value("swarm"_L1).toObject();
    const QJsonObject dht = snapshot.value("dht"_L1).toObject();
    const QJsonObject bitswap = snapshot.value("bitswap"_L1).toObject();
    const QJsonObject health = snapshot.value("health"_L1).toObject();
    const QString json = QString::fromUtf8(QJsonDocument(snapshot).toJson());
    return {.json = json,
            .jsonLines = json.split(u'\n'),
            .signalLines = {Texts::tr("Connectivity: swarm peers = %1").arg(countText(swarm, "count"_L1)),
                            Texts::tr("Routing: DHT peers = %1, DHT views = %2")
                                .arg(countText(dht, "connected_peers"_L1), countText(dht, "total_dhts"_L1)),
                            Texts::tr("Exchange: bitswap peers = %1, wantlist = %2, health = %3 (%4)")
                                .arg(countText(bitswap, "peer_count"_L1), countText(bitswap, "wantlist_size"_L1),
                                     health.value("state"_L1).toString(),
                                     QString::number(health.value("score_0_100"_L1).toInteger()))}};
}

qsizetype entriesIn(const NetworkFacts& facts)
{
    qsizetype entries = facts.swarmPeers.size() + facts.bitswapStat.value("Peers"_L1).toArray().size()
        + facts.bitswapStat.value("Wantlist"_L1).toArray().size();
    const QJsonArray views = viewsOf(facts.dhtData);
    for (const auto& view : views) {
        const QJsonArray buckets = view.toObject().value("Buckets"_L1).toArray();
        entries += buckets.size();
        for (const auto& bucket : buckets)
            entries += bucket.toObject().value("Peers"_L1).toArray().size();
    }
    return entries;
}

qint64 toInt64(const QJsonValue& value)
{
    if (value.isString())
        return value.toString().toLongLong();
    const QVariant number = value.toVariant();
    if (number.typeId() != QMetaType::Double)
        return value.toInteger();
    constexpr double limit = 9223372036854775808.0; // 2^63, the first that doesn't fit
    const double real = number.toDouble();
    if (real >= limit)
        return std::numeric_limits<qint64>::max();
    return real < -limit ? std::numeric_limits<qint64>::min() : static_cast<qint64>(real);
}
