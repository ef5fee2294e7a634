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
        addColumns<QByteArray, QStringList, int, bool>("body", "entries", "keyCount", "openLine");
        const auto row = [](const char* name, const QByteArray& body, const QStringList& entries, int keyCount = 0,
                            bool openLine = false) { QTest::newRow(name) << body << entries << keyCount << openLine; };
        const QStringList one {u"a:direct:n"_s};
        const QByteArray line = R"({"Cid":"a","Name":"n","Type":"direct"})";
        row("empty", {}, {});
        row("blank lines", "\n \r\n\n", {});
        row("line as a node writes it", line + '\n', one);
        row("keys in another order, blanks, CRLF", " { \"Type\" : \"direct\", \"Name\":\"n\",\"Cid\":\"a\" }\r\n", one);
        row("wrapped line", "{\"PinLsObject\":" + line + "}\n", one);
        row("wrapper comes before the line's own keys", "{\"PinLsObject\":7,\"Cid\":\"a\"}\n", {});
        row("no line feed at the end", line, one, 0, true);
        row("half a line at the end", line + "\n{\"Cid\":\"b\",\"Na", one);
        row("escapes and UTF-8", "{\"Cid\":\"a\",\"Name\":\"\\u003cb\\\"\xc3\xbc\"}\n", {u"a::<b\"ü"_s});
        row("garbage between lines",
            "{\"Cid\":\"a\"}\nnonsense\n[1]\n{\"Cid\":7}\n{\"Cid\":\"\"}\n{\"Name\":\"x\"}\n{\"Cid\":\"b\"}\n",
            {u"a::"_s, u"b::"_s});
        row("trailing text is no line", "{\"Cid\":\"a\"}x\n{\"Cid\":\"b\",}\n{\"Cid\" \"c\"}\n", {});
        row("a key twice", "{\"Cid\":\"a\",\"Cid\":\"b\"}\n", {u"b::"_s});
        row("other values than texts", "{\"Cid\":\"a\",\"Name\":null,\"Type\":3}\n", {u"a::"_s});
        row("document of keys", R"({"Keys":{"b":{"Type":"recursive","Name":"x"},"a":{"Type":"direct"},"":{}}})",
            {u"::"_s, u"a:direct:"_s, u"b:recursive:x"_s}, 3);
        row("wrapped document of keys", R"({"PinLsList":{"Keys":{"a":{"Type":"direct","Name":"n"}}},"Keys":{"z":{}}})",
            one, 1);
        row("document without keys", "{}\n", {});
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
        const auto row = addColumns<QByteArray, QString>("body", "error");
        row("object", QByteArray(R"({"a":1})"), QString());
        row("empty error is none", QByteArray(R"({"Error":" ","Message":""})"), QString());
        row("error", QByteArray(R"({"Error":" no \n","Message":"m"})"), u"Failed to get it: no"_s);
        row("message", QByteArray(R"({"Message":"%1 %2"})"), u"Failed to get it: %1 %2"_s);
        row("array", QByteArray("[]"), u"Failed to get it: invalid JSON response"_s);
        row("nothing", QByteArray(), u"Failed to get it: invalid JSON response"_s);
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
