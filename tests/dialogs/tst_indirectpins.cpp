#include "Detached.h"
#include "FakeNode.h"
#include "IndirectPinsDialog.h"
#include "IpfsClient.h"
#include "ModalAnswer.h"
#include "ProductInfo.h"
#include "TestMain.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QTableView>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray refsPath = "/refs";

QByteArray refLines(const QByteArrayList& cids)
{
    QByteArray body;
    for (const QByteArray& cid : cids)
        body += "{\"Ref\":\"" + cid + "\",\"Err\":\"\"}\n";
    return body;
}

} // namespace

class tst_IndirectPins : public QObject
{
    Q_OBJECT

public slots:
    void keepUrl(const QUrl& url) { opened.append(url.toString()); }

private slots:
    void init()
    {
        failOnWarnings();
        QSettings(u"Norvo"_s, u"settings"_s).clear();
        node = std::make_unique<FakeNode>();
        node->answer(refsPath, FakeAnswer::hold());
        client = std::make_unique<IpfsClient>();
        client->setEndpoint(u"127.0.0.1"_s, node->port());
        opened.clear();
        QGuiApplication::clipboard()->setText(u"before"_s);
        for (const auto scheme : {"http"_L1, "https"_L1})
            QDesktopServices::setUrlHandler(scheme, this, "keepUrl");
    }
    void cleanup()
    {
        dialog.reset();
        for (const auto scheme : {"http"_L1, "https"_L1})
            QDesktopServices::unsetUrlHandler(scheme);
        client.reset();
        QVERIFY(waitForDetached(10s));
    }

    void answers_data()
    {
        QTest::addColumn<QString>("root");
        QTest::addColumn<QByteArrayList>("cids");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("count");
        QTest::addColumn<QString>("title");
        QTest::newRow("none") << u"r"_s << QByteArrayList {} << QStringList {u"(no refs)"_s} << u"0 indirect pins"_s
                              << u"Indirect pins under r"_s;
        QTest::newRow("one, of a root that just fits")
            << QString(50, u'r') << QByteArrayList {"a"} << QStringList {u"a"_s} << u"1 indirect pin"_s
            << "Indirect pins under "_L1 + QString(50, u'r');
        QTest::newRow("several, in order, of a long root")
            << QString(51, u'r') << QByteArrayList {"b", "a", "b"} << QStringList {u"b"_s, u"a"_s, u"b"_s}
            << u"3 indirect pins"_s << "Indirect pins under "_L1 + QString(47, u'r') + u'…';
    }
    void answers()
    {
        QFETCH(const QString, root);
        QFETCH(const QByteArrayList, cids);
        QFETCH(const QString, title);
        open(root);
        QCOMPARE(rows(), QStringList {u"Loading…"_s});
        QCOMPARE(countLabel()->text(), u"Loading…"_s);
        QCOMPARE(dialog->windowTitle(), title);
        emit client->refsReceived(u"other"_s, {u"x"_s});
        QCOMPARE(rows(), QStringList {u"Loading…"_s});
        QTRY_COMPARE(node->heldCount(refsPath), 1);
        node->release(refsPath, FakeAnswer::json(refLines(cids)));
        QTRY_VERIFY(countLabel()->text() != u"Loading…"_s);
        QTEST(rows(), "rows");
        QTEST(countLabel()->text(), "count");
        QCOMPARE(dialog->windowTitle(), title + u" (%1)"_s.arg(countLabel()->text()));
        QVERIFY(table()->hasFocus());
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

    void onlySomeRowsAreUsable_data()
    {
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<bool>("usable");
        QTest::newRow("a CID") << QStringList {u"a"_s} << true;
        QTest::newRow("other case") << QStringList {u"error: a"_s} << true;
        QTest::newRow("no refs") << QStringList {} << false;
        QTest::newRow("from the node, but like a placeholder") << QStringList {u"(a"_s} << false;
        QTest::newRow("an error") << QStringList {u"Error:a"_s} << false;
        QTest::newRow("nothing") << QStringList {QString()} << false;
    }
    void onlySomeRowsAreUsable()
    {
        QFETCH(const QStringList, shown);
        QFETCH(const bool, usable);
        openWith(shown);
        useFirstRow();
        QCOMPARE(opened.size(), usable ? 2 : 0);
        QCOMPARE(QGuiApplication::clipboard()->text(), usable ? shown.constFirst() : u"before"_s);
        QCOMPARE(chooseFromMenu(0, {}), usable);
    }

    void theLoadingRowIsUsable()
    {
        open(u"r"_s);
        useFirstRow();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"Loading…"_s);
        QCOMPARE(opened.size(), 2);
    }

    /// The client tells of the error, and then of an empty list.
    void aFailedCallIsNoListWithoutRefs()
    {
        node->answer(refsPath, FakeAnswer::error("no such block"));
        open(u"r"_s);
        QTRY_COMPARE(countLabel()->text(), u"—"_s);
        QVERIFY(rows().constFirst().startsWith(u"Error: Failed to get refs for r: "_s));
        useFirstRow();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
        QVERIFY(opened.isEmpty());
        QVERIFY(!chooseFromMenu(0, {}));
    }

    void severalAreCopiedAndTheFirstIsOpened()
    {
        openWith({u"a"_s, u"b"_s, u"c"_s});
        click(2, {});
        click(0, Qt::ControlModifier);
        QVERIFY(chooseFromMenu(1, u"Copy CID"_s)); // the pointer on a row that is not selected
        QCOMPARE(QGuiApplication::clipboard()->text(), u"c\na"_s);
        QVERIFY(chooseFromMenu(1, u"Open from gateway"_s));
        QVERIFY(chooseFromMenu(1, u"Open from local"_s));
        QCOMPARE(opened,
                 QStringList({QString(ProductInfo::gatewayUrl) + u"/ipfs/c"_s, u"http://127.0.0.1:8080/ipfs/c"_s}));
        QVERIFY(!chooseFromMenu(3, {})); // below the last row
    }

    void nothingSelectedDoesNothing()
    {
        openWith({u"a"_s});
        table()->clearSelection();
        useActions();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
        QVERIFY(opened.isEmpty());
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
        dialog = std::make_unique<IndirectPinsDialog>(root, client.get());
        dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    }
    void openWith(const QStringList& cids)
    {
        open(u"r"_s);
        emit client->refsReceived(u"r"_s, cids);
    }
    void useActions()
    {
        QTest::keySequence(table(), QKeySequence::Copy);
        for (const char* slot : {"onCopyCid", "onOpenInGateway", "onOpenFromLocal"})
            QVERIFY(QMetaObject::invokeMethod(dialog.get(), slot));
    }
    void useFirstRow()
    {
        click(0, {});
        useActions();
    }
    QPoint pointIn(int row) const { return {5, table()->rowHeight(0) * row + 5}; }
    void click(int row, Qt::KeyboardModifiers modifiers)
    {
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, modifiers, pointIn(row));
    }
    /// Asks for the menu at a row and takes an entry; tells whether there was a menu.
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

    std::unique_ptr<FakeNode> node;
    std::unique_ptr<IpfsClient> client;
    std::unique_ptr<IndirectPinsDialog> dialog;
    QStringList opened;
};

NORVO_TEST_MAIN(QApplication, tst_IndirectPins)
#include "tst_indirectpins.moc"
