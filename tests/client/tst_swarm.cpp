// SPDX-License-Identifier: MIT
#include "ClientLog.h"

#include <functional>

using namespace Qt::StringLiterals;

namespace {

const QString address = u"/ip4/203.0.113.7/udp/4001/quic-v1"_s;
const QString secondAddress = u"/ip4/203.0.113.7/tcp/4001"_s;
const QString relayed = u"/ip4/203.0.113.9/tcp/4001/p2p/12D3Relay/p2p-circuit"_s;

/// An answer of "/swarm/peers" as a node writes it.
QByteArray connectionsOf(const QList<std::pair<QString, QString>>& pairs)
{
    QStringList items;
    for (const auto& pair : pairs)
        items.append(
            uR"({"Addr":"%1","Peer":"%2","Identify":{"ID":"","Addresses":null}})"_s.arg(pair.first, pair.second));
    return u"{\"Peers\":[%1]}\n"_s.arg(items.join(u',')).toUtf8();
}

void row(const QString& name, const QByteArray& body, const QString& expected)
{
    QTest::newRow(qPrintable(name)) << name.section(u':', 0, 0) << NodeAnswer::json(body) << QStringList(expected);
}
void failure(const char* call, const QString& operation, const QString& action, const QString& result = {})
{
    const auto fails = [&](const QString& why, const NodeAnswer& answer, const QString& detail, bool said = false) {
        QStringList expected {u"failed %1: Failed to %2: %3"_s.arg(operation, action, detail)};
        if (said)
            expected.prepend(u"said"_s);
        if (!result.isEmpty())
            expected.append(result);
        QTest::newRow(qPrintable(QLatin1StringView(call) + u": "_s + why))
            << QString::fromLatin1(call) << answer << expected;
    };
    fails(u"refused"_s, NodeAnswer::error("no"), uR"({"Message":"no","Code":0,"Type":"error"})"_s, true);
    fails(u"no answer"_s, NodeAnswer::dropAt({}, 0), u"Connection closed"_s);
    fails(u"an error on a good status"_s, NodeAnswer::json(R"({"Error":" no ","Strings":["x"],"Peers":["x"]})"),
          u"no"_s);
    fails(u"no object"_s, NodeAnswer::json("[]"), u"invalid JSON response"_s);
}

} // namespace

class tst_Swarm : public ClientTest
{
    Q_OBJECT

private slots:
    void init()
    {
        ClientTest::init();
        got.clear();
        const IpfsClient* c = client.get();
        const auto list = [this](const QStringList& lines) { got.append(lines.join(u' ')); };
        const auto failed = [this](const QString& operation, const QString& message) {
            got.append(u"failed %1: %2"_s.arg(operation, message));
        };
        const auto result = [this](const QString& target, bool ok, const QStringList& lines) {
            got.append(u"%1 %2 %3"_s.arg(target, ok ? u"ok"_s : u"not"_s, lines.join(u' ')).trimmed());
        };
        connect(c, &IpfsClient::errorOccurred, this, [this] { got.append(u"errorOccurred"_s); });
        connect(c, &IpfsClient::nodeSaid, this, [this] { got.append(u"said"_s); });
        connect(c, &IpfsClient::swarmPeersReceived, this, list);
        connect(c, &IpfsClient::swarmListenAddrsReceived, this, list);
        connect(c, &IpfsClient::swarmAddrsReceived, this, [this](const QHash<QString, QStringList>& addresses) {
            QStringList peers;
            for (auto peer = addresses.cbegin(); peer != addresses.cend(); ++peer)
                peers.append(peer.key() + u'=' + peer.value().join(u','));
            peers.sort();
            got.append(peers.join(u' '));
        });
        connect(c, &IpfsClient::swarmConnectResult, this, result);
        connect(c, &IpfsClient::swarmDisconnectResult, this, result);
        connect(c, &IpfsClient::swarmRequestFailed, this, failed);
        connect(c, &IpfsClient::bootstrapPeersReceived, this, list);
        connect(c, &IpfsClient::bootstrapAddResult, this, result);
        connect(c, &IpfsClient::bootstrapRemoveResult, this,
                [result](const QStringList& removed, bool ok, const QStringList& peers) {
                    result(removed.join(u'+'), ok, peers);
                });
        connect(c, &IpfsClient::bootstrapRequestFailed, this, failed);
    }

    void calls_data()
    {
        addColumns<QString, NodeAnswer, QStringList>("call", "answer", "expected");
        peerRows();
        row(u"addrs: by peer"_s, R"({"Addrs":{" a ":[" /x ",7,"","/y"],"b":[],"c":"/x","d":null," ":["/x"]}})",
            u"a=/x,/y b="_s);
        row(u"addrs: none"_s, R"({"Addrs":null})", {});
        row(u"listen: lines"_s, R"({"Strings":[" /x ",7,"","/y"]})", u"/x /y"_s);
        row(u"listen: none"_s, R"({"Strings":null})", {});
        row(u"connect: done"_s, R"({"Strings":["connect p success"]})", u"/x ok connect p success"_s);
        row(u"connect: without lines"_s, "{}", u"/x ok"_s);
        row(u"disconnect: not connected"_s, R"({"Strings":["disconnect p failure: not connected"]})",
            u"/x ok disconnect p failure: not connected"_s);
        row(u"list: peers"_s, R"({"Peers":[" auto ","",7],"BootstrapPeers":["x"]})", u"auto"_s);
        row(u"expanded: peers"_s, R"({"Peers":["/x"]})", u"/x"_s);
        row(u"list: older name"_s, R"({"Peers":null,"BootstrapPeers":["x"]})", u"x"_s);
        row(u"list: none"_s, R"({"Peers":null})", {});
        row(u"add: done"_s, R"({"Peers":["/x"]})", u"/x ok /x"_s);
        row(u"rm: done"_s, R"({"Peers":["/x","/y"]})", u"/x+/y ok /x /y"_s);
        row(u"rm: none of them"_s, R"({"Peers":[]})", u"/x+/y ok"_s);
        row(u"all: done"_s, R"({"Peers":["auto"]})", u"ok auto"_s);
        failure("peers", u"peers"_s, u"fetch swarm peers"_s);
        failure("addrs", u"addrs"_s, u"fetch swarm addresses"_s);
        failure("listen", u"listen"_s, u"fetch listen addresses"_s);
        failure("connect", u"connect"_s, u"connect to /x"_s, u"/x not"_s);
        failure("disconnect", u"disconnect"_s, u"disconnect from /x"_s, u"/x not"_s);
        failure("list", u"bootstrap-list"_s, u"fetch bootstrap peers"_s);
        failure("add", u"bootstrap-add"_s, u"add bootstrap peer /x"_s, u"/x not"_s);
        failure("rm", u"bootstrap-rm"_s, u"remove bootstrap peers"_s, u"/x+/y not"_s);
        failure("all", u"bootstrap-rm-all"_s, u"remove all bootstrap peers"_s, u"not"_s);
    }
    void calls()
    {
        QFETCH(const QString, call);
        QFETCH(const NodeAnswer, answer);
        struct Call
        {
            QByteArray path {};
            QByteArray query {};
            std::function<void()> make {};
        };
        const QHash<QString, Call> all {
            {u"peers"_s, {"/swarm/peers", {}, [this] { client->fetchSwarmPeers(); }}},
            {u"addrs"_s, {"/swarm/addrs", {}, [this] { client->fetchSwarmAddrs(); }}},
            {u"listen"_s, {"/swarm/addrs/listen", {}, [this] { client->fetchSwarmListenAddrs(); }}},
            {u"connect"_s, {"/swarm/connect", "arg=%2Fx", [this] { client->swarmConnect(u" /x "_s); }}},
            {u"disconnect"_s, {"/swarm/disconnect", "arg=%2Fx", [this] { client->swarmDisconnect(u" /x "_s); }}},
            {u"list"_s, {"/bootstrap/list", {}, [this] { client->fetchBootstrapPeers(false); }}},
            {u"expanded"_s, {"/bootstrap/list", "expand-auto=true", [this] { client->fetchBootstrapPeers(true); }}},
            {u"add"_s, {"/bootstrap/add", "arg=%2Fx", [this] { client->bootstrapAddPeer(u" /x "_s); }}},
            {u"rm"_s,
             {"/bootstrap/rm", "arg=%2Fx&arg=%2Fy",
              [this] {
                  client->bootstrapRemovePeers({u" /x"_s, u" "_s, u"/y"_s});
              }}},
            {u"all"_s, {"/bootstrap/rm/all", {}, [this] { client->bootstrapRemoveAllPeers(); }}}};
        const Call made = all.value(call);
        node->answer(made.path, answer);
        made.make();
        QTRY_VERIFY(!got.isEmpty() && node->openNow(made.path) == 0);
        QTEST(got, "expected");
        QCOMPARE(node->requests(made.path).constFirst().rawQuery, made.query);
    }

    void blanksAreRefused()
    {
        client->swarmConnect(u" "_s);
        client->swarmDisconnect({});
        client->bootstrapAddPeer(u"\t"_s);
        client->bootstrapRemovePeers({u" "_s, {}});
        client->bootstrapRemovePeers({});
        const QString noPeer = u"failed bootstrap-rm: At least one bootstrap peer is required."_s;
        QCOMPARE(got,
                 QStringList({u"failed connect: Peer multiaddr is required."_s,
                              u"failed disconnect: Peer multiaddr is required."_s,
                              u"failed bootstrap-add: Bootstrap peer address is required."_s, noPeer, noPeer}));
        QVERIFY(node->requests().isEmpty());
    }

    /// A node lists connections without their peers, and closes only what names one.
    void aListedConnectionIsClosedByItsPeer_data()
    {
        const auto closes = addColumns<QString, QString>("target", "sent");
        closes("listed", u' ' + address + u' ', address + u"/p2p/12D3A"_s);
        closes("another connection of that peer", secondAddress, secondAddress + u"/p2p/12D3A"_s);
        closes("relayed", relayed, relayed + u"/p2p/12D3B"_s);
        closes("listed with its peer", u"/ip6/::1/tcp/1/p2p/12D3C"_s, u"/ip6/::1/tcp/1/p2p/12D3C"_s);
        closes("whole, though not listed so", address + u"/p2p/12D3A"_s, address + u"/p2p/12D3A"_s);
        closes("peer alone", u"/p2p/12D3A"_s, u"/p2p/12D3A"_s);
        closes("listed without an address", u"12D3D"_s, u"12D3D"_s);
        closes("not listed", u"/ip4/1.2.3.4/tcp/1"_s, u"/ip4/1.2.3.4/tcp/1"_s);
    }
    void aListedConnectionIsClosedByItsPeer()
    {
        QFETCH(const QString, target);
        QFETCH(const QString, sent);
        list({{address, u"12D3A"_s},
              {secondAddress, u"12D3A"_s},
              {relayed, u"12D3B"_s},
              {u"/ip6/::1/tcp/1/p2p/12D3C"_s, u"12D3C"_s},
              {{}, u"12D3D"_s}});
        QCOMPARE(closed(target), QStringList(sent));
        QCOMPARE(got, QStringList {target.trimmed() + u" ok"_s});
    }

    /// Peers behind one relay take turns. The last list counts, of the node in use; a list that failed replaces none.
    void whoseConnectionItWas()
    {
        list({{address, u"12D3A"_s}, {relayed, u"12D3B"_s}, {relayed, u"12D3D"_s}});
        for (const QString& peer : {u"B"_s, u"D"_s, u"B"_s})
            QCOMPARE(closed(relayed).constLast(), relayed + u"/p2p/12D3"_s + peer);
        list({{address, u"12D3C"_s}});
        QCOMPARE(closed(address).constLast(), address + u"/p2p/12D3C"_s);
        QCOMPARE(closed(relayed).constLast(), relayed);
        node->answer("/swarm/peers", NodeAnswer::error("no"));
        got.clear();
        client->fetchSwarmPeers();
        QTRY_COMPARE(got.size(), 2);
        QCOMPARE(closed(address).constLast(), address + u"/p2p/12D3C"_s);
        client->setEndpoint(u"localhost"_s, node->port());
        QCOMPARE(closed(address).constLast(), address);
    }

    /// An answer that is read on a thread.
    void manyPeers()
    {
        QList<std::pair<QString, QString>> pairs;
        for (int i = 0; i < 5000; ++i)
            pairs.append({u"/a/%1"_s.arg(i), u"P%1"_s.arg(i)});
        list(pairs);
        QCOMPARE(closed(u"/a/4999"_s), QStringList {u"/a/4999/p2p/P4999"_s});
    }

private:
    static void peerRows()
    {
        row(u"peers: addresses"_s, connectionsOf({{address, u"12D3A"_s}, {relayed, u"12D3B"_s}}),
            address + u' ' + relayed);
        row(u"peers: twice the same"_s, connectionsOf({{address, u"12D3A"_s}, {address, u"12D3A"_s}}),
            address + u' ' + address);
        row(u"peers: none"_s, R"({"Peers":null})", {});
        row(u"peers: first key wins"_s,
            R"({"Peers":[{"address":"/d","addr":"/c","Address":"/b","Addr":" /a "},{"addr":"/c","Address":" "}]})",
            u"/a /c"_s);
        row(u"peers: identifiers"_s,
            R"({"Peers":[{"Addr":" ","Peer":"p"},{"Peer":7,"ID":"i"},{"id":"l","Id":"u"},{"peer":"q"},{"Name":"n"}]})",
            u"p i u q"_s);
        row(u"peers: texts"_s, R"({"Peers":[" /x ","",7,null,["/y"]],"Strings":["/z"]})", u"/x"_s);
        row(u"peers: as strings"_s, R"({"Peers":{},"Strings":[" /x ",7]})", u"/x"_s);
        row(u"peers: another key"_s, R"({"peers":["/x"]})", {});
    }

    /// Lets the node have these connections and the client know them.
    void list(const QList<std::pair<QString, QString>>& pairs)
    {
        node->answer("/swarm/peers", NodeAnswer::json(connectionsOf(pairs)));
        got.clear();
        client->fetchSwarmPeers();
        QTRY_COMPARE(got.size(), 1);
        got.clear();
    }
    /// What the node is asked to close, for all calls so far.
    QStringList closed(const QString& target)
    {
        node->answer("/swarm/disconnect", NodeAnswer::json("{}"));
        got.clear();
        client->swarmDisconnect(target);
        if (!QTest::qWaitFor([this] { return !got.isEmpty(); }))
            return {u"no answer"_s};
        QStringList sent;
        for (const NodeRequest& request : node->requests("/swarm/disconnect"))
            sent.append(request.values(u"arg"_s));
        return sent;
    }

    QStringList got;
};

NORVO_TEST_MAIN(QCoreApplication, tst_Swarm)

#include "tst_swarm.moc"
