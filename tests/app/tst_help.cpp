// SPDX-License-Identifier: MIT
#include "IpfsClient.h"
#include "ProblemReportDialog.h"
#include "ProductInfo.h"
#include "ShortcutsDialog.h"
#include "UserGuide.h"
#include "WindowTest.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QTableWidget>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

/// The menus, the keys, and what the Help menu opens. Rows of the table: "r1" and "r2" recursive, "d" direct.
class tst_Help : public WindowTest
{
    Q_OBJECT

public slots:
    void catchUrl(const QUrl& url) { opened = url; }

private slots:
    void init()
    {
        failOnWarnings();
        openAppSettings().clear();
        setting("loadMetadata"_L1, false);
        setting("typeFilter"_L1, u"recursive+direct"_s);
        node = std::make_unique<FakeNode>();
        node->answer("/id", NodeAnswer::json(R"({"ID":"x","AgentVersion":"kubo/0.30.0"})"));
        node->answer("/pin/ls",
                     NodeAnswer::json("{\"Cid\":\"r1\",\"Type\":\"recursive\"}\n{\"Cid\":\"r2\",\"Type\":\"recursive\"}"
                                      "\n{\"Cid\":\"d\",\"Type\":\"direct\"}\n"));
        open(*node);
        QVERIFY(waitForRows(3));
    }
    void cleanup() { close(); }

    void menus()
    {
        const QString quit = QKeySequence(QKeySequence::Quit).toString();
        const QStringList expected {u"&File"_s,
                                    u"Add to &IPFS…"_s,
                                    u"-"_s,
                                    u"&Settings...  Ctrl+,"_s,
                                    u"Remote &Services..."_s,
                                    u"-"_s,
                                    (u"&Quit  "_s + quit).trimmed(), //
                                    u"&Edit"_s,
                                    u"&Copy CID  Ctrl+C"_s,
                                    u"Open from &gateway  Ctrl+G"_s,
                                    u"Open from &local  Ctrl+L"_s,
                                    u"Open via I&PNS..."_s,
                                    u"(Publish to &IPNS...)"_s,
                                    u"&Resolve IPNS..."_s,
                                    u"-"_s,
                                    u"(Unpin selected)"_s,
                                    u"Unpin all listed CIDs"_s,
                                    u"-"_s,
                                    u"&Find  Ctrl+F"_s,
                                    u"R&efresh  F5"_s, //
                                    u"&Tools"_s,
                                    u"&Repo stats  Ctrl+1"_s,
                                    u"&DHT stats  Ctrl+2"_s,
                                    u"&Network  Ctrl+3"_s,
                                    u"&Swarm  Ctrl+4"_s,
                                    u"&Kubo config  Ctrl+5"_s,
                                    u"S&tatus log  Ctrl+6"_s,
                                    u"R&PC log  Ctrl+7"_s,
                                    u"-"_s,
                                    u"Remote Ser&vices  Ctrl+8"_s, //
                                    u"&Help"_s,
                                    u"User &guide  F1"_s,
                                    u"&Keyboard shortcuts"_s,
                                    u"Report a &problem…"_s,
                                    u"-"_s,
                                    u"&Activation..."_s,
                                    u"-"_s,
                                    u"About Norvo"_s,
                                    u"About Qt"_s};
        QStringList entries;
        QList<QKeySequence> keys;
        for (const QAction* menu : window->menuBar()->actions()) {
            entries.append(menu->text());
            for (const QAction* entry : menu->menu()->actions()) {
                const QString text = (entry->text() + u"  "_s + entry->shortcut().toString()).trimmed();
                entries.append(entry->isSeparator() ? u"-"_s : entry->isEnabled() ? text : u'(' + text + u')');
                keys += entry->shortcuts();
            }
        }
        QCOMPARE(entries, expected);
        for (const QKeySequence& key : keys)
            QVERIFY2(keys.count(key) == 1, qPrintable(key.toString()));
    }

    /// Each key also works from the tool window that the one before has opened.
    void eachToolHasAKey()
    {
        const QList<QByteArray> classes {"GcDialog",     "DhtStatsDialog",      "NetworkStatsDialog",
                                         "SwarmDialog",  "ConfigDialog",        "StatusLogDialog",
                                         "RpcLogDialog", "RemoteServicesDialog"};
        int key = Qt::Key_1;
        for (const QByteArray& name : classes) {
            QTest::keyClick(QApplication::activeWindow(), static_cast<Qt::Key>(key++), Qt::ControlModifier);
            QTRY_COMPARE(QByteArray(QApplication::activeWindow()->metaObject()->className()), name);
            const QWidget* active = QApplication::activeWindow();
            QCOMPARE(active->parentWidget(), window.get());
            QVERIFY(!active->isModal());
        }
        node->clearRequests();
        QTest::keyClick(QApplication::activeWindow(), Qt::Key_F5);
        QTRY_COMPARE(node->count("/pin/ls"), 2);
    }

    void searchByKey()
    {
        auto* search = field<QLineEdit>("Search:"_L1);
        window->resize(window->minimumSize()); // the field may be among what the tool bar has no room for
        QCoreApplication::processEvents();
        const bool hadRoom = search->isVisible();
        table()->selectRow(1);
        const QVariant current = table()->currentIndex().data();
        QTest::keyClick(table(), Qt::Key_Slash);
        QTRY_COMPARE(QApplication::focusWidget(), search);
        QVERIFY(search->isVisible());
        QTest::keyClicks(search, u"/r"_s);
        QCOMPARE(search->text(), u"/r"_s); // a field keeps its "/"
        search->setText(current.toString());
        QTRY_COMPARE(rows(), 1);
        table()->setFocus();
        QTest::keyClick(table(), Qt::Key_F, Qt::ControlModifier);
        QCOMPARE(search->selectedText(), current.toString());
        QTest::keyClick(search, Qt::Key_Escape);
        QCOMPARE(search->text(), QString());
        QCOMPARE(rows(), 3); // at once
        QCOMPARE(QApplication::focusWidget(), table());
        QCOMPARE(table()->currentIndex().data(), current);
        QCOMPARE(table()->selectionModel()->selectedRows().size(), 1);
        QTRY_COMPARE(search->isVisible(), hadRoom);

        trigger(u"Swarm"_s);
        QTRY_VERIFY(QApplication::activeWindow() != window.get());
        auto* filter = QApplication::activeWindow()->findChild<QLineEdit*>();
        filter->setFocus();
        QTest::keyClicks(filter, u"/p2p"_s);
        QCOMPARE(filter->text(), u"/p2p"_s);
    }

    /// The installed one comes first; a folder of that name is none.
    void theGuideIsFound()
    {
        const QTemporaryDir root;
        const QDir dir(root.path());
        const auto found = [&dir] { return userGuidePath(dir.filePath(u"bin"_s)); };
        const QString installed = dir.filePath(u"share/doc/norvo/user-guide.html"_s);
        const QString built = dir.filePath(u"docs/user-guide.html"_s);
        QVERIFY(dir.mkpath(installed) && dir.mkpath(u"docs"_s));
        QVERIFY(QFile(dir.filePath(u"docs/user-guide.md"_s)).open(QIODevice::WriteOnly));
        QCOMPARE(found(), QString());
        QVERIFY(QFile(built).open(QIODevice::WriteOnly));
        QCOMPARE(found(), built);
        QVERIFY(dir.rmdir(installed) && QFile(installed).open(QIODevice::WriteOnly));
        QCOMPARE(found(), installed);
    }

    void theGuideIsOpened()
    {
        QDesktopServices::setUrlHandler(u"file"_s, this, "catchUrl");
        QTest::keyClick(window.get(), Qt::Key_F1);
        QDesktopServices::unsetUrlHandler(u"file"_s);
        const QString path = userGuidePath(QCoreApplication::applicationDirPath());
        if (!path.isEmpty()) {
            QCOMPARE(opened, QUrl::fromLocalFile(path));
            QCOMPARE(status(), u"Opening the user guide in browser…"_s);
            return;
        }
        const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QVERIFY(box && box->text().contains(ProductInfo::webUrl));
        QVERIFY(press(u"OK"_s));
    }

    void shortcutsAreThoseOfTheGuide()
    {
        trigger(u"Keyboard shortcuts"_s);
        trigger(u"Keyboard shortcuts"_s);
        QCOMPARE(window->findChildren<ShortcutsDialog*>().size(), 1);
        const QPointer<ShortcutsDialog> dialog = window->findChild<ShortcutsDialog*>();
        auto* shown = dialog->findChild<QTableWidget*>();
        const QRegularExpression notToQuit(u"\\| (?!Quit)[^|]*$"_s);
        QStringList rowsShown;
        for (int row = 0; row < shown->rowCount(); ++row) {
            const auto cell = [shown, row](int column) { return shown->item(row, column)->text(); };
            rowsShown.append(u"%1 | %2 | %3"_s.arg(cell(0), cell(1), cell(2)));
        }
        // Not every desktop has a key to quit.
        QCOMPARE(rowsShown.filter(notToQuit), keyboardTable().filter(notToQuit));
        QTRY_VERIFY(shown->hasFocus());
        QTest::keyClick(shown, Qt::Key_Return);
        QTRY_VERIFY(!dialog);
    }

    void aReportNamesNobodyUnlessAsked()
    {
        auto* client = window->findChild<IpfsClient*>();
        for (int i = 0; i < 60; ++i)
            emit client->errorOccurred(u"number %1"_s.arg(i));
        emit client->errorOccurred(QString(990, u'x') + u" bafybeigdyrzt5sfp7udm7hu76uh7y26nf3efu"_s.repeated(20));
        emit client->errorOccurred(u"Network error: http://nas.lan:5001/api/v0/id\nfailed"_s);
        trigger(u"Report a problem…"_s);
        const auto* dialog = window->findChild<ProblemReportDialog*>();
        QVERIFY(dialog && dialog->isVisible() && !dialog->isModal());
        const auto* view = dialog->findChild<QPlainTextEdit*>();
        const QString kept = view->toPlainText();
        for (const char* part : {"Norvo ", "\nlibcurl: ", "\nQt: ", "\nNode: kubo/0.30.0\n", "  Error: number 12\n",
                                 "  Error: Network error: [address]/api/v0/id failed\n"})
            QVERIFY2(kept.contains(QLatin1StringView(part)), part);
        QCOMPARE(kept.count(u"  Error: "_s), 50);
        QVERIFY(!kept.contains(u"nas"_s) && !kept.contains(u"bafy"_s) && !kept.contains(u"number 11\n"_s));

        dialog->findChild<QCheckBox*>()->click();
        QVERIFY(view->toPlainText().contains(u"http://nas.lan:5001/api/v0/id failed\n"_s));
        for (auto* button : dialog->findChildren<QPushButton*>()) {
            if (button->isDefault())
                button->click();
        }
        QCOMPARE(QGuiApplication::clipboard()->text(), view->toPlainText());
        QVERIFY(std::ranges::any_of(dialog->findChildren<QLabel*>(),
                                    [](const auto* label) { return label->text() == "Copied."_L1; }));
        emit client->errorOccurred(u"one more"_s);
        trigger(u"Report a problem…"_s); // the same window, anew
        QCOMPARE(window->findChildren<ProblemReportDialog*>().size(), 1);
        QVERIFY(view->toPlainText().contains(u"one more"_s));
    }

private:
    /// The rows of the guide's table of keys, but for its head.
    static QStringList keyboardTable()
    {
        QFile guide(QStringLiteral(TEST_DATA_DIR "/../../docs/user-guide.md"));
        if (!guide.open(QIODevice::ReadOnly))
            return {};
        const QString text = QString::fromUtf8(guide.readAll()).section(u"\n## Keyboard\n"_s, 1);
        QStringList found;
        for (const QString& line : text.section(u"\n## "_s, 0, 0).split(u'\n')) {
            if (line.startsWith(u'|'))
                found.append(line.sliced(1, line.size() - 2).simplified());
        }
        return found.sliced(2);
    }

    QUrl opened;
};

NORVO_TEST_MAIN(QApplication, tst_Help)
#include "tst_help.moc"
