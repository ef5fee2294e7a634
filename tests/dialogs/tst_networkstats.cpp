// SPDX-License-Identifier: MIT
#include "DialogTest.h"
#include "LineView.h"
#include "NetworkStatsDialog.h"

#include <QFileDialog>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

const std::array<QByteArray, 3> paths {"/swarm/peers", "/stats/dht", "/bitswap/stat"};
const std::array<QByteArray, 3> goodBodies {R"({"Peers":[{"Addr":"/ip4/203.0.113.7/tcp/4001","Peer":"12D3A"}]})",
                                            R"({"Name":"wan","Buckets":[{"Peers":[{"ID":"12D3A","Connected":true}]}]})",
                                            R"({"Peers":["12D3A"],"Wantlist":null})"};
const QString hint = u"Click Refresh to load network diagnostics"_s;
const QString loading = u"Loading swarm, DHT, and bitswap stats..."_s;
const QString partly = u"Network diagnostics loaded with partial errors."_s;
const QStringList noLines {u"Connectivity: —"_s, u"Routing: —"_s, u"Exchange: —"_s};

/// As many as a node with every bucket full has, and more.
QByteArray manyPeers()
{
    QByteArray body = R"({"Peers":["first)";
    for (int i = 0; i < 10'000; ++i)
        body += "\",\"/ip4/203.0.113.7/tcp/" + QByteArray::number(i);
    return body + "\"]}";
}

} // namespace

class tst_NetworkStats : public DialogTest<NetworkStatsDialog>
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode();
        make(client.get());
    }
    void cleanup() { close(); }

    void theFirstShowAsks()
    {
        QCOMPARE(signalLines(), noLines);
        QCOMPARE(status()->text() + status()->styleSheet(), hint + u"color: gray;"_s);
        button("Copy JSON")->click();
        button("Save snapshot...")->click();
        QVERIFY(messages.isEmpty() && !dialog->findChild<QFileDialog*>());
        const QImage empty = view()->grab().toImage();
        view()->setPlaceholderText({});
        QVERIFY(view()->grab().toImage() != empty);
        openHeld();
        QCOMPARE(status()->text() + status()->styleSheet(), loading);
        QVERIFY(!refresh()->isEnabled());
        QCOMPARE(node->requests(paths[0]).constFirst().rawQuery, "");
        QCOMPARE(node->requests(paths[1]).constFirst().rawQuery, "");
        QCOMPARE(node->requests(paths[2]).constFirst().rawQuery, "verbose=false&human=false");

        answer(2);
        dialog->hide();
        dialog->show(); // there is something to see
        QCOMPARE(node->requests().size(), 3);
        button("Copy JSON")->click();
        QCOMPARE(clipboard(), view()->toPlainText());
        QCOMPARE(messages, QStringList({u"Fetching network diagnostics..."_s, u"Network snapshot JSON copied"_s}));
    }

    void answersInAnyOrder_data()
    {
        QTest::addColumn<QList<int>>("order");
        QList<int> order {0, 1, 2};
        do {
            QTest::addRow("%d%d%d", order[0], order[1], order[2]) << order;
        } while (std::ranges::next_permutation(order).found);
    }
    void answersInAnyOrder()
    {
        QFETCH(const QList<int>, order);
        openHeld();
        QList<int> come;
        for (const int call : order) {
            QVERIFY(!refresh()->isEnabled());
            QCOMPARE(status()->text(), loading);
            answer(call);
            come.append(call);
            QCOMPARE(signalLines(), linesAfter(come));
        }
        QVERIFY(refresh()->isEnabled());
        QVERIFY(status()->text().startsWith(u"Network diagnostics loaded at "_s) && status()->styleSheet().isEmpty());
        QCOMPARE(messages, QStringList({u"Fetching network diagnostics..."_s, u"Network diagnostics loaded"_s}));
        QVERIFY(!words()->isVisible());

        refresh()->click(); // what is shown stays until something comes
        QTRY_COMPARE(node->heldCount(paths[0]) + node->heldCount(paths[1]) + node->heldCount(paths[2]), 3);
        QCOMPARE(signalLines(), linesAfter({0, 1, 2}));
        answer(0);
        QCOMPARE(signalLines(), linesAfter({0}));
    }

    /// The answers of a node that is offline, or has gone, with what the window says of the cause.
    void failures_data()
    {
        const auto row = addColumns<QList<NodeAnswer>, QStringList, QString>("answers", "shown", "health");
        const auto good = [](size_t call) { return NodeAnswer::json(goodBodies.at(call)); };
        const NodeAnswer gone = NodeAnswer::dropAt({}, 0);
        const NodeAnswer lists = NodeAnswer::error("this action must be run in online mode, try <b>'ipfs daemon'</b>");
        const NodeAnswer dht = NodeAnswer::error("this command must be run in online mode.");
        const NodeAnswer bitswap = NodeAnswer::error("unable to run offline: x", 1);
        const QString noPeers = u"Swarm peers: this action must be run in online mode, try <b>'ipfs daemon'</b>"_s;
        const QString noDht = u"DHT statistics: this command must be run in online mode."_s;
        const QString noBitswap = u"Bitswap statistics: unable to run offline: x"_s;
        row("offline", QList {lists, dht, bitswap}, QStringList {noPeers, noDht, noBitswap}, u"unknown"_s);
        row("no peers", QList {lists, good(1), good(2)}, QStringList {noPeers}, u"poor"_s);
        row("no DHT", QList {good(0), dht, good(2)}, QStringList {noDht}, u"good"_s);
        row("no exchange", QList {good(0), good(1), bitswap}, QStringList {noBitswap}, u"degraded"_s);
        row("gone", QList {good(0), gone, gone},
            QStringList {u"DHT statistics: Failed to get DHT stats: Connection closed"_s,
                         u"Bitswap statistics: Failed to get bitswap stats: Connection closed"_s},
            u"poor"_s);
        row("one view missing", QList {good(0), NodeAnswer::brokenOff(goodBodies[1], "no LAN client found"), good(2)},
            QStringList {u"DHT statistics: no LAN client found"_s}, u"good"_s);
    }
    void failures()
    {
        QFETCH(const QList<NodeAnswer>, answers);
        for (size_t call = 0; call < paths.size(); ++call)
            node->answer(paths.at(call), answers.at(static_cast<qsizetype>(call)));
        dialog->show();
        QTRY_VERIFY(refresh()->isEnabled());
        QTEST(words()->text().split(u'\n'), "shown");
        QVERIFY(words()->isVisible());
        QCOMPARE(words()->textFormat(), Qt::PlainText);
        QTEST(snapshot()["health"_L1]["state"_L1].toString(), "health");
        if (QLatin1StringView(QTest::currentDataTag()) == "one view missing"_L1)
            return;
        QCOMPARE(status()->text() + status()->styleSheet(), partly + u"color: darkred;"_s);
        QCOMPARE(messages.constLast(), u"Network diagnostics loaded with errors"_s);

        for (size_t call = 0; call < paths.size(); ++call)
            node->answer(paths.at(call), NodeAnswer::json(goodBodies.at(call)));
        refresh()->click();
        QVERIFY(!words()->isVisible());
        QTRY_COMPARE(messages.constLast(), u"Network diagnostics loaded"_s);
        QVERIFY(!words()->isVisible());
    }

    /// Signals don't say who asked.
    void whatOtherWindowsAsk()
    {
        openHeld();
        emit client->swarmRequestFailed(u"connect"_s, u"not ours"_s);
        emit client->nodeSaid(u"/pin/ls"_s, u"not ours"_s);
        QVERIFY(view()->toPlainText().isEmpty());
        emit client->swarmPeersReceived({u"/a"_s, u"/b"_s});
        emit client->dhtStatsFailed(u"<i>theirs"_s);
        QCOMPARE(signalLines().constFirst(), u"Connectivity: swarm peers = 2"_s);
        QCOMPARE(words()->text(), u"DHT statistics: <i>theirs"_s);
        answer(2);
        QVERIFY(refresh()->isEnabled());
        QCOMPARE(status()->text(), partly);
        answer(1);
        QVERIFY(status()->text().startsWith(u"Network diagnostics loaded at "_s));
        answer(0);
        QCOMPARE(signalLines(), linesAfter({0, 1, 2}));
        QVERIFY(!words()->isVisible());
    }

    void anotherNode_data()
    {
        QTest::addColumn<bool>("isShown");
        QTest::newRow("shown") << true;
        QTest::newRow("hidden") << false;
    }
    void anotherNode()
    {
        QFETCH(const bool, isShown);
        openHeld();
        node->release(paths[0], NodeAnswer::json(manyPeers())); // its snapshot is made on a thread
        QTRY_COMPARE(node->openNow(paths[0]), 0);
        answer(2);
        dialog->setVisible(isShown);
        FakeNode other;
        for (size_t call = 0; call < paths.size(); ++call)
            other.answer(paths.at(call), NodeAnswer::json(goodBodies.at(call)));
        client->setEndpoint(u"127.0.0.1"_s, other.port());
        QVERIFY(view()->toPlainText().isEmpty());
        QCOMPARE(signalLines(), noLines);
        QCOMPARE(status()->text(), isShown ? loading : hint);
        answer(1, false);
        QVERIFY(waitForDetached(std::chrono::seconds(10)));
        QCoreApplication::processEvents(); // what a thread has made of the former node's answers
        if (!isShown) {
            QVERIFY(view()->toPlainText().isEmpty() && other.requests().isEmpty());
            dialog->show();
        }
        QTRY_COMPARE(signalLines(), linesAfter({0, 1, 2}));
        QVERIFY(refresh()->isEnabled());
        QCOMPARE(other.requests().size(), 3);
    }

    /// A long document comes in turns; what is copied or saved of it is all of it.
    void manyPeersAreShownInTurns()
    {
        openHeld();
        QString inSight;
        connect(dialog.get(), &NetworkStatsDialog::statusMessageRequested, view(), [&](const QString& message) {
            if (message != "Network diagnostics loaded"_L1)
                return;
            inSight = view()->isFilling() ? view()->toPlainText() : QString();
            button("Copy JSON")->click();
        });
        answer(1);
        answer(2);
        node->release(paths[0], NodeAnswer::json(manyPeers()));
        QTRY_VERIFY(refresh()->isEnabled());
        QCOMPARE(signalLines().constFirst(), u"Connectivity: swarm peers = 10001"_s);
        const QString copied = clipboard();
        QVERIFY(!inSight.isEmpty() && inSight.size() < copied.size() && copied.startsWith(inSight));
        QTRY_VERIFY_WITH_TIMEOUT(!view()->isFilling(), 30'000);
        QCOMPARE(view()->toPlainText(), copied);
        QCOMPARE(snapshot()["swarm"_L1]["peers"_L1][10'000]["addr"_L1].toString(), u"/ip4/203.0.113.7/tcp/9999"_s);

        emit client->swarmPeersReceived({}); // a short one ends the turns of a long one
        QVERIFY(!view()->isFilling());
        QVERIFY(view()->toPlainText().endsWith(u"\"window_seconds\": 0\n}\n"_s));
    }

    /// While one snapshot is being made the other answers come, and the document has them all.
    void answersDuringTheWork()
    {
        openHeld();
        node->release(paths[0], NodeAnswer::json(manyPeers()));
        QTRY_COMPARE(node->openNow(paths[0]), 0);
        emit client->dhtStatsReceived(QJsonDocument::fromJson(goodBodies[1]).object());
        emit client->swarmPeersReceived(QStringList(5000, u"/a"_s));
        emit client->bitswapStatReceived(QJsonDocument::fromJson(goodBodies[2]).object());
        QTRY_VERIFY(refresh()->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(!view()->isFilling(), 30'000);
        QCOMPARE(snapshot()["health"_L1]["state"_L1].toString(), u"good"_s);
    }

    void saving_data()
    {
        QTest::addColumn<QString>("name"); // in a folder that has "old.json"
        QTest::addColumn<bool>("succeeds");
        QTest::newRow("new") << u"new.json"_s << true;
        QTest::newRow("replaced") << u"old.json"_s << true;
        QTest::newRow("no such folder") << u"gone/new.json"_s << false;
    }
    void saving()
    {
        QFETCH(const QString, name);
        QFETCH(const bool, succeeds);
        const QTemporaryDir folder;
        QFile old(folder.filePath(u"old.json"_s));
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write(QByteArray(100'000, 'x')) == 100'000);
        old.close();
        openHeld();
        answer(0);
        const QString path = folder.filePath(name);
        const QString shown = view()->toPlainText();
        auto* picker = pickerAfterSave();
        QVERIFY(picker);
        QCOMPARE(picker->windowTitle(), u"Save network snapshot"_s);
        QCOMPARE(picker->nameFilters(), QStringList({u"JSON files (*.json)"_s, u"All files (*)"_s}));
        static const QRegularExpression proposed(u"/network-snapshot-\\d{8}-\\d{6}\\.json$"_s);
        QVERIFY(proposed.match(picker->selectedFiles().value(0)).hasMatch());
        answer(2); // what is saved is what was shown when the button was pressed
        emit picker->fileSelected(path);
        QFile file(path);
        QCOMPARE(file.open(QIODevice::ReadOnly), succeeds);
        QCOMPARE(QString::fromUtf8(succeeds ? file.readAll() : shown.toUtf8()), shown);
        QCOMPARE(status()->text(),
                 succeeds ? u"Saved network snapshot: "_s + path
                          : u"Failed to save snapshot: No such file or directory"_s);
        QCOMPARE(status()->styleSheet(), succeeds ? QString() : u"color: darkred;"_s);
        QCOMPARE(messages.constLast(), succeeds ? u"Network snapshot saved"_s : u"Failed to save network snapshot"_s);
    }

    void theWindowMayGoInTheMiddle()
    {
        openHeld();
        answer(2);
        QVERIFY(pickerAfterSave());
        node->release(paths[0], NodeAnswer::json(manyPeers()));
        QTRY_COMPARE(node->openNow(paths[0]), 0);
        dialog.reset();
        node->release(paths[1], NodeAnswer::error("late"));
        QTRY_COMPARE(node->openNow(paths[1]), 0);
        QVERIFY(waitForDetached(std::chrono::seconds(10)));
        QCoreApplication::processEvents();
    }

private:
    /// Shows the dialog, with a node that answers when the test says so.
    void openHeld()
    {
        for (const QByteArray& path : paths)
            node->answer(path, NodeAnswer::hold());
        dialog->show();
        for (const QByteArray& path : paths)
            QTRY_COMPARE(node->heldCount(path), 1);
    }
    /// Lets one call be answered, and waits until the document has it.
    void answer(int call, bool isShown = true)
    {
        const auto index = static_cast<size_t>(call);
        const QString before = view()->toPlainText();
        node->release(paths.at(index), NodeAnswer::json(goodBodies.at(index)));
        QTRY_COMPARE(node->openNow(paths.at(index)), 0);
        if (isShown)
            QTRY_VERIFY(view()->toPlainText() != before);
    }
    static QStringList linesAfter(const QList<int>& come)
    {
        const auto count = [&come](int call) { return come.contains(call) ? u"1"_s : u"0"_s; };
        const bool connected = come.contains(0);
        const bool exchanges = come.contains(2);
        const bool either = exchanges || come.contains(1);
        const QString health = connected && exchanges ? u"good (85)"_s
            : connected && either                     ? u"degraded (60)"_s
                                                      : u"poor (30)"_s;
        return {u"Connectivity: swarm peers = "_s + count(0),
                u"Routing: DHT peers = %1, DHT views = %1"_s.arg(count(1)),
                u"Exchange: bitswap peers = %1, wantlist = 0, health = %2"_s.arg(count(2), health)};
    }

    QFileDialog* pickerAfterSave()
    {
        button("Save snapshot...")->click();
        return dialog->findChild<QFileDialog*>();
    }
    QPushButton* refresh() const { return button("Refresh"); }
    LineView* view() const { return dialog->findChild<LineView*>(); }
    QJsonDocument snapshot() const { return QJsonDocument::fromJson(view()->toPlainText().toUtf8()); }
    QStringList signalLines() const
    {
        QStringList lines;
        for (const auto* label : dialog->findChildren<QLabel*>()) {
            if (label->styleSheet() == u"font-weight: bold;"_s)
                lines.append(label->text());
        }
        return lines;
    }
};

NORVO_TEST_MAIN(QApplication, tst_NetworkStats)

#include "tst_networkstats.moc"
