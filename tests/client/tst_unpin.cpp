// SPDX-License-Identifier: MIT
#include "ClientLog.h"
#include "DemoNode.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

const QByteArray listPath = "/pin/ls";
const QByteArray formatPath = "/cid/format";
const QByteArray rmPath = "/pin/rm";
const QByteArray notPinned = "not pinned or pinned indirectly";

const auto v0Docs = u"bafybeidhkumeonuwkebh2i4fc7o7lguehauradvlk57gzake6ggjsy372a"_s; // kept as Qm…
const auto v1Notes = u"bafybeigu66tnnkzn65sqrifvkie7nzul6yfbjhkbzgb2rumg3kuwkth3d4"_s;
const auto rawHello = u"bafkreifjjcie6lypi6ny7amxnfftagclbuxndqonfipmb64f2km2devei4"_s;
const auto emptyFile = u"bafkreihdwdcefgh4dqkjv67uzcmw7ojee6xedzdetojuzjevtenxquvyku"_s;

/// As "/cid/format" rewrites it; empty for what has no version 0.
QString rewritten(const QString& text)
{
    auto cid = decodeCid(text);
    if (!cid || cid->codec != Cid::dagPbCodec)
        return {};
    cid->version = 0;
    return encodeCid(*cid);
}

/// As the table shows the demo node's pins: all lifted to version 1.
QString shown(const QString& kind)
{
    return kind == u"v0"_s ? v0Docs : kind == u"v1"_s ? v1Notes : kind == u"raw"_s ? rawHello : emptyFile;
}

} // namespace

class tst_Unpin : public ClientTest
{
    Q_OBJECT

private slots:
    /// A node takes no request above a mebibyte.
    void manyGoOutInParts()
    {
        QStringList asked;
        for (int i = 0; i < 40'000; ++i)
            asked.append(u"bafkrei%1"_s.arg(i, 52, 10, QChar(u'x')));
        node->route(rmPath, [this](const NodeRequest& request) {
            if (node->count(rmPath) == 3)
                return NodeAnswer::error("pin is locked");
            const QStringList pins = request.values(u"arg"_s);
            return NodeAnswer::json("{\"Pins\":[\"" + pins.join(u"\",\""_s).toUtf8() + "\"]}");
        });
        client->unpin(asked, false);
        QTRY_COMPARE(log->lines.size(), 4);
        QStringList named;
        for (const NodeRequest& request : node->requests(rmPath))
            named += request.values(u"arg"_s);
        QCOMPARE(named, asked);
        QCOMPARE(node->count(rmPath), 3);
        const qsizetype failed = node->requests(rmPath).constLast().values(u"arg"_s).size();
        QCOMPARE(log->lines.at(0), u"unpinned "_s + asked.first(asked.size() - failed).join(u' '));
        QCOMPARE(log->lines.at(1), u"said /pin/rm pin is locked"_s);
        QVERIFY(log->lines.at(3).startsWith(u"error Unpin failed: "_s));
    }

    void batches_data()
    {
        addColumns<QStringList, NodeAnswer, NodeAnswer, QByteArray, QString>("asked", "format", "rm", "query", "lines");
        const NodeAnswer refused = NodeAnswer::error("no");
        const auto rewritten = NodeAnswer::json(R"({"CidStr":"x","Formatted":"Qm+","ErrorMsg":""})");
        const auto rm = [&](const char* name, const NodeAnswer& answer, const QString& line) {
            QTest::newRow(name) << QStringList({u" a "_s, u""_s, u"\t"_s, u"b\n"_s}) << refused << answer
                                << QByteArray("arg=a&arg=b") << line;
        };
        rm("the node's own forms", NodeAnswer::json(R"({"Pins":["Qa",7,"Qb"]})"), u"unpinned Qa Qb"_s);
        rm("an empty answer means all", NodeAnswer::json(R"({"Pins":[]})"), u"unpinned a b"_s);
        rm("numbers alone mean all", NodeAnswer::json(R"({"Pins":[1,2]})"), u"unpinned a b"_s);
        rm("nobody answers", NodeAnswer::dropAt({}, 0), u"error Unpin failed: Connection closed"_s);
        rm("no object", NodeAnswer::json("[]"), u"error Unpin: invalid response from node"_s);
        rm("other words", NodeAnswer::error("pin is locked"),
           u"changed\nerror Unpin failed: Error transferring %1arg=a&arg=b - server replied: Internal Server Error"_s);
        rm("not pinned, and nothing was rewritten", NodeAnswer::error(notPinned),
           u"changed\nerror Unpin failed: Error transferring %1arg=a&arg=b - server replied: Internal Server Error"_s);
        const auto format = [&](const char* name, const NodeAnswer& answer, const QByteArray& query) {
            QTest::newRow(name) << QStringList(u"a"_s) << answer << NodeAnswer::json("{}") << query << u"unpinned a"_s;
        };
        format("rewritten", rewritten, "arg=Qm%2B");
        format("can't be rewritten", NodeAnswer::json(R"({"Formatted":"","ErrorMsg":"no"})"), "arg=a");
        format("bad JSON", NodeAnswer::json("{\"Formatted\":"), "arg=a");
        format("broken off", NodeAnswer::dropAt(R"({"Formatted":"Qm"})", 4), "arg=a");
    }
    void batches()
    {
        QFETCH(const QStringList, asked);
        QFETCH(const NodeAnswer, format);
        QFETCH(const NodeAnswer, rm);
        QFETCH(const QByteArray, query);
        QFETCH(QString, lines);
        node->answer(formatPath, format);
        node->answer(rmPath, rm);
        client->unpin(asked, true);
        lines.replace(u"%1"_s, u"http://127.0.0.1:%1/api/v0/pin/rm?"_s.arg(node->port()));
        QTRY_COMPARE(log->outcome(), lines.split(u'\n'));
        QCOMPARE(node->requests(rmPath).constFirst().rawQuery, query);
        QCOMPARE(node->count(rmPath), 1);
        QCOMPARE(node->requests(formatPath).constFirst().rawQuery, "arg=a&v=0&b=base58btc");
    }

    void nothingToUnpin()
    {
        client->unpin({u" "_s, u"\t\n"_s, QString()}, true);
        client->unpin({}, false);
        node->answer(rmPath, NodeAnswer::json("{}"));
        client->unpin({u" c "_s}, false); // as it is, and at once
        QTRY_COMPARE(log->lines, QStringList {u"unpinned c"_s});
        QCOMPARE(node->requests().size(), 1);
    }

    /// The second unpin begins and ends between the calls of the first, and a forced refresh comes between as well.
    void unpinsThatOverlap()
    {
        node->answer(formatPath, NodeAnswer::hold());
        node->answer(rmPath, NodeAnswer::json("{}"));
        client->unpin({u"a"_s, u"b"_s, u"c"_s}, true);
        QTRY_COMPARE(node->heldCount(formatPath), 3);
        client->unpin({u"d"_s, u"e"_s}, true);
        QTRY_COMPARE(node->heldCount(formatPath), 5);
        client->cancelActiveLoading();
        const auto releaseAs = [this](const QByteArray& formatted, int index) {
            node->release(formatPath, NodeAnswer::json("{\"Formatted\":\"" + formatted + "\"}"), index);
        };
        releaseAs("QE", 4);
        releaseAs("QC", 2); // the first batch's answers come from the last to the first
        releaseAs("QD", 2);
        QTRY_COMPARE(log->lines, QStringList {u"unpinned d e"_s});
        releaseAs("QB", 1);
        releaseAs("QA", 0);
        QTRY_COMPARE(log->lines.size(), 2);
        QCOMPARE(log->lines.at(1), u"unpinned a b c"_s);
        QCOMPARE(node->requests(rmPath).at(0).values(u"arg"_s), QStringList({u"QD"_s, u"QE"_s}));
        QCOMPARE(node->requests(rmPath).at(1).values(u"arg"_s), QStringList({u"QA"_s, u"QB"_s, u"QC"_s}));
    }

    void pinsUnderTheirExactCid_data()
    {
        QTest::addColumn<QString>("batch");
        QTest::addColumn<QString>("stay"); // reported as not removed
        QTest::newRow("one of version 1") << u"v1"_s << u""_s;
        QTest::newRow("the first call removes some") << u"v0 v1 raw"_s << u""_s;
        QTest::newRow("stops at once") << u"v1 v0 raw"_s << u""_s;
        QTest::newRow("all kinds") << u"v0 v1 raw indirect gone"_s << u"indirect gone"_s;
        QTest::newRow("the gone one first") << u"gone v0 v1 raw indirect"_s << u"gone indirect"_s;
        QTest::newRow("the indirect one stops the first call") << u"v0 indirect v1 raw"_s << u"indirect"_s;
        QTest::newRow("nothing to find afterwards") << u"v0 raw indirect"_s << u"indirect"_s;
        QTest::newRow("nothing removed") << u"indirect"_s << u"indirect"_s;
        QTest::newRow("named twice") << u"v1 raw v1"_s << u""_s;
        QTest::newRow("named twice, removed by the first call") << u"v0 v0 v1"_s << u""_s;
    }
    void pinsUnderTheirExactCid()
    {
        QFETCH(const QString, batch);
        QFETCH(const QString, stay);
        DemoNode demo({.port = 0, .pins = 10});
        client->setEndpoint(u"127.0.0.1"_s, demo.port());
        const QString indirect = indirectCid();
        client->unpin({shown(u"gone"_s)}, true); // unknown to the list that comes next
        QTRY_COMPARE(log->count("unpinned"_L1), 1);
        client->fetchPins(PinType::all, u"base32"_s, true);
        QTRY_COMPARE(log->count("pins"_L1), 1);
        log->lines.clear();
        const QStringList before = pinTexts(demo);

        const auto cidOf = [&](const QString& kind) { return kind == u"indirect"_s ? indirect : shown(kind); };
        QStringList asked;
        QStringList removed;
        for (const QString& kind : batch.split(u' ')) {
            asked.append(cidOf(kind));
            if (!stay.split(u' ').contains(kind) && !removed.contains(exactly(cidOf(kind), before)))
                removed.append(exactly(cidOf(kind), before));
        }
        client->unpin(asked, true);
        const int lines = (removed.isEmpty() ? 0 : 1) + (stay.isEmpty() ? 0 : 1);
        QTRY_COMPARE(log->lines.size(), lines);
        QTRY_COMPARE(demo.openNow(), 0);
        if (!removed.isEmpty())
            QCOMPARE(log->lines.takeFirst(), u"unpinned "_s + removed.join(u' '));
        if (!stay.isEmpty()) {
            QStringList named;
            for (const QString& kind : stay.split(u' '))
                named.append(cidOf(kind));
            QCOMPARE(
                log->lines,
                QStringList(u"error Unpin failed: %1 (%2)"_s.arg(QLatin1StringView(notPinned), named.join(u", "_s))));
        }
        QStringList expected = before;
        expected.removeIf([&removed](const QString& cid) { return removed.contains(cid); });
        QCOMPARE(pinTexts(demo), expected);
    }

    /// What one of them has removed the other doesn't take for its own.
    void oneUnpinTwice()
    {
        const DemoNode demo({.port = 0, .pins = 10});
        client->setEndpoint(u"127.0.0.1"_s, demo.port());
        for (int i = 0; i < 2; ++i)
            client->unpin({v0Docs, v1Notes}, true);
        QTRY_COMPARE(log->lines.size(), 3);
        QVERIFY2(log->lines.at(0).startsWith(u"unpinned Qm"_s), qPrintable(log->lines.at(0)));
        QCOMPARE(log->lines.at(1), u"changed"_s);
        QVERIFY2(log->lines.at(2).startsWith(u"error Unpin failed: not pinned"_s), qPrintable(log->lines.at(2)));
        QCOMPARE(demo.allPins().size(), 8);
    }

    void onlyWhatIsLeftIsTried_data()
    {
        const auto row = addColumns<NodeAnswer, NodeAnswer, QString, QStringList, QStringList>(
            "recursive", "direct", "words", "tried", "lines");
        const auto listed = [](const QString& cid) {
            return NodeAnswer::json("{\"Cid\":\"" + cid.toLatin1() + "\",\"Type\":\"any\"}\n");
        };
        const NodeAnswer none = NodeAnswer::json({});
        const QString words = QLatin1StringView(notPinned);
        const QString refused = u"error Unpin failed: %1 (%2)"_s;
        const QString v0DocsExact = rewritten(v0Docs);
        const QStringList each {v0DocsExact, v0Docs, rewritten(v1Notes), v1Notes, rawHello};
        const QStringList notesGo {u"unpinned %1 %2"_s.arg(v0DocsExact, v1Notes), refused.arg(words, rawHello)};
        row("recursive", listed(v1Notes), none, words, QStringList(v1Notes), notesGo);
        row("direct", none, listed(v1Notes), words, QStringList(v1Notes), notesGo);
        row("in one document", NodeAnswer::json("{\"Keys\":{\"" + v1Notes.toLatin1() + "\":{}}}"),
            NodeAnswer::json("{\"Keys\":{}}"), words, QStringList(v1Notes), notesGo);
        row("an old node's words", listed(rawHello), none, u"not pinned"_s, QStringList(rawHello),
            QStringList {u"unpinned %1 %2"_s.arg(v0DocsExact, rawHello), refused.arg(u"not pinned"_s, v1Notes)});
        row("not reached", listed(v0DocsExact), none, words, QStringList(v0DocsExact),
            QStringList {u"unpinned "_s + v0DocsExact, refused.arg(words, v1Notes + u", "_s + rawHello)});
        row("none is left", none, none, words, QStringList(),
            QStringList {u"unpinned %1 %2"_s.arg(v0DocsExact, rewritten(v1Notes)), refused.arg(words, rawHello)});
        const QStringList allGo {u"unpinned %1 %2 %3"_s.arg(v0Docs, v1Notes, rawHello)};
        row("no list", none, NodeAnswer::error("no"), words, each, allGo);
        row("a list that is none", NodeAnswer::text(200, "<html>"), none, words, each, allGo);
        row("an error as list", NodeAnswer::json(R"({"Message":"no"})"), none, words, each, allGo);
    }
    /// The first call is refused; what is tried afterwards succeeds, but for a text of the other version.
    void onlyWhatIsLeftIsTried()
    {
        QFETCH(const NodeAnswer, recursive);
        QFETCH(const NodeAnswer, direct);
        QFETCH(const QString, words);
        QFETCH(const QStringList, tried);
        QFETCH(const QStringList, lines);
        node->route(formatPath, [](const NodeRequest& request) {
            return NodeAnswer::json("{\"Formatted\":\"" + rewritten(request.value(u"arg"_s)).toLatin1() + "\"}");
        });
        node->route(listPath, [&](const NodeRequest& request) {
            return request.value(u"type"_s) == "recursive"_L1 ? recursive : direct;
        });
        node->route(rmPath, [&](const NodeRequest& request) {
            const bool otherVersion = tried.size() > 1 && request.value(u"arg"_s).startsWith("Qm"_L1);
            const bool refuses = node->count(rmPath) == 1 || otherVersion;
            return refuses ? NodeAnswer::error(words.toLatin1()) : NodeAnswer::json("{}");
        });
        client->unpin({v0Docs, v1Notes, rawHello}, true);
        QTRY_COMPARE(log->lines, lines);
        QStringList asked;
        for (const NodeRequest& request : node->requests(rmPath).sliced(1))
            asked.append(request.values(u"arg"_s));
        QCOMPARE(asked, tried);
        QCOMPARE(log->progress.size(), tried.size());
        QByteArrayList lists;
        for (const NodeRequest& request : node->requests(listPath))
            lists.append(request.rawQuery);
        std::ranges::sort(lists);
        QCOMPARE(lists, QByteArrayList({"type=direct&stream=true", "type=recursive&stream=true"}));
    }

    /// However the address changes meanwhile.
    void anUnpinStaysAtItsNode()
    {
        FakeNode other;
        node->answer(formatPath, NodeAnswer::hold());
        node->answer(rmPath, NodeAnswer::hold());
        node->answer(listPath, NodeAnswer::error("no"));
        client->unpin({u"a"_s}, true);
        client->setEndpoint(u"127.0.0.1"_s, other.port());
        QTRY_COMPARE(node->heldCount(formatPath), 1);
        node->release(formatPath, NodeAnswer::json(R"({"Formatted":"Qa"})"));
        QTRY_COMPARE(node->heldCount(rmPath), 1);
        node->release(rmPath, NodeAnswer::error(notPinned));
        QTRY_COMPARE(node->heldCount(rmPath), 1);
        node->release(rmPath, NodeAnswer::json("{}"));
        QTRY_COMPARE(log->lines, QStringList {u"unpinned Qa"_s});
        QCOMPARE(other.requests().size(), 0);
    }

    void theRestIsToldInTheNodesWords()
    {
        node->answer(formatPath, NodeAnswer::json(R"({"Formatted":"Qm"})"));
        const NodeAnswer none = NodeAnswer::error(notPinned);
        node->answers(rmPath,
                      {none, NodeAnswer::json(R"({"Pins":["Qm1"]})"), NodeAnswer::error("locked"), none,
                       NodeAnswer::dropAt({}, 0)});
        QStringList asked;
        for (int i = 0; i < 8; ++i)
            asked.append(u"c"_s + QString::number(i));
        client->unpin(asked, true);
        QTRY_COMPARE(log->lines.size(), 2);
        QCOMPARE(log->lines,
                 QStringList({u"unpinned Qm1"_s,
                              u"error Unpin failed: locked (c1); Connection closed"
                              " (c2, c3, c4 and 3 more)"_s}));
    }

    void aLongBatchKeepsItsOrder()
    {
        node->route(formatPath, [](const NodeRequest& request) {
            return NodeAnswer::json("{\"Formatted\":\"Q" + request.value(u"arg"_s).toUtf8() + "\"}");
        });
        node->answer(rmPath, NodeAnswer::json("{}"));
        QStringList asked;
        for (int i = 0; i < 2500; ++i)
            asked.append(QString::number(i));
        client->unpin(asked, true);
        QTRY_COMPARE_WITH_TIMEOUT(log->lines.size(), 1, 60'000);
        QCOMPARE(node->count(formatPath), 2500);
        QCOMPARE(node->requests(rmPath).constFirst().values(u"arg"_s),
                 asked.replaceInStrings(QRegularExpression(u"^"_s), u"Q"_s));
    }

private:
    static QStringList pinTexts(const DemoNode& demo)
    {
        QStringList texts;
        for (const DemoPin& pin : demo.allPins())
            texts.append(encodeCid(pin.cid));
        return texts;
    }

    /// The CID under which the node keeps what the table shows as `text`.
    static QString exactly(const QString& text, const QStringList& pins)
    {
        for (const QString& pin : pins) {
            const auto cid = decodeCid(pin);
            if (cid && encodeCid({.version = 1, .codec = cid->codec, .multihash = cid->multihash}) == text)
                return pin;
        }
        return text;
    }

    /// A folder below a pin, and no pin of its own.
    QString indirectCid()
    {
        client->fetchPins(PinType::indirect, u"base32"_s, true);
        if (!QTest::qWaitFor([this] { return log->count("pins"_L1) == 1; }))
            return {};
        QStringList cids = log->outcome().constLast().split(u' ').filter(u"bafybei"_s);
        cids.replaceInStrings(u":indirect"_s, QString());
        cids.removeAll(v0Docs); // it is listed as well, since the pin is one of version 0
        log->lines.clear();
        return cids.value(0);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_Unpin)
#include "tst_unpin.moc"
