// SPDX-License-Identifier: MIT
#include "DemoCalls.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <numeric>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray identify = ",`Identify`:{`ID`:``,`PublicKey`:``,`Addresses`:null,`AgentVersion`:``,`Protocols`:null}}";

void row(const char* name, const QByteArray& calls, const QByteArray& body, int status = 200, bool offline = false)
{
    QTest::newRow(name) << calls << status << body << offline;
}

void failure(const char* name, const QByteArray& calls, const QByteArray& message, bool offline = false)
{
    row(name, calls, failureText(message), 500, offline);
}

QByteArray connection(int number, const QByteArray& peer, const QByteArray& asked = {})
{
    return "{`Addr`:`" + demoAddress(number).toLatin1() + "`,`Peer`:`" + peer + '`' + asked + identify;
}

void nameRows()
{
    const QByteArray publish = "/name/publish?arg=/ipfs/HELLO&key=";
    row("published by name", publish + "self /name/resolve?arg=/ipns/KSELF", "{`Path`:`/ipfs/HELLO`}\n");
    row("published by ID, resolved by peer", publish + "KSELF /name/resolve?arg=PSELF", "{`Path`:`/ipfs/HELLO`}\n");
    row("answer", "/name/publish?arg=HELLO", "{`Name`:`KSELF`,`Value`:`/ipfs/HELLO`}\n");
    row("name of a name",
        publish
            + "self /name/publish?arg=/ipns/KSELF&key=notes "
              "/name/resolve?arg=/ipns/k51qzi5uqu5dkgc71rv6nsh9mp5s8m5xsblxqkjqp9r58q8s0afv54hs423oy1/a",
        "{`Path`:`/ipfs/HELLO/a`}\n");
    failure("a name of itself", publish + "self /name/publish?arg=/ipns/KSELF /name/resolve?arg=KSELF",
            "could not resolve name");
    failure("name of nothing", "/name/publish?arg=/ipns/KSELF", "could not resolve name");
    row("file in a folder", "/name/publish?arg=/ipfs/QMHELLO/hello.txt",
        "{`Name`:`KSELF`,`Value`:`/ipfs/QMHELLO/hello.txt`}\n");
    failure("no such file", "/name/publish?arg=/ipfs/QMHELLO/b", "no link named \\`b\\` under QMHELLO");
    failure("block that is missing", "/name/publish?arg=bafybeigu66tnnkzn65sqrifvkie7nzul6yfbjhkbzgb2rumg3kuwkthaaa",
            "block was not found locally (offline): ipld: could not find "
            "bafybeigu66tnnkzn65sqrifvkie7nzul6yfbjhkbzgb2rumg3kuwkthaaa");
    for (const QByteArray path : {"/", "/x/HELLO", "/ipfs/"})
        failure(path.constData(), "/name/publish?arg=" + path,
                "invalid path \\`" + path + "\\`: path does not have enough components");
    failure("unknown key", publish + "other", "no key by the given name was found");
    failure("name of a key", publish + "self /name/resolve?arg=self",
            "DNSLink lookup for \\`self\\` failed: lookup _dnslink.self: no such host");
    failure("nothing published", "/name/resolve?arg=/ipns/KSELF", "could not resolve name");
    failure("publishing offline", publish + "self",
            "can't publish while offline: pass BACKTICK--allow-offlineBACKTICK to override or start the node with "
            "network access",
            true);
    row("forced offline", publish + "self&allow-offline=true", "{`Name`:`KSELF`,`Value`:`/ipfs/HELLO`}\n", 200, true);
}

void pinListRows()
{
    row("one document", "/pin/ls?arg=NOTES&names=true", "{`Keys`:{`NOTES`:{`Type`:`recursive`,`Name`:`notes`}}}\n");
    row("a stream", "/pin/ls?arg=HELLO&arg=/ipfs/NOTES&stream=true",
        "{`Cid`:`HELLO`,`Type`:`direct`}\n{`Cid`:`NOTES`,`Type`:`recursive`}\n");
    row("indirect", "/pin/ls?arg=DOCS", "{`Keys`:{`DOCS`:{`Type`:`indirect through NOTES`}}}\n");
    failure("of another type", "/pin/ls?type=direct&arg=NOTES", "path 'NOTES' is not pinned");
    failure("not pinned", "/pin/ls?arg=NOTES&arg=LOOSE", "path 'LOOSE' is not pinned");
    failure("no CID", "/pin/ls?arg=%22x%22", "invalid path \\`\\`x\\`\\`: path does not have enough components");
}

void swarmRows()
{
    const QByteArray a0 = demoAddress(0).toLatin1();
    const QByteArray offlineText = "this action must be run in online mode, try running 'ipfs daemon' first";
    row("peers", "/swarm/peers",
        "{`Peers`:[" + connection(0, "PEER0") + ',' + connection(1, "PEER0") + ',' + connection(2, "PEER1") + "]}\n");
    row("details", "/swarm/disconnect?arg=/p2p/PEER0 /swarm/peers?direction=true&latency=true",
        "{`Peers`:[" + connection(2, "PEER1", ",`Latency`:`82ms`,`Direction`:2") + "]}\n");
    row("one of two connections", "/swarm/disconnect?arg=" + a0 + "/p2p/PEER0 /swarm/peers",
        "{`Peers`:[" + connection(1, "PEER0") + ',' + connection(2, "PEER1") + "]}\n");
    row("no peers", "/swarm/disconnect?arg=/p2p/PEER0&arg=/p2p/PEER1 /swarm/peers", "{`Peers`:null}\n");
    row("not closed", "/swarm/disconnect?arg=/p2p/PEER0&arg=" + a0 + "/p2p/PEER1&arg=/p2p/PEER2",
        "{`Strings`:[`disconnect PEER0 success`,`disconnect PEER1 failure: conn not found`,"
        "`disconnect PEER2 failure: not connected`]}\n");
    failure("one address without ID closes none", "/swarm/disconnect?arg=/p2p/PEER0&arg=" + a0,
            "found no ipfs peers at " + a0);
    failure("relayed address without ID", "/swarm/connect?arg=/ip4/1.2.3.4/tcp/1/p2p/PEER0/p2p-circuit",
            "found no ipfs peers at /ip4/1.2.3.4/tcp/1/p2p/PEER0/p2p-circuit");
    row("connected", "/swarm/connect?arg=/ip4/1.2.3.4/tcp/1/p2p/PEER0/p2p-circuit/p2p/PEER2",
        "{`Strings`:[`connect PEER2 success`]}\n");
    row("listed",
        "/swarm/connect?arg=/p2p/PEER3 /swarm/disconnect?arg=/p2p/PEER0 /swarm/disconnect?arg=/p2p/PEER1 /swarm/peers",
        "{`Peers`:[" + connection(6, "PEER3") + "]}\n");
    failure("no dial", "/swarm/connect?arg=/ip4/192.0.2.1/tcp/1/p2p/PEER2",
            "connect PEER2 failure: failed to dial PEER2: all dials failed * [/ip4/192.0.2.1/tcp/1] dial backoff: "
            "i/o timeout");
    failure("no address", "/swarm/connect?arg=/p2p/PEER2", "connect PEER2 failure: failed to find any peer in table");
    for (const QByteArray path : {"/swarm/peers", "/swarm/addrs", "/swarm/addrs/listen"})
        failure(path.constData(), path, offlineText, true);
    failure("connecting offline", "/swarm/connect?arg=/p2p/PEER0", "connect PEER0 failure: " + offlineText, true);
    row("closing offline", "/swarm/disconnect?arg=/p2p/PEER0",
        "{`Strings`:[`disconnect PEER0 failure: " + offlineText + "`]}\n", 200, true);
}

void bootstrapRows()
{
    const QByteArray add = "/bootstrap/rm/all /bootstrap/add?arg=/dnsaddr/a/p2p/PEER0&arg=/dnsaddr/b/p2p/PEER0 ";
    row("fresh list", "/bootstrap/list", "{`Peers`:[`auto`]}\n");
    row("emptied", "/bootstrap/rm/all", "{`Peers`:[`auto`]}\n");
    row("empty", "/bootstrap/rm/all /bootstrap/list", "{`Peers`:null}\n");
    row("to the front", add + "/bootstrap/add?arg=/dnsaddr/b/p2p/PEER0&arg=default /bootstrap/list",
        "{`Peers`:[`/dnsaddr/b/p2p/PEER0`,`auto`,`/dnsaddr/a/p2p/PEER0`]}\n");
    row("removed", add + "/bootstrap/rm?arg=/dnsaddr/a/p2p/PEER0&arg=/dnsaddr/a/p2p/PEER1",
        "{`Peers`:[`/dnsaddr/a/p2p/PEER0`]}\n");
    row("none matched", add + "/bootstrap/rm?arg=/dnsaddr/a/p2p/PEER1", "{`Peers`:[]}\n");
    failure("with auto in the list", "/bootstrap/rm?arg=/dnsaddr/a/p2p/PEER0",
            "cannot remove individual bootstrap peers when using 'auto' placeholder: remove 'auto' first by removing "
            "all");
    failure("no transport", "/bootstrap/add?arg=/p2p/PEER0", "bootstrap address without a transport: /p2p/PEER0");
    for (const QByteArray text : {"x", "/ip4/1.2.3.4/tcp/1", "/ip4/1.2.3.4/p2p/12D3KooWx"})
        failure(text.constData(), "/bootstrap/add?arg=/dnsaddr/a/p2p/PEER0&arg=" + text,
                "invalid bootstrap address: " + text);
}

void statisticsRows()
{
    row("unknown routing table", "/stats/dht?arg=x%22", failureText("unknown dht type: x\\`", 1), 400);
    row("unknown routing table after another", "/stats/dht?arg=lan&arg=x",
        "{`Name`:`lan`,`Buckets`:[]}\nunknown dht type: x");
    failure("routing tables offline", "/stats/dht",
            "this command must be run in online mode. Try running 'ipfs daemon' first", true);
    row("bitswap offline", "/bitswap/stat",
        failureText("unable to run offline: this action must be run in online mode, try running 'ipfs daemon' first",
                    1),
        400, true);
}

} // namespace

/// Names, pins, connections, bootstrap peers and refused statistics as a node answers them.
class tst_DemoNetwork : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    void calls_data()
    {
        addCallColumns();
        QTest::addColumn<bool>("offline");
        nameRows();
        pinListRows();
        swarmRows();
        bootstrapRows();
        statisticsRows();
    }
    void calls()
    {
        QFETCH(const bool, offline);
        OpenNode node({.pins = 10, .isOffline = offline, .swarmPeers = 3, .dhtPeers = 0});
        runCalls(node);
    }

    /// What is made up by count has each form that a client meets.
    void madeUpPeers()
    {
        OpenNode node({.pins = 0, .publishTime = 70ms, .swarmPeers = 60});
        const QByteArray peers = bodyOf(node.ask("/swarm/peers"));
        QCOMPARE(peers.count("\"Addr\""), 60);
        for (const char* form : {"/ip6/", "/quic-v1\"", "/tcp/", "/p2p-circuit\""})
            QVERIFY2(peers.contains(form), form);
        const QJsonObject known
            = QJsonDocument::fromJson(bodyOf(node.ask("/swarm/addrs"))).object()["Addrs"_L1].toObject();
        QCOMPARE(std::accumulate(known.begin(), known.end(), qsizetype {0},
                                 [](qsizetype sum, const QJsonValue& list) { return sum + list.toArray().size(); }),
                 240);
        QCOMPARE(bodyOf(node.ask("/bootstrap/list?expand-auto=true")).count("/p2p/12D3KooW"), 6);
        QCOMPARE(node.ask("/name/publish?arg=x").latency, 0ms);
        QCOMPARE(node.ask("/name/resolve").latency, 70ms);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_DemoNetwork)
#include "tst_demonetwork.moc"
