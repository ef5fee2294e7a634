// SPDX-License-Identifier: MIT
#include "JsonReply.h"
#include "PinListParser.h"
#include "TestMain.h"

#include <QCoreApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// "cid:type:name" of each entry.
QStringList shown(const QList<PinEntry>& entries)
{
    QStringList list;
    for (const PinEntry& entry : entries)
        list.append(entry.cid + u':' + entry.type + u':' + entry.name);
    return list;
}

} // namespace

class tst_PinListParser : public QObject
{
    Q_OBJECT

private slots:
    void bodies_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<int>("keyCount");
        QTest::addColumn<bool>("openLine");
        const QStringList one {u"a:direct:n"_s};
        QTest::newRow("empty") << QByteArray() << QStringList() << 0 << false;
        QTest::newRow("blank lines") << QByteArray("\n \r\n\n") << QStringList() << 0 << false;
        QTest::newRow("line as a node writes it") << QByteArray(R"({"Cid":"a","Name":"n","Type":"direct"})"
                                                                "\n")
                                                  << one << 0 << false;
        QTest::newRow("keys in another order, blanks, CRLF")
            << QByteArray(R"( { "Type" : "direct", "Name":"n","Cid":"a" })"
                          "\r\n")
            << one << 0 << false;
        QTest::newRow("wrapped line") << QByteArray(R"({"PinLsObject":{"Cid":"a","Name":"n","Type":"direct"}})"
                                                    "\n")
                                      << one << 0 << false;
        QTest::newRow("wrapper comes before the line's own keys") << QByteArray(R"({"PinLsObject":7,"Cid":"a"})"
                                                                                "\n")
                                                                  << QStringList() << 0 << false;
        QTest::newRow("no line feed at the end")
            << QByteArray(R"({"Cid":"a","Name":"n","Type":"direct"})") << one << 0 << true;
        QTest::newRow("half a line at the end")
            << QByteArray("{\"Cid\":\"a\",\"Name\":\"n\",\"Type\":\"direct\"}\n{\"Cid\":\"b\",\"Na") << one << 0
            << false;
        QTest::newRow("escapes and UTF-8") << QByteArray("{\"Cid\":\"a\",\"Name\":\"\\u003cb\\\"\xc3\xbc\"}\n")
                                           << QStringList({u"a::<b\"ü"_s}) << 0 << false;
        QTest::newRow("garbage between lines") << QByteArray(
            "{\"Cid\":\"a\"}\nnonsense\n[1]\n{\"Cid\":7}\n{\"Cid\":\"\"}\n{\"Name\":\"x\"}\n{\"Cid\":\"b\"}\n")
                                               << QStringList({u"a::"_s, u"b::"_s}) << 0 << false;
        QTest::newRow("trailing text is no line")
            << QByteArray("{\"Cid\":\"a\"}x\n{\"Cid\":\"b\",}\n{\"Cid\" \"c\"}\n") << QStringList() << 0 << false;
        QTest::newRow("a key twice") << QByteArray("{\"Cid\":\"a\",\"Cid\":\"b\"}\n") << QStringList({u"b::"_s}) << 0
                                     << false;
        QTest::newRow("other values than texts")
            << QByteArray("{\"Cid\":\"a\",\"Name\":null,\"Type\":3}\n") << QStringList({u"a::"_s}) << 0 << false;
        QTest::newRow("document of keys")
            << QByteArray(R"({"Keys":{"b":{"Type":"recursive","Name":"x"},"a":{"Type":"direct"},"":{}}})")
            << QStringList({u"::"_s, u"a:direct:"_s, u"b:recursive:x"_s}) << 3 << false;
        QTest::newRow("wrapped document of keys")
            << QByteArray(R"({"PinLsList":{"Keys":{"a":{"Type":"direct","Name":"n"}}},"Keys":{"z":{}}})") << one << 1
            << false;
        QTest::newRow("document without keys") << QByteArray("{}\n") << QStringList() << 0 << false;
    }
    void bodies()
    {
        QFETCH(const QByteArray, body);
        const PinList list = parsePinList(body);
        QTEST(shown(list.entries), "entries");
        QTEST(list.keyCount, "keyCount");
        QTEST(list.hasOpenLine, "openLine");
    }

    void typesShareStorage()
    {
        const PinList lines
            = parsePinList("{\"Cid\":\"a\",\"Type\":\"recursive\"}\n{\"Cid\":\"b\", \"Type\":\"recursive\"}\n");
        const PinList keys = parsePinList(R"({"Keys":{"c":{"Type":"recursive"}}})");
        const auto* storage = lines.entries.at(0).type.constData();
        QVERIFY(lines.entries.at(1).type.constData() == storage && keys.entries.at(0).type.constData() == storage);
    }

    /// The second list of a node, with one pin more and one less, and then one in another order.
    void cidsShareTheStorageOfTheFormerList()
    {
        const QByteArray a = "{\"Cid\":\"a\"}\n";
        const QByteArray b = "{\"Cid\":\"b\"}\n";
        const QByteArray c = "{\"Cid\":\"c\"}\n";
        const QStringList former {u"a"_s, u"b"_s, u"c"_s};
        const auto shares = [&former](const QByteArray& body) {
            QList<bool> shared;
            for (const PinEntry& pin : parsePinList(body, former).entries)
                shared.append(std::ranges::any_of(
                    former, [&](const QString& cid) { return cid.constData() == pin.cid.constData(); }));
            return shared;
        };
        QCOMPARE(shares(a + b + c), QList({true, true, true}));
        QCOMPARE(shares("{\"Cid\":\"new\"}\n" + a + c), QList({false, true, true}));
        QCOMPARE(shares(c + a), QList({true, false}));
    }

    /// Longer than the pieces that it is read in.
    void longListsComeWhole()
    {
        QByteArray body;
        QStringList cids;
        for (int i = 0; i < 60'000; ++i) {
            cids.append(u"cid-%1"_s.arg(i));
            body += "{\"Cid\":\"" + cids.constLast().toLatin1() + "\",\"Name\":\"" + QByteArray(100, 'n') + "\"}\n";
        }
        body += QByteArray(5'000'000, ' ') + "{\"Cid\":\"last\"}";
        cids.append(u"last"_s);
        const PinList list = parsePinList(body);
        QVERIFY(list.hasOpenLine);
        QVERIFY(std::ranges::equal(list.entries, cids, {}, &PinEntry::cid));
    }

    void lineFeedsAloneTakeNoMemory()
    {
        QVERIFY(parsePinList(QByteArray(1'000'000, '\n')).entries.capacity() < 20'000);
    }

    void plainReplies_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("error");
        QTest::newRow("object") << QByteArray(R"({"a":1})") << QString();
        QTest::newRow("empty error is none") << QByteArray(R"({"Error":" ","Message":""})") << QString();
        QTest::newRow("error") << QByteArray(R"({"Error":" no \n","Message":"m"})") << u"Failed to get it: no"_s;
        QTest::newRow("message") << QByteArray(R"({"Message":"%1 %2"})") << u"Failed to get it: %1 %2"_s;
        QTest::newRow("array") << QByteArray("[]") << u"Failed to get it: invalid JSON response"_s;
        QTest::newRow("nothing") << QByteArray() << u"Failed to get it: invalid JSON response"_s;
    }
    void plainReplies()
    {
        QFETCH(const QByteArray, body);
        const JsonReply reply = judgeJsonReply(body, u"get it"_s);
        QTEST(reply.errorMessage, "error");
        QCOMPARE(reply.ok, reply.errorMessage.isEmpty());
        QCOMPARE(reply.body, body);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_PinListParser)
#include "tst_pinlistparser.moc"
