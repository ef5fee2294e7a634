// SPDX-License-Identifier: MIT
#include "ClientLog.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

const QByteArray keyPath = "/config";
const QByteArray showPath = "/config/show";
const QByteArray replacePath = "/config/replace";

/// As it is in JSON, strings with their quotes; "-" for none.
QString textOf(const QJsonValue& value)
{
    if (value.isUndefined())
        return u"-"_s;
    return QString::fromUtf8(QJsonDocument(QJsonObject {{u"v"_s, value}}).toJson(QJsonDocument::Compact))
        .sliced(5)
        .chopped(1);
}

} // namespace

class tst_Config : public ClientTest
{
    Q_OBJECT

private slots:
    void init()
    {
        ClientTest::init();
        got.clear();
        rpcLog.clear();
        const IpfsClient* c = client.get();
        connect(c, &IpfsClient::configReceived, this,
                [this](const QJsonObject& config) { got.append(u"config "_s + textOf(config)); });
        connect(c, &IpfsClient::configFailed, this, [this](const QString& why) { got.append(u"no config|"_s + why); });
        connect(c, &IpfsClient::configKeyReceived, this, [this](const QString& key, const QJsonValue& value) {
            got.append(u"got %1 %2"_s.arg(key, textOf(value)));
        });
        connect(c, &IpfsClient::configKeyRequestFailed, this,
                [this](const QString& why) { got.append(u"not got|"_s + why); });
        connect(c, &IpfsClient::configKeySet, this, [this](const QString& key, const QJsonValue& value) {
            got.append(u"set %1 %2"_s.arg(key, textOf(value)));
        });
        connect(c, &IpfsClient::configKeySetFailed, this,
                [this](const QString& why) { got.append(u"not set|"_s + why); });
        connect(c, &IpfsClient::configReplaceSucceeded, this, [this] { got.append(u"replaced"_s); });
        connect(c, &IpfsClient::configReplaceFailed, this,
                [this](const QString& why) { got.append(u"not replaced|"_s + why); });
        connect(c, &IpfsClient::errorOccurred, this, [this](const QString& why) { got.append(u"error|"_s + why); });
        connect(c, &IpfsClient::rpcRequestIssued, this, [this](const QString& line) { rpcLog = line; });
    }

    /// A failure is reported twice, with the same text.
    void answers_data()
    {
        // expected: of a failure: its signal and its text
        addColumns<QString, NodeAnswer, QString>("call", "answer", "expected");
        const auto row = [](const char* name, const char* call, const NodeAnswer& answer, const QString& expected) {
            QTest::newRow(name) << QString::fromLatin1(call) << answer << expected;
        };
        const NodeAnswer refused = NodeAnswer::error("the node's words");
        const NodeAnswer dropped = NodeAnswer::dropAt({}, 0);
        const NodeAnswer half = NodeAnswer::dropAt(R"({"Key":"a","Value":1})", 9);
        row("config", "show", NodeAnswer::json(R"({"b":9007199254740993,"a":{"c":[1e-7]}})"),
            u"config {\"a\":{\"c\":[1e-07]},\"b\":9007199254740993}"_s);
        row("config that is a list", "show", NodeAnswer::json("[1]"),
            u"no config|Invalid config JSON: no error occurred"_s);
        row("config, node gone", "show", dropped, u"no config|Failed to get config: Connection closed"_s);
        row("config, half of it", "show", half, u"no config|Failed to get config: Connection closed"_s);
        row("key", "get", NodeAnswer::json(R"({"Key":"Other","Value":[1]})"), u"got Other [1]"_s);
        row("key, nothing in it", "get", NodeAnswer::json("{}"), u"got  -"_s);
        row("key, no JSON", "get", NodeAnswer::json("7"), u"not got|Invalid config/get JSON: illegal value"_s);
        row("key, refused", "get", refused,
            u"not got|Failed to get config key: Error transferring %1/config?arg=a.b - server replied: Internal Server Error"_s);
        row("key, half", "get", half, u"not got|Failed to get config key: Connection closed"_s);
        row("set", "set", NodeAnswer::json(R"({"Key":"a","Value":9007199254740993})"), u"set a 9007199254740993"_s);
        row("set, dropped", "set", dropped, u"not set|Failed to set config key: Connection closed"_s);
        row("replaced", "replace", NodeAnswer::json({}), u"replaced"_s);
        row("replace, words", "replace", NodeAnswer::text(500, " no {\n"),
            u"not replaced|Failed to replace config: no {"_s);
        row("replace, no words", "replace", NodeAnswer::text(500, " "),
            u"not replaced|Failed to replace config: Error transferring %1/config/replace - server replied: Internal Server Error"_s);
    }
    void answers()
    {
        QFETCH(const QString, call);
        QFETCH(const NodeAnswer, answer);
        QFETCH(QString, expected);
        expected.replace(u"%1"_s, client->baseUrl());
        for (const QByteArray& path : {keyPath, showPath, replacePath})
            node->answer(path, answer);
        if (call == "show"_L1)
            client->fetchConfig();
        else if (call == "get"_L1)
            client->fetchConfigKey(u" a.b "_s, false);
        else if (call == "set"_L1)
            client->setConfigKey(u"a"_s, u"v"_s, false, false);
        else
            client->replaceConfig("{}");
        const QString failure = expected.section(u'|', 1);
        QTRY_COMPARE(got, failure.isEmpty() ? QStringList {expected} : QStringList({u"error|"_s + failure, expected}));
        QCOMPARE(node->requests().size(), 1);
        const bool hasWords = !node->requests().isEmpty() && answer.status == 500 && call == "get"_L1;
        QCOMPARE(log->count("said "_L1), hasWords ? 1 : 0);
    }

    /// The line of a request shows no value that is written to a key for credentials.
    void whatIsSent_data()
    {
        // flags: 1: boolean, 2: JSON; -1 and -2: read, -2 with real values
        addColumns<QString, QString, int, QByteArray, bool>("key", "value", "flags", "query", "isSecret");
        const auto row
            = [](const char* name, const QString& key, const QString& value, int flags, const QByteArray& query,
                 bool isSecret = false) { QTest::newRow(name) << key << value << flags << query << isSecret; };
        row("read", u" A.b\t"_s, {}, -1, "arg=A.b");
        row("read, expanded", u"A"_s, {}, -2, "arg=A&expand-auto=true");
        row("text, blanks and all", u" A "_s, u" x;y+z "_s, 0, "arg=A&arg=%20x%3By%2Bz%20");
        row("boolean", u"A"_s, u"true"_s, 1, "arg=A&arg=true&bool=true");
        row("JSON", u"A"_s, u"{\"a\":1}"_s, 2, "arg=A&arg=%7B%22a%22%3A1%7D&json=true");
        row("secret", u"API.Authorizations.me.AuthSecret"_s, u"bearer:s3cret"_s, 0,
            "arg=API.Authorizations.me.AuthSecret&arg=bearer%3As3cret", true);
        row("secret below", u"api"_s, u"{\"x\":\"s3cret\"}"_s, 2, "arg=api&arg=%7B%22x%22%3A%22s3cret%22%7D&json=true",
            true);
    }
    void whatIsSent()
    {
        QFETCH(const QString, key);
        QFETCH(const QString, value);
        QFETCH(const int, flags);
        QFETCH(const bool, isSecret);
        node->answer(keyPath, NodeAnswer::error("refused " + value.toUtf8()));
        if (flags < 0)
            client->fetchConfigKey(key, flags == -2);
        else
            client->setConfigKey(key, value, flags == 1, flags == 2);
        QTRY_COMPARE(got.size(), 2);
        QTEST(node->requests().constFirst().rawQuery, "query");
        QFETCH(const QByteArray, query);
        QCOMPARE(rpcLog.endsWith(u"/config?"_s + QString::fromLatin1(query)), !isSecret);
        const QString seen = rpcLog + got.join(u' ') + log->lines.join(u' ');
        QVERIFY2(!seen.contains("s3cret"_L1), qPrintable(seen));
        QCOMPARE(rpcLog.contains(u"&arg=…"_s), isSecret);
    }

    /// The bytes of the form, whose one part is the document as it was given.
    void replaceSendsTheDocument()
    {
        node->answer(replacePath, NodeAnswer::json({}));
        client->replaceConfig(" {\"a\": 1}\n");
        QTRY_COMPARE(got, QStringList {u"replaced"_s});
        const NodeRequest request = node->requests().constFirst();
        const QByteArray type = request.header("Content-Type");
        const QByteArray start = "multipart/form-data; boundary=\"";
        QVERIFY(type.startsWith(start));
        const QByteArray boundary = type.sliced(start.size()).chopped(1);
        const QByteArray expected = "--" + boundary
            + "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"config.json\"\r\n"
              "Content-Type: application/json\r\n\r\n {\"a\": 1}\n\r\n--"
            + boundary + "--\r\n";
        QCOMPARE(request.body.toLower(), expected.toLower()); // newer Qt writes the headers in lower case
        QCOMPARE(request.rawQuery, "");
        QVERIFY(rpcLog.endsWith(u"] POST "_s + client->baseUrl() + u"/config/replace"_s));
        QTRY_VERIFY(client->findChildren<QNetworkReply*>().isEmpty());
    }

    void whatMakesNoSenseIsRefused()
    {
        const QString keyIsMissing = u"Config key is required."_s;
        client->fetchConfigKey(u" \t"_s, true);
        client->setConfigKey(u" "_s, u"v"_s, true, true);
        client->setConfigKey(u"k"_s, u"v"_s, true, true);
        client->replaceConfig(" \n");
        QCOMPARE(got,
                 QStringList({u"not got|"_s + keyIsMissing, u"not set|"_s + keyIsMissing,
                              u"not set|Invalid config write mode: bool and json flags are mutually exclusive."_s,
                              u"not replaced|Config JSON payload is empty."_s}));
        QVERIFY(rpcLog.isEmpty() && node->requests().isEmpty());
    }

    /// A question dies with its node; a change is reported all the same.
    void anotherNodeIsInUse()
    {
        for (const QByteArray& path : {keyPath, showPath, replacePath})
            node->answer(path, NodeAnswer::hold());
        client->fetchConfig();
        client->fetchConfigKey(u"k"_s, false);
        client->setConfigKey(u"k"_s, u"v"_s, false, false);
        client->replaceConfig("{}");
        QTRY_COMPARE(node->heldCount(keyPath) + node->heldCount(showPath) + node->heldCount(replacePath), 4);
        client->setEndpoint(u"127.0.0.1"_s, 1);
        const int write = node->requests(keyPath).constFirst().values(u"arg"_s).size() == 2 ? 0 : 1;
        node->release(showPath, NodeAnswer::json("{}"));
        node->release(keyPath, NodeAnswer::json(R"({"Key":"read","Value":1})"), 1 - write);
        node->release(keyPath, NodeAnswer::json(R"({"Key":"k","Value":"v"})"));
        QTRY_COMPARE(got, QStringList {u"set k \"v\""_s});
        node->release(replacePath, NodeAnswer::error("no"));
        QTRY_COMPARE(got.size(), 3);
        QVERIFY(got.constLast().startsWith(u"not replaced|"_s));
        QTRY_VERIFY(client->findChildren<QNetworkReply*>().isEmpty());
        QCOMPARE(got.size(), 3);
    }

private:
    QStringList got;
    QString rpcLog; ///< its last line
};

NORVO_TEST_MAIN(QCoreApplication, tst_Config)

#include "tst_config.moc"
