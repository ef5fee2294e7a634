// SPDX-License-Identifier: MIT
#include "RpcLogDialog.h"
#include "StatusLogDialog.h"
#include "WindowTest.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextEdit>
#include <QTextLayout>

using namespace Qt::StringLiterals;

class tst_Logs : public WindowTest
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode("{\"Cid\":\"a\",\"Type\":\"direct\"}\n");
        setting("loadMetadata"_L1, false);
        openLoaded(1);
        QTRY_COMPARE(node->openNow(), 0);
        rpc = std::make_unique<RpcLogDialog>(window.get());
        statusLog = std::make_unique<StatusLogDialog>(window.get());
        QCOMPARE(textOf(*rpc) + textOf(*statusLog), QString()); // they follow from the first show
        showBoth();
    }
    void cleanup()
    {
        rpc.reset();
        statusLog.reset();
        close();
    }

    void showTheirLogs()
    {
        QVERIFY(textOf(*rpc).contains(u"/api/v0/pin/ls?"_s));
        QVERIFY(textOf(*statusLog).contains(u"  Loaded 1"_s));
        verifyBothShowTheirLogs();
        const int before = node->count("/id");
        refreshButton()->click();
        QCOMPARE(textOf(*rpc).count(u"/api/v0/id"_s), before + 1); // as it leaves
        QTRY_COMPARE(node->count("/id"), before + 1);
        verifyBothShowTheirLogs();
    }

    void reopeningShowsEachLineOnce()
    {
        for (int round = 0; round < 3; ++round) {
            rpc->hide();
            statusLog->hide();
            say(u"while hidden"_s);
            showBoth();
            say(u"while open"_s);
            rpc->appendLogLine({});
            verifyBothShowTheirLogs();
        }
        QCOMPARE(textOf(*rpc).count(u"while open"_s), 3);
    }

    void linesAreShownAsTheyAre()
    {
        for (const QString& line : {u"<b>x</b><br>y"_s, u"<html><body>404</body></html>"_s, u"a &amp; b &lt;"_s,
                                    u"  a   b\tc "_s, u"a\nb\n\nc"_s}) {
            say(line);
            QVERIFY(textOf(*rpc).endsWith(u'\n' + line));
            QVERIFY(textOf(*statusLog).endsWith("  Error: "_L1 + line));
            rpc->refreshLog();
            statusLog->refreshLog();
            verifyBothShowTheirLogs();
        }
    }

    void clearingOneLeavesTheOther()
    {
        const QString kept = textOf(*statusLog);
        clear(*rpc);
        QCOMPARE(textOf(*rpc), QString());
        QCOMPARE(textOf(*statusLog), kept);
        verifyBothShowTheirLogs();
        clear(*statusLog);
        say(u"after"_s);
        QCOMPARE(textOf(*rpc), u"after"_s);
        QVERIFY(textOf(*statusLog).endsWith(u"  Error: after"_s));
        verifyBothShowTheirLogs();
    }

    void outliveTheirWindow()
    {
        const QString text = textOf(*rpc);
        QVERIFY(!text.isEmpty());
        window.reset();
        rpc->refreshLog();
        QCOMPARE(textOf(*rpc), text);
        clear(*rpc);
        QCOMPARE(textOf(*rpc), QString());
    }

    void theViewFollowsDownwards()
    {
        QTextEdit* view = viewOf(*rpc);
        const auto* down = view->verticalScrollBar();
        auto* across = view->horizontalScrollBar();
        for (int i = 0; i < 500; ++i)
            say(u"line %1 "_s.arg(i) + QString(i, u'x'));
        QCOMPARE(across->value(), 0);
        QVERIFY(across->maximum() > view->viewport()->width());
        across->setValue(100);
        say(u"one two"_s);
        QCOMPARE(across->value(), 100); // a reader's columns stay
        QCOMPARE(down->value(), down->maximum());
        across->setValue(0);

        const QPoint lastLine = view->viewport()->rect().bottomLeft() + QPoint(6, -view->fontMetrics().height());
        QImage before = view->viewport()->grab().toImage();
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, lastLine);
        QCOMPARE(view->textCursor().selectedText(), u"one"_s);
        QVERIFY(view->viewport()->grab().toImage() != before); // the selection
        clear(*rpc);
        QCOMPARE(down->maximum() + across->maximum(), 0);
        say(u"one two"_s);
        before = view->viewport()->grab().toImage();
        clear(*rpc);
        say(u"one six"_s);
        QVERIFY(view->viewport()->grab().toImage() != before);
    }

    void aClickInAVeryLongLineShapesNoneOfIt()
    {
        clear(*rpc);
        say(u"one "_s.repeated(500'000));
        QTextEdit* view = viewOf(*rpc);
        view->horizontalScrollBar()->setValue(0);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, {60, view->fontMetrics().height()});
        QVERIFY(view->textCursor().position() > 2 && view->textCursor().position() < 12);
        QCOMPARE(view->document()->firstBlock().layout()->lineCount(), 0);
    }

private:
    void showBoth() const
    {
        rpc->show();
        statusLog->show();
    }
    /// A line in either log: of a request, and of an error.
    void say(const QString& text) const
    {
        emit client()->rpcRequestIssued(text);
        emit client()->errorOccurred(text);
    }
    void verifyBothShowTheirLogs() const
    {
        QCOMPARE(textOf(*rpc), window->rpcLog().join(u'\n'));
        QCOMPARE(textOf(*statusLog), window->statusLog().join(u'\n'));
    }
    static void clear(const LogDialog& dialog) { dialog.findChild<QPushButton*>()->click(); }
    static QTextEdit* viewOf(const LogDialog& dialog) { return dialog.findChild<QTextEdit*>(); }
    static QString textOf(const LogDialog& dialog) { return viewOf(dialog)->toPlainText(); }

    std::unique_ptr<RpcLogDialog> rpc;
    std::unique_ptr<StatusLogDialog> statusLog;
};

NORVO_TEST_MAIN(QApplication, tst_Logs)
#include "tst_logs.moc"
