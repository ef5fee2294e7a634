#include "ClientLog.h"

#include <QSignalSpy>

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
            node->answer(path, FakeAnswer::json("{}"));
        client->fetchRefs(u"a+b"_s);
        client->fetchObjectStat(u"a+b"_s);
        client->fetchKind(u"a+b"_s);
        for (int i = 0; i < 2; ++i) { // nothing to ask for
            client->fetchRefs({});
            client->fetchObjectStat({});
            client->fetchKind({});
        }
        QTRY_COMPARE(log->lines.size(), 3);
        QByteArrayList sent;
        for (const FakeRequest& request : node->requests())
            sent.append(request.path + '?' + request.rawQuery);
        std::ranges::sort(sent);
        QCOMPARE(sent,
                 QByteArrayList({"/dag/stat?arg=a%2Bb&progress=false", "/files/stat?arg=%2Fipfs%2Fa%2Bb",
                                 "/ls?arg=a%2Bb&cid-base=base32&upgrade-cidv0-in-output=true",
                                 "/refs?arg=a%2Bb&recursive=true"}));
    }

    void facts_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<FakeAnswer>("answer");
        QTest::addColumn<FakeAnswer>("ls");
        QTest::addColumn<QStringList>("lines");
        const FakeAnswer none;
        const auto fact = [](const char* name, const QByteArray& path, const FakeAnswer& answer, const QString& line) {
            QTest::newRow(name) << path << answer << FakeAnswer() << QStringList {line};
        };
        const auto kind = [](const char* name, const FakeAnswer& stat, const FakeAnswer& ls, const QString& line) {
            QTest::newRow(name) << filesStatPath << stat << ls << QStringList {line};
        };
        fact("refs in order, duplicates kept", refsPath,
             FakeAnswer::json("{\"Ref\":\"b\",\"Err\":\"\"}\n{\"Ref\":\"a\"}\n{\"Ref\":\"b\"}"), u"refs c b a b"_s);
        fact("refs as links", refsPath, FakeAnswer::json("{\"Cid\":{\"/\":\"l\"}}\n{\"Cid\":\"s\"}\n{\"Cid\":7}\n"),
             u"refs c l s"_s);
        fact("an error line among refs stops nothing", refsPath,
             FakeAnswer::json("{\"Ref\":\"\",\"Err\":\"lost\"}\nnonsense\n{\"Ref\":\"a\"}\n"), u"refs c a"_s);
        fact("an empty Ref hides a Cid", refsPath, FakeAnswer::json("{\"Ref\":\"\",\"Cid\":\"a\"}\n"), u"refs c"_s);
        fact("a list for a thread", refsPath,
             FakeAnswer::json("{\"Ref\":\"a\",\"Err\":\"\"}\n" + QByteArray(70'000, ' ')), u"refs c a"_s);
        fact("no refs", refsPath, FakeAnswer::json({}), u"refs c"_s);
        fact("total before cumulative", dagStatPath, FakeAnswer::json(R"({"CumulativeSize":7,"TotalSize":69})"),
             u"size c 69"_s);
        fact("cumulative before size", dagStatPath, FakeAnswer::json(R"({"Size":7,"CumulativeSize":"12"})"),
             u"size c 12"_s);
        fact("above 32 bits", dagStatPath, FakeAnswer::json(R"({"Size":5000000000})"), u"size c 5000000000"_s);
        fact("no number is 0", dagStatPath, FakeAnswer::json(R"({"TotalSize":"big"})"), u"size c 0"_s);
        fact("none of the keys", dagStatPath, FakeAnswer::json("{}"), u"size c -1"_s);
        fact("empty body, as for the empty file", dagStatPath, FakeAnswer::json({}), u"size c -1"_s);
        fact("no object", dagStatPath, FakeAnswer::json("[{\"Size\":1}]"), u"size c -1"_s);
        kind("directory", FakeAnswer::json(R"({"Type":"directory"})"), none, u"kind c Directory"_s);
        kind("file", FakeAnswer::json(R"({"Type":"file"})"), none, u"kind c File"_s);
        kind("symlink", FakeAnswer::json(R"({"Type":"symbolic-link"})"), none, u"kind c Symlink"_s);
        kind("capitals match nothing", FakeAnswer::json(R"({"Type":"DIRECTORY"})"), FakeAnswer::json(links({"0", "1"})),
             u"kind c File"_s);
        kind("ordinary name", FakeAnswer::error("no"), FakeAnswer::json(links({"0", "a"})), u"kind c Directory"_s);
        kind("nameless chunk", FakeAnswer::json("nonsense"), FakeAnswer::json(links({""})), u"kind c Directory"_s);
        kind("digits beyond ASCII", FakeAnswer::json("{}"), FakeAnswer::json(links({"٣"})), u"kind c File"_s);
        kind("no links", FakeAnswer::error("no"), FakeAnswer::json(links({})), u"kind c Other"_s);
        kind("listing fails too", FakeAnswer::error("no"), FakeAnswer::error("no"), u"kind c Other"_s);
    }
    void facts()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const FakeAnswer, answer);
        QFETCH(const FakeAnswer, ls);
        node->answer(path, answer);
        node->answer(lsPath, ls);
        fetch(path, u"c"_s);
        QTRY_VERIFY(!log->lines.isEmpty() && node->openNow() == 0);
        QTEST(log->lines, "lines");
        log->lines.clear();
        fetch(path, u"c"_s); // its work has ended, so it is asked for anew
        QTRY_VERIFY(!log->lines.isEmpty());
        QCOMPARE(node->count(path), 2);
    }

    void failures_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<FakeAnswer>("answer");
        QTest::addColumn<QStringList>("starts");
        QTest::newRow("refs refused") << refsPath << FakeAnswer::text(403, "403 - Forbidden\n")
                                      << QStringList(
                                             {u"error Failed to get refs for c: Error transferring"_s, u"refs c"_s});
        QTest::newRow("refs broken off") << refsPath << FakeAnswer::dropAt("{\"Ref\":\"a\"}\n{\"Ref\":\"b\"}\n", 14)
                                         << QStringList(
                                                {u"error Failed to get refs for c: Connection closed"_s, u"refs c"_s});
        QTest::newRow("size fails") << dagStatPath << FakeAnswer::error("error traversing DAG")
                                    << QStringList(
                                           {u"error DAG stat failed for c: Error transferring"_s, u"size c -1"_s});
    }
    void failures()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const FakeAnswer, answer);
        QFETCH(const QStringList, starts);
        node->answer(path, answer);
        fetch(path, u"c"_s);
        QTRY_COMPARE(log->lines.size(), 2);
        QVERIFY2(log->lines.at(0).startsWith(starts.at(0)), qPrintable(log->lines.at(0)));
        QCOMPARE(log->lines.at(1), starts.at(1));
    }

    void oneRequestAnswersAllWhoAsked()
    {
        node->answer(filesStatPath, FakeAnswer::hold());
        client->fetchKind(u"c"_s);
        client->fetchKind(u"c"_s);
        QTRY_COMPARE(node->heldCount(filesStatPath), 1);
        node->release(filesStatPath, FakeAnswer::json(R"({"Type":"file"})"));
        QTRY_COMPARE(log->lines, QStringList {u"kind c File"_s});
        QCOMPARE(node->count(filesStatPath), 1);
    }

    void limitsAreReachedAndKept()
    {
        for (const QByteArray& path : {refsPath, dagStatPath, filesStatPath})
            node->answer(path, FakeAnswer::hold());
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
        node->answer("/pin/ls", FakeAnswer::json("{\"Cid\":\"p\"}\n"));
        node->answer("/id", FakeAnswer::json(R"({"ID":"x"})"));
        node->answer("/pin/rm", FakeAnswer::json("{}"));
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
        node->answer(lsPath, FakeAnswer::json(links({"1"})));
        while (node->heldCount(refsPath) > 0)
            node->release(refsPath, FakeAnswer::json("{\"Ref\":\"a\"}\n"));
        while (node->heldCount(filesStatPath) > 0)
            node->release(filesStatPath, FakeAnswer::error("no"));
        QTRY_COMPARE(log->lines.size(), 2);
        QVERIFY(log->lines.contains(u"refs cid1 a"_s) && log->lines.contains(u"kind cid1 File"_s));
    }

    void aFinishedRequestMakesRoomForTheNext_data()
    {
        QTest::addColumn<FakeAnswer>("answer");
        QTest::newRow("after success") << FakeAnswer::json(R"({"Size":1})");
        QTest::newRow("after failure") << FakeAnswer::error("no");
        QTest::newRow("after a break") << FakeAnswer::dropAt("{", 0);
    }
    void aFinishedRequestMakesRoomForTheNext()
    {
        QFETCH(const FakeAnswer, answer);
        node->answer(dagStatPath, FakeAnswer::hold());
        for (const QString& cid : numbered(30))
            client->fetchObjectStat(cid);
        QTRY_COMPARE(node->heldCount(dagStatPath), 24);
        for (int sent = 25; sent <= 30; ++sent) {
            node->release(dagStatPath, answer);
            QTRY_COMPARE(node->count(dagStatPath), sent);
            QTRY_COMPARE(node->heldCount(dagStatPath), 24);
        }
        while (node->heldCount(dagStatPath) > 0)
            node->release(dagStatPath, FakeAnswer::json(R"({"Size":1})"));
        QTRY_COMPARE(log->count("size"_L1), 30);
        QCOMPARE(node->mostOpen(dagStatPath), 24);
    }

    void theFallbackKeepsItsSlot()
    {
        node->answer(filesStatPath, FakeAnswer::error("no"));
        node->answer(lsPath, FakeAnswer::hold());
        for (const QString& cid : numbered(40))
            client->fetchKind(cid);
        QTRY_COMPARE(node->heldCount(lsPath), 24);
        QTest::qWait(20);
        QCOMPARE(node->count(filesStatPath), 24);
        client->fetchKind(u"cid3"_s); // in flight still
        for (int i = 0; i < 40; ++i) {
            QTRY_VERIFY(node->heldCount(lsPath) > 0);
            node->release(lsPath, FakeAnswer::json(links({"1"})));
        }
        QTRY_COMPARE(log->count("kind"_L1), 40);
        QCOMPARE(node->count(filesStatPath), 40);
    }

    void cancelDropsEverything_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<int>("limit");
        QTest::newRow("refs") << refsPath << 8;
        QTest::newRow("sizes") << dagStatPath << 24;
        QTest::newRow("kinds") << filesStatPath << 24;
        QTest::newRow("kinds in their fallback") << lsPath << 24;
    }
    void cancelDropsEverything()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const int, limit);
        if (path == lsPath)
            node->answer(filesStatPath, FakeAnswer::error("no"));
        node->answer(path, FakeAnswer::hold());
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
        node->answer(dagStatPath, FakeAnswer::json(R"({"Size":1})"));
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
        node->answer(dagStatPath, FakeAnswer::json(R"({"Size":1})"));
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
        QTest::addColumn<FakeAnswer>("answer");
        QTest::addColumn<QStringList>("lines");
        const auto good = [](const char* name, const QByteArray& body, const QString& line) {
            QTest::newRow(name) << FakeAnswer::json(body) << QStringList {line};
        };
        const auto bad = [](const char* name, const QByteArray& body, const QString& error) {
            QTest::newRow(name) << FakeAnswer::json(body)
                                << QStringList({u"error List failed for c: "_s + error, u"ls c"_s});
        };
        good("object with a name, size as text",
             R"({"Objects":[{"Name":"o","Links":[{"Name":"n","Hash":"h","Size":"12","Type":1}]}]})",
             u"ls c [o/n h 12 1]"_s);
        good("no objects", R"({"Objects":[]})", u"ls c"_s);
        good("elements that are no objects", R"({"Objects":[7,{"Links":[null,{"Hash":"h"}]}]})", u"ls c [/ h 0 0]"_s);
        good("entries", R"({"Entries":[{"Hash":"h","Type":"dir"},"x"]})", u"ls c [/ h 0 0]"_s);
        good("objects stand before entries", R"({"Objects":[],"Entries":[{"Hash":"h"}]})", u"ls c"_s);
        bad("neither", "{}", u"Unexpected ls response format"_s);
        bad("array", "[]", u"Invalid JSON from ls"_s);
        bad("nothing", {}, u"Invalid JSON from ls"_s);
        QTest::newRow("fails") << FakeAnswer::error("no")
                               << QStringList({u"error List failed for c: Error transferring http://127.0.0.1:%1/api/v0"
                                               "/ls?arg=c&cid-base=base32&upgrade-cidv0-in-output=true"
                                               " - server replied: Internal Server Error"_s,
                                               u"ls c"_s});
    }
    void listings()
    {
        QFETCH(const FakeAnswer, answer);
        QFETCH(QStringList, lines);
        lines.replaceInStrings(u"%1"_s, QString::number(node->port()));
        node->answer(lsPath, answer);
        client->fetchLs(u"c"_s);
        client->fetchLs({});
        QTRY_COMPARE(log->lines, lines);
        QCOMPARE(node->count(lsPath), 1);
    }

    void cats_data()
    {
        QTest::addColumn<FakeAnswer>("answer");
        QTest::addColumn<QString>("line");
        const auto file = [](const QByteArray& body, const QByteArray& length) {
            FakeAnswer answer = FakeAnswer::text(200, body);
            answer.headers.emplaceBack("X-Content-Length", length);
            return answer;
        };
        QTest::newRow("whole") << file("a\0b", "1") << u"cat c 1"_s;
        QTest::newRow("empty") << file({}, "0") << u"cat c 0"_s;
        QTest::newRow("length not told") << FakeAnswer::text(200, "abc") << u"cat c 3"_s;
        QTest::newRow("short") << file("abc", "12") << u"cat failed c 3 of 12 bytes received"_s;
        QTest::newRow("fails") << FakeAnswer::error("this dag node is a directory")
                               << u"cat failed c Error transferring http://127.0.0.1:%1/api/v0/cat?arg=c"
                                  " - server replied: Internal Server Error"_s;
    }
    void cats()
    {
        QFETCH(const FakeAnswer, answer);
        QFETCH(QString, line);
        line.replace(u"%1"_s, QString::number(node->port()));
        node->answer("/cat", answer);
        client->fetchCat(u"c"_s);
        client->fetchCat({});
        QTRY_COMPARE(log->lines, QStringList {line});
        QCOMPARE(node->count("/cat"), 1);
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
