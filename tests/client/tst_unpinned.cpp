// SPDX-License-Identifier: MIT
#include "ClientLog.h"
#include "DemoNode.h"

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
        node->answer(pinsPath, NodeAnswer::json({}));
        node->answer(refsPath, NodeAnswer::json({}));
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
        const auto row
            = [](const char* name, const QByteArray& pinList, const QByteArray& refList, const QStringList& left,
                 int lines) { QTest::newRow(name) << pinList << refList << left << lines; };
        row("subtracts", pinA, ref("a") + ref("b"), {u"b"_s}, 2);
        row("no refs", pinA, {}, {}, 0);
        row("pin list is no JSON", "what?", ref("b"), {u"b"_s}, 1);
        row("a ref twice", pinA, ref("b") + ref("b"), {u"b"_s}, 2);
        row("no last line feed", pinA, ref("b").trimmed(), {u"b"_s}, 1);
        row("error line", pinA, "{\"Ref\":\"\",\"Err\":\"lost\"}\n" + ref("b"), {u"b"_s}, 1);
        row("bare lines", pinA, "Qmx\r\nbay\nxyz\n{\"Cid\":\"b\"}\n[\n \n", {u"Qmx"_s, u"bay"_s}, 2);
        row("a pinned block is listed as raw", "{\"Cid\":\"" + docs + "\"}\n", ref(docsRaw) + ref("b"), {u"b"_s}, 2);
        row("and under version 0", "{\"Cid\":\"QmVJ1xg67UckH6KcJ4K6zEy8mofTdCxFeqCt2L7Jc5QWST\"}\n", ref(docsRaw), {},
            1);
        row("a pinned block is listed as stored", "{\"Cid\":\"" + docs + "\"}\n",
            ref("QmVJ1xg67UckH6KcJ4K6zEy8mofTdCxFeqCt2L7Jc5QWST"), {}, 1);
        row("the comparison is one of texts", "{\"Cid\":\"A\"}\n", ref("a"), {u"a"_s}, 1);
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
                QVERIFY(fetchHeld());
                for (const bool isRefs : {refsFirst, !refsFirst}) {
                    QTRY_COMPARE(node->openNow(), isRefs == refsFirst ? 2 : 1);
                    QCOMPARE(log->count("pins"_L1), 0);
                    node->release(isRefs ? refsPath : pinsPath, NodeAnswer::chunked(isRefs ? refs : pins, size));
                }
                QTRY_COMPARE(log->count("pins"_L1), 1);
                QStringList cids = log->outcome().filter(u"pins"_s).takeFirst().remove(u':').split(u' ');
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
        QVERIFY(fetchHeld());
        const auto goodAnswer = NodeAnswer::json(refsFail ? "{\"Cid\":\"a\"}\n" : ref("b"));
        for (const bool failing : {failureFirst, !failureFirst}) {
            node->release(failing == refsFail ? refsPath : pinsPath, failing ? NodeAnswer::error("no") : goodAnswer);
            QTRY_COMPARE(node->openNow(), failing == failureFirst ? 1 : 0);
            QVERIFY(waitForDetached(10s));
            QTest::qWait(20); // all that comes of this half
        }
        QTRY_COMPARE(log->outcome().size(), starts.size());
        for (qsizetype i = 0; i < starts.size(); ++i)
            QVERIFY2(log->outcome().at(i).startsWith(starts.at(i)), qPrintable(log->outcome().at(i)));

        node->answer(pinsPath, NodeAnswer::json({})); // the next fetch starts clean
        node->answer(refsPath, NodeAnswer::json(ref("c")));
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
        QVERIFY(fetchHeld());
        node->answer(pinsPath, NodeAnswer::json("{\"Cid\":\"new\"}\n"));
        if (cancel)
            client->cancelActiveLoading();
        client->fetchPins(u"all"_s, u"base32"_s, true);
        if (!cancel) {
            node->release(pinsPath, NodeAnswer::json("{\"Cid\":\"old\"}\n"));
            node->release(refsPath, NodeAnswer::error("old"));
        }
        QTRY_COMPARE(log->outcome(), QStringList({u"connected"_s, u"pins new:"_s}));
        QTRY_COMPARE(node->openNow(), 0);
        QVERIFY(waitForDetached(10s));
        QTest::qWait(20);
        QCOMPARE(log->outcome(), QStringList({u"connected"_s, u"pins new:"_s}));
    }

    void aJoinThatIsCancelledIsSilent()
    {
        QVERIFY(fetchHeld());
        node->release(pinsPath, NodeAnswer::json("{\"Cid\":\"a\"}\n"));
        QTRY_COMPARE(log->count("connected"_L1), 1);
        QVERIFY(waitForDetached(10s));
        QCoreApplication::processEvents();
        connect( // comes before the outcome of the join, which this count's sender starts
            client.get(), &IpfsClient::streamEntriesLoaded, client.get(), &IpfsClient::cancelActiveLoading,
            Qt::QueuedConnection);
        node->release(refsPath, NodeAnswer::json(ref("b")));
        QTRY_COMPARE(log->count("loaded refs/local"_L1), 1);
        QVERIFY(waitForDetached(10s));
        QTest::qWait(20);
        QCOMPARE(log->count("pins"_L1), 0);
    }

    void aNodesPinnedBlocksAreNotListed()
    {
        DemoNode demo({.port = 0, .pins = 30});
        client->setEndpoint(u"127.0.0.1"_s, demo.port());
        client->fetchUnpinned();
        QTRY_COMPARE(log->count("pins"_L1), 1);
        // The draft folder with its two files, and the file of 20,000 bytes with its five chunks.
        QCOMPARE(log->outcome().filter(u"pins"_s).constFirst().count(u"bafkrei"_s), 9);
    }

private:
    /// Fetches, and waits until both halves are held.
    bool fetchHeld()
    {
        node->answer(pinsPath, NodeAnswer::hold());
        node->answer(refsPath, NodeAnswer::hold());
        client->fetchUnpinned();
        return QTest::qWaitFor([this] { return node->heldCount(pinsPath) == 1 && node->heldCount(refsPath) == 1; });
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_Unpinned)
#include "tst_unpinned.moc"
