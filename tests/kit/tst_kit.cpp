// SPDX-License-Identifier: MIT
#include "ByteText.h"
#include "CidText.h"
#include "Detached.h"
#include "OpenFiles.h"
#include "PlainText.h"
#include "RedactedText.h"
#include "TestMain.h"
#include "TextOrder.h"
#include "TextSearch.h"

#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QLabel>
#include <QPointer>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTextDocument>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <thread>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class tst_Kit : public QObject
{
    Q_OBJECT

private slots:
    void byteTexts_data()
    {
        const auto row = addColumns<long long, QString>("bytes", "text");
        row("negative", -1LL, QString());
        row("zero", 0LL, u"0 B"_s);
        row("last in bytes", 1023LL, u"1023 B"_s);
        row("first in KB", 1024LL, u"1.0 KB"_s);
        row("last in KB rounds up", 1048575LL, u"1024.0 KB"_s);
        row("first in MB", 1048576LL, u"1.0 MB"_s);
        row("first in GB", 1073741824LL, u"1.0 GB"_s);
        row("no unit above GB", 5LL * 1024 * 1073741824, u"5120.0 GB"_s);
    }
    void byteTexts()
    {
        QFETCH(const long long, bytes);
        QTEST(byteText(bytes), "text");
        QTEST(byteText(bytes, ByteUnits::Binary).replace(u"iB"_s, u"B"_s), "text");
        QCOMPARE(byteText(bytes, ByteUnits::Binary).endsWith(u"iB"_s), bytes >= 1024);
    }

    void cidsOfKnownObjects_data()
    {
        const auto row = addColumns<QString, int, quint64, QString>("text", "version", "codec", "rawTwin");
        const QString twin = u"bafkreidhkumeonuwkebh2i4fc7o7lguehauradvlk57gzake6ggjsy372a"_s;
        row("v1 directory", u"bafybeidhkumeonuwkebh2i4fc7o7lguehauradvlk57gzake6ggjsy372a"_s, 1, Cid::dagPbCodec, twin);
        row("v0 directory", u"QmVJ1xg67UckH6KcJ4K6zEy8mofTdCxFeqCt2L7Jc5QWST"_s, 0, Cid::dagPbCodec, twin);
        row("raw block is its own twin", twin, 1, Cid::rawCodec, twin);
    }
    void cidsOfKnownObjects()
    {
        QFETCH(const QString, text);
        const auto cid = decodeCid(text);
        QVERIFY(cid);
        QTEST(cid->version, "version");
        QTEST(cid->codec, "codec");
        QCOMPARE(encodeCid(*cid), text);
        QTEST(encodeCid({.version = 1, .codec = Cid::rawCodec, .multihash = cid->multihash}), "rawTwin");
    }

    void blockCid()
    {
        QCOMPARE(encodeCid(cidOfBlock("hello world\n", Cid::rawCodec)),
                 u"bafkreifjjcie6lypi6ny7amxnfftagclbuxndqonfipmb64f2km2devei4"_s);
    }

    void noCids_data()
    {
        QTest::addColumn<QString>("text");
        for (const auto* text :
             {"", "b", "Qm", "bafy", "hello", "b\u00e4fy", "bafybeidhkumeonuwkebh2i4fc7o7lguehauradvlk",
              "QmVJ1xg67UckH6KcJ4K6zEy8mofTdCxFeqCt2L7Jc5QWS0", "baaaaaaaa",
              "BAFYBEIDHKUMEONUWKEBH2I4FC7O7LGUEHAURADVLK57GZAKE6GGJSY372A"}) {
            QTest::newRow(text) << QString::fromUtf8(text);
        }
        QTest::newRow("far too long") << QString(u"bafybei"_s + QString(100000, u'a'));
    }
    void noCids()
    {
        QFETCH(const QString, text);
        QVERIFY(!decodeCid(text));
    }

    void detachedWorkComesBack()
    {
        int result = 0;
        QThread* worker = nullptr;
        runDetached(
            this,
            [&worker] {
                worker = QThread::currentThread();
                return std::make_unique<int>(42);
            },
            [&result](std::unique_ptr<int> value) { result = *value; });
        QTRY_COMPARE(result, 42);
        QVERIFY(worker != QThread::currentThread());
    }

    void detachedWorkOutlivesItsContext()
    {
        bool delivered = false;
        std::atomic<bool> go = false;
        auto context = std::make_unique<QObject>();
        runDetached(
            context.get(),
            [&go] {
                while (!go)
                    std::this_thread::sleep_for(1ms);
                return 1;
            },
            [&delivered](int) { delivered = true; });
        context.reset();
        QVERIFY(!waitForDetached(10ms));
        go = true;
        QVERIFY(waitForDetached(10s));
        QCoreApplication::processEvents();
        QVERIFY(!delivered);
    }

    void openFileLimitReachesTheHardOne()
    {
#ifdef Q_OS_UNIX
        rlimit before {};
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &before), 0);
        const rlimit lowered {.rlim_cur = std::min<rlim_t>(before.rlim_max, 200), .rlim_max = before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &lowered), 0);
        QCOMPARE(static_cast<rlim_t>(raiseOpenFileLimit()), before.rlim_max);
        rlimit after {};
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &after), 0);
        QCOMPARE(after.rlim_cur, before.rlim_max);
        setrlimit(RLIMIT_NOFILE, &before);
#endif
    }

    void foreignTextIsNoMarkup()
    {
        const QString text = u"<b>pins</b>\nof <img src=x>"_s;
        QWidget widget;
        setPlainToolTip(&widget, text);
        QTextDocument shown;
        shown.setHtml(widget.toolTip());
        QCOMPARE(shown.toPlainText(), text);
        QCOMPARE(newPlainLabel(text, &widget)->textFormat(), Qt::PlainText);
    }

    void sortsByText()
    {
        QRandomGenerator random(3);
        const QStringList starts {QString(), u"backup-of-the-server-"_s, u"backup-of-the-desk-"_s, u"ž"_s, u"\0x"_s};
        std::vector<QString> texts;
        std::vector<int> rows;
        for (int i = 0; i < 2000; ++i) {
            texts.push_back(starts.at(random.bounded(5)) + QString(random.bounded(12), u'a')
                            + QString::number(random.bounded(300)));
            rows.push_back(i);
        }
        for (const auto order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            std::vector<int> sorted = rows;
            std::ranges::stable_sort(sorted, [&](int a, int b) {
                const int sign = texts.at(static_cast<size_t>(a)).compare(texts.at(static_cast<size_t>(b)));
                return order == Qt::AscendingOrder ? sign < 0 : sign > 0;
            });
            sortByText(
                rows, [&texts](int row) { return QStringView(texts.at(static_cast<size_t>(row))); }, order);
            QCOMPARE(rows, sorted);
        }
    }

    void findsInAnyCase()
    {
        const QStringList texts {QString(), u"bafyBEI"_s, u"Straße"_s, u"\u212A2"_s,
                                 u"ŽLUŤ"_s, u"aab"_s,     u"[z"_s,     u"{Z"_s};
        for (const QString& text : texts) {
            for (const QString& part : {QString(), u"ybe"_s, u"K2"_s, u"žl"_s, u"AB"_s, u"STRASSE"_s, u"[Z"_s, u"{"_s})
                QVERIFY2(containsIgnoringCase(text, part) == text.contains(part, Qt::CaseInsensitive),
                         qPrintable(text + u" | "_s + part));
        }
    }

    void redactedTexts()
    {
        const auto row = [](const QString& line, const QString& redacted) { QCOMPARE(redactedText(line), redacted); };
        row(u"2026-11-22 12:34:56  Ready"_s, u"2026-11-22 12:34:56  Ready"_s);
        row(u"2026-11-22 12:34:56  Loaded 1200 pin(s) — 12:34:56"_s,
            u"2026-11-22 12:34:56  Loaded 1200 pin(s) — 12:34:56"_s);
        row(u"Fetching pins from http://192.168.1.7:5001…"_s, u"Fetching pins from [address]"_s);
        row(u"Error: Network error: Error transferring http://ada:pw@nas.lan:5001/api/v0/pin/ls?arg=x&y - server "
            u"replied: Forbidden"_s,
            u"Error: Network error: Error transferring [address]/api/v0/pin/ls - server replied: Forbidden"_s);
        row(u"Network error: Host nas not found"_s, u"Network error: Host [address] not found"_s);
        row(u"dial tcp [2001:db8::1%eth0]:4001: i/o timeout"_s, u"dial tcp [address]: i/o timeout"_s);
        row(u"dial 2001:db8:1:2:3:4:5:6, ::1 and ::ffff:10.0.0.1, 10.0.0.0/8, nas:5001"_s,
            u"dial [address], [address] and [address], [address], [address]"_s);
        row(u"Adding to IPFS: 3/10 — my diary 2024"_s, u"Adding to IPFS: 3/10 — [name]"_s);
        row(u"Exported 3 CID(s) to C:/Users/Ada/my cids.txt"_s, u"Exported 3 CID(s) to [name]"_s);
        row(u"Error: Add failed: /home/ada/my diary can't be read: Permission denied"_s,
            u"Error: Add failed: [path]: Permission denied"_s);
        row(u"open ~/x y\\z: no such file"_s, u"open [path]: no such file"_s);
        row(u"The node says: open \\\\nas\\ada: no space left"_s, u"The node says: open [path]: no space left"_s);
        row(u"Publishing QmA to IPNS key 'ada's blog'…"_s, u"Publishing [name] to IPNS key [name]"_s);
        row(u"Resolving my-name…"_s, u"Resolving [name]…"_s);
        row(u"Opening /ipns/blog of ada in browser…"_s, u"Opening [name] in browser…"_s);
        row(u"IPNS resolved: /ipns/a b -> /ipfs/c"_s, u"IPNS resolved: [name]"_s);
        row(u"Remote service 'ada (home)' test failed"_s, u"Remote service '[name]' test failed"_s);
        row(u"Remote pin status (ada's): 1 pinned, 0 pending, 0 failed."_s,
            u"Remote pin status ([name]): 1 pinned, 0 pending, 0 failed."_s);
        row(u"Error: it can't be done, and isn't"_s, u"Error: it can't be done, and isn't"_s);
        row(u"The node says: key \"ada\" not found, <peer.ID Qm*abc123>, token: ab.c d"_s,
            u"The node says: key \"[name]\" not found, [peer], token: [secret] d"_s);
        row(u"The node says: lookup nas: no such host, key \"ada \\\"home\\\" x\" and \"ada back…"_s,
            u"The node says: lookup [address]: no such host, key \"[name]\" and \"[name]\""_s);
        row(u"authorization: Bearer abc, api-key=1"_s, u"authorization: [secret] api-key=[secret]"_s);
        row(u"Unpin failed: QmYwAP…4abc, bafy2bz, mail ada@lan"_s, u"Unpin failed: [CID], [CID], mail [address]"_s);
        row(u"kubo/0.30.0 on linux 6.1.0"_s, u"kubo/0.30.0 on linux 6.1.0"_s);
    }

    /// Whatever form a CID or an address has, and whatever text of the program it comes in.
    void noTextGivesAwayWhatIsInIt()
    {
        const QStringList secrets {
            u"QmYwAPJzv5CZsnA625s3Xf2nemtYgPpHdWEz79ojWKPbdG"_s,
            u"bafybeigdyrzt5sfp7udm7hu76uh7y26nf3efuylqabf3oclgtqy55fbzdi"_s,
            u"BAFYBEIGDYRZT5SFP7UDM7HU76UH7Y26NF3EFUYLQABF3OCLGTQY55FBZDI"_s,
            u"zdj7WWeQ43G6JJvLWQWZpyHuAMq6uYWRjkBXFad11vE2LHhQ7"_s,
            u"f01701220c3c4733ec8affd06cf9e9ff50ffc6bcd2ec85a6170004bb709669c31de94391a"_s,
            u"mAXASIMPEcz7Ir/0Gz56f9Q/8a80uyFphcABLtwlmnDHelDka"_s,
            u"uAXASIMPEcz7Ir_0Gz56f9Q_8a80uyFphcABLtwlmnDHelDka"_s,
            u"12D3KooWQnwEGNqcM2nAcPtRR9rAX8Hrg4k9kJLCHoTR5chJfz6d"_s,
            u"k51qzi5uqu5dgutdk6i1ynyzgkqngpha5xpgia3a5qqp4jsh0u4csozksxel2r"_s,
            u"k2k4r8jl0yz8qjgqbmc2cdu5hkqek5rj6flgnlkyywynci20j0iuyfuj"_s,
            u"/ip4/203.0.113.7/udp/4001/quic-v1/p2p/12D3KooWQnwEGNqcM2nAcPtRR9rAX8Hrg4k9kJLCHoTR5chJfz6d"_s,
            u"/dnsaddr/secret/p2p/QmYwAPJzv5CZsnA625s3Xf2nemtYgPpHdWEz79ojWKPbdG/p2p-circuit"_s,
            u"http://secret:5001"_s,
            u"http://secret:secret@[2001:db8::7]:5001/api/v0/add?arg=secret"_s,
            u"203.0.113.7:4001"_s,
            u"/home/secret/a b/c"_s,
            u"/ipns/secret/x"_s};
        const QRegularExpression literal(uR"re(tr\("([^"]*%1[^"]*)"[,)])re"_s);
        int texts = 0;
        for (QDirIterator files(QStringLiteral(TEST_DATA_DIR "/../../src"), {u"*.cpp"_s}, QDir::Files,
                                QDirIterator::Subdirectories);
             files.hasNext();) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            for (auto found = literal.globalMatch(QString::fromUtf8(file.readAll())); found.hasNext(); ++texts) {
                const QString text = found.next().captured(1).replace("\\n"_L1, "\n"_L1);
                for (const QString& secret : secrets) {
                    const QString line = QString(text).replace(QRegularExpression(u"%[1-9]"_s), secret);
                    const QString redacted = redactedText(line);
                    static const QRegularExpression remains(u"secret(?!\\])|203|db8|[A-Za-z0-9/_]{12,}[0-9]"_s);
                    QVERIFY2(!redacted.contains(remains), qPrintable(line + u"\n"_s + redacted));
                }
            }
        }
        QVERIFY(texts > 100);
    }
};

NORVO_TEST_MAIN(QApplication, tst_Kit)
#include "tst_kit.moc"
