// SPDX-License-Identifier: MIT
#include "ClientLog.h"

using namespace Qt::StringLiterals;

namespace {

/// The services of an answer, as "name=endpoint".
QString textOf(const QList<RemoteServiceEntry>& services)
{
    QStringList texts;
    for (const RemoteServiceEntry& service : services)
        texts.append(service.name + u'=' + service.endpoint);
    return texts.join(u' ');
}

void row(const char* name, const char* call, const QByteArray& path, const QByteArray& query, const NodeAnswer& answer,
         const QString& expected)
{
    QTest::newRow(name) << QString::fromLatin1(call) << path << query << answer << expected;
}

/// What a service says of a pin.
void stateRows()
{
    const QByteArray ls = "/pin/remote/ls";
    const QByteArray lsQuery = "arg=Qa&service=s&cid=Qa&status=queued&status=pinning&status=pinned&status=failed";
    const auto state = [&](const char* name, const QByteArray& body, const QString& expected) {
        row(name, "ls", ls, lsQuery, NodeAnswer::json(body), expected);
    };
    state("flat lines, pinned wins",
          R"({"Status":"failed","Cid":"Qa"})"
          "\nx\n"
          R"({"Status":"Pinned","Cid":"Qa"})"
          "\n",
          u"status|Qa|s|pinned"_s);
    state("flat lines, else the first",
          R"({"Status":"queued","Cid":"Qa"})"
          "\n"
          R"({"Status":"failed","Cid":"Qa"})"
          "\n",
          u"status|Qa|s|queued"_s);
    state("one flat line of another", R"({"Status":"pinned","Cid":"Qb"})", u"status|Qa|s|not-found"_s);
    state("nothing", {}, u"status|Qa|s|not-found"_s);
    state("array", R"({"Pins":[{"Cid":{"/":" Qa "},"status":" PINNING "},7]})", u"status|Qa|s|pinning"_s);
    state("array in a wrapper, no word", R"({"RemotePinLsOutput":{"Pins":[{"Cid":"Qa"}]}})", u"status|Qa|s|unknown"_s);
    state("no array", R"({"Other":1})", u"status|Qa|s|not-found"_s);
    state("error", R"({"Error":"no"})", u"no status|Qa|s|Remote pin status failed for Qa: no"_s);
    state("no JSON", "[]\n7", u"no status|Qa|s|Remote pin status failed for Qa: invalid JSON response."_s);
    row("no answer", "ls", ls, lsQuery, NodeAnswer::dropAt({}, 0),
        u"no status|Qa|s|Remote pin status failed for Qa: Connection closed"_s);
}

} // namespace

class tst_Remote : public ClientTest
{
    Q_OBJECT

private slots:
    void init()
    {
        ClientTest::init();
        got.clear();
        IpfsClient* c = client.get();
        const auto note = [this](const QString& word) {
            return [this, word](const QString& a, const QString& b, const QString& text) {
                got.append(QStringList({word, a, b, text}).join(u'|'));
            };
        };
        connect(c, &IpfsClient::errorOccurred, this, [this] { got.append(u"errorOccurred"_s); });
        connect(c, &IpfsClient::nodeSaid, this,
                [](const QString&, const QString& words) { QVERIFY(!words.contains("t+k"_L1)); });
        connect(c, &IpfsClient::remoteServiceAdded, this,
                [this](const QString& name) { got.append(u"added "_s + name); });
        connect(c, &IpfsClient::remoteServiceAddFailed, this, [this](const QString& why) { got.append(why); });
        connect(c, &IpfsClient::remoteServiceRemoved, this,
                [this](const QString& name) { got.append(u"removed "_s + name); });
        connect(c, &IpfsClient::remoteServiceRemoveFailed, this, [this](const QString& why) { got.append(why); });
        connect(c, &IpfsClient::remotePinQueued, this, [this](const QString& cid, const QString& service) {
            got.append(u"queued %1 %2"_s.arg(cid, service));
        });
        connect(c, &IpfsClient::remotePinQueueFailed, this, note(u"not queued"_s));
        connect(c, &IpfsClient::remotePinStatusReceived, this, note(u"status"_s));
        connect(c, &IpfsClient::remotePinStatusFailed, this, note(u"no status"_s));
    }

    /// Each call's query, and what becomes of its answers.
    void calls_data()
    {
        addColumns<QString, QByteArray, QByteArray, NodeAnswer, QString>("call", "path", "query", "answer", "expected");
        const QByteArray add = "/pin/remote/service/add";
        const QByteArray addQuery = "arg=n&arg=http%3A%2F%2Fx&arg=t%2Bk%3D%3D";
        const QByteArray rm = "/pin/remote/service/rm";
        const QByteArray pin = "/pin/remote/add";
        const NodeAnswer empty = NodeAnswer::json({});
        const NodeAnswer error = NodeAnswer::error("no");
        const QString words = QString::fromUtf8(error.chunks.constFirst().bytes).trimmed();
        row("added", "add", add, addQuery, empty, u"added n"_s);
        row("added, in other words", "add", add, addQuery, NodeAnswer::json("fine"), u"added n"_s);
        row("not added", "add", add, addQuery, error, u"Failed to add remote service 'n': "_s + words);
        row("not added, by a page that repeats the address", "add", add, addQuery,
            NodeAnswer::text(502, "no way to /add?" + addQuery + " (t+k==)"),
            u"Failed to add remote service 'n': no way to /add?arg=n&arg=http%3A%2F%2Fx&arg=… (…)"_s);
        row("not added, by words with the token", "add", add, addQuery,
            NodeAnswer::text(500, R"({"Message":"bad t+k=="})"),
            u"Failed to add remote service 'n': {\"Message\":\"bad …\"}"_s);
        row("not added, on a good status", "add", add, addQuery, NodeAnswer::json(R"({"Error":" no "})"),
            u"Failed to add remote service 'n': no"_s);
        row("removed", "rm", rm, "arg=n", empty, u"removed n"_s);
        row("not removed", "rm", rm, "arg=n", NodeAnswer::dropAt({}, 0),
            u"Failed to remove remote service 'n': Connection closed"_s);
        row("queued", "pin", pin, "arg=Qa&service=s&name=l&background=true", empty, u"queued Qa s"_s);
        row("not queued", "pin", pin, "arg=Qa&service=s&name=l&background=true", error,
            u"not queued|Qa|s|Remote pin failed for Qa: "_s + words);
        stateRows();
    }
    void calls()
    {
        QFETCH(const QString, call);
        QFETCH(const QByteArray, path);
        QFETCH(const QByteArray, query);
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QString, expected);
        QStringList requests;
        connect(client.get(), &IpfsClient::rpcRequestIssued, this, [&](const QString& line) { requests.append(line); });
        node->answer(path, answer);
        if (call == "add"_L1)
            client->addRemoteService(u" n "_s, u"http://x"_s, u" t+k== "_s);
        else if (call == "rm"_L1)
            client->removeRemoteService(u" n"_s);
        else if (call == "pin"_L1)
            client->remotePinAdd(u" Qa"_s, u"s "_s, u" l "_s, true);
        else
            client->fetchRemotePinStatus(u" Qa"_s, u"s "_s);
        QTRY_COMPARE(got, QStringList(expected));
        QCOMPARE(node->requests(path).constFirst().rawQuery, query);
        QVERIFY(!requests.join(u' ').contains("k%3D"_L1) && !got.join(u' ').contains("t+k"_L1));
    }

    void blanksAreRefused()
    {
        client->addRemoteService(u"n"_s, u" "_s, u"t"_s);
        client->removeRemoteService({});
        client->remotePinAdd({}, u"s"_s, {}, true);
        client->fetchRemotePinStatus(u"Qa"_s, u" "_s);
        QCOMPARE(
            got,
            QStringList({u"Service name, endpoint, and access token are required."_s, u"Service name is required."_s,
                         u"not queued||s|Remote pin failed: CID and service are required."_s,
                         u"no status|Qa||Remote pin status request failed: CID and service are required."_s}));
        QVERIFY(node->requests().isEmpty());
    }

    void remoteServices_data()
    {
        const auto row = addColumns<QString, NodeAnswer, QString>("name", "answer", "expected");
        const auto list = NodeAnswer::json(
            R"({"RemoteServices":[{"Service":" a ","ApiEndpoint":"x","Stat":{"Status":"valid"}},{"name":"b","Stat":{"Status":"invalid"}},7,{"Service":""}]})");
        row("list", QString(), list, u"a=x b="_s);
        row("older shape", QString(),
            NodeAnswer::json(R"({"RemoteServiceLsOutput":{"RemoteServices":[{"Name":"c"}]}})"), u"c="_s);
        row("none", QString(), NodeAnswer::json(R"({"RemoteServices":null})"), QString());
        row("no JSON", QString(), NodeAnswer::json("[]"),
            u"failed Remote service request failed: invalid JSON response."_s);
        row("an error in the answer", QString(), NodeAnswer::json(R"({"Error":" no "})"), u"failed no"_s);
        row("test", u" a "_s, list, u"test a 1 Service 'a' is configured and reachable."_s);
        row("test of a bad one", u"b"_s, list,
            u"test b 0 Service 'b' is configured but could not be reached, or refused its access token."_s);
        row("test of none", u"%1"_s, list, u"test %1 0 Service '%1' was not returned by Kubo."_s);
        row("test that breaks", u"a"_s, NodeAnswer::dropAt({}, 0),
            u"test a 0 Remote service request failed: Connection closed"_s);
    }
    void remoteServices()
    {
        QFETCH(const QString, name);
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QString, expected);
        const QByteArray listPath = "/pin/remote/service/ls";
        node->answer(listPath, answer);
        connect(client.get(), &IpfsClient::remoteServicesReceived, this,
                [this](const QList<RemoteServiceEntry>& services) { got.append(textOf(services)); });
        connect(client.get(), &IpfsClient::remoteServicesFailed, this,
                [this](const QString& message) { got.append(u"failed "_s + message); });
        connect(client.get(), &IpfsClient::remoteServiceTested, this,
                [this](const QString& tested, bool ok, const QString& text) {
                    got.append(u"test %1 %2 %3"_s.arg(tested, QString::number(ok), text));
                });
        client->fetchRemoteServices(!name.isEmpty(), name);
        QTRY_COMPARE(got, QStringList(expected));
        QCOMPARE(node->requests(listPath).constFirst().value(u"name"_s), name.trimmed());
    }

private:
    QStringList got;
};

NORVO_TEST_MAIN(QCoreApplication, tst_Remote)

#include "tst_remote.moc"
