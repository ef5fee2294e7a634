// SPDX-License-Identifier: MIT
#include "DhtGroups.h"

#include "CellCopy.h"
#include "DhtText.h"
#include "PlainText.h"
#include "StatusLabel.h"
#include "WidgetBuilders.h"

#include <QElapsedTimer>
#include <QGroupBox>
#include <QHeaderView>
#include <QScrollArea>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <numeric>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int firstTurnMs = 60;
constexpr int turnMs = 15;
constexpr int agentColumn = 1;
constexpr int widestAgent = 300;
constexpr int tallestTable = 1'000'000; // pixels; a widget ends at 16 millions, and so does all that the dialog shows
constexpr int rowsInAStep = 100;        // less than 1 ms; a real bucket has 20

/// Its rows are all in sight of it, so the area around it follows the current cell.
class BucketTable : public QTableWidget
{
public:
    using QTableWidget::QTableWidget;

    void scrollTo(const QModelIndex& index, ScrollHint hint) override
    {
        QTableWidget::scrollTo(index, hint);
        for (QWidget* up = parentWidget(); up; up = up->parentWidget()) {
            auto* area = qobject_cast<QScrollArea*>(up);
            if (!area)
                continue;
            const QRect cell = visualRect(index);
            const QPoint center = viewport()->mapTo(area->widget(), cell.center());
            area->ensureVisible(center.x(), center.y(), 0, cell.height());
        }
    }
};

/// A box for foreign text, which is not to name a key or to widen the dialog.
QGroupBox* newBox(const QString& title, const QString& style, QWidget* parent)
{
    auto* box = new QGroupBox(lineForLabel(title).replace(u'&', u"&&"_s), parent);
    box->setAccessibleName(lineForLabel(title)); // else a box in another one is read out with that one's title
    box->setStyleSheet(style);
    box->setLayout(new QVBoxLayout);
    return box;
}

/// As high as all of its rows.
int wholeHeight(const QTableWidget& table)
{
    return table.horizontalHeader()->sizeHint().height() + table.verticalHeader()->length() + 2 * table.frameWidth();
}

/// Removes some rows of a table with many; false if there is none.
bool shortenTable(const QWidget& box)
{
    auto* table = box.findChild<QTableWidget*>();
    if (!table || table->rowCount() <= rowsInAStep)
        return false;
    table->setRowCount(table->rowCount() - rowsInAStep);
    return true;
}

} // namespace

DhtGroups::DhtGroups(const QList<QJsonObject>& newViews, QVBoxLayout* newLayout, QWidget* newContent)
    : QObject(newContent)
    , views(newViews)
    , layout(newLayout)
    , content(newContent)
{
    turn.callOnTimeout(this, [this] { work(turnMs); });
}

void DhtGroups::start()
{
    turn.start(1ms);
    work(firstTurnMs);
}

void DhtGroups::work(int milliseconds)
{
    QElapsedTimer time;
    time.start();
    while (step()) {
        if (time.elapsed() >= milliseconds)
            return;
    }
    turn.stop();
    emit completed();
}

/// The next piece of the work; false if there is none.
bool DhtGroups::step()
{
    if (table)
        addRows();
    else if (nextBucket < buckets.size())
        addBucket();
    else if (!views.isEmpty())
        beginView();
    else if (nextToAlign < tables.size())
        alignTable(tables.at(nextToAlign++));
    else
        return false;
    return true;
}

void DhtGroups::beginView()
{
    const QJsonObject view = views.takeFirst();
    group = newBox(dhtViewTitle(view),
                   u"QGroupBox { font-weight: bold; margin-top: 10px; padding-top: 8px; } "
                   "QGroupBox::title { subcontrol-origin: margin; left: 8px; padding: 0 4px; }"_s,
                   content);
    buckets = view.value("Buckets"_L1).toArray();
    nextBucket = 0;
    if (buckets.isEmpty()) {
        auto* label = new StatusLabel(group);
        label->showHint(tr("No buckets in this DHT."));
        group->layout()->addWidget(label);
    }
    layout->insertWidget(layout->count() - 1, group);
}

void DhtGroups::addBucket()
{
    const QJsonObject bucket = buckets.at(nextBucket).toObject();
    const QString title = dhtBucketTitle(nextBucket++, bucket);
    QGroupBox* box = newBox(title,
                            u"QGroupBox { font-weight: normal; margin-top: 6px; } "
                            "QGroupBox::title { subcontrol-origin: margin; left: 8px; padding: 0 4px; }"_s,
                            group);
    group->layout()->addWidget(box);
    peers = bucket.value("Peers"_L1).toArray();
    nextRow = 0;
    if (!peers.isEmpty()) {
        beginTable(box);
        table->setAccessibleName(title);
    }
}

void DhtGroups::beginTable(QWidget* box)
{
    table = new BucketTable(static_cast<int>(peers.size()), columns, box);
    table->setHorizontalHeaderLabels(dhtPeerColumns());
    table->setAlternatingRowColors(true);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(false);
    copyCellsOnRequest(table);
    showFocusAtFrame(table);
}

void DhtGroups::addRows()
{
    const int end = std::min(nextRow + rowsInAStep, table->rowCount());
    for (; nextRow < end; ++nextRow) {
        const QStringList cells = dhtPeerCells(peers.at(nextRow).toObject());
        for (int column = 0; column < columns; ++column)
            table->setItem(nextRow, column, new QTableWidgetItem(cells.at(column)));
        table->item(nextRow, agentColumn)->setToolTip(plainToolTip(cells.at(agentColumn))); // the widest are cut
    }
    if (nextRow == table->rowCount())
        showTable();
}

void DhtGroups::showTable()
{
    measure();
    alignTable(table); // with the tables before it; with all others in the end
    // The dialog scrolls as a whole, not the table in it.
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const int height = wholeHeight(*table);
    if (height <= tallestTable)
        table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setFixedHeight(std::min(height, tallestTable));
    table->parentWidget()->layout()->addWidget(table);
    tables.append(table);
    table = nullptr;
}

void DhtGroups::measure()
{
    table->resizeColumnsToContents();
    for (int column = 0; column < columns; ++column) {
        int& width = widths.at(static_cast<size_t>(column));
        const int own = table->columnWidth(column);
        width = std::max(width, column == agentColumn ? std::min(own, widestAgent) : own);
    }
}

/// The last column takes what is left, and never less than its cells need: the dialog scrolls sideways then.
void DhtGroups::alignTable(QTableWidget* shown) const
{
    QHeaderView* header = shown->horizontalHeader();
    for (int column = 0; column < columns - 1; ++column)
        shown->setColumnWidth(column, widths.at(static_cast<size_t>(column)));
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setSectionResizeMode(columns - 1, QHeaderView::Stretch);
    shown->setMinimumWidth(std::accumulate(widths.begin(), widths.end(), 2 * shown->frameWidth()));
}

void deleteInTurns(QWidget* group)
{
    group->hide();
    delete group->layout(); // else it would stretch those that are left, each time that one goes
    auto* timer = new QTimer(group);
    timer->callOnTimeout(group, [group] {
        QElapsedTimer time;
        time.start();
        while (auto* box = group->findChild<QGroupBox*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (!shortenTable(*box))
                delete box;
            if (time.elapsed() >= turnMs)
                return;
        }
        group->deleteLater();
    });
    timer->start(5ms);
}
