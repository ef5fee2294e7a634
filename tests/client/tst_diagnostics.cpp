// SPDX-License-Identifier: MIT
#include "ClientLog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

const QByteArray wan = R"({"Buckets":[],"Name":"wan"})";
const QByteArray lan = R"({"Buckets":[],"Name":"lan"})";
const QString wanText = QString::fromUtf8(wan);
const QByteArray offline = "this command must be run in online mode. Try running 'ipfs daemon' first";

QString textOf(const QJsonValue& value)
{
    const QJsonDocument document = value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    return QString::fromUtf8(document.toJson(QJsonDocument::Compact));
}

void row(const char* name, const NodeAnswer& answer, const QStringList& expected)
{
    QTest::newRow(name) << answer << expected;
}
void row(const char* name, const QByteArray& body, const QString& expected)
{
    row(name, NodeAnswer::json(body), QStringList(expected));
}
/// As row, of a failure that is reported in two ways.
void failure(const char* name, const NodeAnswer& answer, const QString& message, const QString& said = {})
{
    QStringList expected {u"error "_s + message, u"failed "_s + message};
    if (!said.isEmpty())
        expected.prepend(u"said "_s + said);
    row(name, answer, expected);
}

QString refused(const NodeServer& node, const QByteArray& pathAndQuery)
{
    return u"Error transferring http://127.0.0.1:%1/api/v0%2 - server replied: Internal Server Error"_s.arg(
        QString::number(node.port()), QString::fromLatin1(pathAndQuery));
}

} // namespace

class tst_Diagnostics : public ClientTest
{
    Q_OBJECT

private slots:
    void init()
    {
        ClientTest::init();
        const auto failed = [this](const QString& why) { log->lines.append(u"failed "_s + why); };
        const auto stat = [this](const QJsonObject& object) { log->lines.append(textOf(object)); };
        const IpfsClient* c = client.get();
        connect(c, &IpfsClient::dhtStatsReceived, this,
                [this](const QJsonValue& data) { log->lines.append(textOf(data)); });
        connect(c, &IpfsClient::dhtStatsFailed, this, failed);
        connect(c, &IpfsClient::bitswapStatReceived, this, stat);
        connect(c, &IpfsClient::bitswapStatFailed, this, failed);
        connect(c, &IpfsClient::repoStatReceived, this, stat);
        connect(c, &IpfsClient::repoStatFailed, this, failed);
        connect(c, &IpfsClient::repoGcCompleted, this, [this](const QStringList& cids, const QStringList& errors) {
            log->lines.append(u"gc %1|%2"_s.arg(cids.join(u','), errors.join(u',')));
        });
        connect(c, &IpfsClient::repoGcFailed, this, failed);
    }

    void whatIsAsked()
    {
        client->fetchDhtStats({});
        client->fetchDhtStats(u" w+n "_s);
        client->fetchBitswapStat(true, false);
        client->fetchBitswapStat(false, true);
        client->fetchRepoStat();
        client->runRepoGc();
        QTRY_COMPARE(node->requests().size(), 6);
        QSet<QByteArray> asked;
        for (const NodeRequest& request : node->requests())
            asked.insert(request.path + '?' + request.rawQuery);
        QCOMPARE(
            asked,
            QSet<QByteArray>({"/stats/dht?", "/stats/dht?arg=%20w%2Bn%20", "/bitswap/stat?verbose=true&human=false",
                              "/bitswap/stat?verbose=false&human=true", "/repo/stat?", "/repo/gc?stream-errors=true"}));
    }

    void dhtStats_data()
    {
        columns();
        const QString both = u"[%1,%2]"_s.arg(QString::fromUtf8(lan), wanText);
        row("two lines", lan + '\n' + wan + '\n', both);
        row("lines with blanks", " \r\n" + lan + "\r\n\n\t" + wan, both);
        row("one garbled line", lan.chopped(1) + '\n' + wan + '\n', wanText);
        row("scalars and arrays between", "7\n" + lan + "\n\"x\"\n[1]\n" + wan, both);
        row("one line", wan + '\n', wanText);
        row("one object over lines", "{\"Buckets\":[],\n\n\"Name\":\n\"wan\"}", wanText);
        row("an array", "[" + wan + ",\n7]", u"[%1,7]"_s.arg(wanText));
        row("an empty object", "{}", u"{}"_s);
        row("an error as data", R"({"Error":"x"})", uR"({"Error":"x"})"_s);
        row("broken off after a view", NodeAnswer::brokenOff(wan + '\n', "no LAN client found"),
            {u"said /stats/dht no LAN client found"_s, wanText});
        for (const auto* nothing : {"", " \n ", "7\n8", "x"})
            failure(nothing, NodeAnswer::json(nothing), u"Invalid DHT stats JSON: illegal value"_s);
        failure("arrays in lines", NodeAnswer::json("[1]\n[2]"),
                u"Invalid DHT stats JSON: garbage at the end of the document"_s);
        failure("cut", NodeAnswer::dropAt(wan + '\n', 4), u"Failed to get DHT stats: Connection closed"_s);
        failure("offline", NodeAnswer::error(offline), u"Failed to get DHT stats: REFUSED /stats/dht"_s,
                u"/stats/dht "_s + QString::fromUtf8(offline));
    }
    void dhtStats()
    {
        verify("/stats/dht", [this] { client->fetchDhtStats({}); });
    }

    void plainStats_data()
    {
        columns();
        row("an object", R"({"BlocksSent":3,"Peers":null})", uR"({"BlocksSent":3,"Peers":null})"_s);
        row("an empty object", "{}", u"{}"_s);
        row("a number without a limit", R"({"StorageMax":18446744073709551615})",
            uR"({"StorageMax":18446744073709552000})"_s);
        failure("an error on a good status", NodeAnswer::json(R"({"Error":" no "})"), u"Failed to ACTION: no"_s);
        failure("an array", NodeAnswer::json("[]"), u"Failed to ACTION: invalid JSON response"_s);
        failure("nothing", NodeAnswer::json({}), u"Failed to ACTION: invalid JSON response"_s);
        failure("offline", NodeAnswer::error("unable to run offline: x", 1),
                u"Failed to ACTION: {\"Message\":\"unable to run offline: x\",\"Code\":1,\"Type\":\"error\"}"_s,
                u"PATH unable to run offline: x"_s);
        failure("no answer", NodeAnswer::dropAt({}, 0), u"Failed to ACTION: Connection closed"_s);
    }
    void plainStats()
    {
        verify(
            "/bitswap/stat", [this] { client->fetchBitswapStat(false, false); }, u"get bitswap stats"_s);
        log->lines.clear();
        verify(
            "/repo/stat", [this] { client->fetchRepoStat(); }, u"get repo stat"_s);
    }

    void repoGc_data()
    {
        columns();
        const QByteArray removed = R"({"Key":{"/":"Qa"}})";
        const QByteArray failed = R"({"Key":null,"Error":" no "})";
        row("nothing to do", "", u"gc |"_s);
        row("no JSON", "garbage\n<html>", u"gc |"_s);
        row("a removal and an error", removed + '\n' + failed + '\n', u"gc Qa|no"_s);
        row("both in one line, blanks around", R"( { "Error":"e", "Key":{"/":" Qb "} } )", u"gc Qb|e"_s);
        row("twice the same", removed + "\r\n" + removed, u"gc Qa,Qa|"_s);
        row("keys as texts", R"({"Key":"Qa"})", u"gc |"_s);
        row("blank CID, number as error", "{\"Key\":{\"/\":\" \"}}\n{\"Error\":7}", u"gc |"_s);
        row("escapes", R"({"Key":{"/":"Q\u0061"}})", u"gc Qa|"_s);
        row("more members", R"({"Key":{"/":"Qa","x":1}})", u"gc Qa|"_s);
        row("after what can't be read", "{\"Key\":{\"/\":\"Qb\"}\n" + removed, u"gc Qa|"_s);
        row("one object over lines", "\n{\"Error\":\"e\",\n\"Key\":\n{\"/\":\"Qa\"}}\n", u"gc Qa|e"_s);
        row("a document in parts that name nothing", "{\"Key\":{\"x\":1}}\n[\n]", u"gc |"_s);
        const QString words = u"encountered errors during gc run"_s;
        row("with the trailer of errors", NodeAnswer::brokenOff(removed + '\n' + failed + '\n', words.toUtf8()),
            {u"said /repo/gc "_s + words, u"gc Qa|no"_s});
        failure("cut", NodeAnswer::dropAt(removed + '\n' + removed, 25), u"Failed to run repo GC: Connection closed"_s);
        failure("refused", NodeAnswer::error("locked"), u"Failed to run repo GC: REFUSED /repo/gc?stream-errors=true"_s,
                u"/repo/gc locked"_s);
    }
    void repoGc()
    {
        verify("/repo/gc", [this] { client->runRepoGc(); });
    }

    /// Bodies that are read on a thread.
    void longAnswers()
    {
        constexpr int lines = 20'000;
        QByteArray collected;
        QByteArray views;
        for (int i = 0; i < lines; ++i) {
            collected += "{\"Key\":{\"/\":\"Q" + QByteArray::number(i) + "\"}}\n";
            views += wan + '\n';
        }
        int cids = 0;
        QString last;
        qsizetype viewCount = 0;
        connect(client.get(), &IpfsClient::repoGcCompleted, this, [&](const QStringList& list) {
            cids += int(list.size());
            last = list.constLast();
        });
        connect(client.get(), &IpfsClient::dhtStatsReceived, this,
                [&](const QJsonValue& data) { viewCount += data.toArray().size(); });
        node->answer("/repo/gc", NodeAnswer::json(collected));
        node->answer("/stats/dht", NodeAnswer::json(views));
        client->runRepoGc();
        client->fetchDhtStats({});
        QTRY_COMPARE(cids, lines);
        QTRY_COMPARE(viewCount, lines);
        QCOMPARE(last, u"Q%1"_s.arg(lines - 1));
    }

    /// What acts is reported whatever node is in use by then; what is only asked for isn't.
    void anotherNode()
    {
        for (const auto* path : {"/stats/dht", "/bitswap/stat", "/repo/stat", "/repo/gc"})
            node->answer(path, NodeAnswer::hold());
        client->fetchDhtStats({});
        client->fetchBitswapStat(false, false);
        client->fetchRepoStat();
        client->runRepoGc();
        QTRY_COMPARE(node->requests().size(), 4);
        client->setEndpoint(u"127.0.0.1"_s, 1);
        node->release("/stats/dht", NodeAnswer::json(wan));
        node->release("/bitswap/stat", NodeAnswer::json("{}"));
        node->release("/repo/stat", NodeAnswer::error("no"));
        QTRY_COMPARE(node->openNow("/stats/dht") + node->openNow("/bitswap/stat") + node->openNow("/repo/stat"), 0);
        node->release("/repo/gc", NodeAnswer::error("no"));
        QTRY_COMPARE(log->lines.size(), 3);
        QCOMPARE(log->lines.constFirst(), u"said /repo/gc no"_s);
        QVERIFY(log->lines.constLast().startsWith(u"failed Failed to run repo GC: "_s));
    }

private:
    static void columns() { addColumns<NodeAnswer, QStringList>("answer", "expected"); }
    template <typename Call> void verify(const QByteArray& path, Call call, const QString& action = {})
    {
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QStringList, expected);
        node->answer(path, answer);
        call();
        QStringList lines = expected;
        for (QString& line : lines) {
            line.replace(u"ACTION"_s, action).replace(u"PATH"_s, QString::fromLatin1(path));
            if (const qsizetype at = line.indexOf(u"REFUSED "_s); at >= 0)
                line = line.first(at) + refused(*node, line.sliced(at + 8).toLatin1());
            line = line.trimmed();
        }
        QTRY_COMPARE(log->lines.size(), lines.size());
        for (QString& line : log->lines)
            line = line.trimmed();
        QCOMPARE(log->lines, lines);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_Diagnostics)

#include "tst_diagnostics.moc"
