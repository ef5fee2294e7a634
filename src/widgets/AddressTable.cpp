// SPDX-License-Identifier: MIT
#include "AddressTable.h"

#include "CellCopy.h"
#include "LtrDelegate.h"
#include "PlainText.h"
#include "WidgetBuilders.h"

#include <QHash>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostLinesInRow = 8;
constexpr qsizetype mostLinesInTip = 40;
constexpr int addressRowPadding = 8; // pixels above and below the lines together

QString tipOf(const QString& text)
{
    const qsizetype lines = text.count(u'\n') + 1;
    return plainToolTip(lines <= mostLinesInTip ? text : text.section(u'\n', 0, mostLinesInTip - 1) + u"\n…"_s);
}

/// Makes its tool tip when it is needed: few of many thousands are.
class AddressItem : public QTableWidgetItem
{
public:
    explicit AddressItem(QString newAddress)
        : address(std::move(newAddress))
    {
        setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren);
    }
    QVariant data(int role) const override
    {
        if (role == Qt::DisplayRole)
            return address;
        return role == Qt::ToolTipRole ? tipOf(address) : QTableWidgetItem::data(role);
    }

private:
    QString address;
};

/// With updates off, a header doesn't lay out anew for each row that changes its height.
class UpdatesOff
{
public:
    explicit UpdatesOff(QWidget* newWidget)
        : widget(newWidget)
    {
        widget->setUpdatesEnabled(false);
    }
    ~UpdatesOff() { widget->setUpdatesEnabled(true); }
    Q_DISABLE_COPY_MOVE(UpdatesOff)

private:
    QWidget* widget;
};

} // namespace

/// Selected cells of a row, from the column `left` to the column `right`.
struct AddressTable::Span
{
    int row = 0;
    int left = 0;
    int right = 0;
};

/// What is selected, and where the view is, in the rows as they were.
struct AddressTable::Place
{
    QList<QStringList> rows {};
    QList<Span> selected {};
    int currentRow = -1;
    int currentColumn = -1;
    int topRow = -1;   ///< -1 at the very top
    int topOffset = 0; ///< pixels of that row that are scrolled away
};

AddressTable::AddressTable(const QStringList& headers, QWidget* parent)
    : QTableWidget(0, static_cast<int>(headers.size()), parent)
{
    setHorizontalHeaderLabels(headers);
    setAlternatingRowColors(true);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false); // Tab leads on to the next control
    setWordWrap(false);
    setTextElideMode(Qt::ElideMiddle); // addresses differ at their ends
    showLeftToRight(this);
    showFocusAtFrame(this);
    setVerticalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().lineSpacing() + addressRowPadding);
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setHighlightSections(false);
    copyCellsOnRequest(this);
}

void AddressTable::setRows(const QList<QStringList>& newRows)
{
    if (newRows == rows)
        return;
    const Place old = place();
    {
        const UpdatesOff off(this);
        clearSelection();
        fill(newRows);
        hideOthers();
    }
    updateGeometries(); // the scroll bar's range
    restore(old);
}

void AddressTable::setRows(const QStringList& texts)
{
    QList<QStringList> cells;
    cells.reserve(texts.size());
    for (const QString& text : texts)
        cells.append(QStringList {text});
    setRows(cells);
}

AddressTable::Place AddressTable::place() const
{
    Place found {.rows = rows, .currentRow = currentRow(), .currentColumn = currentColumn()};
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            found.selected.append({.row = row, .left = range.left(), .right = range.right()});
    }
    if (verticalScrollBar()->value() > 0) {
        found.topRow = rowAt(0);
        found.topOffset = -rowViewportPosition(found.topRow);
    }
    return found;
}

void AddressTable::restore(const Place& old)
{
    if (old.selected.isEmpty() && old.currentRow < 0 && old.topRow < 0)
        return;
    QHash<QString, int> rowOf;
    rowOf.reserve(rows.size());
    for (qsizetype row = rows.size() - 1; row >= 0; --row)
        rowOf.insert(rows.at(row).constFirst(), static_cast<int>(row)); // the first of several stays
    const auto rowNow = [&](int row) {
        return row < 0 || row >= old.rows.size() ? -1 : rowOf.value(old.rows.at(row).constFirst(), -1);
    };

    QList<Span> spans;
    spans.reserve(old.selected.size());
    for (const Span& span : old.selected) {
        if (const int row = rowNow(span.row); row >= 0)
            spans.append({.row = row, .left = span.left, .right = span.right});
    }
    select(spans);
    const QModelIndex current = model()->index(rowNow(old.currentRow), old.currentColumn);
    selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    for (int row = old.topRow; row >= 0 && row < old.rows.size(); ++row) {
        const int now = rowNow(row);
        if (now < 0 || isRowHidden(now))
            continue; // the one below it takes its place
        verticalScrollBar()->setValue(verticalHeader()->sectionPosition(now) + (row == old.topRow ? old.topOffset : 0));
        break;
    }
}

/// Rows side by side become one range: the selection's cost grows with the square of their number.
void AddressTable::select(const QList<Span>& unordered)
{
    QList<Span> spans = unordered;
    std::ranges::sort(spans, {}, [](const Span& span) { return std::tuple(span.left, span.right, span.row); });
    QItemSelection selection;
    for (qsizetype first = 0; first < spans.size();) {
        qsizetype next = first + 1;
        while (next < spans.size() && spans.at(next).left == spans.at(first).left
               && spans.at(next).right == spans.at(first).right && spans.at(next).row - spans.at(next - 1).row <= 1)
            ++next;
        selection.append(QItemSelectionRange(model()->index(spans.at(first).row, spans.at(first).left),
                                             model()->index(spans.at(next - 1).row, spans.at(first).right)));
        first = next;
    }
    selectionModel()->select(selection, QItemSelectionModel::Select);
}

void AddressTable::fill(const QList<QStringList>& newRows)
{
    rows = newRows;
    folded = rows;
    setRowCount(static_cast<int>(rows.size()));
    const QSignalBlocker oneByOne(model());
    for (int row = 0; row < rowCount(); ++row) {
        for (int column = 0; column < columnCount(); ++column)
            setItem(row, column, new AddressItem(rows.at(row).value(column)));
        for (QString& text : folded[row])
            text = text.toCaseFolded();
        fitRow(row);
    }
}

/// Not by the row's size hint, for which each cell would be laid out.
void AddressTable::fitRow(int row)
{
    qsizetype lines = 1;
    for (const QString& text : rows.at(row))
        lines = std::max(lines, text.count(u'\n') + 1);
    lines = std::min(lines, mostLinesInRow);
    verticalHeader()->resizeSection(row, static_cast<int>(lines) * fontMetrics().lineSpacing() + addressRowPadding);
}

void AddressTable::showMatches(const QString& text)
{
    QString wanted = text.trimmed().toCaseFolded();
    if (wanted == filter)
        return;
    filter = std::move(wanted);
    {
        const UpdatesOff off(this);
        hideOthers();
    }
    updateGeometries();
    if (const QTableWidgetItem* current = currentItem();
        current && current->isSelected() && !isRowHidden(current->row()))
        scrollToItem(current);
}

void AddressTable::hideOthers()
{
    for (int row = 0; row < rowCount(); ++row)
        setRowHidden(row, !filter.isEmpty() && !matches(folded.at(row)));
}

bool AddressTable::matches(const QStringList& cells) const
{
    return std::ranges::any_of(cells, [this](const QString& text) { return text.contains(filter); });
}

QStringList AddressTable::selectedTexts() const
{
    QList<int> selected;
    for (const QModelIndex& index : selectionModel()->selectedRows()) {
        if (!isRowHidden(index.row()))
            selected.append(index.row());
    }
    std::ranges::sort(selected);
    QStringList texts;
    texts.reserve(selected.size());
    for (const int row : std::as_const(selected))
        texts.append(rows.at(row).constFirst());
    return texts;
}
