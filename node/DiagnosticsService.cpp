// SPDX-License-Identifier: MIT
#include "DiagnosticsService.h"

#include "DemoPeers.h"
#include "DemoWire.h"

#include <QDateTime>

#include <algorithm>
#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr int bucketSize = 20;
constexpr int mostBuckets = 16;           // beyond, buckets have more peers than a node's
constexpr int lanShare = 20;              // peers in the WAN for each one in the LAN
constexpr int firstLanPeer = 500'000'000; // far from the others
constexpr int bitswapPeers = 20;
constexpr quint64 usualStorageMax = 10'000'000'000; // bytes
constexpr auto collectingFailed = "encountered errors during gc run";

/// In JSON; empty for a time that is not known.
QByteArray timeBefore(qint64 seconds, bool isKnown = true)
{
    const QDateTime time = QDateTime::currentDateTimeUtc().addSecs(-seconds);
    return isKnown ? '"' + time.toString(Qt::ISODate).toLatin1() + '"' : "\"\"";
}

QByteArray rawCidText(const QByteArray& multihash)
{
    return encodeCid({.version = 1, .codec = Cid::rawCodec, .multihash = multihash}).toLatin1();
}

Cid madeUpCid(int number)
{
    return cidOfBlock("collected " + QByteArray::number(number), Cid::rawCodec);
}

/// Makes the lines of a garbage collection one by one, so that a report of any length takes no room.
class GarbageReport
{
public:
    GarbageReport(const QList<QByteArray>& newRemoved, int newMadeUp, const QByteArray& newErrorLine)
        : removed(newRemoved)
        , madeUp(newMadeUp)
        , errorLine(newErrorLine)
    {
    }
    /// Empty after the last.
    QByteArray nextLine()
    {
        if (at < removed.size())
            return keyLine(removed.at(at++));
        if (const qsizetype number = at - removed.size(); number < madeUp) {
            ++at;
            return keyLine(madeUpCid(static_cast<int>(number)).multihash);
        }
        return std::exchange(errorLine, {});
    }

private:
    static QByteArray keyLine(const QByteArray& multihash)
    {
        return "{\"Key\":{\"/\":\"" + rawCidText(multihash) + "\"}}\n";
    }

    QList<QByteArray> removed;
    qsizetype madeUp;
    QByteArray errorLine;
    qsizetype at = 0;
};

} // namespace

QList<NodeCommand> DiagnosticsService::commands()
{
    const NodeOption human {u"human"_s, NodeOption::Bool};
    return {
        {.path = "/stats/dht", .run = [this](const NodeRequest& request) { return dhtStat(request); }},
        {.path = "/bitswap/stat",
         .options = {human, {u"verbose"_s, NodeOption::Bool}},
         .run = [this](const NodeRequest&) { return bitswapStat(); }},
        {.path = "/repo/stat",
         .options = {human, {u"size-only"_s, NodeOption::Bool}},
         .run = [this](const NodeRequest&) { return repoStat(); }},
        {.path = "/repo/gc",
         .options
         = {{u"stream-errors"_s, NodeOption::Bool}, {u"quiet"_s, NodeOption::Bool}, {u"silent"_s, NodeOption::Bool}},
         .run = [this](const NodeRequest& request) { return collectGarbage(request); }}};
}

/// A line for each name; an unknown one breaks the list off.
NodeAnswer DiagnosticsService::dhtStat(const NodeRequest& request) const
{
    if (repo.options().isOffline)
        return NodeAnswer::error("this command must be run in online mode. Try running 'ipfs daemon' first");
    QStringList names = request.values(u"arg"_s);
    if (names.isEmpty())
        names = QStringList {u"wan"_s, u"lan"_s};
    QByteArray lines;
    for (const QString& name : names) {
        if (!QStringList {u"wan"_s, u"lan"_s, u"wanserver"_s, u"lanserver"_s}.contains(name)) {
            const QByteArray message = jsonText(u"unknown dht type: "_s + name);
            return lines.isEmpty() ? NodeAnswer::error(message.sliced(1, message.size() - 2), 1)
                                   : streamOf(lines, repo.options(), "unknown dht type: " + name.toUtf8());
        }
        lines += routingTable(name);
    }
    return streamOf(lines, repo.options());
}

/// Full buckets, then an empty one and a last one, as near peers are few.
QByteArray DiagnosticsService::routingTable(const QString& name) const
{
    const bool isLan = name.startsWith("lan"_L1);
    const int total = isLan ? repo.options().dhtPeers / lanShare : repo.options().dhtPeers;
    const int count = std::min((total + bucketSize - 1) / bucketSize, mostBuckets);
    QByteArray buckets;
    int first = 0;
    for (int i = 0; i < count && total > 0; ++i) {
        const bool isLast = i == count - 1;
        const int size = isLast ? total - first : std::max(bucketSize, total / count);
        buckets += (i > 0 ? "," : "") + (isLast ? bucket(0, 0) + ',' : QByteArray())
            + bucket(isLan ? firstLanPeer + first : first, size);
        first += size;
    }
    return "{\"Name\":\"" + name.toLatin1() + "\",\"Buckets\":[" + buckets + "]}\n";
}

/// In JSON; those peers are connected to which the swarm has connections at the start.
QByteArray DiagnosticsService::bucket(int first, int count) const
{
    static constexpr std::array agents {"kubo/0.43.0", "kubo/0.42.1", "", "kubo/0.39.0", "go-ipfs/0.12.2"};
    QByteArray peers;
    for (int i = first; i < first + count; ++i) {
        peers += (peers.isEmpty() ? "{\"ID\":\"" : ",{\"ID\":\"") + demoPeerId(i).toLatin1()
            + "\",\"Connected\":" + (i < repo.options().swarmPeers - 1 ? "true" : "false") + ",\"AgentVersion\":\""
            + agents.at(static_cast<size_t>(i) % agents.size())
            + "\",\"LastUsefulAt\":" + timeBefore(20 + i * 53LL % 5000, i % 6 != 5)
            + ",\"LastQueriedAt\":" + timeBefore(5 + i * 31LL % 3000, i % 3 != 0) + '}';
    }
    return "{\"LastRefresh\":" + timeBefore(first * 7LL % 900, count > 0)
        + ",\"Peers\":" + (peers.isEmpty() ? "null" : '[' + peers + ']') + '}';
}

NodeAnswer DiagnosticsService::bitswapStat() const
{
    if (repo.options().isOffline)
        return NodeAnswer::error(
            "unable to run offline: this action must be run in online mode, try running 'ipfs daemon' first", 1);
    QStringList peers;
    for (int i = 0; i < std::min(bitswapPeers, repo.options().swarmPeers - 1); ++i)
        peers.append(demoPeerId(i));
    QByteArray wanted;
    for (const int number : {-1, -2})
        wanted += (wanted.isEmpty() ? "{\"/\":\"" : ",{\"/\":\"") + encodeCid(madeUpCid(number)).toLatin1() + "\"}";
    return NodeAnswer::json("{\"Wantlist\":[" + wanted + "],\"Peers\":" + jsonList(peers)
                            + ",\"BlocksReceived\":1284,\"DataReceived\":268435456,\"DupBlksReceived\":17,"
                              "\"DupDataReceived\":3145728,\"MessagesReceived\":9310,\"BlocksSent\":402,"
                              "\"DataSent\":73400320}\n");
}

NodeAnswer DiagnosticsService::repoStat() const
{
    const quint64 limit = repo.options().hasStorageMax ? usualStorageMax : std::numeric_limits<quint64>::max();
    return NodeAnswer::json("{\"RepoSize\":" + QByteArray::number(repo.store().totalSize())
                            + ",\"StorageMax\":" + QByteArray::number(limit)
                            + ",\"NumObjects\":" + QByteArray::number(repo.store().multihashes().size())
                            + ",\"RepoPath\":\"/home/u/.ipfs\",\"Version\":\"fs-repo@18\"}\n");
}

/// Errors have lines only if asked for, and end the report in any case.
NodeAnswer DiagnosticsService::collectGarbage(const NodeRequest& request)
{
    const DemoOptions& options = repo.options();
    const DemoRepo::Garbage garbage = repo.collectGarbage();
    QByteArray error = garbage.error;
    if (error.isEmpty() && options.failsCollecting)
        error = "could not remove " + encodeCid(madeUpCid(-1)).toLatin1() + ": permission denied";
    const bool hasErrorLine = !error.isEmpty() && isSet(request, u"stream-errors"_s);
    if (!error.isEmpty() && !hasErrorLine && garbage.removed.isEmpty() && options.collectedCids == 0)
        return NodeAnswer::error(collectingFailed);

    NodeAnswer answer {.headers = {{"Content-Type", "application/json"}, {"X-Chunked-Output", "1"}}};
    const QByteArray errorLine = hasErrorLine ? "{\"Key\":null,\"Error\":\"" + error + "\"}\n" : QByteArray();
    answer.source = [report = GarbageReport(garbage.removed, options.collectedCids, errorLine),
                     size = options.chunkBytes, pause = options.chunkPause]() mutable -> std::optional<NodeChunk> {
        QByteArray lines = report.nextLine();
        for (QByteArray line = lines; !line.isEmpty() && lines.size() < size; lines += line)
            line = report.nextLine();
        return lines.isEmpty() ? std::nullopt : std::optional(NodeChunk {.bytes = lines, .pause = pause});
    };
    if (!error.isEmpty())
        answer.trailers = {{"X-Stream-Error", collectingFailed}};
    return answer;
}
