// SPDX-License-Identifier: MIT
#include "ByteText.h"
#include "CidText.h"
#include "Detached.h"
#include "OpenFiles.h"
#include "PlainText.h"
#include "TestMain.h"
#include "TextOrder.h"
#include "TextSearch.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QRandomGenerator>
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
};

NORVO_TEST_MAIN(QApplication, tst_Kit)
#include "tst_kit.moc"
