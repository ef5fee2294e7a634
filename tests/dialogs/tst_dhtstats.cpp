// SPDX-License-Identifier: MIT
#include "DhtGroups.h"
#include "DhtStatsDialog.h"
#include "DialogTest.h"

#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableWidget>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QByteArray dhtPath = "/stats/dht";
const QByteArray wanAndLan
    = R"({"Name":"wan","Buckets":[{"LastRefresh":"noon","Peers":[)"
      R"({"ID":"<b>p","Connected":true,"AgentVersion":"kubo","LastUsefulAt":"u","LastQueriedAt":"q"},)"
      R"({"ID":"r"}]},{"LastRefresh":"","Peers":null}]})"
      "\n"
      R"({"Name":"","Buckets":[]})";

QJsonValue manyBuckets(int count)
{
    QJsonArray buckets;
    for (int i = 0; i < count; ++i) {
        const QJsonObject peer {{u"ID"_s, QString(i % 7 + 1, u'W')}, {u"AgentVersion"_s, QString(i, u'a')}};
        buckets.append(QJsonObject {{u"Peers"_s, QJsonArray {peer, peer, peer}}});
    }
    return QJsonObject {{u"Name"_s, u"many"_s}, {u"Buckets"_s, buckets}};
}

} // namespace

class tst_DhtStats : public DialogTest<DhtStatsDialog>
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode();
        node->answer(dhtPath, NodeAnswer::hold());
        open();
    }
    void cleanup() { dialog.reset(); }

    void whatAnAnswerShows_data()
    {
        // json: in an array
        const auto row = addColumns<QByteArray, QStringList>("json", "shown");
        const QStringList wan {u"DHT: wan"_s};
        row("an object", R"({"Name":"wan"})", wan);
        row("an array of one", R"([{"Name":"wan"}])", wan);
        row("what is no object", R"([7,{"Name":"wan"},null,[{"Name":"lan"}]])", wan);
        row("nothing", "[]", {});
        row("a number", "7", {});
        row("names that are no plain text", R"([{"Name":"<b>&w"},{"Name":7}])", {u"DHT: <b>&&w"_s, u"DHT: DHT"_s});
        row("buckets", R"({"Buckets":[{"LastRefresh":"noon","Peers":[{},{}]},{"Peers":[]},7]})",
            {u"DHT: DHT"_s, u"Bucket 0 — Last refresh: noon — 2 peer(s)"_s, u"Bucket 1 — Last refresh:  (no peers)"_s,
             u"Bucket 2 — Last refresh:  (no peers)"_s});
    }
    void whatAnAnswerShows()
    {
        QFETCH(const QByteArray, json);
        emit client->dhtStatsReceived(QJsonDocument::fromJson('[' + json + ']').array().first());
        QTRY_VERIFY(isComplete());
        QTEST(titles(), "shown");
        QCOMPARE(status()->text(), u"Loaded from /api/v0/stats/dht"_s);
        dialog->hide();
        dialog->show(); // an empty one asks again
        QCOMPARE(messages.filter(u"Fetching"_s).size(), titles().isEmpty() ? 2 : 1);
        QTRY_COMPARE(node->heldCount(dhtPath), titles().isEmpty() ? 2 : 1);
    }

    void aTableHoldsABucketsPeers()
    {
        answerHeld(NodeAnswer::json(wanAndLan));
        QTRY_VERIFY(isComplete() && !titles().isEmpty());
        QCOMPARE(tables().size(), 1);
        QTableWidget* table = tables().first();
        QCOMPARE(rowOf(*table, 0), u"<b>p|kubo|Yes|q|u"_s);
        QCOMPARE(rowOf(*table, 1), u"r||No||"_s);
        QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
        table->setRangeSelected({0, 0, 1, 1}, true);
        dialog->activateWindow(); // else the shortcut is nobody's
        QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
        QTRY_VERIFY(table->isVisible()); // a turn after it has been put in
        table->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), table);
        QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboard(), u"<b>p\tkubo\nr\t"_s);
        QCOMPARE(messages, QStringList({u"Fetching DHT stats…"_s, u"DHT stats loaded"_s}));
    }

    void manyTablesComeInTurnsAndInLine()
    {
        emit client->dhtStatsReceived(manyBuckets(150));
        QVERIFY(!titles().isEmpty());
        QVERIFY(!isComplete());
        QTRY_VERIFY_WITH_TIMEOUT(isComplete(), 120'000);
        QCOMPARE(tables().size(), 150);
        auto* area = dialog->findChild<QScrollArea*>();
        QTRY_COMPARE(area->horizontalScrollBar()->maximum(), 0); // laid out
        QTableWidget* first = tables().first();
        QTableWidget* sample = tables().at(146); // among the widest
        sample->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
        const int idWidth = sample->columnWidth(0);
        QVERIFY(sample->columnWidth(1) > 300);
        for (QTableWidget* table : tables()) {
            if (table == sample)
                continue;
            QCOMPARE(table->columnWidth(0), idWidth);
            QCOMPARE(table->columnWidth(1), 300);
            QTRY_COMPARE(table->columnWidth(4), first->columnWidth(4));
            QCOMPARE(table->horizontalHeader()->length(), table->viewport()->width());
            QCOMPARE(table->verticalHeader()->length(), table->viewport()->height()); // no row is out of sight
        }
    }

    /// A table is there when all of its rows are, and scrolls by itself if it is taller than a widget can be.
    void aLargeBucketComesInTurns()
    {
        constexpr int rows = 100'000;
        QJsonArray peers;
        for (int i = 0; i < rows; ++i)
            peers.append(QJsonObject {{u"ID"_s, u"p%1"_s.arg(i)}});
        const QJsonObject bucket {{u"Peers"_s, peers}};
        const QJsonObject view {{u"Buckets"_s, QJsonArray {bucket, QJsonObject()}}};
        emit client->dhtStatsReceived(view);
        QVERIFY(!isComplete() && !tables().first()->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(isComplete(), 120'000);
        QCOMPARE(titles().last(), u"Bucket 1 — Last refresh:  (no peers)"_s);
        QTableWidget* table = tables().first();
        QCOMPARE(table->rowCount(), rows);
        QCOMPARE(rowOf(*table, 0) + rowOf(*table, rows - 1), u"p0||No||p99999||No||"_s);
        QTRY_VERIFY(table->isVisible() && table->verticalScrollBar()->maximum() > 0);
        emit client->dhtStatsReceived(view);
        emit client->dhtStatsReceived(manyBuckets(1)); // before the table is whole
        QTRY_COMPARE_WITH_TIMEOUT(titles().size(), 2, 20'000);
        QCOMPARE(tables().size(), 1);
    }

    void fillingEndsWithWhatFollows()
    {
        emit client->dhtStatsReceived(manyBuckets(150));
        emit client->dhtStatsReceived(manyBuckets(1)); // asked for by another dialog
        QTRY_VERIFY(isComplete());
        QTRY_COMPARE(titles().size(), 2);
        emit client->dhtStatsReceived(manyBuckets(150));
        emit client->dhtStatsFailed(u"<b>x"_s);
        QVERIFY(isComplete());
        QTRY_COMPARE(titles().size(), 0);
        QCOMPARE(status()->text(), u"<b>x"_s);
        QCOMPARE(messages.last(), u"DHT stats error: <b>x"_s);
        emit client->dhtStatsReceived(manyBuckets(150));
        dialog->hide();
        QVERIFY(isComplete());
        dialog->show();
        QTRY_COMPARE(node->heldCount(dhtPath), 2);
        emit client->dhtStatsReceived(manyBuckets(150));
        dialog.reset();
        QTest::qWait(1);
    }

    void theChoiceIsKeptAndAskedFor()
    {
        QCOMPARE(combo()->currentText(), u"wan & lan (default)"_s);
        QVERIFY(!combo()->isEnabled() && !refresh()->isEnabled());
        answerHeld(NodeAnswer::json("[]"));
        QTRY_VERIFY(combo()->isEnabled() && refresh()->isEnabled());
        combo()->setFocus();
        combo()->setCurrentIndex(4);
        QVERIFY(dialog->focusWidget() == dialog.get());
        QTRY_COMPARE(node->heldCount(dhtPath), 1);
        QCOMPARE(messages.last(), u"Fetching DHT stats (lanserver)…"_s);
        QCOMPARE(node->requests(dhtPath).first().rawQuery + node->requests(dhtPath).last().rawQuery, "arg=lanserver");
        answerHeld(NodeAnswer::json("[]"));
        QTRY_COMPARE(dialog->focusWidget(), combo());
        messages.clear();
        open();
        QCOMPARE(combo()->currentData(), u"lanserver"_s);
        QCOMPARE(messages.size(), 1); // by being shown, not by the choice
        openAppSettings().clear();
        openAppSettings().setValue("DhtStatsDialog/dhtArg"_L1, u"LAN"_s);
        open();
        QCOMPARE(combo()->currentIndex(), 0);
    }

    void theNodesWordsAreShown()
    {
        answerHeld(NodeAnswer::error("this command must be run in online mode. Try running 'ipfs daemon' first"));
        QTRY_COMPARE(words()->text(),
                     u"The node says: this command must be run in online mode. Try running 'ipfs daemon' first"_s);
        QVERIFY(words()->isVisible() && words()->textFormat() == Qt::PlainText);
        QVERIFY(status()->text().startsWith(u"Failed to get DHT stats: "_s) && !status()->text().contains(u'\n'));
        refresh()->click();
        QTRY_COMPARE(node->heldCount(dhtPath), 1);
        QVERIFY(!words()->isVisible());
        answerHeld(NodeAnswer::brokenOff(wanAndLan, "no LAN client found"));
        QTRY_COMPARE(status()->text(), u"Loaded from /api/v0/stats/dht"_s);
        QCOMPARE(words()->text(), u"The node says: no LAN client found"_s);
        QVERIFY(!titles().isEmpty());
    }

    void anotherNodeIsAskedAnew()
    {
        FakeNode other;
        other.answer(dhtPath, NodeAnswer::json(R"({"Name":"other"})"));
        client->setEndpoint(u"127.0.0.1"_s, other.port());
        answerHeld(NodeAnswer::json(wanAndLan)); // of the former node
        QTRY_COMPARE(titles(), QStringList {u"DHT: other"_s});
        dialog->hide();
        client->setEndpoint(u"127.0.0.1"_s, node->port());
        QTRY_VERIFY(titles().isEmpty());
        QVERIFY(combo()->isEnabled());
        QCOMPARE(node->count(dhtPath), 1);
    }

private:
    void open()
    {
        make(client.get());
        const int before = node->heldCount(dhtPath);
        dialog->show();
        dialog->resize(1100, 700);
        QTRY_COMPARE(node->heldCount(dhtPath), before + 1);
    }
    void answerHeld(const NodeAnswer& answer) const { node->release(dhtPath, answer); }

    bool isComplete() const { return !dialog->findChild<DhtGroups*>(); }
    QStringList titles() const
    {
        QStringList titles;
        for (const auto* box : dialog->findChildren<QGroupBox*>())
            titles.append(box->title());
        return titles;
    }
    QList<QTableWidget*> tables() const { return dialog->findChildren<QTableWidget*>(); }
    static QString rowOf(const QTableWidget& table, int row)
    {
        QStringList cells;
        for (int column = 0; column < table.columnCount(); ++column)
            cells.append(table.item(row, column)->text());
        return cells.join(u'|');
    }
    QComboBox* combo() const { return dialog->findChild<QComboBox*>(); }
    QPushButton* refresh() const { return dialog->findChild<QPushButton*>(); }
};

NORVO_TEST_MAIN(QApplication, tst_DhtStats)
#include "tst_dhtstats.moc"
