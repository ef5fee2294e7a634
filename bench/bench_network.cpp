// SPDX-License-Identifier: MIT
// How the network window takes the three answers of a node with 10,000 connections and a full DHT.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "LineView.h"
#include "NetworkStatsDialog.h"

#include <QJsonArray>
#include <QJsonObject>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

constexpr int connections = 10'000;
constexpr int buckets = 256;
constexpr int peersPerBucket = 20;
constexpr double longestSeconds = 60;

QStringList addresses()
{
    QStringList all;
    all.reserve(connections);
    for (int i = 0; i < connections; ++i)
        all.append(u"/ip4/203.0.113.7/udp/%1/quic-v1"_s.arg(i));
    return all;
}

QJsonArray routingTables()
{
    const QJsonObject peer {{"ID"_L1, u"12D3KooWJb7153NaSSp5RJEwtMcKVyPaxGHTTXeU8GpUK2CeJ98B"_s},
                            {"Connected"_L1, true},
                            {"AgentVersion"_L1, u"kubo/0.43.0"_s},
                            {"LastUsefulAt"_L1, u"2026-07-24T09:59:00Z"_s},
                            {"LastQueriedAt"_L1, QString()}};
    QJsonArray peers;
    for (int i = 0; i < peersPerBucket; ++i)
        peers.append(peer);
    QJsonArray all;
    for (int i = 0; i < buckets; ++i)
        all.append(QJsonObject {{"LastRefresh"_L1, u"2026-07-24T10:00:00Z"_s}, {"Peers"_L1, peers}});
    return {QJsonObject {{"Name"_L1, u"wan"_s}, {"Buckets"_L1, all}},
            QJsonObject {{"Name"_L1, u"lan"_s}, {"Buckets"_L1, all}}};
}

/// From an answer to the first screen of its snapshot, and to the last line; false if that takes too long.
bool measure(Bench& bench, const NetworkStatsDialog& dialog, const QString& answer, const std::function<void()>& arrive)
{
    const auto* view = dialog.findChild<LineView*>();
    const auto letters = [view] { return view->document()->characterCount(); };
    const int before = letters();
    bench.start();
    arrive();
    while (letters() == before && bench.seconds() < longestSeconds)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 1);
    const double shownMs = bench.seconds() * 1000;
    while (view->isFilling() && bench.seconds() < longestSeconds)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 1);
    bench.result = {{u"answer"_s, answer},
                    {u"characters"_s, letters()},
                    {u"shownMs"_s, shownMs},
                    {u"completeMs"_s, bench.seconds() * 1000},
                    {u"stallMs"_s, bench.takeStallMs()},
                    {u"peakRssMiB"_s, peakRssMiB()}};
    bench.print();
    return !view->isFilling() && letters() != before;
}

} // namespace

int main(int argc, char* argv[])
{
    Bench bench(argc, argv);
    IpfsClient client;
    client.setEndpoint(u"127.0.0.1"_s, 1); // what is asked fails at once, and the answers are made here
    NetworkStatsDialog dialog(&client);
    dialog.show();
    bool good = measure(bench, dialog, u"none"_s, [] {});
    good = measure(bench, dialog, u"swarm"_s, [&] { emit client.swarmPeersReceived(addresses()); }) && good;
    good = measure(bench, dialog, u"dht"_s, [&] { emit client.dhtStatsReceived(routingTables()); }) && good;
    good = measure(bench, dialog, u"bitswap"_s,
                   [&] {
                       emit client.bitswapStatReceived({{"Peers"_L1, QJsonArray {1}}});
                   })
        && good;
    return good ? 0 : 1;
}
