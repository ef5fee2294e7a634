#include "AppSettings.h"
#include "Detached.h"
#include "FakeNode.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "RpcLogDialog.h"
#include "StatusLogDialog.h"
#include "TestMain.h"

#include <QApplication>
#include <QPushButton>
#include <QScrollBar>
#include <QTextEdit>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class tst_Logs : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        failOnWarnings();
        node = std::make_unique<FakeNode>();
        node->answer("/id", FakeAnswer::json(R"({"ID":"x"})"));
        node->answer("/pin/ls", FakeAnswer::json("{\"Cid\":\"a\",\"Type\":\"direct\"}\n"));
        QSettings settings = openAppSettings();
        settings.clear();
        settings.setValue("port"_L1, node->port());
        settings.setValue("loadMetadata"_L1, false);
        window = std::make_unique<MainWindow>();
        window->show();
        QTRY_VERIFY(!window->statusLog().filter(u"Loaded 1"_s).isEmpty() && node->openNow() == 0);
        rpc = std::make_unique<RpcLogDialog>(window.get());
        status = std::make_unique<StatusLogDialog>(window.get());
    }
    void cleanup()
    {
        rpc.reset();
        status.reset();
        window.reset();
        QVERIFY(waitForDetached(10s));
    }

    void followTheirLogsFromTheFirstShow()
    {
        QCOMPARE(textOf(*rpc), QString());
        QCOMPARE(textOf(*status), QString());
        openBoth();
        QVERIFY(textOf(*rpc).contains(u"/api/v0/pin/ls?"_s));
        QVERIFY(textOf(*status).contains(u"  Loaded 1"_s));
        verifyBothShowTheirLogs();
        const int before = node->count("/id");
        window->findChild<QPushButton*>(u"refreshBtn"_s)->click();
        QVERIFY(textOf(*rpc).count(u"/api/v0/id"_s) == before + 1); // as it leaves
        QTRY_COMPARE(node->count("/id"), before + 1);
        verifyBothShowTheirLogs();
    }

    void reopeningShowsEachLineOnce()
    {
        openBoth();
        for (int round = 0; round < 3; ++round) {
            rpc->hide();
            status->hide();
            say(u"while hidden"_s);
            openBoth();
            say(u"while open"_s);
            rpc->appendLogLine({});
            verifyBothShowTheirLogs();
        }
        QCOMPARE(textOf(*rpc).count(u"while open"_s), 3);
    }

    void linesAreShownAsTheyStand_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("tags") << u"<b>x</b><br>y"_s;
        QTest::newRow("whole page") << u"<html><body>404</body></html>"_s;
        QTest::newRow("entity") << u"a &amp; b &lt;"_s;
        QTest::newRow("blanks") << u"  a   b\tc "_s;
        QTest::newRow("several lines") << u"a\nb\n\nc"_s;
    }
    void linesAreShownAsTheyStand()
    {
        QFETCH(const QString, line);
        openBoth();
        say(line);
        verifyBothShowTheirLogs();
        QVERIFY(textOf(*rpc).endsWith(u'\n' + line));
        QVERIFY(textOf(*status).endsWith("  Error: "_L1 + line));
        openBoth();
        rpc->refreshLog();
        verifyBothShowTheirLogs();
    }

    void clearingOneLeavesTheOther()
    {
        openBoth();
        const QStringList kept = window->statusLog();
        clear(*rpc);
        QCOMPARE(textOf(*rpc), QString());
        QCOMPARE(window->rpcLog(), QStringList());
        QCOMPARE(window->statusLog(), kept);
        QCOMPARE(textOf(*status), kept.join(u'\n'));
        clear(*status);
        say(u"after"_s);
        QCOMPARE(textOf(*rpc), u"after"_s);
        QVERIFY(textOf(*status).endsWith(u"  Error: after"_s));
        verifyBothShowTheirLogs();
    }

    void outliveTheirWindow()
    {
        openBoth();
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
        openBoth();
        for (int i = 0; i < 500; ++i)
            say(u"line %1 "_s.arg(i) + QString(i, u'x'));
        QTextEdit* view = viewOf(*rpc);
        QCOMPARE(view->verticalScrollBar()->value(), view->verticalScrollBar()->maximum());
        QCOMPARE(view->horizontalScrollBar()->value(), 0);
        QVERIFY(view->horizontalScrollBar()->maximum() > view->viewport()->width());
        view->horizontalScrollBar()->setValue(100);
        say(u"last"_s);
        QCOMPARE(view->horizontalScrollBar()->value(), 100); // a reader's columns stay
        QCOMPARE(view->verticalScrollBar()->value(), view->verticalScrollBar()->maximum());
        clear(*rpc);
        QCOMPARE(view->verticalScrollBar()->maximum(), 0);
        QCOMPARE(view->horizontalScrollBar()->maximum(), 0);
    }

    void linesAreDrawnAndFoundWhereTheyAreSeen()
    {
        openBoth();
        for (int i = 0; i < 500; ++i)
            say(QString::number(i));
        say(u"one two"_s);
        QTextEdit* view = viewOf(*rpc);
        const QPoint lastLine = view->viewport()->rect().bottomLeft() + QPoint(6, -view->fontMetrics().height());
        const QImage plain = view->viewport()->grab().toImage();
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, lastLine);
        QCOMPARE(view->textCursor().selectedText(), u"one"_s);
        QVERIFY(view->viewport()->grab().toImage() != plain); // the selection
        clear(*rpc);
        say(u"one two"_s);
        const QImage first = view->viewport()->grab().toImage();
        clear(*rpc);
        say(u"one six"_s);
        QVERIFY(view->viewport()->grab().toImage() != first);
    }

private:
    void openBoth()
    {
        rpc->show();
        status->show();
    }
    /// A line in either log: of a request, and of an error.
    void say(const QString& text)
    {
        auto* client = window->findChild<IpfsClient*>();
        emit client->rpcRequestIssued(text);
        emit client->errorOccurred(text);
    }
    void verifyBothShowTheirLogs()
    {
        QCOMPARE(textOf(*rpc), window->rpcLog().join(u'\n'));
        QCOMPARE(textOf(*status), window->statusLog().join(u'\n'));
    }
    static void clear(const LogDialog& dialog) { dialog.findChild<QPushButton*>()->click(); }
    static QTextEdit* viewOf(const LogDialog& dialog) { return dialog.findChild<QTextEdit*>(); }
    static QString textOf(const LogDialog& dialog) { return viewOf(dialog)->toPlainText(); }

    std::unique_ptr<FakeNode> node;
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<RpcLogDialog> rpc;
    std::unique_ptr<StatusLogDialog> status;
};

NORVO_TEST_MAIN(QApplication, tst_Logs)
#include "tst_logs.moc"
