// SPDX-License-Identifier: MIT
#include "DialogTest.h"
#include "IndirectPinsDialog.h"
#include "ProductInfo.h"

#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QTableView>

using namespace Qt::StringLiterals;

class tst_IndirectPins : public DialogTest<IndirectPinsDialog>
{
    Q_OBJECT

public slots:
    void keepUrl(const QUrl& url) { opened.append(url.toString()); }

private slots:
    void init()
    {
        startNode();
        node->answer("/refs", NodeAnswer::hold());
        for (const auto scheme : {"http"_L1, "https"_L1})
            QDesktopServices::setUrlHandler(scheme, this, "keepUrl");
    }
    void cleanup()
    {
        close();
        for (const auto scheme : {"http"_L1, "https"_L1})
            QDesktopServices::unsetUrlHandler(scheme);
    }

    void answers()
    {
        const QList<std::tuple<QString, QString, QStringList, QString>> answers {
            {u"r"_s, u"r"_s, {}, u"0 indirect pins"_s},
            {QString(50, u'r'), QString(50, u'r'), {u"a"_s}, u"1 indirect pin"_s},
            {QString(51, u'r'), QString(47, u'r') + u'…', {u"b"_s, u"a"_s, u"b"_s}, u"3 indirect pins"_s}};
        for (const auto& [root, titleCid, cids, count] : answers) {
            open(root);
            emit client->refsReceived(u"other"_s, {u"x"_s});
            QCOMPARE(rows() + QStringList(countLabel()->text()), QStringList({u"Loading…"_s, u"Loading…"_s}));
            QCOMPARE(dialog->windowTitle(), "Indirect pins under "_L1 + titleCid);
            QTRY_COMPARE(node->heldCount("/refs"), 1);
            QByteArray body;
            for (const QString& cid : cids)
                body += "{\"Ref\":\"" + cid.toUtf8() + "\",\"Err\":\"\"}\n";
            emit client->errorOccurred(u"DAG stat failed for %1: no"_s.arg(root)); // says nothing about the refs
            node->release("/refs", NodeAnswer::json(body));
            QTRY_COMPARE(countLabel()->text(), count);
            QCOMPARE(rows(), cids.isEmpty() ? QStringList {u"(no refs)"_s} : cids);
            QCOMPARE(dialog->windowTitle(), u"Indirect pins under %1 (%2)"_s.arg(titleCid, count));
            QVERIFY(table()->hasFocus());
        }
    }

    void closingEndsTheCall()
    {
        open(u"r"_s);
        QTRY_COMPARE(node->heldCount("/refs"), 1);
        dialog.reset();
        QTRY_COMPARE(node->openNow(), 0);
    }

    void anyErrorTakesTheRows()
    {
        openWith({u"a"_s, u"b"_s});
        emit client->errorOccurred(u"<b>of another call</b>\nthat takes two lines"_s);
        QCOMPARE(rows(), QStringList {u"Error: <b>of another call</b>\nthat takes two lines"_s});
        QVERIFY(table()->rowHeight(0) > 24);
        QCOMPARE(countLabel()->text(), u"2 indirect pins"_s);
        emit client->refsReceived(u"r"_s, {u"c"_s});
        QCOMPARE(rows(), QStringList {u"c"_s});
        QCOMPARE(table()->rowHeight(0), 24);
    }

    void onlySomeRowsAreUsable()
    {
        open(u"r"_s);
        verifyFirstRowIsUsable(true); // while it loads
        for (const QString& cid : {u"a"_s, u"error: a"_s}) {
            emit client->refsReceived(u"r"_s, {cid});
            verifyFirstRowIsUsable(true);
        }
        for (const QStringList& cids : {QStringList {}, {u"(a"_s}, {u"Error:a"_s}, {QString()}}) {
            emit client->refsReceived(u"r"_s, cids);
            verifyFirstRowIsUsable(false);
        }
    }

    /// The client reports the error, and then an empty list.
    void aFailedCallIsNoListWithoutRefs()
    {
        node->answer("/refs", NodeAnswer::error("no such block"));
        open(u"r"_s);
        QTRY_COMPARE(countLabel()->text(), u"—"_s);
        QVERIFY(rows().constFirst().startsWith(u"Error: Failed to get refs for r: "_s));
        verifyFirstRowIsUsable(false);
    }

    void severalAreCopiedAndTheFirstIsOpened()
    {
        openWith({u"a"_s, u"b"_s, u"c"_s});
        click(2, {});
        click(0, Qt::ControlModifier);
        QVERIFY(chooseFromMenu(1, u"Copy CID"_s)); // the pointer on a row that is not selected
        QCOMPARE(clipboard(), u"c\na"_s);
        opened.clear();
        QVERIFY(chooseFromMenu(1, u"Open from gateway"_s));
        QVERIFY(chooseFromMenu(1, u"Open from local"_s));
        QCOMPARE(opened,
                 QStringList({QString(ProductInfo::gatewayUrl) + u"/ipfs/c"_s, u"http://127.0.0.1:8080/ipfs/c"_s}));
        QVERIFY(!chooseFromMenu(3, {})); // below the last row
        table()->clearSelection();
        verifyActionsUse({});
    }

    void rowsCannotBeEdited()
    {
        openWith({u"a"_s});
        click(0, {});
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, {}, pointIn(0));
        QTest::keyClick(table(), Qt::Key_F2);
        QVERIFY(!table()->findChild<QLineEdit*>());
    }

private:
    void open(const QString& root)
    {
        make(root, client.get());
        showActive();
    }
    void openWith(const QStringList& cids)
    {
        open(u"r"_s);
        emit client->refsReceived(u"r"_s, cids);
    }
    /// `text` is what they copy and open; they do nothing if it is empty.
    void verifyActionsUse(const QString& text)
    {
        opened.clear();
        QGuiApplication::clipboard()->setText(u"before"_s);
        dialog->activateWindow(); // no window manager gives back the focus that a menu took
        table()->setFocus();
        QTRY_VERIFY(dialog->isActiveWindow() && table()->hasFocus());
        QTest::keySequence(table(), QKeySequence::Copy);
        for (const char* slot : {"onOpenInGateway", "onOpenFromLocal"})
            QVERIFY(QMetaObject::invokeMethod(dialog.get(), slot));
        QCOMPARE(clipboard(), text.isEmpty() ? u"before"_s : text);
        QCOMPARE(opened.size(), text.isEmpty() ? 0 : 2);
    }
    void verifyFirstRowIsUsable(bool usable)
    {
        click(0, {});
        verifyActionsUse(usable ? rows().constFirst() : QString());
        QCOMPARE(chooseFromMenu(0, {}), usable);
    }
    QPoint pointIn(int row) const { return {5, table()->rowHeight(0) * row + 5}; }
    void click(int row, Qt::KeyboardModifiers modifiers)
    {
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, modifiers, pointIn(row));
    }
    /// Asks for the menu at a row and takes an entry; returns whether there was a menu.
    bool chooseFromMenu(int row, const QString& entry)
    {
        const MenuAnswer menu(entry);
        const QPoint pos = pointIn(row);
        QContextMenuEvent event(QContextMenuEvent::Mouse, pos, table()->viewport()->mapToGlobal(pos));
        QApplication::sendEvent(table()->viewport(), &event);
        return !menu.entries.isEmpty();
    }
    QTableView* table() const { return dialog->findChild<QTableView*>(); }
    QLabel* countLabel() const { return dialog->findChild<QLabel*>(u"countLabel"_s); }
    QStringList rows() const
    {
        QStringList texts;
        for (int row = 0; row < table()->model()->rowCount(); ++row)
            texts.append(table()->model()->index(row, 0).data().toString());
        return texts;
    }

    QStringList opened;
};

NORVO_TEST_MAIN(QApplication, tst_IndirectPins)
#include "tst_indirectpins.moc"
