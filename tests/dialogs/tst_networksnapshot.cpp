// SPDX-License-Identifier: MIT
#include "NetworkSnapshot.h"
#include "TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace {

const QDateTime noon(QDate(2026, 7, 24), QTime(14, 0, 1), QTimeZone(7200));
constexpr auto kinds = "good bad failed"_L1;

QJsonValue json(const QByteArray& text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

/// A call that brought what is good, nothing to be glad of, or a failure.
NetworkFacts factsOf(const QString& swarm, const QString& dht, const QString& bitswap)
{
    NetworkFacts facts {.swarmDone = true, .dhtDone = true, .bitswapDone = true};
    facts.swarmOk = swarm != "failed"_L1;
    facts.dhtOk = dht != "failed"_L1;
    facts.bitswapOk = bitswap != "failed"_L1;
    facts.swarmError = facts.swarmOk ? QString() : u"no swarm"_s;
    facts.dhtError = facts.dhtOk ? QString() : u"no DHT"_s;
    facts.bitswapError = facts.bitswapOk ? QString() : u"no bitswap"_s;
    if (swarm == "good"_L1)
        facts.swarmPeers = QStringList {u"/a"_s, u"/b"_s};
    if (dht == "good"_L1)
        facts.dhtData = json(R"({"Buckets":[{"Peers":[{"Connected":true},{}]}]})");
    if (dht == "bad"_L1)
        facts.dhtData = json(R"({"Buckets":[{"Peers":[{}]}]})");
    if (bitswap == "good"_L1)
        facts.bitswapStat = json(R"({"Peers":["a","b","c"]})").toObject();
    return facts;
}

QString textOf(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QJsonObject section(const NetworkFacts& facts, QLatin1StringView key)
{
    return buildSnapshot(facts, noon).value(key).toObject();
}

QString verdictOf(const NetworkFacts& facts)
{
    const QJsonObject health = section(facts, "health"_L1);
    return u"%1 %2"_s.arg(health.value("state"_L1).toString(),
                          QString::number(health.value("score_0_100"_L1).toInteger()));
}

QStringList signalsOf(const NetworkFacts& facts)
{
    QStringList lines;
    const QJsonArray signalList = section(facts, "health"_L1).value("signals"_L1).toArray();
    for (const auto& value : signalList) {
        QStringList words;
        for (const auto key : {"key"_L1, "level"_L1, "message"_L1})
            words.append(value.toObject().value(key).toString());
        lines.append(words.join(u' '));
    }
    return lines;
}

} // namespace

class tst_NetworkSnapshot : public QObject
{
    Q_OBJECT

private slots:
    /// Each row has all outcomes of two calls for one of the third.
    void verdicts_data()
    {
        // states: for bitswap good, bad, failed
        addColumns<QString, QString, QString>("swarm", "dht", "states");
        const auto row = [](const char* swarm, const char* dht, const char* states) {
            QTest::addRow("%s %s", swarm, dht)
                << QString::fromLatin1(swarm) << QString::fromLatin1(dht) << QString::fromLatin1(states);
        };
        row("good", "good", "good 85, degraded 60, degraded 60");
        row("good", "bad", "good 85, poor 30, poor 30");
        row("good", "failed", "good 85, poor 30, poor 30");
        for (const auto* swarm : {"bad", "failed"}) {
            row(swarm, "good", "poor 30, poor 30, poor 30");
            row(swarm, "bad", "poor 30, poor 30, poor 30");
        }
        row("bad", "failed", "poor 30, poor 30, poor 30");
        row("failed", "failed", "poor 30, poor 30, unknown 0");
    }
    void verdicts()
    {
        QFETCH(const QString, swarm);
        QFETCH(const QString, dht);
        QStringList states;
        const QStringList outcomes = QString(kinds).split(u' ');
        for (const QString& bitswap : outcomes)
            states.append(verdictOf(factsOf(swarm, dht, bitswap)));
        QTEST(states.join(u", "_s), "states");
    }

    void levels_data()
    {
        addColumns<QStringList, QStringList>("outcomes", "expected");
        const auto row = [](const char* outcomes, const QStringList& expected) {
            QTest::newRow(outcomes) << QString::fromLatin1(outcomes).split(u' ') << expected;
        };
        const QString swarm = u"connectivity good Connected peers: 2"_s;
        row("good good good",
            {swarm, u"routing good Connected DHT peers: 1"_s, u"exchange good Bitswap peers: 3, wantlist: 0"_s});
        row("bad bad bad",
            {u"connectivity poor Connected peers: 0"_s, u"routing degraded Connected DHT peers: 0"_s,
             u"exchange degraded Bitswap peers: 0, wantlist: 0"_s});
        row("failed failed good",
            {u"connectivity poor no swarm"_s, u"routing degraded no DHT"_s,
             u"exchange good Bitswap peers: 3, wantlist: 0"_s});
        row("failed failed failed",
            {u"connectivity unknown no swarm"_s, u"routing unknown no DHT"_s, u"exchange unknown no bitswap"_s});
    }
    void levels()
    {
        QFETCH(const QStringList, outcomes);
        QTEST(signalsOf(factsOf(outcomes[0], outcomes[1], outcomes[2])), "expected");
    }

    void theWantlistLimitIsForTheStateAlone()
    {
        NetworkFacts facts = factsOf(u"good"_s, u"bad"_s, u"good"_s);
        for (const int size : {100, 101}) {
            QJsonArray wantlist;
            for (int i = 0; i < size; ++i)
                wantlist.append(i);
            facts.bitswapStat.insert("Wantlist"_L1, wantlist);
            QCOMPARE(verdictOf(facts), size > 100 ? u"degraded 60"_s : u"good 85"_s);
            QCOMPARE(signalsOf(facts).constLast(), u"exchange good Bitswap peers: 3, wantlist: %1"_s.arg(size));
        }
    }

    void aSnapshotOfNothing()
    {
        QCOMPARE(
            textOf(buildSnapshot({}, noon)),
            uR"({"bitswap":{"counters":{"blocks_received":0,"blocks_sent":0,"data_received_bytes":0,"data_sent_bytes":0,)"
            uR"("duplicate_blocks_received":0,"duplicate_data_received_bytes":0,"messages_received":0},)"
            uR"("derived":{"dup_data_ratio":0,"traffic_total_bytes":0},"peers":{"ids":[]},)"
            uR"("summary":{"peer_count":0,"wantlist_size":0},"wantlist":{"cids":[]}},)"
            uR"("dht":{"dhts":[],"summary":{"connected_peers":0,"total_buckets":0,"total_dhts":0,"total_peers":0}},)"
            uR"("endpoint_status":{"bitswap_stat":{"error":"","ok":false},"dht_stats":{"error":"","ok":false},)"
            uR"("swarm_peers":{"error":"","ok":false}},)"
            uR"("health":{"score_0_100":0,"signals":[{"key":"connectivity","level":"unknown","message":""},)"
            uR"({"key":"routing","level":"unknown","message":""},{"key":"exchange","level":"unknown","message":""}],)"
            uR"("state":"unknown"},"source":"network_snapshot",)"
            uR"("swarm":{"peers":[],"summary":{"count":0,"inbound":0,"latency_ms":{"max":null,"min":null,"p50":null,)"
            uR"("p95":null},"outbound":0}},"timestamp":"2026-07-24T12:00:01Z","window_seconds":0})"_s);
    }

    void swarmPeers()
    {
        const QString entry
            = uR"({"addr":"%1","direction":"%2","latency_ms":null,"muxer":"","peer_id":"","streams":[]})"_s;
        const QStringList entries {entry.arg(u"InBound outbound"_s, u"inbound"_s),
                                   entry.arg(u"/outBOUND"_s, u"outbound"_s), entry.arg(u"/ip4/%1"_s, u"unknown"_s)};
        QCOMPARE(
            textOf(section({.swarmPeers = {u"InBound outbound"_s, u"/outBOUND"_s, u"/ip4/%1"_s}}, "swarm"_L1)),
            uR"({"peers":[%1],"summary":{"count":3,"inbound":1,"latency_ms":{"max":null,"min":null,"p50":null,"p95":null},"outbound":1}})"_s
                .arg(entries.join(u',')));
    }

    void dhtViews_data()
    {
        // summary: views, buckets, peers, connected peers
        const auto row = addColumns<QByteArray, QString, QString>("data", "summary", "first");
        const QString none
            = uR"({"bucket_count":0,"buckets":[],"connected_peer_count":0,"name":"%1","peer_count":0})"_s;
        row("an object", QByteArray(R"({"Name":42,"Buckets":7})"), u"1 0 0 0"_s, none.arg(u"wan"_s));
        row("no views", QByteArray("[7,null,[]]"), u"0 0 0 0"_s, u"{}"_s);
        row("an empty name", QByteArray(R"([7,{"Name":"","Buckets":null}])"), u"1 0 0 0"_s, none.arg(QString()));
        row("peers",
            QByteArray(
                R"([{"Name":"lan","Buckets":[7,{"LastRefresh":"r","Peers":[{"ID":"p","Connected":true,"AgentVersion":"v","LastUsefulAt":"u","LastQueriedAt":"q"},"x"]}]},)"
                R"({"Buckets":[{"Peers":[{"Connected":1},{"Connected":true}]}]}])"),
            u"2 3 4 2"_s,
            uR"({"bucket_count":2,"buckets":[{"connected_peer_count":0,"index":0,"last_refresh":"","peer_count":0,"peers":[]},)"
            uR"({"connected_peer_count":1,"index":1,"last_refresh":"r","peer_count":2,"peers":[)"
            uR"({"agent_version":"v","connected":true,"last_queried_at":"q","last_useful_at":"u","peer_id":"p"},)"
            uR"({"agent_version":"","connected":false,"last_queried_at":"","last_useful_at":"","peer_id":""}]}],)"
            uR"("connected_peer_count":1,"name":"lan","peer_count":2})"_s);
    }
    void dhtViews()
    {
        QFETCH(const QByteArray, data);
        const QJsonObject dht = section({.dhtData = json(data)}, "dht"_L1);
        QStringList sums;
        for (const auto key : {"total_dhts"_L1, "total_buckets"_L1, "total_peers"_L1, "connected_peers"_L1})
            sums.append(QString::number(dht.value("summary"_L1).toObject().value(key).toInteger()));
        QTEST(sums.join(u' '), "summary");
        QTEST(textOf(dht.value("dhts"_L1).toArray().at(0).toObject()), "first");
    }

    void bitswapCounters()
    {
        const QByteArray stat
            = R"({"Peers":["a",7],"Wantlist":[{"/":"Qa"},"Qb",{"x":1}],"BlocksReceived":"123","BlocksSent":"12x","DataReceived":4,)"
              R"("DataSent":1.9,"DupBlksReceived":true,"DupDataReceived":1,"MessagesReceived":9007199254740993})";
        QCOMPARE(
            textOf(section({.bitswapStat = json(stat).toObject()}, "bitswap"_L1)),
            uR"({"counters":{"blocks_received":123,"blocks_sent":0,"data_received_bytes":4,"data_sent_bytes":1,)"
            uR"("duplicate_blocks_received":0,"duplicate_data_received_bytes":1,"messages_received":9007199254740993},)"
            uR"("derived":{"dup_data_ratio":0.25,"traffic_total_bytes":5},"peers":{"ids":["a",7]},)"
            uR"("summary":{"peer_count":2,"wantlist_size":3},"wantlist":{"cids":["Qa",""]}})"_s);
    }

    void numbersOutOfRange_data()
    {
        const auto row = addColumns<QByteArray, qint64, double>("stat", "total", "ratio");
        const qint64 most = std::numeric_limits<qint64>::max();
        row("nothing received", QByteArray(R"({"DataReceived":0,"DupDataReceived":7})"), qint64(0), 0.0);
        row("less than nothing", QByteArray(R"({"DataReceived":-5,"DupDataReceived":7})"), qint64(-5), 0.0);
        row("too much", QByteArray(R"({"DataReceived":1e30,"DataSent":"9223372036854775807"})"), most, 0.0);
        row("2^63", QByteArray(R"({"DataSent":9223372036854775808})"), most, 0.0);
        row("too little", QByteArray(R"({"DataReceived":-1e30,"DataSent":-1})"), std::numeric_limits<qint64>::min(),
            0.0);
        row("fraction below 1", QByteArray(R"({"DataReceived":0.9,"DataSent":-1.9})"), qint64(-1), 0.0);
        row("text out of range", QByteArray(R"({"DataReceived":"9223372036854775808"})"), qint64(0), 0.0);
        row("a third", QByteArray(R"({"DataReceived":3,"DupDataReceived":1})"), qint64(3), 1.0 / 3.0);
    }
    void numbersOutOfRange()
    {
        QFETCH(const QByteArray, stat);
        const QJsonObject derived
            = section({.bitswapStat = json(stat).toObject()}, "bitswap"_L1).value("derived"_L1).toObject();
        QTEST(derived.value("traffic_total_bytes"_L1).toInteger(), "total");
        QTEST(derived.value("dup_data_ratio"_L1).toDouble(), "ratio");
    }

    void whatTheWindowShows()
    {
        const NetworkFacts facts = factsOf(u"good"_s, u"good"_s, u"good"_s);
        const SnapshotView shown = viewOfSnapshot(buildSnapshot(facts, noon));
        QCOMPARE(shown.signalLines,
                 QStringList({u"Connectivity: swarm peers = 2"_s, u"Routing: DHT peers = 1, DHT views = 1"_s,
                              u"Exchange: bitswap peers = 3, wantlist = 0, health = good (85)"_s}));
        QCOMPARE(QJsonDocument::fromJson(shown.json.toUtf8()).object(), buildSnapshot(facts, noon));
        QVERIFY(shown.json.startsWith(u"{\n    \"bitswap\": {\n"_s));
        QCOMPARE(entriesIn(facts), 2 + 1 + 2 + 3);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_NetworkSnapshot)

#include "tst_networksnapshot.moc"
