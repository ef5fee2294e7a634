// SPDX-License-Identifier: MIT
#include "ClientLog.h"

using namespace Qt::StringLiterals;

namespace {

const QByteArray keyList = "/key/list";
const QByteArray publish = "/name/publish";
const QByteArray resolve = "/name/resolve";

/// A node's error, as it is in its body.
QString errorBodyOf(const NodeAnswer& error)
{
    return QString::fromUtf8(error.chunks.constFirst().bytes).trimmed();
}

QStringList failure(const QString& words, const QString& signal, const QString& action)
{
    const QString message = u"Failed to %1: %2"_s.arg(action, words);
    return {u"error "_s + message, signal + u' ' + message};
}

} // namespace

class tst_Ipns : public ClientTest
{
    Q_OBJECT

private slots:
    void init()
    {
        ClientTest::init();
        const auto note = [this](const QString& word) {
            return [this, word](const QString& message) { log->lines.append(word + u' ' + message); };
        };
        IpfsClient* c = client.get();
        connect(c, &IpfsClient::ipnsKeysReceived, this, [this](const QList<IpnsKeyEntry>& keys) {
            QStringList texts {u"keys"_s};
            for (const IpnsKeyEntry& key : keys)
                texts.append(key.name + u'=' + key.id);
            log->lines.append(texts.join(u'|'));
        });
        connect(c, &IpfsClient::ipnsPublished, this, [this](const IpnsPublishResult& result) {
            log->lines.append(QStringList({u"published"_s, result.key, result.name, result.value}).join(u'|'));
        });
        connect(c, &IpfsClient::ipnsResolved, this, [this](const IpnsResolveResult& result) {
            log->lines.append(QStringList({u"resolved"_s, result.input, result.path}).join(u'|'));
        });
        connect(c, &IpfsClient::ipnsKeysFailed, this, note(u"no keys"_s));
        connect(c, &IpfsClient::ipnsPublishFailed, this, note(u"not published"_s));
        connect(c, &IpfsClient::ipnsResolveFailed, this, note(u"not resolved"_s));
    }

    /// Each call's query, and what becomes of its answers.
    void calls_data()
    {
        const auto row = addColumns<QByteArray, QStringList, QByteArray, NodeAnswer, QStringList>(
            "path", "arguments", "query", "answer", "expected");
        row("keys", keyList, {}, {},
            NodeAnswer::json(R"({"Keys":[{"Name":" self ","Id":" k51 "},7,{"Id":"x"},{"Name":"b","Id":4}]})"),
            {u"keys|self=k51|b="_s});
        row("no list of keys", keyList, {}, {}, NodeAnswer::json(R"({"Keys":null})"), {u"keys"_s});
        row("keys in no JSON", keyList, {}, {}, NodeAnswer::json("[]"),
            {u"error Failed to list IPNS keys: invalid JSON response"_s,
             u"no keys Failed to list IPNS keys: invalid JSON response"_s});
        row("no keys", keyList, {}, {}, NodeAnswer::dropAt({}, 0),
            failure(u"Connection closed"_s, u"no keys"_s, u"list IPNS keys"_s));

        const NodeAnswer published = NodeAnswer::json(R"({"Name":" k51 ","Value":" /ipfs/Qa\n"})");
        row("CID", publish, {u" Qa "_s, u" my key&+ "_s}, "arg=%2Fipfs%2FQa&key=my%20key%26%2B", published,
            {u"published|my key&+|k51|/ipfs/Qa"_s});
        row("blank key", publish, {u"/ipfs/Qa/b"_s, u" "_s}, "arg=%2Fipfs%2FQa%2Fb&key=self", published,
            {u"published|self|k51|/ipfs/Qa"_s});
        row("name", publish, {u"/ipns/k"_s, u"self"_s}, "arg=%2Fipns%2Fk&key=self", NodeAnswer::json("{}"),
            {u"published|self||"_s});
        row("path in capitals", publish, {u"/IPFS/Qa"_s, u"self"_s}, "arg=%2Fipfs%2F%2FIPFS%2FQa&key=self", published,
            {u"published|self|k51|/ipfs/Qa"_s});
        const NodeAnswer noKey = NodeAnswer::error("no key by the given name was found");
        row("unknown key", publish, {u"Qa"_s, u"k"_s}, "arg=%2Fipfs%2FQa&key=k", noKey,
            QStringList(u"said /name/publish no key by the given name was found"_s)
                + failure(errorBodyOf(noKey), u"not published"_s, u"publish to IPNS"_s));

        const NodeAnswer resolved = NodeAnswer::json(R"({"Path":" /ipfs/Qa "})");
        row("bare name", resolve, {u" example.net "_s}, "arg=%2Fipns%2Fexample.net", resolved,
            {u"resolved|/ipns/example.net|/ipfs/Qa"_s});
        row("name with its prefix", resolve, {u"/ipns/k"_s}, "arg=%2Fipns%2Fk", resolved,
            {u"resolved|/ipns/k|/ipfs/Qa"_s});
        row("name that is a path", resolve, {u"/ipfs/Qa"_s}, "arg=%2Fipns%2F%2Fipfs%2FQa", NodeAnswer::json("{}"),
            {u"resolved|/ipns//ipfs/Qa|"_s});
        const NodeAnswer noName = NodeAnswer::error("could not resolve name");
        row("no record", resolve, {u"k"_s}, "arg=%2Fipns%2Fk", noName,
            QStringList(u"said /name/resolve could not resolve name"_s)
                + failure(errorBodyOf(noName), u"not resolved"_s, u"resolve IPNS name"_s));
    }
    void calls()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const QStringList, arguments);
        QFETCH(const QByteArray, query);
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QStringList, expected);
        node->answer(path, answer);
        if (path == publish)
            client->publishIpns(arguments.at(0), arguments.at(1));
        else if (path == resolve)
            client->resolveIpns(arguments.at(0));
        else
            client->fetchIpnsKeys();
        QTRY_COMPARE(log->lines, expected);
        QCOMPARE(node->requests().size(), 1);
        QCOMPARE(node->requests().constFirst().rawQuery, query);
    }

    /// At once, by one signal, and without a request.
    void blanksAreRefused()
    {
        client->publishIpns(u" \n"_s, u"k"_s);
        client->resolveIpns({});
        QCOMPARE(log->lines,
                 QStringList({u"not published IPNS publish failed: content path/CID is required."_s,
                              u"not resolved IPNS resolve failed: name is required."_s}));
        QVERIFY(node->requests().isEmpty());
    }

    /// Keys are those of a node; what was published is so wherever it is read.
    void aNodeThatIsLeft()
    {
        FakeNode other;
        for (const QByteArray& path : {keyList, publish})
            node->answer(path, NodeAnswer::hold());
        client->fetchIpnsKeys();
        client->publishIpns(u"Qa"_s, {});
        QTRY_COMPARE(node->heldCount(keyList) + node->heldCount(publish), 2);
        client->setEndpoint(u"127.0.0.1"_s, other.port());
        node->release(keyList, NodeAnswer::json(R"({"Keys":[{"Name":"a"}]})"));
        QTRY_COMPARE(node->openNow(keyList), 0);
        node->release(publish, NodeAnswer::json(R"({"Name":"k"})"));
        QTRY_COMPARE(log->lines, QStringList(u"published|self|k|"_s));
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_Ipns)

#include "tst_ipns.moc"
