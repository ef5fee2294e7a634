// SPDX-License-Identifier: MIT
#include "DhtGroups.h"

#include "CellCopy.h"
#include "DhtText.h"
#include "PlainText.h"

#include <QElapsedTimer>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
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

/// A box for foreign text, which is not to name a key or to widen the dialog.
QGroupBox* newBox(const QString& title, const QString& style, QWidget* parent)
{
    auto* box = new QGroupBox(lineForLabel(title).replace(u'&', u"&&"_s), parent);
    box->setStyleSheet(style);
    box->setLayout(new QVBoxLayout);
    return box;
}

/// As high as all of its rows.
int wholeHeight(const QTableWidget& table)
{
    return table.horizontalHeader()->sizeHint().height() + table.verticalHeader()->length() + 2 * table.frameWidth();
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
    if (nextBucket < buckets.size())
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
        auto* label = newPlainLabel(tr("No buckets in this DHT."), group);
        label->setStyleSheet(u"color: gray;"_s);
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
    if (const QJsonArray peers = bucket.value("Peers"_L1).toArray(); !peers.isEmpty()) {
        QTableWidget* table = newTable(peers, box);
        table->setAccessibleName(title);
        box->layout()->addWidget(table);
        tables.append(table);
    }
    group->layout()->addWidget(box);
}

QTableWidget* DhtGroups::newTable(const QJsonArray& peers, QWidget* parent)
{
    auto* table = new QTableWidget(static_cast<int>(peers.size()), columns, parent);
    table->setHorizontalHeaderLabels(dhtPeerColumns());
    table->setAlternatingRowColors(true);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(false);
    copyCellsOnRequest(table);
    for (int row = 0; row < table->rowCount(); ++row) {
        const QStringList cells = dhtPeerCells(peers.at(row).toObject());
        for (int column = 0; column < columns; ++column)
            table->setItem(row, column, new QTableWidgetItem(cells.at(column)));
        table->item(row, agentColumn)->setToolTip(plainToolTip(cells.at(agentColumn))); // the widest are cut
    }
    measure(table);
    alignTable(table); // with the tables before it; with all others in the end
    // The dialog scrolls as a whole, not the table in it.
    table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setFixedHeight(wholeHeight(*table));
    return table;
}

void DhtGroups::measure(QTableWidget* table)
{
    table->resizeColumnsToContents();
    for (int column = 0; column < columns; ++column) {
        int& width = widths.at(static_cast<size_t>(column));
        const int own = table->columnWidth(column);
        width = std::max(width, column == agentColumn ? std::min(own, widestAgent) : own);
    }
}

/// The last column takes what is left, and never less than its cells need: the dialog scrolls sideways then.
void DhtGroups::alignTable(QTableWidget* table) const
{
    QHeaderView* header = table->horizontalHeader();
    for (int column = 0; column < columns - 1; ++column)
        table->setColumnWidth(column, widths.at(static_cast<size_t>(column)));
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setSectionResizeMode(columns - 1, QHeaderView::Stretch);
    table->setMinimumWidth(std::accumulate(widths.begin(), widths.end(), 2 * table->frameWidth()));
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
            delete box;
            if (time.elapsed() >= turnMs)
                return;
        }
        group->deleteLater();
    });
    timer->start(5ms);
}
