// SPDX-License-Identifier: MIT
#include "Detached.h"
#include "PinFilterProxyModel.h"
#include "PinModel.h"
#include "TestMain.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QRandomGenerator>
#include <QSignalSpy>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

PinEntry pin(const QString& cid, QLatin1StringView type, const QString& name = {})
{
    return {.cid = cid, .type = type, .name = name};
}

/// The texts of a column as the view shows them.
QStringList column(const QAbstractItemModel& model, int section)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, section).data().toString());
    return texts;
}

/// The CIDs in the order in which refs are meant to be: none, the numbers, unknown ones.
QStringList cidsByRefs(QList<PinEntry> pins, Qt::SortOrder order)
{
    const auto key = [](const PinEntry& pin) {
        return pin.type != PinType::recursive ? -1
            : pin.refsCount < 0               ? std::numeric_limits<int>::max()
                                              : pin.refsCount;
    };
    std::ranges::stable_sort(pins, [&](const PinEntry& a, const PinEntry& b) {
        return order == Qt::AscendingOrder ? key(a) < key(b) : key(b) < key(a);
    });
    QStringList cids;
    for (const PinEntry& entry : pins)
        cids.append(entry.cid);
    return cids;
}

/// Compares as Qt does, with nothing of ours.
class StockProxy : public QSortFilterProxyModel
{
};

} // namespace

class tst_Model : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        failOnWarnings();
        model = std::make_unique<PinModel>();
        proxy = std::make_unique<PinFilterProxyModel>();
        proxy->setSourceModel(model.get());
        proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);
        testers.clear();
        for (QAbstractItemModel* watched :
             {static_cast<QAbstractItemModel*>(model.get()), static_cast<QAbstractItemModel*>(proxy.get())})
            testers.push_back(std::make_unique<QAbstractItemModelTester>(watched));
    }

    void cells_data()
    {
        QTest::addColumn<PinEntry>("entry");
        QTest::addColumn<int>("section");
        QTest::addColumn<QVariant>("shown");
        const PinEntry known {.cid = u"c"_s, .type = PinType::recursive, .refsCount = 0, .dagSize = 0};
        const PinEntry direct {.cid = u"c"_s, .type = PinType::direct, .refsCount = 7};
        QTest::newRow("refs unknown") << pin(u"c"_s, PinType::recursive) << 1 << QVariant(u"…"_s);
        QTest::newRow("refs are a number") << known << 1 << QVariant(0);
        QTest::newRow("direct pin never shows refs") << direct << 1 << QVariant(QString());
        QTest::newRow("size zero is known") << known << 4 << QVariant(u"0 B"_s);
    }
    void cells()
    {
        QFETCH(const PinEntry, entry);
        QFETCH(const int, section);
        model->setPins({entry});
        const QModelIndex cell = model->index(0, section);
        QTEST(cell.data(), "shown");
        QCOMPARE(cell.data(Qt::UserRole).toString(), entry.cid);
    }

    void lateFactsTouchTheirCellsOnly()
    {
        model->setPins({pin(u"a"_s, PinType::recursive), pin(u"b"_s, PinType::direct), pin(u"a"_s, PinType::direct),
                        pin({}, PinType::direct)});
        const QSignalSpy changes(model.get(), &QAbstractItemModel::dataChanged);
        model->setDagSize(u"a"_s, 1024);
        model->setDagSize(u"a"_s, 1024); // known already
        model->setKind(u"gone"_s, u"File"_s);
        model->setKind({}, u"File"_s); // rows without a CID are not indexed
        QCOMPARE(column(*model, 4), QStringList({u"1.0 KB"_s, u"…"_s, u"1.0 KB"_s, u"…"_s}));
        QCOMPARE(changes.size(), 2);
        QCOMPARE(changes.at(0).at(0).toModelIndex(), model->index(0, 4));
        QCOMPARE(changes.at(1).at(1).toModelIndex(), model->index(2, 4));
        QCOMPARE(changes.at(0).at(2).value<QList<int>>(),
                 QList<int>({Qt::DisplayRole, Qt::ForegroundRole, Qt::ToolTipRole}));
        model->setRefsCount(u"a"_s, 3);
        QCOMPARE(changes.at(2).at(2).value<QList<int>>(), QList<int>({Qt::DisplayRole, Qt::ToolTipRole}));
    }

    void aResetEndsAnUpdate()
    {
        const QList<PinEntry> pins {pin(u"a"_s, PinType::direct), pin(u"a"_s, PinType::direct)};
        model->setPins(pins);
        connect(model.get(), &PinModel::dataChanged, model.get(), [this, pins] { model->setPins(pins); });
        model->setDagSize(u"a"_s, 1024);
        QCOMPARE(column(*model, 4), QStringList({u"…"_s, u"…"_s}));
    }

    void countsAndLists()
    {
        QCOMPARE(model->allCids(), QStringList());
        QVERIFY(!model->pinAt(-1) && !model->pinAt(0));
        model->setPins({pin(u"a"_s, PinType::recursive), pin({}, PinType::indirect), pin(u"a"_s, PinType::direct),
                        pin(u"b"_s, "odd"_L1)});
        QCOMPARE(model->allCids(), QStringList({u"a"_s, u"a"_s, u"b"_s}));
        const auto counts = model->countsByType();
        QVERIFY(counts.recursive == 1 && counts.direct == 1 && counts.indirect == 1);
        model->clear();
        QCOMPARE(model->rowCount(), 0);
        model->setDagSize(u"a"_s, 1); // the index went with the rows
    }

    void filters_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("cids");
        const int byCid = PinFilterProxyModel::SearchByCid;
        const int byName = PinFilterProxyModel::SearchByName;
        QTest::newRow("recursive+direct hides indirect")
            << u"recursive+direct"_s << byCid << QString() << QStringList({u"bafyA"_s, u"bafyB"_s});
        QTest::newRow("other filters leave the types to the node")
            << u"direct"_s << byCid << QString() << QStringList({u"bafyA"_s, u"bafyB"_s, u"QmC"_s});
        QTest::newRow("by CID, in any case") << u"all"_s << byCid << u"FYb"_s << QStringList({u"bafyB"_s});
        QTest::newRow("by name, anywhere") << u"all"_s << byName << u"OT"_s << QStringList({u"bafyA"_s, u"QmC"_s});
        QTest::newRow("the text is no pattern") << u"all"_s << byName << u".*"_s << QStringList();
        QTest::newRow("both rules at once") << u"recursive+direct"_s << byName << u"ot"_s << QStringList({u"bafyA"_s});
    }
    void filters()
    {
        QFETCH(const QString, type);
        QFETCH(const int, mode);
        QFETCH(const QString, text);
        model->setPins({pin(u"bafyA"_s, PinType::recursive, u"Photos"_s), pin(u"bafyB"_s, PinType::direct),
                        pin(u"QmC"_s, PinType::indirect, u"notes"_s)});
        proxy->setTypeFilter(type);
        proxy->setSearchMode(static_cast<PinFilterProxyModel::SearchMode>(mode));
        proxy->setFilterFixedString(text);
        QTEST(column(*proxy, 0), "cids");
    }

    void sortsInStockOrderSaveForRefs_data()
    {
        QTest::addColumn<int>("section");
        for (int section = 0; section < PinModel::ColumnCount; ++section)
            QTest::addRow("section %d", section) << section;
    }
    void sortsInStockOrderSaveForRefs()
    {
        QFETCH(const int, section);
        QRandomGenerator random(7);
        const auto word = [&random](int letters) {
            return QString(random.bounded(3), QChar(u'a' + random.bounded(letters))) + QChar(u'A' + random.bounded(40));
        };
        const std::array types {PinType::recursive, PinType::direct, "odd"_L1};
        QList<PinEntry> pins;
        for (int i = 0; i < 300; ++i) {
            pins.append({.cid = word(26) + QString::number(i),
                         .type = types.at(random.bounded(3U)),
                         .name = word(4),
                         .kind = random.bounded(2) ? word(2) : QString(),
                         .refsCount = random.bounded(-1, 4) * 4,
                         .dagSize = random.bounded(-1, 5000)});
        }
        model->setPins(pins);
        StockProxy stock;
        stock.setSourceModel(model.get());
        for (const auto order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            proxy->sort(section, order);
            stock.sort(section, order);
            QCOMPARE(column(*proxy, 0), section == PinModel::RefsColumn ? cidsByRefs(pins, order) : column(stock, 0));
        }
    }

    void sortedRowsMoveAsSizesComeIn()
    {
        model->setPins({pin(u"a"_s, PinType::direct), pin(u"b"_s, PinType::direct)});
        proxy->sort(PinModel::SizeColumn, Qt::AscendingOrder);
        model->setDagSize(u"b"_s, 10 * 1024);
        model->setDagSize(u"a"_s, 9 * 1024);
        // By the shown text, so 9.0 KB comes after 10.0 KB, on purpose.
        QCOMPARE(column(*proxy, 0), QStringList({u"b"_s, u"a"_s}));
    }

    void rowsFollowTheFilter_data()
    {
        QTest::addColumn<int>("rows");
        QTest::newRow("few, one run after the other") << 300;
        QTest::newRow("many, by a reset") << 3000;
    }
    void rowsFollowTheFilter()
    {
        QFETCH(const int, rows);
        QRandomGenerator random(5);
        QList<PinEntry> pins;
        for (int i = 0; i < rows; ++i)
            pins.append(
                pin(u"%1%2"_s.arg(QString::number(random.generate(), 36), QString::number(i)), PinType::direct));
        model->setPins(pins);
        StockProxy stock;
        stock.setSourceModel(model.get());
        stock.setFilterCaseSensitivity(Qt::CaseInsensitive);
        for (QSortFilterProxyModel* sorted :
             {static_cast<QSortFilterProxyModel*>(&stock), static_cast<QSortFilterProxyModel*>(proxy.get())})
            sorted->sort(PinModel::CidColumn, Qt::DescendingOrder);
        for (const QString& text : {u"1"_s, u"1B"_s, u"b"_s, u"no such"_s, QString(), u"Z"_s, QString()}) {
            const QPersistentModelIndex held = proxy->index(proxy->rowCount() / 2, 0);
            const QString cid = held.data().toString();
            proxy->setFilterFixedString(text);
            stock.setFilterFixedString(text);
            QCOMPARE(column(*proxy, 0), column(stock, 0));
            QVERIFY(!held.isValid() || held.data().toString() == cid);
        }
    }

    /// Rows of a long list move some at a time, and facts that come before its index is ready wait for it.
    void factsOfALongList()
    {
        testers.clear(); // they look at all rows for each change
        QList<PinEntry> pins;
        for (int i = 0; i < 25'000; ++i)
            pins.append(pin(QString::number(i), PinType::direct));
        model->setPins(pins);
        model->setDagSize(u"7"_s, 1);
        model->setPins(pins); // what waited was meant for the list before
        proxy->sort(PinModel::SizeColumn, Qt::AscendingOrder);
        for (int i = 0; i < 200; ++i)
            model->setDagSize(QString::number(i * 97), i * 977 % 1000);
        QTRY_VERIFY(proxy->index(199, PinModel::SizeColumn).data().toString() != u"…"_s);
        const QStringList shown = column(*proxy, PinModel::SizeColumn);
        QVERIFY(std::ranges::is_sorted(shown));
        QCOMPARE(shown.filter(u"…"_s).size(), 24'800);
        QCOMPARE(model->pinAt(7)->dagSize, -1);
        QVERIFY(waitForDetached(std::chrono::seconds(10)));
    }

private:
    std::unique_ptr<PinModel> model;
    std::unique_ptr<PinFilterProxyModel> proxy;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
};

NORVO_TEST_MAIN(QApplication, tst_Model)
#include "tst_model.moc"
