// SPDX-License-Identifier: MIT
#include "ClientLog.h"

using namespace Qt::StringLiterals;

namespace {

const QByteArray refsPath = "/refs";
const QByteArray dagStatPath = "/dag/stat";
const QByteArray filesStatPath = "/files/stat";
const QByteArray lsPath = "/ls";

QStringList numbered(int count)
{
    QStringList cids;
    for (int i = 0; i < count; ++i)
        cids.append(u"cid"_s + QString::number(i));
    return cids;
}

QByteArray links(const QByteArrayList& names)
{
    QByteArrayList list;
    for (const QByteArray& name : names)
        list.append("{\"Name\":\"" + name + "\",\"Hash\":\"h\",\"Type\":2}");
    return "{\"Objects\":[{\"Links\":[" + list.join(',') + "]}]}";
}

} // namespace

class tst_Metadata : public ClientTest
{
    Q_OBJECT

private slots:
    void requests()
    {
        for (const QByteArray& path : {refsPath, dagStatPath, filesStatPath, lsPath})
            node->answer(path, NodeAnswer::json("{}"));
        client->fetchRefs(u"a+b"_s);
        client->fetchObjectStat(u"a+b"_s);
        client->fetchKind(u"a+b"_s);
        client->fetchRefs({}); // nothing to ask for
        client->fetchObjectStat({});
        client->fetchKind({});
        QTRY_COMPARE(log->lines.size(), 3);
        QByteArrayList sent;
        for (const NodeRequest& request : node->requests())
            sent.append(request.path + '?' + request.rawQuery);
        std::ranges::sort(sent);
        QCOMPARE(sent,
                 QByteArrayList({"/dag/stat?arg=a%2Bb&progress=false", "/files/stat?arg=%2Fipfs%2Fa%2Bb",
                                 "/ls?arg=a%2Bb&cid-base=base32&upgrade-cidv0-in-output=true",
                                 "/refs?arg=a%2Bb&recursive=true"}));
    }

    void facts_data()
    {
        addColumns<QByteArray, NodeAnswer, NodeAnswer, QString>("path", "answer", "ls", "line");
        const auto fact = [](const char* name, const QByteArray& path, const QByteArray& body, const QString& line) {
            QTest::newRow(name) << path << NodeAnswer::json(body) << NodeAnswer() << line;
        };
        fact("refs in order, duplicates kept", refsPath,
             "{\"Ref\":\"b\",\"Err\":\"\"}\n{\"Ref\":\"a\"}\n{\"Ref\":\"b\"}", u"refs c b a b"_s);
        fact("refs as links", refsPath, "{\"Cid\":{\"/\":\"l\"}}\n{\"Cid\":\"s\"}\n{\"Cid\":7}\n", u"refs c l s"_s);
        fact("an error line among refs stops nothing", refsPath,
             "{\"Ref\":\"\",\"Err\":\"lost\"}\nnonsense\n{\"Ref\":\"a\"}\n", u"refs c a"_s);
        fact("an empty Ref hides a Cid", refsPath, "{\"Ref\":\"\",\"Cid\":\"a\"}\n", u"refs c"_s);
        fact("a list for a thread", refsPath, "{\"Ref\":\"a\",\"Err\":\"\"}\n" + QByteArray(70'000, ' '),
             u"refs c a"_s);
        fact("no refs", refsPath, {}, u"refs c"_s);
        fact("total before cumulative", dagStatPath, R"({"CumulativeSize":7,"TotalSize":69})", u"size c 69"_s);
        fact("cumulative before size", dagStatPath, R"({"Size":7,"CumulativeSize":"12"})", u"size c 12"_s);
        fact("above 32 bits", dagStatPath, R"({"Size":5000000000})", u"size c 5000000000"_s);
        fact("no number is 0", dagStatPath, R"({"TotalSize":"big"})", u"size c 0"_s);
        fact("none of the keys", dagStatPath, "{}", u"size c -1"_s);
        fact("empty body, as for the empty file", dagStatPath, {}, u"size c -1"_s);
        const auto kind = [](const char* name, const QByteArray& stat, const QByteArray& ls, const QString& line) {
            const auto bodyOrError = [](const QByteArray& body) {
                return body.isEmpty() ? NodeAnswer::error("no") : NodeAnswer::json(body);
            };
            QTest::newRow(name) << filesStatPath << bodyOrError(stat) << bodyOrError(ls) << line;
        };
        kind("directory", R"({"Type":"directory"})", {}, u"kind c Directory"_s);
        kind("symlink", R"({"Type":"symbolic-link"})", {}, u"kind c Symlink"_s);
        kind("capitals match nothing", R"({"Type":"DIRECTORY"})", links({"0", "1"}), u"kind c File"_s);
        kind("ordinary name", {}, links({"0", "a"}), u"kind c Directory"_s);
        kind("nameless chunk", "nonsense", links({""}), u"kind c Directory"_s);
        kind("digits beyond ASCII", "{}", links({"٣"}), u"kind c File"_s);
        kind("no links", {}, links({}), u"kind c Other"_s);
        kind("listing fails too", {}, {}, u"kind c Other"_s);
    }
    void facts()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const NodeAnswer, answer);
        QFETCH(const NodeAnswer, ls);
        node->answer(path, answer);
        node->answer(lsPath, ls);
        fetch(path, u"c"_s);
        QTRY_VERIFY(!log->lines.isEmpty() && node->openNow() == 0);
        QTEST(log->lines.join(u'|'), "line");
        fetch(path, u"c"_s); // its work has ended, so it is asked for anew
        QTRY_COMPARE(log->lines.size(), 2);
        QCOMPARE(node->count(path), 2);
    }

    void failures_data()
    {
        // error: how it begins
        addColumns<QByteArray, NodeAnswer, QString, QString>("path", "answer", "error", "value");
        QTest::newRow("refs broken off") << refsPath << NodeAnswer::dropAt("{\"Ref\":\"a\"}\n{\"Ref\":\"b\"}\n", 14)
                                         << u"error Failed to get refs for c: Connection closed"_s << u"refs c"_s;
        QTest::newRow("size fails") << dagStatPath << NodeAnswer::error("error traversing DAG")
                                    << u"error DAG stat failed for c: Error transferring"_s << u"size c -1"_s;
    }
    void failures()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QString, error);
        node->answer(path, answer);
        fetch(path, u"c"_s);
        QTRY_COMPARE(log->lines.size(), 2);
        QVERIFY2(log->lines.at(0).startsWith(error), qPrintable(log->lines.at(0)));
        QTEST(log->lines.at(1), "value");
    }

    void limitsAreReachedAndKept()
    {
        for (const QByteArray& path : {refsPath, dagStatPath, filesStatPath})
            node->answer(path, NodeAnswer::hold());
        for (const QString& cid : numbered(60)) {
            client->fetchRefs(cid);
            client->fetchObjectStat(cid);
            client->fetchKind(cid);
        }
        QTRY_COMPARE(node->openNow(), 56);
        QCOMPARE(node->openNow(refsPath), 8);
        QCOMPARE(node->openNow(dagStatPath), 24);
        QCOMPARE(node->openNow(filesStatPath), 24);

        // All of them silent for ever: what a person waits for goes through, and no cancel drops it.
        client->fetchRefs(u"cid1"_s, IpfsClient::AtOnce);
        client->fetchKind(u"cid1"_s, IpfsClient::AtOnce);
        QTRY_COMPARE(node->openNow(), 58);
        node->answer("/pin/ls", NodeAnswer::json("{\"Cid\":\"p\"}\n"));
        node->answer("/id", NodeAnswer::json(R"({"ID":"x"})"));
        node->answer("/pin/rm", NodeAnswer::json("{}"));
        client->fetchPins(u"recursive+direct"_s, u"base32"_s, true);
        client->fetchNodeInfo();
        QNetworkReply* unpin = client->postRequest(u"/pin/rm"_s, {});
        QTRY_VERIFY(log->lines.contains(u"pins p:"_s) && log->lines.contains(u"node x "_s));
        QTRY_COMPARE(node->count("/pin/rm"), 1);
        unpin->deleteLater();
        QCOMPARE(node->openNow(), 58);
        client->cancelActiveLoading();
        QTRY_COMPARE(node->openNow(), 2);
        log->lines.clear();
        node->answer(lsPath, NodeAnswer::json(links({"1"})));
        while (node->heldCount(refsPath) > 0)
            node->release(refsPath, NodeAnswer::json("{\"Ref\":\"a\"}\n"));
        while (node->heldCount(filesStatPath) > 0)
            node->release(filesStatPath, NodeAnswer::error("no"));
        QTRY_COMPARE(log->lines.size(), 2);
        QVERIFY(log->lines.contains(u"refs cid1 a"_s) && log->lines.contains(u"kind cid1 File"_s));
    }

    void aFinishedRequestMakesRoomForTheNext()
    {
        const NodeAnswer good = NodeAnswer::json(R"({"Size":1})");
        const QList<NodeAnswer> answers {good, NodeAnswer::error("no"), NodeAnswer::dropAt("{", 0)};
        node->answer(dagStatPath, NodeAnswer::hold());
        for (const QString& cid : numbered(30))
            client->fetchObjectStat(cid);
        QTRY_COMPARE(node->heldCount(dagStatPath), 24);
        for (int sent = 25; sent <= 30; ++sent) {
            node->release(dagStatPath, answers.at(sent % 3));
            QTRY_COMPARE(node->count(dagStatPath), sent);
            QTRY_COMPARE(node->heldCount(dagStatPath), 24);
        }
        while (node->heldCount(dagStatPath) > 0)
            node->release(dagStatPath, good);
        QTRY_COMPARE(log->count("size"_L1), 30);
        QCOMPARE(node->mostOpen(dagStatPath), 24);
    }

    void theFallbackKeepsItsSlot()
    {
        node->answer(filesStatPath, NodeAnswer::error("no"));
        node->answer(lsPath, NodeAnswer::hold());
        for (const QString& cid : numbered(40))
            client->fetchKind(cid);
        QTRY_COMPARE(node->heldCount(lsPath), 24);
        QTest::qWait(20);
        QCOMPARE(node->count(filesStatPath), 24);
        client->fetchKind(u"cid3"_s);  // in flight still: one request answers all who asked
        client->fetchKind(u"cid39"_s); // queued still
        for (int i = 0; i < 40; ++i) {
            QTRY_VERIFY(node->heldCount(lsPath) > 0);
            node->release(lsPath, NodeAnswer::json(links({"1"})));
        }
        QTRY_COMPARE(log->count("kind"_L1), 40);
        QCOMPARE(node->count(filesStatPath), 40);
    }

    void cancelDropsEverything_data()
    {
        const auto row = addColumns<QByteArray, int>("path", "limit");
        row("refs", refsPath, 8);
        row("sizes", dagStatPath, 24);
        row("kinds", filesStatPath, 24);
        row("kinds in their fallback", lsPath, 24);
    }
    void cancelDropsEverything()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const int, limit);
        if (path == lsPath)
            node->answer(filesStatPath, NodeAnswer::error("no"));
        node->answer(path, NodeAnswer::hold());
        for (const QString& cid : numbered(limit + 100))
            fetch(path, cid);
        QTRY_COMPARE(node->heldCount(path), limit);
        client->cancelActiveLoading();
        QTRY_COMPARE(node->openNow(), 0);
        QCOMPARE(log->lines, QStringList());

        // The count of open replies is exact: all of the limit is there again, and no more than it.
        for (const QString& cid : numbered(limit + 10))
            fetch(path, cid);
        QTRY_COMPARE(node->heldCount(path), limit);
        QTest::qWait(20);
        QCOMPARE(node->openNow(), limit);
        QCOMPARE(node->mostOpen(path), limit);
    }

    void aListenerThatAsksAgainIsRefusedUntilLater()
    {
        node->answer(dagStatPath, NodeAnswer::json(R"({"Size":1})"));
        connect(client.get(), &IpfsClient::dagStatReceived, this, [this](const QString& cid) {
            client->fetchObjectStat(cid); // still known
            if (cid == u"a"_s)
                client->fetchObjectStat(u"b"_s);
        });
        client->fetchObjectStat(u"a"_s);
        QTRY_COMPARE(log->lines, QStringList({u"size a 1"_s, u"size b 1"_s}));
        QTest::qWait(20);
        QCOMPARE(node->count(dagStatPath), 2);
    }

    void aListenerMayCancel()
    {
        node->answer(dagStatPath, NodeAnswer::json(R"({"Size":1})"));
        connect(client.get(), &IpfsClient::dagStatReceived, client.get(), &IpfsClient::cancelActiveLoading);
        for (const QString& cid : numbered(100))
            client->fetchObjectStat(cid);
        QTRY_COMPARE(log->lines.size(), 1);
        QTRY_COMPARE(node->openNow(), 0);
        client->fetchObjectStat(u"cid50"_s);
        QTRY_COMPARE(log->lines.size(), 2);
    }

    void listings_data()
    {
        addColumns<NodeAnswer, QString>("answer", "lines");
        const auto row = [](const char* name, const QByteArray& body, const QString& lines) {
            QTest::newRow(name) << NodeAnswer::json(body) << lines;
        };
        row("object with a name, size as text",
            R"({"Objects":[{"Name":"o","Links":[{"Name":"n","Hash":"h","Size":"12","Type":1}]}]})",
            u"ls c [o/n h 12 1]"_s);
        row("elements that are no objects", R"({"Objects":[7,{"Links":[null,{"Hash":"h"}]}]})", u"ls c [/ h 0 0]"_s);
        row("entries", R"({"Entries":[{"Hash":"h","Type":"dir"},"x"]})", u"ls c [/ h 0 0]"_s);
        row("objects stand before entries", R"({"Objects":[],"Entries":[{"Hash":"h"}]})", u"ls c"_s);
        row("neither", "{}", u"error List failed for c: Unexpected ls response format|ls c"_s);
        row("nothing", {}, u"error List failed for c: Invalid JSON from ls|ls c"_s);
        QTest::newRow("fails") << NodeAnswer::error("no")
                               << u"error List failed for c: Error transferring http://127.0.0.1:%1/api/v0"
                                  "/ls?arg=c&cid-base=base32&upgrade-cidv0-in-output=true"
                                  " - server replied: Internal Server Error|ls c"_s;
    }
    void listings()
    {
        QFETCH(const NodeAnswer, answer);
        QFETCH(QString, lines);
        node->answer(lsPath, answer);
        client->fetchLs(u"c"_s);
        client->fetchLs({});
        QTRY_COMPARE(log->outcome().join(u'|'), lines.replace(u"%1"_s, QString::number(node->port())));
        QCOMPARE(node->count(lsPath), 1);
    }

    void cats_data()
    {
        const auto row = addColumns<NodeAnswer, QString>("answer", "line");
        const auto file = [](const QByteArray& body, const QByteArray& length) {
            NodeAnswer answer = NodeAnswer::text(200, body);
            answer.headers.emplaceBack("X-Content-Length", length);
            return answer;
        };
        row("whole", file(QByteArray("a\0b", 3), "3"), u"cat c 3"_s);
        row("empty", file({}, "0"), u"cat c 0"_s);
        row("length not known", NodeAnswer::text(200, "abc"), u"cat c 3"_s);
        row("short", file("abc", "12"), u"cat failed c 3 of 12 bytes received"_s);
        row("fails", NodeAnswer::error("this dag node is a directory"),
            u"cat failed c Error transferring http://127.0.0.1:%1/api/v0/cat?arg=c"
            " - server replied: Internal Server Error"_s);
    }
    void cats()
    {
        QFETCH(const NodeAnswer, answer);
        QFETCH(QString, line);
        node->answer("/cat", answer);
        client->fetchCat(u"c"_s);
        client->fetchCat({});
        QTRY_COMPARE(log->outcome().join(u'|'), line.replace(u"%1"_s, QString::number(node->port())));
        QCOMPARE(node->count("/cat"), 1);
    }

    void callsEndInSilenceWithTheirOwner()
    {
        auto owner = std::make_unique<QObject>();
        for (const QByteArray& path : {lsPath, "/cat"_ba, refsPath})
            node->answer(path, NodeAnswer::hold());
        client->fetchLs(u"c"_s, owner.get());
        client->fetchCat(u"c"_s, owner.get());
        client->fetchRefs(u"c"_s, IpfsClient::AtOnce, owner.get());
        client->fetchLs(u"of nobody"_s);
        QTRY_COMPARE(node->openNow(), 4);
        owner.reset();
        QTRY_COMPARE(node->openNow(), 1);
        QCOMPARE(log->lines, QStringList());
        node->release(lsPath, NodeAnswer::json("{\"Objects\":[]}"), node->heldCount(lsPath) - 1);
        QTRY_COMPARE(log->lines, QStringList {u"ls of nobody"_s});
    }

private:
    void fetch(const QByteArray& path, const QString& cid)
    {
        if (path == refsPath)
            client->fetchRefs(cid);
        else if (path == dagStatPath)
            client->fetchObjectStat(cid);
        else
            client->fetchKind(cid);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_Metadata)
#include "tst_metadata.moc"
