// SPDX-License-Identifier: MIT
#include "IndirectPinsDialog.h"
#include "LogDialog.h"
#include "PinContentsDialog.h"
#include "PinModel.h"
#include "RemoteServicesDialog.h"
#include "SplitActionButton.h"
#include "WindowTest.h"

#include <QAccessible>
#include <QDesktopServices>
#include <QFileDialog>
#include <QTemporaryDir>

#include <algorithm>

using namespace Qt::StringLiterals;

/// Rows: "r1" and "r2" recursive, "d" direct, as the table sorts them by CID.
class tst_Table : public WindowTest
{
    Q_OBJECT

public slots:
    void catchUrl(const QUrl& url) { opened.append(url.toString()); }

private slots:
    void init()
    {
        startNode("{\"Cid\":\"r1\",\"Name\":\"<b>one\",\"Type\":\"recursive\"}\n"
                  "{\"Cid\":\"r2\",\"Type\":\"recursive\"}\n{\"Cid\":\"d\",\"Type\":\"direct\"}\n");
        setting("loadMetadata"_L1, false);
        setting("typeFilter"_L1, u"all"_s);
        node->answer("/refs", NodeAnswer::json("{\"Ref\":\"q\",\"Err\":\"\"}\n"));
        node->answer("/refs/local", NodeAnswer::json("{\"Ref\":\"bafyloose\"}\n{\"Ref\":\"bafyother\"}\n"));
        node->answer("/ls", NodeAnswer::json(R"({"Objects":[{"Links":[{"Name":"a.txt","Hash":"h","Type":2}]}]})"));
        for (const QString& scheme : {u"http"_s, u"https"_s})
            QDesktopServices::setUrlHandler(scheme, this, "catchUrl");
        opened.clear();
        QGuiApplication::clipboard()->setText(u"before"_s);
    }
    void cleanup()
    {
        close();
        for (const QString& scheme : {u"http"_s, u"https"_s})
            QDesktopServices::unsetUrlHandler(scheme);
    }

    void copying()
    {
        openLoaded(3);
        trigger(u"Copy CID"_s); // nothing is selected
        QCOMPARE(clipboard(), u"before"_s);
        select({u"r2"_s, u"d"_s, u"r1"_s});
        QTest::keySequence(window.get(), QKeySequence::Copy);
        QCOMPARE(clipboard(), u"r2\nd\nr1"_s);
        QCOMPARE(status(), u"3 CID(s) copied to clipboard"_s);
        select({u"d"_s});
        doubleClick(u"d"_s);
        QCOMPARE(clipboard(), u"d"_s);
        QTRY_COMPARE_WITH_TIMEOUT(status(), u"Ready"_s, 10'000);
    }

    void opening()
    {
        openLoaded(3);
        trigger(u"Open from gateway"_s);
        QCOMPARE(opened, QStringList());
        select({u"d"_s, u"r1"_s}); // the first one counts
        trigger(u"Open from gateway"_s);
        QCOMPARE(status(), u"Opening d in browser…"_s);
        trigger(u"Open from local"_s);
        QCOMPARE(status(), u"Opening d from local gateway…"_s);
        QCOMPARE(opened, QStringList({u"https://ipfs.io/ipfs/d"_s, u"http://127.0.0.1:8080/ipfs/d"_s}));
    }

    void whatLiesUnderAPin()
    {
        openLoaded(3);
        for (int count = 1; count < 3; ++count) { // each time a new one
            doubleClick(u"r1"_s);
            QCOMPARE(window->findChildren<IndirectPinsDialog*>().size(), count);
        }
        const MenuAnswer menu(u"List files / Export…"_s);
        rightClick(u"r1"_s);
        auto* contents = window->findChild<PinContentsDialog*>();
        QVERIFY(contents && contents->isVisible());
        QTRY_VERIFY(contents->findChild<QPushButton*>()->isEnabled());
        contents->close();
        QTRY_VERIFY(!window->findChild<PinContentsDialog*>());
    }

    void actionsFollowTheSelection()
    {
        node->answer("/pin/ls", NodeAnswer::hold());
        open();
        QTRY_COMPARE(node->heldCount("/pin/ls"), 1);
        const auto enabled = [this] { return QList<bool> {selectedEnabled(), allEnabled()}; };
        QCOMPARE(enabled(), QList<bool>({false, false}));
        node->release("/pin/ls", NodeAnswer::json("{\"Cid\":\"d\",\"Type\":\"direct\"}\n"));
        QVERIFY(waitForRows(1));
        QCOMPARE(enabled(), QList<bool>({false, true}));
        select({u"d"_s});
        QCOMPARE(enabled(), QList<bool>({true, true}));
        field<QComboBox>("Content:"_L1)->setCurrentIndex(1);
        QCOMPARE(enabled(), QList<bool>({false, false}));
        node->answer("/pin/ls", NodeAnswer::json({}));
        field<QComboBox>("Content:"_L1)->setCurrentIndex(0);
        QVERIFY(waitForRows(0));
        QCOMPARE(enabled(), QList<bool>({false, false})); // there is nothing to unpin
    }

    /// Of a long list, whose rows go and come by a reset.
    void theSelectionFollowsTheSearch()
    {
        QByteArray pins;
        for (int i = 0; i < 3000; ++i)
            pins += "{\"Cid\":\"c" + QByteArray::number(i) + "\",\"Type\":\"direct\"}\n";
        node->answer("/pin/ls", NodeAnswer::json(pins));
        openLoaded(3000);
        table()->selectRow(static_cast<int>(cells(0).indexOf(u"c7"_s)));
        const auto search = [this](const QString& text, int shown) {
            window->findChild<QLineEdit*>()->setText(text);
            QTRY_COMPARE(rows(), shown);
        };
        search(u"7"_s, 813);
        QVERIFY(selectedEnabled());
        QCOMPARE(table()->currentIndex().siblingAtColumn(0).data().toString(), u"c7"_s);
        search({}, 3000);
        QVERIFY(selectedEnabled());
        search(u"9"_s, 813);
        QVERIFY(!selectedEnabled()); // it is hidden, and not unpinned unseen
    }

    void anUnpinIsShownAndTheListFetchedAnew()
    {
        node->answer("/cid/format", NodeAnswer::error("no"));
        node->answer("/pin/rm", NodeAnswer::json("{}"));
        setting("typeFilter"_L1, u"recursive+direct"_s); // any other is fetched once more after the window's start
        openLoaded(3);
        node->clearRequests();
        select({u"r1"_s, u"d"_s});
        node->answer("/pin/ls", NodeAnswer::json("{\"Cid\":\"r2\",\"Type\":\"recursive\"}\n"));
        const MenuAnswer menu(u"Unpin"_s);
        rightClick(u"d"_s);
        QTRY_COMPARE(label("notification"_L1)->text(), u"Unpinned 2 CID(s). Refreshing list…"_s);
        QVERIFY(waitForRows(1));
        QCOMPARE(node->requests("/pin/rm").constFirst().values(u"arg"_s), QStringList({u"r1"_s, u"d"_s}));
        QVERIFY(isLogged(u"Unpinning 2 CID(s)…"_s) && isLogged(u"Unpinned 2 CID(s)"_s));
        QVERIFY(label("notification"_L1)->isVisibleTo(window.get()));
        field<QComboBox>("Filter:"_L1)->setCurrentIndex(2);
        QVERIFY(!label("notification"_L1)->isVisibleTo(window.get()));
    }

    void aFailedUnpinIsShown()
    {
        node->answer("/cid/format", NodeAnswer::error("no"));
        node->answer("/pin/rm", NodeAnswer::error("pin is locked"));
        setting("typeFilter"_L1, u"recursive+direct"_s); // any other is fetched once more after the window's start
        openLoaded(3);
        node->clearRequests();
        field<QLineEdit>("Search:"_L1)->setText(u"r2"_s);
        QTRY_COMPARE(rows(), 1);
        trigger(u"Unpin all listed CIDs"_s); // what the search hides is listed as well
        QTRY_COMPARE(window->statusLog().filter(u"Error: Unpin failed: "_s).size(), 1);
        QTRY_COMPARE(node->count("/pin/ls"), 2); // pins may be gone: both halves of the list are fetched again
        QCOMPARE(node->requests("/pin/rm").constFirst().values(u"arg"_s), QStringList({u"d"_s, u"r1"_s, u"r2"_s}));
        QVERIFY(window->statusLog().filter(u"Unpinned"_s).isEmpty());
        QVERIFY(label("notification"_L1)->isVisibleTo(window.get()));
        QTRY_COMPARE_WITH_TIMEOUT(status(), u"Ready"_s, 20'000);
    }

    void aRunningSaveIsNotCutInSilence()
    {
        const QTemporaryDir folder;
        node->answer("/cat", NodeAnswer::hold());
        openLoaded(3);
        const MenuAnswer menu(u"List files / Export…"_s);
        rightClick(u"r1"_s);
        auto* contents = window->findChild<PinContentsDialog*>();
        auto* saveAll = contents->findChild<QPushButton*>();
        QTRY_VERIFY(saveAll->isEnabled());
        saveAll->click();
        emit contents->findChild<QFileDialog*>()->fileSelected(folder.path());
        QTRY_COMPARE(node->heldCount("/cat"), 1);
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            const ModalAnswer<QMessageBox> given([this, answer](QMessageBox& box) {
                QCOMPARE(box.text(), u"A save is still running. Quit anyway?"_s);
                QCOMPARE(box.defaultButton(), box.button(QMessageBox::No));
                trigger(u"Quit"_s); // asks once
                QVERIFY(box.isVisible() && window->isVisible());
                box.button(answer)->click();
            });
            window->close();
            QVERIFY(given.wasGiven());
            QCOMPARE(window->isVisible(), answer == QMessageBox::No);
        }
    }

    void anUnpinShowsHowFarItIs()
    {
        openLoaded(3);
        emit client()->unpinProgress(7, 20);
        QCOMPARE(status(), u"Unpinning 7 of 20…"_s);
        QVERIFY(window->statusLog().filter(u"7 of 20"_s).isEmpty());
    }

    void freeToolWindowsCloseWithTheWindow()
    {
        openLoaded(3);
        QPointer<LogDialog> log = openLog(u"RPC log"_s, true);
        QVERIFY(log && log->isVisible() && !log->parentWidget());
        window->close(); // else the program would go on without it
        QTRY_VERIFY(!log);
    }

    void remoteServicesMoveBetweenTheModes()
    {
        node->answer("/pin/remote/service/ls", NodeAnswer::json(R"({"RemoteServices":[]})"));
        openLoaded(3);
        trigger(u"Remote Services..."_s);
        const QWidgetList windows = QApplication::topLevelWidgets();
        QVERIFY(std::ranges::count(windows, u"Remote pinning services"_s, &QWidget::windowTitle) == 1);
        QVERIFY(!window->findChild<RemoteServicesDialog*>());
        QTRY_COMPARE(window->statusLog().filter(u"Loaded 0 remote service(s)"_s).size(), 1); // a refresh may follow
        window->showRemoteServicesDialog(MainWindow::AuxChildWindow);
        const QPointer<RemoteServicesDialog> dialog = window->findChild<RemoteServicesDialog*>();
        QVERIFY(dialog && dialog->isVisible() && dialog->findChild<QLineEdit*>()->isEnabled());
        QCOMPARE(node->count("/pin/remote/service/ls"), 1); // it is the same window
        QCOMPARE(window->statusLog().filter(u"  Opened remote services window"_s).size(), 2);
        dialog->close();
        QTRY_VERIFY(!dialog);
        QCOMPARE(window->statusLog().filter(u"  Remote services window closed"_s).size(), 1);
    }

    void everyControlIsReachedByTab()
    {
        openLoaded(3);
        QCOMPARE(QApplication::focusWidget(), table()); // after the load
        QTRY_VERIFY(label("peerIdLabel"_L1)->focusPolicy() == Qt::TabFocus);
        const auto* lastTool = window->findChildren<SplitActionButton*>().constLast();
        window->resize(2400, 600);
        QTRY_VERIFY(lastTool->isVisible());
        QStringList reached;
        for (int i = 0; i < 30 && (reached.isEmpty() || QApplication::focusWidget() != table()); ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            reached.append(spokenName());
        }
        QCOMPARE(reached,
                 QStringList({u"PeerID: x  |  "_s,
                              u"⟳  Refresh"_s,
                              u"+  Add to IPFS"_s,
                              u"Content"_s,
                              u"Filter"_s,
                              u"Search"_s,
                              u"Search in CIDs"_s,
                              u"Repo stats"_s,
                              u"Repo stats in a new window"_s,
                              u"DHT stats"_s,
                              u"DHT stats in a new window"_s,
                              u"Network"_s,
                              u"Network in a new window"_s,
                              u"Swarm"_s,
                              u"Swarm in a new window"_s,
                              u"Kubo config"_s,
                              u"Kubo config in a new window"_s,
                              u"Status log"_s,
                              u"Status log in a new window"_s,
                              u"RPC log"_s,
                              u"RPC log in a new window"_s,
                              u"Pins"_s}));
        QGuiApplication::clipboard()->clear();
        QTest::keyClick(table(), Qt::Key_Tab);
        QTest::keyClick(label("peerIdLabel"_L1), Qt::Key_Space);
        QCOMPARE(clipboard(), u"x"_s);

        window->resize(1060, 640); // too narrow for all
        QTRY_VERIFY(!lastTool->isVisible());
        table()->setFocus();
        QTest::keyClick(table(), Qt::Key_Tab, Qt::ShiftModifier);
        QCOMPARE(spokenName(), u"More tools"_s);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QTRY_VERIFY(lastTool->isVisible());
    }

private:
    QModelIndex indexOf(const QString& cid) const
    {
        return table()->model()->index(static_cast<int>(cells(PinModel::CidColumn).indexOf(cid)), 0);
    }
    void select(const QStringList& cids) const
    {
        table()->clearSelection();
        for (const QString& cid : cids)
            table()->selectionModel()->select(indexOf(cid), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    /// Empty space for an empty text.
    QPoint placeOf(const QString& cid) const
    {
        if (cid.isEmpty())
            return {20, table()->viewport()->height() - 4};
        table()->scrollTo(indexOf(cid));
        return table()->visualRect(indexOf(cid)).center();
    }
    void rightClick(const QString& cid) const { emit table()->customContextMenuRequested(placeOf(cid)); }
    void doubleClick(const QString& cid) const
    {
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, {}, placeOf(cid));
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, {}, placeOf(cid));
    }
    bool selectedEnabled() const { return action(u"Unpin selected"_s)->isEnabled(); }
    bool allEnabled() const { return action(u"Unpin all listed CIDs"_s)->isEnabled(); }
    /// By a button's first half, or by its second one.
    LogDialog* openLog(const QString& caption, bool inNewWindow) const
    {
        for (auto* button : window->findChildren<SplitActionButton*>()) {
            auto* first = button->findChild<QPushButton*>(u"actionBtn"_s);
            if (first->text() == caption)
                (inNewWindow ? button->findChild<QPushButton*>(u"actionBtnSecondary"_s) : first)->click();
        }
        const bool rpc = caption == u"RPC log"_s;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* log = qobject_cast<LogDialog*>(widget);
            if (log && log->windowTitle().contains(u"RPC"_s) == rpc)
                return log;
        }
        return nullptr;
    }

    /// The name of the control that has the focus: the one it was given, else what it shows.
    static QString spokenName()
    {
        QWidget* control = QApplication::focusWidget();
        return control->accessibleName().isEmpty()
            ? QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name)
            : control->accessibleName();
    }

    QStringList opened;
};

NORVO_TEST_MAIN(QApplication, tst_Table)
#include "tst_table.moc"
