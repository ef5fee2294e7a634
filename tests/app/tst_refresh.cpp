// SPDX-License-Identifier: MIT
#include "ConnectionStatusDot.h"
#include "PinModel.h"
#include "WindowTest.h"

#include <QHeaderView>
#include <QRadioButton>
#include <QStatusBar>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray path = "/pin/ls";

QByteArray pinLines(int count)
{
    QByteArray body;
    for (int i = 0; i < count; ++i)
        body += QByteArray("{\"Cid\":\"bafy#\",\"Name\":\"n#\",\"Type\":\"direct\"}\n")
                    .replace('#', QByteArray::number(i));
    return body;
}

} // namespace

class tst_Refresh : public WindowTest
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode(pinLines(3));
        node->answer("/id", NodeAnswer::json(R"({"ID":"12D3<b>x","AgentVersion":"kubo/0.43.0"})"));
        setting("typeFilter"_L1, u"all"_s);
        setting("loadMetadata"_L1, false); // the node has none, and those errors would be shown at any time
    }
    void cleanup() { close(); }

    void fillsTheTable()
    {
        openLoaded(3);
        QCOMPARE(refreshButton()->text(), u"⟳  Refresh"_s);
        QVERIFY(QRegularExpression(u"^Loaded 3 pin\\(s\\) — \\d\\d:\\d\\d:\\d\\d$"_s).match(status()).hasMatch());
        QVERIFY(dotTip().startsWith(u"Connection: Connected\nConnected to http://127.0.0.1:"_s));
        QTRY_COMPARE(label("peerIdLabel"_L1)->text(), u"PeerID: 12D3<b>x  |  kubo/0.43.0"_s);
        QCOMPARE(label("peerIdLabel"_L1)->textFormat(), Qt::PlainText);
        QVERIFY(!window->statusLog().filter(u"  Fetching pins from http://127.0.0.1:"_s).isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(status(), u"Ready"_s, 15'000);
    }

    void stagesWhileTheListStreams()
    {
        node->answer(path, NodeAnswer::hangAfter(pinLines(5)));
        open();
        QTRY_COMPARE(status(), u"Entries loaded: 5"_s);
        QCOMPARE(refreshButton()->text(), u"⟳  Loading…"_s);
        QVERIFY(!refreshButton()->isEnabled());
        QVERIFY(dotTip().startsWith(u"Connection: Checking\nChecking http://"_s));
    }

    void theFasterOfTwoStreamsIsShown()
    {
        node->route(path, [](const NodeRequest& request) {
            return NodeAnswer::hangAfter(pinLines(request.value(u"type"_s) == u"direct"_s ? 4 : 9));
        });
        setting("typeFilter"_L1, u"recursive+direct"_s);
        open();
        QTRY_COMPARE(node->openNow(path), 2);
        QTRY_COMPARE(status(), u"Entries loaded: 9"_s);
    }

    /// A long list is made ready on a thread; what was asked for before pins went is not to bring them back.
    void aListThatIsOutOfDateIsDropped()
    {
        openLoaded(3);
        node->answer(path, NodeAnswer::hold());
        emit client()->pinsReceived(QList<PinEntry>(20'001, {.cid = u"gone"_s}));
        emit client()->unpinned({u"gone"_s});
        QTRY_VERIFY(node->openNow(path) >= 1); // another one if the load that the window starts with comes late
        QVERIFY(waitForDetached(10s));
        QCoreApplication::processEvents();
        QCOMPARE(table()->model()->rowCount(), 3);
    }

    void failures_data()
    {
        const auto row = addColumns<NodeAnswer, QString, QString>("answer", "ending", "words");
        row("refused", NodeAnswer::text(403, "403 - Forbidden\n"), u"server replied: Forbidden"_s, QString());
        row("break in mid-line", NodeAnswer::dropAt(pinLines(9), 100), u"Connection closed"_s, QString());
        row("with a reason", NodeAnswer::error("<b>locked</b>"), u"Internal Server Error"_s,
            u"The node says: <b>locked</b>"_s);
    }
    void failures()
    {
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QString, ending);
        openLoaded(3);
        QTest::qWait(250); // the window's own first refresh comes 200 ms after it opens
        QTRY_VERIFY(node->openNow() == 0 && refreshButton()->isEnabled());
        node->answer(path, answer);
        node->answer("/id", NodeAnswer::hold());
        refreshButton()->click();
        QTRY_VERIFY(status().startsWith(u"Error: Network error: "_s));
        QVERIFY2(status().endsWith(ending), qPrintable(status()));
        QCOMPARE(label("notification"_L1)->text(), u"⚠  "_s + status().mid(7));
        QVERIFY(label("notification"_L1)->isVisibleTo(window.get()));
        QVERIFY(refreshButton()->isEnabled());
        QVERIFY(dotTip().startsWith(u"Connection: Disconnected\nDisconnected from http://"_s));
        QCOMPARE(label("peerIdLabel"_L1)->text(), u"Not connected"_s);
        QCOMPARE(rows(), 3); // the old ones
        const QLabel* words = label("nodeWordsLabel"_L1);
        QTEST(words->isVisibleTo(window.get()) ? words->text() : QString(), "words");
        QCOMPARE(words->textFormat(), Qt::PlainText);
        QCOMPARE(window->statusLog().filter(u"  The node says: <b>locked</b>"_s).size(),
                 words->text().isEmpty() ? 0 : 1);
        node->answer(path, NodeAnswer::json(pinLines(1)));
        refreshButton()->click();
        QVERIFY(!label("notification"_L1)->isVisibleTo(window.get()) && !words->isVisibleTo(window.get()));
        QVERIFY(waitForRows(1));
    }

    void aNodeThatWasNeverUpHasNoList()
    {
        setting("typeFilter"_L1, u"recursive+direct"_s); // two requests, so two errors and an empty list
        node->stop();
        open();
        QTRY_COMPARE(window->statusLog().filter(u"Error: Network error: Connection refused"_s).size(), 2);
        QTest::qWait(50);
        QCOMPARE(window->statusLog().filter(u"Loaded"_s), QStringList());
        QVERIFY(dotTip().startsWith(u"Connection: Disconnected"_s));
        QVERIFY(table()->accessibleDescription().startsWith(u"No node answers at http://127.0.0.1:"_s));
    }

    void aNodeWithoutPins_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing pinned") << u"recursive+direct"_s << u"The node has no pins.\n"_s;
        QTest::newRow("none of one type") << u"direct"_s << u"The node has no pins of this type.\n"_s;
    }
    void aNodeWithoutPins()
    {
        QFETCH(const QString, filter);
        QFETCH(const QString, text);
        setting("typeFilter"_L1, filter);
        node->answer(path, NodeAnswer::json({}));
        open();
        QTRY_VERIFY2(table()->accessibleDescription().startsWith(text), qPrintable(table()->accessibleDescription()));
    }

    void aNodeThatDiesKeepsItsRows()
    {
        setting("typeFilter"_L1, u"recursive+direct"_s); // two requests, so two errors and an empty list
        setting("loadMetadata"_L1, true);
        openLoaded(3);
        QTRY_VERIFY(label("countLabel"_L1)->text().endsWith(u"3/3 CIDs"_s));
        const QString counts = label("countLabel"_L1)->text();
        QTRY_COMPARE(node->openNow(), 0);
        node->stop();
        refreshButton()->click();
        QTRY_COMPARE(window->statusLog().filter(u"Error: Network error: Connection refused"_s).size(), 2);
        QTest::qWait(50);
        QCOMPARE(rows(), 3);
        QCOMPARE(label("countLabel"_L1)->text(), counts);
        QVERIFY(window->statusLog().filter(u"Loaded 0"_s).isEmpty());
        const auto loaded = [this] { return window->statusLog().filter(u"  Loaded"_s).size(); };
        const qsizetype before = loaded();
        field<QComboBox>("Content:"_L1)->setCurrentIndex(1); // its rows would be taken for blocks without a pin
        QTRY_COMPARE(rows(), 0);
        QCOMPARE(loaded(), before);
    }

    void onlyAComboLeavesASilentNode()
    {
        node->answer(path, NodeAnswer::hold());
        open();
        QTRY_COMPARE(node->heldCount(path), 1);
        QTest::keyClick(window.get(), Qt::Key_F5);
        QTest::qWait(20);
        QCOMPARE(node->count(path), 1); // dropped, not queued
        node->answer(path, NodeAnswer::json(pinLines(2)));
        field<QComboBox>("Filter:"_L1)->setCurrentIndex(2);
        QVERIFY(waitForRows(2));
        QCOMPARE(node->requests(path).constLast().value(u"type"_s), u"recursive"_s);
        QTRY_COMPARE(node->openNow(path), 0);
    }

    void indirectRowsAreLeftOutOfRecursiveAndDirect()
    {
        setting("typeFilter"_L1, u"recursive+direct"_s);
        node->answer(path,
                     NodeAnswer::json("{\"Cid\":\"a\",\"Type\":\"indirect\"}\n{\"Cid\":\"b\",\"Type\":\"direct\"}\n"));
        openLoaded(1);
        QCOMPARE(window->findChild<PinModel*>()->rowCount(), 1);
        QVERIFY(status().startsWith(u"Loaded 2 pin(s)"_s)); // the node's count
    }

    void largeListsKeepTheirColumns()
    {
        const QString message = u"Loaded 1201 pin(s) — large list mode (auto-resize skipped)"_s;
        node->answer(path, NodeAnswer::json(pinLines(1201)));
        setting("typeFilter"_L1, u"recursive+direct"_s); // any other is fetched once more after the window's start
        openLoaded(1201);
        QCoreApplication::processEvents();
        const QHeaderView* header = table()->horizontalHeader();
        QCOMPARE(header->sectionSize(0), 420);
        QCOMPARE(window->statusLog().filter(message).size(), 1);
        node->answer(path, NodeAnswer::json(pinLines(1200)));
        refreshButton()->click();
        QVERIFY(waitForRows(1200));
        QTRY_VERIFY(header->sectionSize(0) != 420);
        QCOMPARE(header->sectionResizeMode(0), QHeaderView::Interactive);
        QCOMPARE(window->statusLog().filter(u"large list"_s).size(), 1);
    }

    void searchNarrowsAfterTheLastKey()
    {
        setting("typeFilter"_L1, u"recursive+direct"_s); // the first item: no refresh but the first one by itself
        openLoaded(3);
        auto* search = window->findChild<QLineEdit*>();
        search->setText(u"N2"_s);
        QCOMPARE(rows(), 3);     // debounced
        QTRY_COMPARE(rows(), 0); // no CID holds it
        withText<QRadioButton>(*window, u"Name"_s)->click();
        QCOMPARE(rows(), 1); // at once
        QCOMPARE(search->placeholderText(), u"Filter by name…"_s);
        for (int round = 1; round < 3; ++round) {
            node->clearRequests();
            QTest::keyClick(window.get(), Qt::Key_F5);
            QTRY_VERIFY(node->count("/id") == 1 && refreshButton()->isEnabled());
            QCOMPARE(rows(), 1); // the text survives a refresh
        }
    }

    void aMessageHasItsTime()
    {
        setting("loadMetadata"_L1, false);
        openLoaded(3);
        node->answer(path, NodeAnswer::hold());
        refreshButton()->click();
        QVERIFY(status().startsWith(u"Fetching"_s));
        QTRY_COMPARE(node->heldCount(path), 1);
        QTest::qWait(2600);
        node->release(path, NodeAnswer::json(pinLines(3)));
        QTRY_COMPARE(window->statusLog().filter(u"Loaded "_s).size(), 2);
        QTest::qWait(2600); // beyond the time of the first one
        QVERIFY(status().startsWith(u"Loaded "_s));
    }

    void peerIdIsCopiedByTheLeftButton()
    {
        QGuiApplication::clipboard()->setText(u"before"_s);
        open();
        QTRY_VERIFY(label("peerIdLabel"_L1)->text().startsWith(u"PeerID"_s));
        QTest::mouseClick(label("peerIdLabel"_L1), Qt::RightButton);
        QCOMPARE(clipboard(), u"before"_s);
        QTest::mouseClick(label("peerIdLabel"_L1), Qt::LeftButton);
        QCOMPARE(clipboard(), u"12D3<b>x"_s);
        QCOMPARE(window->statusBar()->currentMessage(), u"Copied to clipboard"_s);
    }

private:
    QString dotTip() const { return window->findChild<ConnectionStatusDot*>()->toolTip(); }
};

NORVO_TEST_MAIN(QApplication, tst_Refresh)
#include "tst_refresh.moc"
