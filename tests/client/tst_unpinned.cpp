#include "ClientLog.h"
#include "DemoNode.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray pinsPath = "/pin/ls";
const QByteArray refsPath = "/refs/local";

QByteArray ref(const QByteArray& cid)
{
    return "{\"Ref\":\"" + cid + "\",\"Err\":\"\"}\n";
}

} // namespace

class tst_Unpinned : public ClientTest
{
    Q_OBJECT

private slots:
    void requests()
    {
        node->answer(pinsPath, FakeAnswer::json({}));
        node->answer(refsPath, FakeAnswer::json({}));
        client->fetchUnpinned();
        QTRY_COMPARE(log->outcome(), QStringList({u"connected"_s, u"pins"_s}));
        QCOMPARE(node->requests(pinsPath).constFirst().rawQuery,
                 "type=all&names=true&stream=true&cid-base=base32&upgrade-cidv0-in-output=true");
        QCOMPARE(node->requests(refsPath).constFirst().rawQuery, "");
    }

    void joins_data()
    {
        QTest::addColumn<QByteArray>("pins");
        QTest::addColumn<QByteArray>("refs");
        QTest::addColumn<QStringList>("unpinned");
        QTest::addColumn<int>("count"); // lines of the refs half that named a CID
        const QByteArray pinA = "{\"Cid\":\"a\",\"Type\":\"recursive\"}\n";
        const QByteArray docs = "bafybeidhkumeonuwkebh2i4fc7o7lguehauradvlk57gzake6ggjsy372a";
        const QByteArray docsRaw = "bafkreidhkumeonuwkebh2i4fc7o7lguehauradvlk57gzake6ggjsy372a";
        QTest::newRow("subtracts") << pinA << ref("a") + ref("b") << QStringList {u"b"_s} << 2;
        QTest::newRow("all is pinned") << pinA << ref("a") << QStringList() << 1;
        QTest::newRow("no refs") << pinA << QByteArray() << QStringList() << 0;
        QTest::newRow("pin list is no JSON") << QByteArray("what?") << ref("b") << QStringList {u"b"_s} << 1;
        QTest::newRow("a ref twice") << pinA << ref("b") + ref("b") << QStringList {u"b"_s} << 2;
        QTest::newRow("no last line feed") << pinA << ref("b").trimmed() << QStringList {u"b"_s} << 1;
        QTest::newRow("error line") << pinA << "{\"Ref\":\"\",\"Err\":\"lost\"}\n" + ref("b") << QStringList {u"b"_s}
                                    << 1;
        QTest::newRow("bare lines") << pinA << QByteArray("Qmx\r\nbay\nxyz\n{\"Cid\":\"b\"}\n[\n \n")
                                    << QStringList({u"Qmx"_s, u"bay"_s}) << 2;
        QTest::newRow("a pinned block is listed as raw") << "{\"Cid\":\"" + docs + "\"}\n"
                                                         << ref(docsRaw) + ref("b") << QStringList {u"b"_s} << 2;
        QTest::newRow("and under version 0")
            << QByteArray("{\"Cid\":\"QmVJ1xg67UckH6KcJ4K6zEy8mofTdCxFeqCt2L7Jc5QWST\"}\n") << ref(docsRaw)
            << QStringList() << 1;
        QTest::newRow("the comparison is one of texts")
            << QByteArray("{\"Cid\":\"A\"}\n") << ref("a") << QStringList {u"a"_s} << 1;
    }
    void joins()
    {
        QFETCH(const QByteArray, pins);
        QFETCH(const QByteArray, refs);
        QFETCH(const QStringList, unpinned);
        QFETCH(const int, count);
        for (const bool refsFirst : {true, false}) {
            for (const qsizetype size : {qsizetype {3}, qsizetype {100'000}}) {
                log = std::make_unique<ClientLog>(*client);
                node->answer(pinsPath, FakeAnswer::hold());
                node->answer(refsPath, FakeAnswer::hold());
                client->fetchUnpinned();
                QTRY_VERIFY(node->heldCount(pinsPath) == 1 && node->heldCount(refsPath) == 1);
                node->release(refsFirst ? refsPath : pinsPath, FakeAnswer::chunked(refsFirst ? refs : pins, size));
                QTRY_COMPARE(node->openNow(), 1);
                QCOMPARE(log->count("pins"_L1), 0);
                node->release(refsFirst ? pinsPath : refsPath, FakeAnswer::chunked(refsFirst ? pins : refs, size));
                QTRY_COMPARE(log->count("pins"_L1), 1);
                QString line = log->lines.filter(QRegularExpression(u"^pins"_s)).value(0);
                QStringList cids = line.remove(u':').split(u' ');
                cids.removeFirst();
                cids.sort();
                QCOMPARE(cids, unpinned);
                const QStringList loaded = log->lines.filter(u"loaded refs/local"_s);
                QCOMPARE(loaded.isEmpty() ? u"0"_s : loaded.constLast().section(u' ', 2), QString::number(count));
            }
        }
    }

    void failures_data()
    {
        QTest::addColumn<bool>("refsFail");
        QTest::addColumn<bool>("failureFirst");
        QTest::addColumn<QStringList>("starts");
        const QStringList refsFailed {u"error Network error (refs/local): Error"_s, u"pins"_s};
        const QStringList pinsFailed {u"error Network error: Error"_s, u"disconnected"_s};
        QTest::newRow("refs fail first") << true << true << refsFailed + QStringList {u"connected"_s};
        QTest::newRow("refs fail last") << true << false << QStringList {u"connected"_s} + refsFailed;
        QTest::newRow("pins fail first") << false << true << pinsFailed;
        QTest::newRow("pins fail last") << false << false << pinsFailed;
    }
    void failures()
    {
        QFETCH(const bool, refsFail);
        QFETCH(const bool, failureFirst);
        QFETCH(const QStringList, starts);
        node->answer(pinsPath, FakeAnswer::hold());
        node->answer(refsPath, FakeAnswer::hold());
        client->fetchUnpinned();
        QTRY_VERIFY(node->heldCount(pinsPath) == 1 && node->heldCount(refsPath) == 1);
        const QByteArray failing = refsFail ? refsPath : pinsPath;
        const QByteArray good = refsFail ? pinsPath : refsPath;
        const auto goodAnswer = FakeAnswer::json(refsFail ? "{\"Cid\":\"a\"}\n" : ref("b"));
        node->release(failureFirst ? failing : good, failureFirst ? FakeAnswer::error("no") : goodAnswer);
        QTRY_COMPARE(node->openNow(), 1);
        QVERIFY(waitForDetached(10s));
        QTest::qWait(20);
        node->release(failureFirst ? good : failing, failureFirst ? goodAnswer : FakeAnswer::error("no"));
        QTRY_COMPARE(log->outcome().size(), starts.size());
        QVERIFY(waitForDetached(10s));
        QTest::qWait(20); // nothing more comes
        QCOMPARE(log->outcome().size(), starts.size());
        for (qsizetype i = 0; i < starts.size(); ++i)
            QVERIFY2(log->outcome().at(i).startsWith(starts.at(i)), qPrintable(log->outcome().at(i)));

        node->answer(pinsPath, FakeAnswer::json({})); // the next fetch starts clean
        node->answer(refsPath, FakeAnswer::json(ref("c")));
        client->fetchUnpinned();
        QTRY_COMPARE(log->outcome().constLast(), u"pins c:"_s);
    }

    void olderFetchesAreSilent_data()
    {
        QTest::addColumn<bool>("cancel");
        QTest::newRow("cancelled") << true;
        QTest::newRow("overtaken by a pin list") << false;
    }
    void olderFetchesAreSilent()
    {
        QFETCH(const bool, cancel);
        node->answer(pinsPath, FakeAnswer::hold());
        node->answer(refsPath, FakeAnswer::hold());
        client->fetchUnpinned();
        QTRY_VERIFY(node->heldCount(pinsPath) == 1 && node->heldCount(refsPath) == 1);
        node->answer(pinsPath, FakeAnswer::json("{\"Cid\":\"new\"}\n"));
        if (cancel)
            client->cancelActiveLoading();
        client->fetchPins(u"all"_s, u"base32"_s, true);
        if (!cancel) {
            node->release(pinsPath, FakeAnswer::json("{\"Cid\":\"old\"}\n"));
            node->release(refsPath, FakeAnswer::error("old"));
        }
        QTRY_COMPARE(log->outcome(), QStringList({u"connected"_s, u"pins new:"_s}));
        QTRY_COMPARE(node->openNow(), 0);
        QVERIFY(waitForDetached(10s));
        QTest::qWait(20);
        QCOMPARE(log->outcome(), QStringList({u"connected"_s, u"pins new:"_s}));
    }

    void aNodesPinnedBlocksAreNotListed()
    {
        DemoNode demo({.port = 0, .pins = 30});
        client->setEndpoint(u"127.0.0.1"_s, demo.port());
        client->fetchUnpinned();
        QTRY_COMPARE(log->count("pins"_L1), 1);
        // The draft folder with its two files, and the file of 20,000 bytes with its five chunks.
        QCOMPARE(log->lines.filter(QRegularExpression(u"^pins"_s)).constFirst().count(u"bafkrei"_s), 9);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_Unpinned)
#include "tst_unpinned.moc"
