// SPDX-License-Identifier: MIT
#include "DemoCalls.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QJsonArray bucketsOf(const QByteArray& line)
{
    return QJsonDocument::fromJson(line).object()["Buckets"_L1].toArray();
}

/// Sorted, since blocks come in no order.
QList<QByteArray> linesOf(const QByteArray& body)
{
    QList<QByteArray> lines = body.split('\n');
    std::ranges::sort(lines);
    return lines;
}

qint64 blockCount(OpenNode& node)
{
    return QJsonDocument::fromJson(bodyOf(node.ask("/repo/stat"))).object()["NumObjects"_L1].toInteger();
}

} // namespace

/// Statistics and garbage collection as a node answers them.
class tst_DemoDiagnostics : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    void routingTables_data()
    {
        // lastBucket: number of its peers
        const auto row = addColumns<int, int, int>("peers", "buckets", "lastBucket");
        row("none", 0, 0, 0);
        row("one", 1, 2, 1);
        row("usual", 300, 16, 20);
        row("more than buckets hold", 5001, 17, 321);
    }
    void routingTables()
    {
        QFETCH(const int, peers);
        OpenNode node({.pins = 0, .dhtPeers = peers});
        const QByteArray body = bodyOf(node.ask("/stats/dht?arg=wan&arg=lanserver"));
        const QList<QByteArray> lines = body.split('\n');
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.at(0).count("\"ID\""), peers);
        QCOMPARE(lines.at(1).count("\"ID\""), peers / 20);
        const QJsonArray buckets = bucketsOf(lines.at(0));
        QTEST(static_cast<int>(buckets.size()), "buckets");
        QTEST(static_cast<int>(buckets.last()["Peers"_L1].toArray().size()), "lastBucket");
        QCOMPARE(lines.at(0).count("\"LastRefresh\":\"\",\"Peers\":null"), peers == 0 ? 0 : 1);
    }

    void statistics()
    {
        OpenNode node({.pins = 0, .swarmPeers = 3, .hasStorageMax = false});
        const QByteArray bitswap = bodyOf(node.ask("/bitswap/stat"));
        QVERIFY(bitswap.contains(expanded("],`Peers`:[`PEER0`,`PEER1`],`BlocksReceived`:")));
        QVERIFY(QJsonDocument::fromJson(bitswap).isObject());
        QVERIFY(bodyOf(node.ask("/repo/stat")).contains("\"StorageMax\":18446744073709551615,\"NumObjects\":"));
    }

    void garbage()
    {
        OpenNode node({.pins = 10, .looseBlocks = 3});
        const qint64 before = blockCount(node);
        const qint64 pinned = bodyOf(node.ask("/pin/ls?stream=true")).count('\n');
        const QList<QByteArray> unpinned = linesOf(
            bodyOf(node.ask("/refs/local")).replace("{\"Ref\":", "{\"Key\":{\"/\":").replace(",\"Err\":\"\"}", "}}"));
        const QList<QByteArray> removed = linesOf(bodyOf(node.ask("/repo/gc?stream-errors=true")));
        QVERIFY(removed.size() > 3);
        QVERIFY(std::ranges::includes(unpinned, removed));
        const qint64 after = blockCount(node);
        QCOMPARE(after, before - removed.size() + 1);
        QCOMPARE(bodyOf(node.ask("/pin/ls?stream=true")).count('\n'), pinned);
        const NodeAnswer nothing = node.ask("/repo/gc?stream-errors=true");
        QCOMPARE(bodyOf(nothing), QByteArray());
        QCOMPARE(trailerOf(nothing), QByteArray());

        node.ask("/pin/rm?arg=bafkreifjjcie6lypi6ny7amxnfftagclbuxndqonfipmb64f2km2devei4");
        QCOMPARE(bodyOf(node.ask("/repo/gc")), QByteArray()); // held by the folders above it
        node.forget(node.allPins().constFirst().cid);
        const NodeAnswer broken = node.ask("/repo/gc?stream-errors=true");
        QVERIFY(bodyOf(broken).startsWith("{\"Key\":null,\"Error\":\"could not retrieve links for bafy"));
        QCOMPARE(trailerOf(broken), QByteArray("encountered errors during gc run"));
        QCOMPARE(blockCount(node), after - 1);
    }

    /// Made-up CIDs come in chunks; the error is last.
    void longReport()
    {
        OpenNode node({.pins = 0, .chunkBytes = 1000, .collectedCids = 100, .failsCollecting = true});
        node.ask("/repo/gc");
        const NodeAnswer answer = node.ask("/repo/gc?stream-errors=true");
        QByteArray body;
        int chunks = 0;
        for (; const auto chunk = answer.source(); ++chunks) {
            QVERIFY(chunk->bytes.size() < 1200 && chunk->bytes.endsWith("}\n"));
            body += chunk->bytes;
        }
        QCOMPARE(chunks, 8);
        QCOMPARE(body.count("{\"Key\":{\"/\":\"bafkrei"), 100);
        QVERIFY(body.endsWith(": permission denied\"}\n"));
        QCOMPARE(trailerOf(answer), QByteArray("encountered errors during gc run"));
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_DemoDiagnostics)
#include "tst_demodiagnostics.moc"
