// SPDX-License-Identifier: MIT
#include "PinTable.h"

#include "LtrDelegate.h"
#include "PinFilterProxyModel.h"
#include "PinModel.h"
#include "WidgetBuilders.h"

#include <QFontMetrics>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QShortcut>
#include <QTextOption>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>

using namespace Qt::StringLiterals;

namespace {

constexpr int heightOfRows = 24;
constexpr int cidLength = 59;
constexpr int minimumCidTextWidth = 392;
constexpr int cidColumnPadding = 28;
/// A larger selection isn't restored: a part of it would pass for all.
constexpr int mostRestoredRows = 10'000;
constexpr int emptyTextMargin = 24;
constexpr int farthestTop = 1000; ///< rows

struct Section
{
    int column;
    int width; ///< pixels at the start, 0 for Qt's own
    QHeaderView::ResizeMode mode;
};

constexpr std::array sections {Section {PinModel::CidColumn, 420, QHeaderView::Interactive},
                               Section {PinModel::RefsColumn, 52, QHeaderView::Interactive},
                               Section {PinModel::TypeColumn, 88, QHeaderView::Interactive},
                               Section {PinModel::SizeColumn, 100, QHeaderView::Interactive},
                               Section {PinModel::NameColumn, 0, QHeaderView::Stretch}};

/// Between the text and its ground: fainter than rows, and more readable than most placeholder colours.
QColor emptyTextColor(const QPalette& palette)
{
    const QColor text = palette.color(QPalette::Text);
    const QColor ground = palette.color(QPalette::Base);
    const auto mix = [](int most, int rest) { return (2 * most + rest) / 3; };
    return {mix(text.red(), ground.red()), mix(text.green(), ground.green()), mix(text.blue(), ground.blue())};
}

QString cellText(const QModelIndex& index, PinModel::Column column)
{
    return index.siblingAtColumn(column).data(Qt::DisplayRole).toString();
}

} // namespace

PinTable::PinTable(PinFilterProxyModel* shownPins, QWidget* parent)
    : QTableView(parent)
    , pins(shownPins)
{
    setModel(pins);
    setSortingEnabled(true);
    makeRowTable(this);
    setAccessibleName(tr("Pins"));
    verticalHeader()->setDefaultSectionSize(heightOfRows);
    setupColumns();
    showLeftToRight(this); // CIDs and sizes; a name may be in any language
    setItemDelegateForColumn(PinModel::NameColumn, new QStyledItemDelegate(this));
    sortByColumn(PinModel::RefsColumn, Qt::AscendingOrder);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        const auto* open = new QShortcut(key, this, nullptr, nullptr, Qt::WidgetShortcut);
        connect(open, &QShortcut::activated, this, &PinTable::openCurrentRow);
    }
}

void PinTable::setupColumns()
{
    QHeaderView* header = horizontalHeader();
    header->setDefaultAlignment(Qt::AlignLeft);
    for (const Section& section : sections) {
        header->setSectionResizeMode(section.column, section.mode);
        if (section.width > 0)
            header->resizeSection(section.column, section.width);
    }
}

QString PinTable::cidOf(const QModelIndex& index) const
{
    return index.siblingAtColumn(PinModel::CidColumn).data(Qt::UserRole).toString();
}

/// As cidOf, many times as fast; empty if there is no such row.
QString PinTable::cidAt(int row) const
{
    const PinEntry* pin = pins->pinAt(row);
    return pin ? pin->cid : QString();
}

bool PinTable::isRecursivePin(const QModelIndex& index) const
{
    return cellText(index, PinModel::TypeColumn) == PinType::recursive && !cidOf(index).isEmpty();
}

bool PinTable::hasSelection() const
{
    return selectionModel()->hasSelection();
}

/// Looks at ranges: all of a long list may be selected.
bool PinTable::hasSeveralRowsSelected() const
{
    const QItemSelection ranges = selectionModel()->selection();
    return ranges.size() > 1 || (!ranges.isEmpty() && ranges.constFirst().height() > 1);
}

QString PinTable::firstSelectedCid() const
{
    const QItemSelection ranges = selectionModel()->selection();
    return ranges.isEmpty() ? QString() : cidOf(ranges.constFirst().topLeft());
}

QStringList PinTable::selectedCids() const
{
    QStringList cids;
    // By ranges: selectedRows looks through all ranges for each row.
    const QItemSelection ranges = selectionModel()->selection();
    for (const QItemSelectionRange& range : ranges) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            if (const QString cid = cidAt(row); !cid.isEmpty())
                cids.append(cid);
        }
    }
    return cids;
}

int PinTable::selectedRowCount() const
{
    const QItemSelection ranges = selectionModel()->selection();
    return std::accumulate(ranges.begin(), ranges.end(), 0,
                           [](int sum, const QItemSelectionRange& range) { return sum + range.height(); });
}

PinTable::Place PinTable::place() const
{
    const QModelIndex current = currentIndex();
    const int topRow = rowAt(0);
    Place place {.current = current.isValid() ? cidOf(current) : QString(),
                 .currentColumn = std::max(current.column(), 0),
                 .top = cidAt(topRow),
                 .topRow = topRow,
                 .left = horizontalScrollBar()->value(),
                 .rows = model()->rowCount()};
    if (selectedRowCount() <= mostRestoredRows) {
        const QStringList cids = selectedCids();
        place.selected = QSet<QString>(cids.begin(), cids.end());
    }
    return place;
}

void PinTable::restore(const Place& place)
{
    const int topRow = rowOfTop(place);
    QList<int> selected;
    QSet<QString> missing = place.selected; // a CID may be in two rows
    int current = -1;
    const auto isDone = [&] { return missing.isEmpty() && (current >= 0 || place.current.isEmpty()); };
    for (int row = 0; row < model()->rowCount() && !isDone(); ++row) {
        const QString cid = cidAt(row);
        if (place.selected.contains(cid)) {
            selected.append(row);
            missing.remove(cid);
        }
        if (current < 0 && !cid.isEmpty() && cid == place.current)
            current = row;
    }
    selectRows(selected);
    if (current >= 0)
        selectionModel()->setCurrentIndex(model()->index(current, place.currentColumn), QItemSelectionModel::NoUpdate);
    executeDelayedItemsLayout();                 // the scroll bar has its old range until then
    horizontalScrollBar()->setValue(place.left); // the current cell was scrolled into view
    if (topRow >= 0)
        verticalScrollBar()->setValue(topRow);
}

/// Looks no farther than as many rows away as came or went: a list that is sorted by late facts is in disorder at
/// first.
int PinTable::rowOfTop(const Place& place) const
{
    const int last = model()->rowCount() - 1;
    const int reach = std::min(std::abs(model()->rowCount() - place.rows), farthestTop);
    for (int row = std::max(place.topRow - reach, 0); row <= std::min(place.topRow + reach, last); ++row) {
        if (!place.top.isEmpty() && cidAt(row) == place.top)
            return row;
    }
    return place.topRow;
}

/// One selection of whole ranges; row by row it would take seconds. `rows` are in ascending order.
void PinTable::selectRows(const QList<int>& rows)
{
    QItemSelection ranges;
    const int lastColumn = model()->columnCount() - 1;
    for (qsizetype first = 0, end = 0; first < rows.size(); first = end) {
        for (end = first + 1; end < rows.size() && rows.at(end) == rows.at(end - 1) + 1;)
            ++end;
        ranges.append(
            QItemSelectionRange(model()->index(rows.at(first), 0), model()->index(rows.at(end - 1), lastColumn)));
    }
    if (!ranges.isEmpty())
        selectionModel()->select(ranges, QItemSelectionModel::ClearAndSelect);
}

/// The Return key acts as a double click does, on the current row, so that row has to be selected.
void PinTable::openCurrentRow()
{
    const QModelIndex current = currentIndex();
    if (current.isValid() && !selectionModel()->isSelected(current))
        selectionModel()->setCurrentIndex(current, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    emit doubleClicked(current);
}

void PinTable::showRowMenu(const QPoint& pos, bool pinned)
{
    const QModelIndex index = indexAt(pos);
    if (!index.isValid())
        return;
    const bool several = pinned && selectionModel()->isRowSelected(index.row()) && hasSeveralRowsSelected();
    auto* menu = new QMenu(this); // on the stack it would be deleted twice if the table went while it is open
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (several) {
        menu->addAction(tr("Unpin"), this, [this, cids = selectedCids()] { emit unpinRequested(cids); });
    } else {
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        fillRowMenu(menu, index, pinned);
    }
    menu->exec(viewport()->mapToGlobal(pos));
}

void PinTable::fillRowMenu(QMenu* menu, const QModelIndex& index, bool pinned)
{
    const QString cid = cidOf(index);
    if (isRecursivePin(index)) {
        const QString name = cellText(index, PinModel::NameColumn);
        menu->addAction(tr("Show indirect pins"), this, [this, cid] { emit indirectPinsRequested(cid); });
        menu->addAction(tr("List files / Export…"), this, [this, cid, name] { emit contentsRequested(cid, name); });
        menu->addSeparator();
    }
    if (pinned) {
        menu->addAction(tr("Publish to IPNS..."), this, [this, cid] { emit publishRequested(cid); });
        menu->addAction(tr("Unpin"), this, [this, cid] { emit unpinRequested({cid}); });
        menu->addSeparator();
    }
    menu->addAction(tr("Copy CID"), this, [this, cid] { emit copyRequested({cid}); });
    menu->addAction(tr("Open via IPNS..."), this, &PinTable::openViaIpnsRequested);
    menu->addAction(tr("Open from gateway"), this, [this, cid] { emit gatewayRequested(cid); });
    menu->addAction(tr("Open from local"), this, [this, cid] { emit localGatewayRequested(cid); });
}

void PinTable::setEmptyText(const QString& text)
{
    if (text == emptyText)
        return;
    emptyText = text;
    setAccessibleDescription(text);
    viewport()->update();
}

void PinTable::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (emptyText.isEmpty())
        return;
    QTextOption layout(Qt::AlignCenter);
    layout.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QPainter painter(viewport());
    painter.setPen(emptyTextColor(palette()));
    painter.drawText(QRectF(viewport()->rect()).adjusted(emptyTextMargin, 0, -emptyTextMargin, 0), emptyText, layout);
}

void PinTable::fitColumns()
{
    QHeaderView* header = horizontalHeader();
    for (int column = PinModel::CidColumn; column <= PinModel::SizeColumn; ++column) {
        header->setSectionResizeMode(column, QHeaderView::ResizeToContents);
        resizeColumnToContents(column);
        header->setSectionResizeMode(column, QHeaderView::Interactive);
        if (column == PinModel::CidColumn)
            header->resizeSection(column, std::max(header->sectionSize(column), minimumCidColumnWidth()));
    }
}

int PinTable::minimumCidColumnWidth()
{
    const QFontMetrics metrics(QFont(u"Courier New"_s, 12));
    const int textWidth = metrics.horizontalAdvance(QString(cidLength, u'm'));
    return std::max(textWidth, minimumCidTextWidth) + cidColumnPadding;
}
