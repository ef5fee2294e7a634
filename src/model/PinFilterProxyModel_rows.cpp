// SPDX-License-Identifier: MIT
// Which rows there are, and in which order.
#include "PinFilterProxyModel.h"

#include "PinModel.h"
#include "TextOrder.h"
#include "TextSearch.h"

#include <QTimer>

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace {

/// Longest list whose rows move at once.
constexpr size_t fewRows = 10'000;
/// Rows come and go in at most so many runs; views look at all of their rows for each. Else the model is reset.
constexpr int mostRuns = 50;
/// Up to this many rows any number of runs is cheap, and keeps the selection.
constexpr size_t rowsOfAnyRuns = 2'000;
constexpr int searchedAhead = 12;

size_t at(int row)
{
    return static_cast<size_t>(row);
}

struct Run
{
    int first = 0;
    int last = 0;
};

/// The runs of ascending rows that follow one another.
std::vector<Run> runsOf(const std::vector<int>& rows)
{
    std::vector<Run> runs;
    for (const int row : rows) {
        if (!runs.empty() && runs.back().last == row - 1)
            runs.back().last = row;
        else
            runs.push_back({.first = row, .last = row});
    }
    return runs;
}

} // namespace

/// The rows stay, in another order.
template <typename Change> void PinFilterProxyModel::changeLayout(Change change)
{
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList held = persistentIndexList();
    QModelIndexList sources;
    sources.reserve(held.size());
    for (const QModelIndex& index : held)
        sources.append(mapToSource(index));
    change();
    noteProxyRows();
    QModelIndexList moved;
    moved.reserve(held.size());
    for (const QModelIndex& source : std::as_const(sources))
        moved.append(mapFromSource(source));
    changePersistentIndexList(held, moved);
    emit layoutChanged({}, VerticalSortHint);
}

void PinFilterProxyModel::noteProxyRows()
{
    proxyRows.assign(pins ? at(pins->rowCount()) : 0, -1);
    for (int row = 0; row < rowCount(); ++row)
        proxyRows[at(sourceRows[at(row)])] = row;
}

void PinFilterProxyModel::takeRows(Rows rows)
{
    changedRows.clear();
    orderRows(rows);
    sourceRows = std::move(rows);
    noteProxyRows();
}

void PinFilterProxyModel::sort(int column, Qt::SortOrder order)
{
    if (column == shownColumn && order == shownOrder)
        return;
    shownColumn = column;
    shownOrder = order;
    changedRows.clear();
    changeLayout([this] { orderRows(sourceRows); });
}

/// Stable, so that rows that are equal keep the order that they had.
void PinFilterProxyModel::orderRows(Rows& rows) const
{
    if (shownColumn < 0) {
        std::ranges::sort(rows);
        if (shownOrder == Qt::DescendingOrder)
            std::ranges::reverse(rows);
        return;
    }
    const bool byShownText
        = sortRole() == Qt::DisplayRole && !isSortLocaleAware() && sortCaseSensitivity() == Qt::CaseSensitive;
    if (!byShownText) {
        std::ranges::stable_sort(rows, [this](int a, int b) { return comesBefore(a, b); });
    } else if (shownColumn == PinModel::RefsColumn) {
        orderByRefs(rows);
    } else if (shownColumn == PinModel::SizeColumn) {
        orderBySize(rows);
    } else {
        const auto column = static_cast<PinModel::Column>(shownColumn);
        sortByText(
            rows, [this, column](int row) { return QStringView(*pins->heldText(row, column)); }, shownOrder);
    }
}

bool PinFilterProxyModel::comesBefore(int sourceRow, int other) const
{
    const QModelIndex left = pins->index(sourceRow, shownColumn);
    const QModelIndex right = pins->index(other, shownColumn);
    return shownOrder == Qt::AscendingOrder ? lessThan(left, right) : lessThan(right, left);
}

/// No number, then the numbers, then those that are not known yet.
void PinFilterProxyModel::orderByRefs(Rows& rows) const
{
    struct Keyed
    {
        qint64 key = 0;
        int row = 0;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(rows.size());
    for (const int row : rows) {
        const QString* text = pins->heldText(row, PinModel::RefsColumn);
        const qint64 number = text ? std::numeric_limits<qint64>::max() : pins->pinAt(row)->refsCount;
        keyed.push_back({.key = text && text->isEmpty() ? -1 : number, .row = row});
    }
    const auto isLess = [this](const Keyed& a, const Keyed& b) {
        return shownOrder == Qt::AscendingOrder ? a.key < b.key : b.key < a.key;
    };
    if (std::ranges::is_sorted(keyed, isLess)) // as a new list is, of which no number is known
        return;
    std::ranges::stable_sort(keyed, isLess);
    std::ranges::transform(keyed, rows.begin(), &Keyed::row);
}

/// By the shown text.
void PinFilterProxyModel::orderBySize(Rows& rows) const
{
    std::vector<QString> texts;
    texts.reserve(rows.size());
    for (const int row : rows)
        texts.push_back(pins->index(row, PinModel::SizeColumn).data().toString());
    Rows places(rows.size());
    std::iota(places.begin(), places.end(), 0);
    sortByText(
        places, [&texts](int place) { return QStringView(texts[at(place)]); }, shownOrder);
    const Rows unordered = std::exchange(rows, {});
    rows.reserve(places.size());
    for (const int place : places)
        rows.push_back(unordered[at(place)]);
}

void PinFilterProxyModel::onSourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                              const QList<int>& roles)
{
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        const QModelIndex left = mapFromSource(topLeft.siblingAtRow(row));
        if (!left.isValid())
            continue;
        if (topLeft.column() <= shownColumn && shownColumn <= bottomRight.column())
            changedRows.push_back(row);
        emit dataChanged(left, left.siblingAtColumn(bottomRight.column()), roles);
    }
    if (changedRows.empty())
        return;
    if (sourceRows.size() <= fewRows)
        placeChangedRows();
    else if (!placeTimer->isActive())
        placeTimer->start();
}

void PinFilterProxyModel::placeChangedRows()
{
    Rows placed = std::exchange(changedRows, {});
    std::erase_if(placed, [this](int row) { return proxyRows[at(row)] < 0; }); // the filter may have hidden it
    std::ranges::sort(placed, {}, [this](int row) { return proxyRows[at(row)]; });
    placed.erase(std::unique(placed.begin(), placed.end()), placed.end());
    if (placed.empty())
        return;
    changeLayout([this, &placed] {
        for (const int row : placed)
            proxyRows[at(row)] = -1;
        std::erase_if(sourceRows, [this](int row) { return proxyRows[at(row)] < 0; });
        orderRows(placed);
        merge(placed);
    });
}

/// Puts rows that are in order among themselves where they belong.
void PinFilterProxyModel::merge(const Rows& placed)
{
    Rows merged;
    merged.reserve(sourceRows.size() + placed.size());
    auto from = sourceRows.cbegin();
    for (const int row : placed) {
        const auto to
            = std::upper_bound(from, sourceRows.cend(), row, [this](int a, int b) { return comesBefore(a, b); });
        merged.insert(merged.end(), from, to);
        merged.push_back(row);
        from = to;
    }
    merged.insert(merged.end(), from, sourceRows.cend());
    sourceRows = std::move(merged);
}

/// In the order of the source.
PinFilterProxyModel::Rows PinFilterProxyModel::acceptedRows() const
{
    Rows rows;
    for (int row = 0; pins && row < pins->rowCount(); ++row) {
        if (accepts(*pins->pinAt(row)))
            rows.push_back(row);
    }
    return rows;
}

/// Takes the rows that the filter hides from now on away and puts those where they belong that it hid before.
void PinFilterProxyModel::changeFilter(Filter changed)
{
    const Filter former = std::exchange(filter, std::move(changed));
    if (!pins || filter == former)
        return;
    placeTimer->stop();
    placeChangedRows();
    Rows all;
    Rows going;
    all.reserve(sourceRows.size());
    going.reserve(sourceRows.size());
    for (int row = 0; row < rowCount(); ++row) {
        const int sourceRow = sourceRows[at(row)];
        fetchAhead(searchedText(*pins->pinAt(sourceRows[at(std::min(row + searchedAhead, rowCount() - 1))])));
        if (accepts(*pins->pinAt(sourceRow)))
            all.push_back(sourceRow);
        else
            going.push_back(row);
    }
    const size_t kept = all.size();
    for (int row = 0; !filter.isNarrowerThan(former) && row < pins->rowCount(); ++row) {
        if (proxyRows[at(row)] < 0 && accepts(*pins->pinAt(row)))
            all.push_back(row);
    }
    if (all.size() > kept)
        orderRows(all);
    showRows(std::move(all), going);
}

void PinFilterProxyModel::showRows(Rows all, const Rows& going)
{
    Rows coming;
    for (size_t row = 0; row < all.size(); ++row) {
        if (proxyRows[at(all[row])] < 0)
            coming.push_back(static_cast<int>(row));
    }
    const std::vector<Run> removed = runsOf(going);
    const std::vector<Run> inserted = runsOf(coming);
    if (removed.size() + inserted.size() > mostRuns && std::max(sourceRows.size(), all.size()) > rowsOfAnyRuns) {
        beginResetModel();
        sourceRows = std::move(all);
        noteProxyRows();
        endResetModel();
        return;
    }
    for (size_t left = removed.size(); left > 0; --left) { // from the last one, so that the others stay where they are
        const Run& run = removed[left - 1];
        beginRemoveRows({}, run.first, run.last);
        sourceRows.erase(sourceRows.begin() + run.first, sourceRows.begin() + run.last + 1);
        noteProxyRows();
        endRemoveRows();
    }
    for (const Run& run : inserted) {
        beginInsertRows({}, run.first, run.last);
        sourceRows.insert(sourceRows.begin() + run.first, all.begin() + run.first, all.begin() + run.last + 1);
        noteProxyRows();
        endInsertRows();
    }
}
