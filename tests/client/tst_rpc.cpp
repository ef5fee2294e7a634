// SPDX-License-Identifier: MIT
#include "AppSettings.h"
#include "ClientLog.h"
#include "RpcQuery.h"

#include <QNetworkReply>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

class tst_Rpc : public ClientTest
{
    Q_OBJECT

private slots:
    void queryValuesArriveAsTheyAre_data()
    {
        QTest::addColumn<QString>("value");
        for (const auto* value : {"plain", "a+b c", "a;b", "100%", "%41 %zz %2B", "a&b=c#d", "\"<>\\", "ünï €𝄞",
                                  "a=b==", " lead and trail ", "line\nfeed", ""}) {
            QTest::newRow(value) << QString::fromUtf8(value);
        }
    }
    void queryValuesArriveAsTheyAre()
    {
        QFETCH(const QString, value);
        node->answer("/config", NodeAnswer::json("{}"));
        const std::initializer_list<std::pair<QString, QString>> sent {
            {u"arg"_s, value}, {u"z"_s, u"1"_s}, {u"arg"_s, value}, {u"b"_s, u"2"_s}};
        QNetworkReply* reply = client->postRequest(u"/config"_s, rpcQuery(sent));
        QTRY_VERIFY(reply->isFinished());
        reply->deleteLater();
        QCOMPARE(node->requests().constFirst().items(), QList(sent));
    }

    void everyRequestFollowsTheConvention()
    {
        QStringList issued;
        bool before = false;
        connect(client.get(), &IpfsClient::rpcRequestIssued, this, [&](const QString& line) {
            issued.append(line);
            before = client->findChildren<QNetworkReply*>().isEmpty();
        });
        node->answer("/version", NodeAnswer::json("{}"));
        client->ping();
        QTRY_COMPARE(log->lines, QStringList {u"connected"_s});
        const NodeRequest request = node->requests().constFirst();
        QCOMPARE(request.method, "POST");
        QCOMPARE(request.header("User-Agent"), "Norvo/1.1.3");
        QCOMPARE(request.header("Content-Type"), "application/x-www-form-urlencoded");
        QCOMPARE(request.header("Content-Length"), "0");
        QVERIFY(request.header("Origin").isEmpty());
        QCOMPARE(request.rawQuery, "");
        QVERIFY(before); // the line comes before the request leaves
        const QRegularExpression line(
            u"^\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\] POST http://127\\.0\\.0\\.1:%1/api/v0/version$"_s.arg(
                node->port()));
        QVERIFY2(issued.size() == 1 && line.match(issued.constFirst()).hasMatch(), qPrintable(issued.join(u'\n')));
    }

    void secretsAreNotShown_data()
    {
        addColumns<QString, QString, QString>("path", "query", "shown");
        const auto row = [](const char* path, const QByteArray& query, const QByteArray& shown) {
            QTest::addRow("%s %s", path, query.constData())
                << QString::fromUtf8(path) << QString::fromUtf8(query) << QString::fromUtf8(shown);
        };
        row("/pin/remote/service/add", "arg=n&arg=http://e/&arg=t%26k", "arg=n&arg=http://e/&arg=…");
        row("/pin/remote/service/rm", "arg=a&arg=b&arg=c", "arg=a&arg=b&arg=c");
        for (const char* key : {"API", "api.authorizations", "API.Authorizations.me.AuthSecret", "Identity",
                                "Identity.PrivKey", "Pinning", "Pinning.RemoteServices", "Pinning.RemoteServices.s",
                                "pinning.remoteservices.s.api.key", "Pinning.RemoteServices.a.b.API.Key",
                                "Pinning.RemoteServices.s.API", "Pinning.RemoteServices.policies.API.Key"}) {
            const QByteArray shownKey = key;
            row("/config", "arg=" + shownKey + "&arg=v+%22&json=true", "arg=" + shownKey + "&arg=…&json=true");
        }
        for (const char* key :
             {"API.HTTPHeaders", "Identity.PeerID", "Pinning.Recursive", "Addresses.API", "APIs",
              "Pinning.RemoteServices.s.API.Endpoint", "Pinning.RemoteServices.s.Policies.MFS.Enable", ""}) {
            const QByteArray query = "arg=" + QByteArray(key) + "&arg=v";
            row("/config", query, query);
        }
        row("/config", "arg=Identity.PrivKey", "arg=Identity.PrivKey");
        row("/config/show", "arg=API&arg=v", "arg=API&arg=v");
    }
    /// In the line of the request and in the text of its failure; what is sent stays.
    void secretsAreNotShown()
    {
        QFETCH(const QString, path);
        QFETCH(const QString, query);
        QFETCH(const QString, shown);
        QString line;
        connect(client.get(), &IpfsClient::rpcRequestIssued, this, [&line](const QString& text) { line = text; });
        node->answer(path.toLatin1(), NodeAnswer::error("no"));
        QNetworkReply* reply = client->postRequest(path, QUrlQuery(query));
        QTRY_VERIFY(reply->isFinished());
        reply->deleteLater();
        const QString address = client->baseUrl() + path + u'?';
        QCOMPARE(line.section(u' ', 3), address + shown);
        QCOMPARE(reply->errorString(),
                 u"Error transferring %1 - server replied: Internal Server Error"_s.arg(address + shown));
        QCOMPARE(node->requests().constFirst().rawQuery, query.toLatin1());
    }

    void originHeader_data()
    {
        const auto row = addColumns<bool, QString, QByteArray>("on", "value", "sent");
        row("off", false, u"http://a"_s, QByteArray());
        row("on", true, u" http://a "_s, QByteArray("http://a"));
        row("blank takes the default", true, u" "_s, QByteArray("Norvo 1.1.3"));
        row("long is cut", true, QString(300, u'x'), QByteArray(256, 'x'));
        row("no second header", true, u"a\r\nX: y"_s, QByteArray("aX: y"));
    }
    void originHeader()
    {
        QFETCH(const bool, on);
        QFETCH(const QString, value);
        QFETCH(const QByteArray, sent);
        QSettings settings = openAppSettings();
        settings.setValue(SettingsKeys::sendOrigin, on);
        settings.setValue(SettingsKeys::originValue, value);
        settings.sync();
        node->allowOrigin(sent);
        node->answer("/version", NodeAnswer::json("{}"));
        client->ping();
        QTRY_COMPARE(log->lines, QStringList {u"connected"_s});
        QCOMPARE(node->requests().constFirst().header("Origin"), sent);
    }

    void nodeInfo_data()
    {
        const auto row = addColumns<NodeAnswer, QStringList>("answer", "outcome");
        row("good", NodeAnswer::json(R"({"ID":"12D3","AgentVersion":"kubo/0.43.0","Addresses":null})"),
            QStringList {u"node 12D3 kubo/0.43.0"_s});
        row("keys missing", NodeAnswer::json("{}"), QStringList {u"node  "_s});
        row("no object", NodeAnswer::json("[]"), QStringList());
        row("half an object", NodeAnswer::json("{\"ID\":"), QStringList());
        row("refused", NodeAnswer::text(403, "403 - Forbidden\n"),
            QStringList {u"error Failed to get node info: Error transferring http://127.0.0.1:%1"
                         "/api/v0/id - server replied: Forbidden"_s});
    }
    void nodeInfo()
    {
        QFETCH(const NodeAnswer, answer);
        QFETCH(QStringList, outcome);
        outcome.replaceInStrings(u"%1"_s, QString::number(node->port()));
        node->answer("/id", answer);
        client->fetchNodeInfo();
        QTRY_VERIFY(node->count("/id") == 1 && client->findChildren<QNetworkReply*>().isEmpty());
        QCOMPARE(log->lines, outcome);
    }

    /// What the node said comes before the call's own signals, and only where the call itself is worth a word.
    void nodeWordsComeFirst_data()
    {
        const auto row = addColumns<QByteArray, NodeAnswer, QStringList>("path", "answer", "lines");
        const NodeAnswer error = NodeAnswer::error("no \\\"such\\\" thing");
        const NodeAnswer brokenOff = NodeAnswer::brokenOff("ab", "block was lost");
        NodeAnswer shortCat = brokenOff;
        shortCat.headers.emplaceBack("X-Content-Length", "12");
        const NodeAnswer emptyDag = NodeAnswer::brokenOff({}, "json: unsupported value: NaN");
        row("JSON error", QByteArray("/ls"), error,
            QStringList {u"said /ls no \"such\" thing"_s, u"error"_s, u"ls a"_s});
        row("no JSON", QByteArray("/ls"), NodeAnswer::text(403, "403 - Forbidden\n"),
            QStringList {u"error"_s, u"ls a"_s});
        row("trailer", QByteArray("/cat"), brokenOff,
            QStringList {u"said /cat block was lost"_s, u"cat failed a block was lost"_s});
        row("trailer, short", QByteArray("/cat"), shortCat,
            QStringList {u"said /cat block was lost"_s, u"cat failed a 2 of 12 bytes received"_s});
        row("fact in turn", QByteArray("/dag/stat"), error, QStringList {u"error"_s, u"size a -1"_s});
        row("DAG of no bytes", QByteArray("/dag/stat"), emptyDag, QStringList {u"size a 0"_s});
    }
    void nodeWordsComeFirst()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QStringList, lines);
        node->answer(path, answer);
        path == "/ls"        ? client->fetchLs(u"a"_s)
            : path == "/cat" ? client->fetchCat(u"a"_s)
                             : client->fetchObjectStat(u"a"_s);
        QTRY_COMPARE(log->lines.size(), lines.size());
        for (qsizetype i = 0; i < lines.size(); ++i)
            QVERIFY2(log->lines.at(i).startsWith(lines.at(i)), qPrintable(log->lines.at(i)));
    }

    void pingFailureTellsTheStateFirst()
    {
        node->stop();
        client->ping();
        QTRY_COMPARE(log->lines.size(), 2);
        QCOMPARE(log->lines,
                 QStringList({u"disconnected"_s, u"error Cannot connect to Kubo RPC: Connection refused"_s}));
    }

    void nothingLeavesForAHostThatIsNone_data()
    {
        QTest::addColumn<QString>("host");
        for (const auto* host : {"http://127.0.0.1", "127.0.0.1/x", "user@127.0.0.1", "127.0.0.1:80", "two words", ""})
            QTest::newRow(host) << QString::fromLatin1(host);
    }
    void nothingLeavesForAHostThatIsNone()
    {
        QFETCH(const QString, host);
        client->setEndpoint(host, node->port());
        client->ping();
        QTRY_COMPARE(log->lines.size(), 2);
        QVERIFY(log->lines.at(1).startsWith(u"error Cannot connect to Kubo RPC: "_s));
        QCOMPARE(node->requests().size(), 0);
    }

    void baseUrls()
    {
        client->setEndpoint(u"::1"_s, 5001);
        QCOMPARE(client->baseUrl(), u"http://[::1]:5001/api/v0"_s);
        client->setEndpoint(u"node/x"_s, 5001); // no host, so shown as it was given
        QCOMPARE(client->baseUrl(), u"http://node/x:5001/api/v0"_s);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_Rpc)
#include "tst_rpc.moc"
