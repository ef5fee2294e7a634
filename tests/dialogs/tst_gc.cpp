// SPDX-License-Identifier: MIT
#include "DialogTest.h"
#include "GcDialog.h"
#include "GcReportText.h"

#include <QJsonDocument>
#include <QScrollBar>
#include <QTextBlock>

using namespace Qt::StringLiterals;

namespace {

QStringList numberedLines(int count)
{
    QStringList lines;
    for (int i = 0; i < count; ++i)
        lines.append(u"line %1"_s.arg(i));
    return lines;
}

} // namespace

class tst_Gc : public DialogTest<GcDialog>
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode();
        node->answer("/repo/stat", NodeAnswer::hold());
        node->answer("/repo/gc", NodeAnswer::hold());
        make(client.get());
        dialog->show();
        QTRY_COMPARE(node->heldCount("/repo/stat"), 1);
    }
    void cleanup() { dialog.reset(); }

    void statLines_data()
    {
        // lines: after the first
        const auto row = addColumns<QByteArray, QString>("stat", "lines");
        const QString empty = u"NumObjects: 0\nRepoSize: 0 B (0 B)"_s;
        row("nothing is none, not unknown", "{}", empty);
        row("all",
            R"({"RepoSize":1536,"StorageMax":10000000000,"NumObjects":3,"RepoPath":"/r","Version":"fs-repo@18"})",
            u"NumObjects: 3\nRepoSize: 1.5 KiB (1536 B)\nStorageMax: 9.3 GiB (10000000000 B)\nRepoPath: /r\n"
            "Version: fs-repo@18"_s);
        row("negative", R"({"RepoSize":-1,"NumObjects":-1,"StorageMax":-1})", u"NumObjects: —\nRepoSize: —"_s);
        row("no limit", R"({"StorageMax":18446744073709551615})", empty + u"\nStorageMax: no limit"_s);
        row("first without a limit", R"({"StorageMax":9223372036854775808})", empty + u"\nStorageMax: no limit"_s);
        row("largest limit", R"({"StorageMax":9223372036854775807})",
            empty + u"\nStorageMax: 8589934592.0 GiB (9223372036854775807 B)"_s);
        row("numbers that 64 bits don't hold", R"({"RepoSize":1e300,"NumObjects":-1e300})",
            u"NumObjects: —\nRepoSize: —"_s);
        row("limit of letters", R"({"StorageMax":"ten"})", empty + u"\nStorageMax: 0 B (0 B)"_s);
        row("limit that is only a text", R"({"StorageMax":null})", u"StorageMax: \n"_s + empty);
        row("limit of no kind", R"({"StorageMax":{"a":1},"RepoPath":7})", empty);
    }
    void statLines()
    {
        QFETCH(const QByteArray, stat);
        const QStringList lines = repoStatLines(QJsonDocument::fromJson(stat).object(), u"%1"_s);
        QCOMPARE(lines.first(), u"[%1] /api/v0/repo/stat"_s);
        QTEST(lines.mid(1).join(u'\n'), "lines");
    }

    void statsAndCollectionReplaceEachOther()
    {
        QVERIFY(!statsButton()->isEnabled() && !collectButton()->isEnabled());
        dialog->hide();
        dialog->show(); // still waiting for the first answer
        node->release("/repo/stat", NodeAnswer::json(R"({"RepoPath":"<b>&amp;"})"));
        QTRY_VERIFY(statsButton()->isEnabled() && collectButton()->isEnabled());
        QVERIFY(text().endsWith(u"\nRepoPath: <b>&amp;"_s));
        dialog->hide();
        dialog->show();
        QCOMPARE(node->count("/repo/stat"), 1);

        collectButton()->click();
        QCOMPARE(text(), QString());
        QTRY_COMPARE(node->heldCount("/repo/gc"), 1);
        node->release("/repo/gc",
                      NodeAnswer::json("{\"Key\":{\"/\":\"a\"}}\n{\"Key\":null,\"Error\":\"<i>\"}\n"
                                       "{\"Key\":{\"/\":\"b\"}}\n"));
        QTRY_VERIFY(collectButton()->isEnabled());
        QVERIFY(text().endsWith(u"] /api/v0/repo/gc completed\nCollected entries: 2\nErrors: 1\n\nErrors:\n - <i>\n\n"
                                "Collected CIDs:\n - a\n - b"_s));
        emit client->repoGcCompleted({}, {});
        QVERIFY(text().endsWith(u"\nCollected entries: 0\nErrors: 0\n\nNo collected CIDs returned."_s));
        QCOMPARE(status()->text(), u"GC completed"_s);
        QCOMPARE(
            messages,
            QStringList({u"Fetching repo stats..."_s, u"Repo stats loaded"_s, u"Running repo garbage collection..."_s,
                         u"Repo GC finished: 2 collected, 1 errors"_s, u"Repo GC finished: 0 collected, 0 errors"_s}));
    }

    void aFailureShowsTheNodesWords()
    {
        node->release("/repo/stat", NodeAnswer::error("<b>locked"));
        QTRY_VERIFY(statsButton()->isEnabled());
        QCOMPARE(words()->text(), u"The node says: <b>locked"_s);
        QVERIFY(status()->text().startsWith(u"Failed to get repo stat: "_s));
        QCOMPARE(text(), status()->text());
        QVERIFY(isRed());
        emit client->repoGcFailed(u"<b>x"_s);
        QCOMPARE(text() + status()->text(), u"<b>x<b>x"_s);
        collectButton()->click();
        QCOMPARE(words()->text(), QString()); // those of an earlier call
        QVERIFY(messages.value(1).startsWith(u"Repo stats error: "_s));
        QCOMPARE(messages.value(2), u"Repo GC error: <b>x"_s);
    }

    void anotherNodeIsAskedAnew()
    {
        collectButton()->setEnabled(true); // as if the statistics had come
        collectButton()->click();
        QTRY_COMPARE(node->heldCount("/repo/gc"), 1);
        FakeNode other;
        other.answer("/repo/stat", NodeAnswer::json(R"({"RepoPath":"/other"})"));
        other.answer("/repo/gc", NodeAnswer::json(R"({"Key":{"/":"new"}})"));
        client->setEndpoint(u"127.0.0.1"_s, other.port());
        QTRY_VERIFY(text().endsWith(u"/other"_s));
        node->release("/repo/gc", NodeAnswer::json(R"({"Key":{"/":"old"}})"));
        QTRY_VERIFY(text().endsWith(u" - old"_s));
        QCOMPARE(status()->text(), u"GC completed at the former node"_s);
        collectButton()->click();
        QTRY_VERIFY(text().endsWith(u" - new"_s));
        QCOMPARE(status()->text(), u"GC completed"_s);

        dialog->hide();
        client->setEndpoint(u"127.0.0.1"_s, node->port());
        QCOMPARE(text(), QString());
        QVERIFY(statsButton()->isEnabled());
        node->clearRequests();
        dialog->show();
        QTRY_COMPARE(node->heldCount("/repo/stat"), 1 + 1); // the first one of all is still held
        collectButton()->setEnabled(true);
        collectButton()->click();
        dialog.reset(); // answers to come find nobody
        node->release("/repo/stat", NodeAnswer::json("{}"), 1);
        QTRY_COMPARE(node->count("/repo/gc"), 1);
    }

    void aLongReportComesInTurns()
    {
        const QStringList cids = numberedLines(60'000);
        emit client->repoGcCompleted(cids, {});
        QVERIFY(view()->isFilling());
        QVERIFY(text().contains(u"\n - line 5000\n"_s));
        view()->selectAll();
        view()->copy(); // before all is there
        const QString copied = clipboard();
        QVERIFY(copied.endsWith(u" - line 59999"_s));
        QTRY_VERIFY(!view()->isFilling());
        QCOMPARE(text(), copied);
        QCOMPARE(copied.count(u'\n'), cids.size() + 4);
        QCOMPARE(view()->verticalScrollBar()->value(), 0);
        view()->copy(); // all of it is still selected
        QCOMPARE(clipboard(), copied);

        emit client->repoGcCompleted(cids, {});
        emit client->repoGcFailed(u"x"_s);
        QVERIFY(!view()->isFilling());
        QCOMPARE(text(), u"x"_s);
    }

    void linesBeforeTheLastComeInTurns()
    {
        LineView lines;
        lines.resize(400, 300);
        lines.show();
        const QStringList all = numberedLines(60'000);
        lines.setLines({{.lines = all.first(1)}, {.lines = all.mid(1)}}, LineView::From::End);
        QVERIFY(lines.isFilling());
        QVERIFY(lines.toPlainText().endsWith(u"\nline 59999"_s));
        QScrollBar* bar = lines.verticalScrollBar();
        bar->setValue(bar->maximum() / 2);
        const auto topLine = [&lines] { return lines.cursorForPosition({5, 5}).block().text(); };
        const QString kept = topLine();
        QTRY_VERIFY(!lines.isFilling());
        QCOMPARE(topLine(), kept);
        QCOMPARE(lines.toPlainText(), all.join(u'\n'));

        lines.setLines({{.lines = all}}, LineView::From::End);
        lines.appendLine(u"after"_s);
        QCOMPARE(bar->value(), bar->maximum());
        QTRY_VERIFY(!lines.isFilling());
        QVERIFY(lines.toPlainText() == all.join(u'\n') + u"\nafter"_s);
        QCOMPARE(bar->value(), bar->maximum());
        lines.setLines({{.lines = all}}, LineView::From::Start);
        lines.appendLine(u"after"_s);
        QTRY_VERIFY(!lines.isFilling());
        QVERIFY(lines.toPlainText() == all.join(u'\n') + u"\nafter"_s);
        lines.setLines({{.lines = all}}, LineView::From::End);
        lines.clearLines();
        QTest::qWait(1); // a turn that would fill in more
        QCOMPARE(lines.toPlainText(), QString());
    }

private:
    LineView* view() const { return dialog->findChild<LineView*>(); }
    QString text() const { return view()->toPlainText(); }
    QPushButton* statsButton() const { return dialog->findChildren<QPushButton*>().value(0); }
    QPushButton* collectButton() const { return dialog->findChildren<QPushButton*>().value(1); }
};

NORVO_TEST_MAIN(QApplication, tst_Gc)
#include "tst_gc.moc"
