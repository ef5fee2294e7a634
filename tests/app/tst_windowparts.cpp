// SPDX-License-Identifier: MIT
#include "Appearance.h"
#include "EmptyTable.h"
#include "ModalAnswer.h"
#include "NoticeArea.h"
#include "PeerLabel.h"
#include "PinFilterProxyModel.h"
#include "PinModel.h"
#include "PinTable.h"
#include "SettingsDialog.h"
#include "TestMain.h"
#include "ToolWindows.h"
#include "WidgetSearch.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPointer>
#include <QScrollBar>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

/// The parts of the main window that need neither it nor a node.
class tst_WindowParts : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    void rowMenus_data()
    {
        // selected: rows: 0 and 1 recursive, 2 direct
        // under: the pointer; -1 for empty space
        const auto row = addColumns<bool, QList<int>, int, QStringList, QStringList>("pinned", "selected", "under",
                                                                                     "entries", "selectedThen");
        const QStringList always {u"Copy CID"_s, u"Open via IPNS..."_s, u"Open from gateway"_s, u"Open from local"_s};
        const QStringList pin = QStringList {u"Publish to IPNS..."_s, u"Unpin"_s, u"-"_s} + always;
        const QStringList recursive = QStringList {u"Show indirect pins"_s, u"List files / Export…"_s, u"-"_s} + pin;
        row("recursive", true, QList<int>(), 0, recursive, QStringList(u"r1"_s));
        row("direct", true, QList<int>({2}), 2, pin, QStringList(u"d"_s));
        row("inside a selection of several", true, QList<int>({1, 2}), 1, QStringList(u"Unpin"_s),
            QStringList({u"r2"_s, u"d"_s}));
        row("outside a selection of several", true, QList<int>({1, 2}), 0, recursive, QStringList(u"r1"_s));
        row("not pinned, several selected", false, QList<int>({1, 2}), 2, always, QStringList(u"d"_s));
        row("empty space", true, QList<int>({2}), -1, QStringList(), QStringList(u"d"_s));
    }
    void rowMenus()
    {
        QFETCH(const bool, pinned);
        QFETCH(const QList<int>, selected);
        QFETCH(const int, under);
        ShownPins shown;
        PinTable table(&shown.proxy);
        shown.proxy.sort(-1); // as they come
        table.show();
        select(table, selected);
        const MenuAnswer menu;
        table.showRowMenu(placeOf(table, under), pinned);
        QTEST(menu.entries, "entries");
        QTEST(table.selectedCids(), "selectedThen");
    }

    void selectionAndMenu()
    {
        ShownPins shown;
        PinTable table(&shown.proxy);
        shown.proxy.sort(-1); // as they come
        select(table, {2, 0});
        QCOMPARE(table.selectedCids(), QStringList({u"d"_s, u"r1"_s})); // in the order of the selection
        QCOMPARE(table.firstSelectedCid(), u"d"_s);

        table.show();
        table.clearSelection();
        const QSignalSpy contents(&table, &PinTable::contentsRequested);
        const MenuAnswer menu(u"List files / Export…"_s);
        table.showRowMenu(placeOf(table, 0), true);
        QCOMPARE(contents.size(), 1);
        QCOMPARE(contents.constFirst(), QVariantList({u"r1"_s, u"<b>one"_s}));
    }

    void aResetKeepsThePlace_data()
    {
        // removed: from the start of 100,000 rows
        // step: between selected rows
        const auto row = addColumns<int, int, int, int>("removed", "step", "selected", "top");
        row("the same list", 0, 10, 10'000, 50'000);
        row("rows are gone above", 3, 10, 9'999, 49'997);
        row("too large a selection", 0, 9, 0, 50'000);
        row("nothing left", 100'000, 10, 0, 0);
    }
    void aResetKeepsThePlace()
    {
        QFETCH(const int, removed);
        QFETCH(const int, step);
        constexpr int count = 100'000;
        constexpr int current = 50'010;
        QList<PinEntry> list;
        for (int i = 0; i < count; ++i)
            list.append({.cid = u"bafybeig"_s + QString::number(i).rightJustified(51, u'0'), .type = PinType::direct});
        PinModel model;
        PinFilterProxyModel filter;
        filter.setSourceModel(&model);
        PinTable table(&filter);
        table.resize(800, 600);
        table.show();
        model.setPins(list); // into the sorted table, as later lists come
        QItemSelection ranges;
        for (int row = 0; row < count; row += step)
            ranges.select(filter.index(row, 0), filter.index(row, PinModel::NameColumn));
        table.selectionModel()->select(ranges, QItemSelectionModel::ClearAndSelect);
        table.selectionModel()->setCurrentIndex(filter.index(current, 3), QItemSelectionModel::NoUpdate);
        table.verticalScrollBar()->setValue(50'000);

        QElapsedTimer stall;
        stall.start();
        const PinTable::Place place = table.place();
        const qint64 taken = stall.elapsed();
        list.remove(0, removed);
        model.setPins(list);
        stall.restart();
        table.restore(place);
        qInfo("%lld ms to take, %lld ms to restore", taken, stall.elapsed());
        QTEST(static_cast<int>(table.selectedCids().size()), "selected");
        QTEST(table.verticalScrollBar()->value(), "top");
        const QModelIndex now = table.currentIndex();
        QCOMPARE(now.row(), list.isEmpty() ? -1 : current - removed);
        QCOMPARE(now.column(), list.isEmpty() ? -1 : 3);
    }

    void anEmptyTableSaysWhy_data()
    {
        QTest::addColumn<EmptyTable>("table");
        QTest::addColumn<QString>("part"); // of the text; empty if it shows nothing
        const QString down = u"Network error: Connection refused"_s;
        const QString forbidden = u"Network error: Error transferring http://a/ - server replied: Forbidden"_s;
        const QString missing = u"Network error: Error transferring http://a/ - server replied: Not found"_s;
        const QString a = u"http://a"_s;
        const auto row = [](const char* name, const EmptyTable& table, const QString& part) {
            QTest::newRow(name) << table << part;
        };
        row("nothing asked", {}, u"Refresh (F5)"_s);
        row("loading", {.state = EmptyTable::Loading, .address = a}, u"Loading the list from http://a…"_s);
        row("no node", {.state = stateAfter(down), .address = a}, u"No node answers at http://a.\n\nStart"_s);
        row("no host", {.state = stateAfter(u"Network error: Host a not found"_s), .address = a}, u"No node answers"_s);
        row("refused", {.state = stateAfter(forbidden), .address = a}, u"http://a refuses requests (403)"_s);
        row("failed at another server", {.state = stateAfter(missing), .reason = missing}, missing + u"\n\nIf this"_s);
        row("cut off", {.state = stateAfter(u"Connection closed"_s), .reason = u"%1<b>"_s}, u"%1<b>"_s);
        row("no pins", {.state = EmptyTable::Loaded, .hasAnyType = true}, u"Add to IPFS adds"_s);
        row("no pins of the type", {.state = EmptyTable::Loaded, .searching = true}, u"no pins of this type"_s);
        row("no blocks", {.state = EmptyTable::Loaded, .unpinned = true}, u"Every block"_s);
        row("nothing found", {.state = EmptyTable::Loading, .searching = true, .total = 7}, u"None of the 7 row(s)"_s);
        row("rows", {.state = stateAfter(down), .total = 7, .shown = 1}, {});
    }
    void anEmptyTableSaysWhy()
    {
        QFETCH(const EmptyTable, table);
        QFETCH(const QString, part);
        const QString text = emptyTableText(table);
        QCOMPARE(text.isEmpty(), part.isEmpty());
        QVERIFY2(text.contains(part), qPrintable(text));
    }

    void aLongPeerIsElidedAndKeptWhole()
    {
        PeerLabel label;
        const QString id(5000, u'x');
        label.showPeer(id, u"<b>kubo"_s);
        label.resize(200, label.sizeHint().height());
        QVERIFY(label.minimumSizeHint().width() < 200);
        QVERIFY(label.toolTip().contains(id + u"  |  &lt;b&gt;kubo"_s));
        const QSignalSpy copied(&label, &PeerLabel::copied);
        QTest::mouseClick(&label, Qt::LeftButton);
        QCOMPARE(copied.size(), 1);
        QCOMPARE(QGuiApplication::clipboard()->text(), id);
        const QImage elided = label.grab().toImage();
        label.showPeer(id, u"<b>kuba"_s); // the end is in sight
        QVERIFY(label.grab().toImage() != elided);
    }

    void theNodesWordsGoWithTheirNotification()
    {
        NoticeArea area;
        const auto* words = area.findChild<QLabel*>(u"nodeWordsLabel"_s);
        QVERIFY(area.showNodeWords(QString(5000, u'x')).endsWith(QString(299, u'x') + u'…'));
        QCOMPARE(words->text().size(), area.showNodeWords(QString(5000, u'\n') + QString(300, u'x')).size());
        area.showNotification(u"of the same call"_s, true);
        QCoreApplication::processEvents();
        area.showNotification(u"of another call"_s, true);
        QVERIFY(words->isHidden() && !area.isHidden());

        area.showNodeWords(u"without a notification"_s);
        QCoreApplication::processEvents();
        area.hideNotification();
        QVERIFY(!words->isHidden()); // it has its time
        area.showNodeWords(u"replaced"_s);
        area.showNotification(u"of their call"_s, true);
        area.hideNotification();
        QVERIFY(words->isHidden() && area.isHidden());
    }

    void toolTipsCanBeRead()
    {
        const QPalette tips = toolTipPalette();
        const QColor ink = tips.color(QPalette::ToolTipText);
        QVERIFY(ink.lightness() - tips.color(QPalette::ToolTipBase).lightness() > 150);
        QCOMPARE(darkPalette().color(QPalette::ToolTipBase), QColor(Qt::white)); // the application's stays
    }

    void fieldsGiveUsableValues()
    {
        SettingsDialog dialog;
        dialog.setHost(u"  "_s);
        QCOMPARE(dialog.host(), u"127.0.0.1"_s);
        dialog.setPinTypeFilter(u"direct"_s);
        dialog.setPinTypeFilter(u"odd"_s);
        QCOMPARE(dialog.pinTypeFilter(), u"direct"_s);
        dialog.setRefreshIntervalSeconds(-7);
        QCOMPARE(dialog.refreshIntervalSeconds(), 5);
        dialog.setOriginValue(u" "_s);
        QCOMPARE(dialog.originValue(), u"Norvo 1.1.3"_s);
        auto* origin = dialog.findChildren<QLineEdit*>().constLast();
        origin->clear();
        QVERIFY(!origin->isEnabled());
        withText<QCheckBox>(dialog, u"Send Origin header"_s)->click();
        QVERIFY(origin->isEnabled());
        QCOMPARE(origin->text(), u"Norvo 1.1.3"_s);
        auto* enable = withText<QCheckBox>(dialog, u"Enable auto-refresh"_s);
        enable->click();
        dialog.restoreDefaults();
        QVERIFY(!dialog.autoRefresh() && dialog.loadMetadata() && !dialog.sendOrigin() && !origin->isEnabled());
        QCOMPARE(dialog.pinTypeFilter(), u"recursive+direct"_s);
        dialog.setTrialMode(true);
        dialog.setAutoRefresh(true);
        QVERIFY(!dialog.autoRefresh() && !enable->isEnabled());
    }

    void hostsThatAreNoneAreNamed_data()
    {
        addColumns<QString, bool>("text", "named");
        for (const char* good : {"", " 127.0.0.1 ", "localhost", "node.example", "::1", "fe80::1%eth0"})
            QTest::newRow(good) << QString::fromUtf8(good) << false;
        for (const char* bad : {"http://127.0.0.1", "https:", "localhost:5001", "127.0.0.1/api", "a b"})
            QTest::newRow(bad) << QString::fromUtf8(bad) << true;
    }
    void hostsThatAreNoneAreNamed()
    {
        QFETCH(const QString, text);
        SettingsDialog dialog;
        dialog.show();
        auto* host = dialog.findChild<QLineEdit*>();
        host->setText(text);
        QTEST(dialog.findChild<QLabel*>(u"hostHint"_s)->isVisible(), "named");
        host->setText(u"localhost"_s);
        QVERIFY(!dialog.findChild<QLabel*>(u"hostHint"_s)->isVisible());
    }

    void mnemonicsDoNotClash()
    {
        const SettingsDialog dialog;
        QStringList texts;
        for (const auto* label : dialog.findChildren<QLabel*>())
            texts.append(label->buddy() ? label->text() : QString());
        for (const auto* button : dialog.findChildren<QAbstractButton*>())
            texts.append(button->text());
        QSet<QKeySequence> taken;
        for (const QString& text : texts) {
            const QKeySequence key = QKeySequence::mnemonic(text);
            QVERIFY2(key.isEmpty() || !taken.contains(key), qPrintable(text));
            taken.insert(key);
        }
        QVERIFY(taken.size() > 8);
    }

    void nothingIsCutOffAtTheSmallestSize()
    {
        SettingsDialog dialog;
        dialog.show();
        dialog.resize(1, 1);
        QVERIFY(dialog.width() >= 380 && dialog.height() >= 320);
        for (const auto* field : dialog.findChildren<QWidget*>()) {
            const bool drawn
                = field->inherits("QCheckBox") || field->inherits("QLineEdit") || field->inherits("QSpinBox");
            if (drawn && !field->parentWidget()->inherits("QAbstractSpinBox"))
                QVERIFY2(field->height() >= field->minimumSizeHint().height(), field->metaObject()->className());
        }
    }

    void oneToolWindowOfEachKind()
    {
        QWidget owner;
        owner.show();
        ToolWindows tools(&owner);
        const QSignalSpy messages(&tools, &ToolWindows::statusMessageRequested);
        tools.show(ToolWindows::Gc, ToolWindows::AuxChildWindow); // there is none
        QVERIFY(!tools.canShow(ToolWindows::Gc) && messages.isEmpty());
        QPointer<QDialog> dialog;
        tools.setFactory(ToolWindows::Gc, [&owner, &dialog] { return dialog = new QDialog(&owner); });
        tools.show(ToolWindows::Gc, ToolWindows::AuxChildWindow);
        QVERIFY(dialog && dialog->isVisible() && !dialog->isModal());
        QCOMPARE(dialog->parentWidget(), &owner);
        dialog->resize(700, 500);
        const QPointer<QDialog> first = dialog;
        dialog->showMinimized();
        tools.show(ToolWindows::Gc, ToolWindows::AuxNewWindow); // moves over, and comes back up
        QCOMPARE(dialog, first);
        QVERIFY(!dialog->parentWidget() && dialog->isVisible() && !dialog->isMinimized());
        QCOMPARE(dialog->windowFlags() & Qt::WindowType_Mask, Qt::Window);
        QCOMPARE(dialog->size(), QSize(700, 500));
        tools.closeFreeWindows();
        QTRY_VERIFY(!first);
        QCOMPARE(messages.size(), 3);
        QCOMPARE(messages.at(0) + messages.at(1) + messages.at(2),
                 QVariantList({u"Opened GC window"_s, u"Opened GC window"_s, u"GC window closed"_s}));
    }

    void freeWindowsGoWithTheirTools()
    {
        QWidget owner;
        QPointer<QDialog> dialog;
        {
            ToolWindows tools(&owner);
            tools.setFactory(ToolWindows::Swarm, [&owner, &dialog] { return dialog = new QDialog(&owner); });
            tools.show(ToolWindows::Swarm, ToolWindows::AuxNewWindow);
        }
        QVERIFY(!dialog);
    }

private:
    /// The pins as the table gets them.
    struct ShownPins
    {
        ShownPins()
        {
            model.setPins(pins());
            proxy.setSourceModel(&model);
        }

        PinModel model;
        PinFilterProxyModel proxy;
    };

    static QList<PinEntry> pins()
    {
        return {{.cid = u"r1"_s, .type = PinType::recursive, .name = u"<b>one"_s},
                {.cid = u"r2"_s, .type = PinType::recursive},
                {.cid = u"d"_s, .type = PinType::direct}};
    }
    static void select(const PinTable& table, const QList<int>& rows)
    {
        for (const int row : rows)
            table.selectionModel()->select(table.model()->index(row, 0),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    static QPoint placeOf(const PinTable& table, int row)
    {
        return row < 0 ? QPoint(20, table.viewport()->height() - 4)
                       : table.visualRect(table.model()->index(row, 0)).center();
    }
};

NORVO_TEST_MAIN(QApplication, tst_WindowParts)
#include "tst_windowparts.moc"
