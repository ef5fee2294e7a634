// SPDX-License-Identifier: MIT
#include "AddSession.h"
#include "TestMain.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

QByteArray part(const QByteArray& disposition, const QByteArray& content = {}, const QByteArray& type = {})
{
    const QByteArray typeLine = type.isEmpty() ? QByteArray() : "Content-Type: " + type + "\r\n";
    return "--b\r\nContent-Disposition: form-data" + disposition + "\r\n" + typeLine + "\r\n" + content + "\r\n";
}

QByteArray file(const QByteArray& name, const QByteArray& content = {}, const QByteArray& type = {})
{
    return part("; filename=\"" + name + '"', content, type);
}

const QByteArray folderType = "application/x-directory";
const QByteArray end = "--b--\r\n";

/// What an add has answered.
struct Added
{
    QByteArray lines {};
    QStringList names {};
    QByteArray error {}; ///< in the trailer
    int status = 200;
    QList<DemoPin> pins {};
};

} // namespace

/// Adding to the demo node: what the blocks are, how parts are named, and how it fails.
class tst_DemoAdd : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    void files_data()
    {
        // size: of a file whose bytes count from 0 to 250 over and over
        addColumns<qsizetype, int, QString, quint64>("size", "version", "cid", "cumulative");
        const auto row = [](qsizetype size, int version, const QString& cid, quint64 cumulative) {
            QTest::addRow("%lld bytes, version %d", static_cast<long long>(size), version)
                << size << version << cid << cumulative;
        };
        constexpr qsizetype chunk = 262144;
        row(0, 0, u"QmbFMke1KXqnYyBBWxB74N4c5SBnJMVAiMNRcGu6x1AwQH"_s, 6);
        row(0, 1, u"bafkreihdwdcefgh4dqkjv67uzcmw7ojee6xedzdetojuzjevtenxquvyku"_s, 0);
        row(12, 0, u"QmebaVP2bwpoZK9XEV6QWrjmHXodxS3fdL1SypEYDb8vGx"_s, 20);
        row(chunk, 0, u"QmeqfRyS3vkku7n6krqC3DgGMex3x2sCpSeKMDmrG13QQq"_s, 262158);
        row(chunk, 1, u"bafkreibruh455iawsviqslif5c7uurdcfdemh22mtnytyzvnzn75kpejxy"_s, 262144);
        row(chunk + 1, 0, u"QmUSjGawaz4ptvREcMKSMJneWCa5j8dAz2wSAAvHtW2rnB"_s, 262267);
        row(chunk + 1, 1, u"bafybeiexg2oqkfnj56l7fcmawswqbijt5shq4b5rg6a546uwpkqqzwjioi"_s, 262249);
        row(174 * chunk, 0, u"QmXCym15aFeWjAWyPFaAgwVmkuKB7EBsV77Skt54KmxChF"_s, 45623854);
        row(174 * chunk + 1, 0, u"QmTedsTekQQkgACJXb1sPZSW8bLdS9LPMrT7L4YdjNRd4n"_s, 45624016);
        row(174 * chunk + 1, 1, u"bafybeib4y7ghw2rq7bracc4xwtxrbzo7cfvagdpte2tmrkgwl6dyard3cm"_s, 45621926);
    }
    void files()
    {
        QFETCH(const qsizetype, size);
        QFETCH(const int, version);
        QByteArray bytes(size, Qt::Uninitialized);
        for (qsizetype i = 0; i < size; ++i)
            bytes[i] = static_cast<char>(i % 251);
        DemoStore store;
        UnixFsFileBuilder builder({.version = version, .rawLeaves = version == 1},
                                  [&store](const DemoObject& object) { store.add(object); });
        for (qsizetype at = 0; at < size; at += 100'000)
            builder.append(QByteArrayView(bytes).sliced(at, std::min<qsizetype>(100'000, size - at)));
        const DemoLink root = builder.finish();
        QTEST(encodeCid(root.cid), "cid");
        QTEST(root.size, "cumulative");
        QVERIFY(store.contentOf(*store.find(root.cid)) == bytes);
    }

    void names_data()
    {
        // names: of the lines without wrapping, with blanks between them
        addColumns<QByteArray, QString, QByteArray>("parts", "names", "error");
        const auto row = [](const char* name, const QByteArray& parts, const QString& names, const char* error = "") {
            QTest::newRow(name) << parts << names << QByteArray(error);
        };
        const QByteArray good = file("z");
        row("plus", file("d/a+b.txt"), u"d/a b.txt|d"_s);
        row("percent", file("d/100%25.txt"), u"d/100%.txt|d"_s);
        row("stray percent", file("d/5+0%.txt"), u"d/5+0%.txt|d"_s);
        row("escaped slash", file("d/x%2Fy.txt"), u"d/x/y.txt|d/x|d"_s);
        row("as sent", file("d/ünï.txt") + file("d/semi;colon.txt"), u"d/ünï.txt|d/semi;colon.txt|d"_s);
        row("backslashes", file(R"(a\"b\\c\d)"), u"a\"b\\c\\d"_s);
        row("without quotes", part("; FILENAME = a.txt ;"), u"a.txt"_s);
        row("way up", file("/../a//./b/../c"), u"a/c|a"_s);
        row("nameless", part("; name=\"file\""), u"QmbFMke1KXqnYyBBWxB74N4c5SBnJMVAiMNRcGu6x1AwQH"_s);
        row("unreadable", file("y") + file("d/b\"q\".txt") + good, u"y"_s);
        row("unreadable inside a folder", file("d/y") + part("; filename=x; filename=y") + good, u"d/y|d"_s);
        row("unreadable at first", file("b\"q\"") + good, {}, "{\"Message\":\"expected a file argument\"");
        row("line feed", file("y") + file("a\nb") + good, u"y"_s, "malformed MIME header line: b\"");
        row("odd type", file("y") + file("a", {}, "a b") + good, u"y"_s, "mime: invalid media parameter");
        row("twice at the top", good + good, u"z|z"_s);
        row("twice in a folder", file("y") + file("d/a") + file("d/%61") + good, u"y|d/a"_s,
            "directory already has entry by that name");
        row("folder twice", file("d/a") + file("d", {}, folderType) + file("d/b"), u"d/a|d|d/b|d"_s);
        row("folders are sorted", file("d/b/y") + file("d/a/x") + file("d/c", {}, folderType),
            u"d/b/y|d/a/x|d/a|d/b|d/c|d"_s);
        row("below a file", file("a") + file("a/b") + good, u"a|z"_s);
        row("below an earlier file", file("d/a") + file("d/b") + file("d/a/c"), u"d/a|d/b"_s, "file already exists");
    }
    void names()
    {
        QFETCH(const QByteArray, parts);
        QFETCH(const QByteArray, error);
        const QByteArray body = parts + end;
        const Added whole = add(body);
        const Added v0 = add(body, {.layout = {.version = 0, .rawLeaves = false}}, 1);
        QTEST(v0.names.join(u'|'), "names");
        QCOMPARE(whole.names.size(), v0.names.size());
        QCOMPARE(v0.status, error.startsWith('{') ? 500 : 200);
        if (v0.status == 200)
            QCOMPARE(v0.error, error);
    }

    /// One byte at a time gives what the whole gives; without its end it fails, and nothing of the open entry is
    /// pinned.
    void bodies()
    {
        const QByteArray body = "preamble\r\n" + file("a", "1\r\n--c\r\n--bx\r\n-") + file("d/b", "\r\n")
            + file("d/link", "../a", "application/symlink") + file("e", {}, folderType) + "--b-- \r\nepilogue";
        for (const bool wraps : {false, true}) {
            const AddChoices choices {
                .layout = {.version = 0, .rawLeaves = false}, .wraps = wraps, .reportsProgress = true};
            const Added whole = add(body, choices);
            QCOMPARE(whole.names,
                     QStringList({u"a"_s, u"a"_s, u"d/b"_s, u"d/b"_s, u"d/link"_s, u"d"_s, u"e"_s})
                         + QStringList(wraps ? 1 : 0));
            QVERIFY(whole.lines.startsWith("{\"Name\":\"a\",\"Bytes\":15}\n"));
            QVERIFY(whole.lines.contains("QmUNLLsPACCz1vLxQVkXqqLX5R1X345qqfHbsf67hvA3Nn\",\"Size\":\"4\"}"));
            QCOMPARE(whole.pins.size(), wraps ? 1 : 3);
            QCOMPARE(add(body, choices, 1).lines, whole.lines);
            for (qsizetype cut = 0; cut < body.indexOf("--b--") + 5; ++cut) {
                const Added broken = add(body.first(cut), choices, 7);
                QVERIFY2(broken.status == 500 ? broken.lines.isEmpty() : !broken.error.isEmpty(),
                         body.first(cut).constData());
                if (!body.first(cut).endsWith("--b")) // which a node takes for a boundary, since nothing follows
                    QVERIFY(whole.lines.startsWith(broken.lines));
                QCOMPARE(broken.pins.size(), wraps ? 0 : broken.names.count(u"a"_s) / 2 + broken.names.count(u"d"_s));
            }
        }
        const QByteArray longHead = "--b\r\nA: " + QByteArray(70'000, 'a');
        QVERIFY(add(longHead).status == 500 && add(longHead + "\r\n\r\n\r\n" + end).status == 500);
    }

    /// What is beyond the bounds is listed and counted as if it were there.
    void throwsBytesAway()
    {
        DemoRepo small({.pins = 0, .keptOfFile = 300'000, .keptOfAll = 300'000});
        AddSession session({}, "b", small);
        const NodeStep step = session.take(
            file("big", QByteArray(250'000, 'a') + QByteArray(100'000, 'b')) + file("c", "c") + end, true);
        QVERIFY(!step.last);
        const DemoObject big = *small.store().find(small.pins().value(0).cid);
        QCOMPARE(big.fileSize, 350'000U);
        QCOMPARE(small.store().contentOf(big).size(), 262'144);
        const DemoObject lost = *small.store().find(big.links.value(1).cid);
        QVERIFY(lost.isHollow());
        QCOMPARE(lost.blockSize(), 350'000U - 262'144U);
        QCOMPARE(small.store().contentOf(*small.store().find(small.pins().value(1).cid)), "c");
    }

private:
    /// The body comes in pieces of `size` bytes.
    Added add(const QByteArray& body, AddChoices choices = {}, qsizetype size = 1 << 20)
    {
        AddSession session(std::move(choices), "b", repo);
        Added added;
        for (qsizetype at = 0; at <= body.size(); at += size) {
            const NodeStep step = session.take(body.mid(at, size), at + size > body.size());
            added.lines += step.bytes;
            if (step.last) {
                added.status = step.last->status;
                added.error = step.last->trailers.value(0).second;
                break;
            }
        }
        for (const QByteArray& line : added.lines.isEmpty() ? QList<QByteArray>() : added.lines.chopped(1).split('\n'))
            added.names += QJsonDocument::fromJson(line).object().value("Name"_L1).toString();
        added.pins = repo.pins();
        QSet<QByteArray> pinned;
        for (const DemoPin& pin : added.pins)
            pinned.insert(cidBytes(pin.cid));
        repo.unpin(pinned);
        return added;
    }

    DemoRepo repo {{.pins = 0}};
};

NORVO_TEST_MAIN(QCoreApplication, tst_DemoAdd)
#include "tst_demoadd.moc"
