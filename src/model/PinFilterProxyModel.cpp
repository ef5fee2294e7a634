// SPDX-License-Identifier: MIT
#include "PinFilterProxyModel.h"

#include "PinModel.h"
#include "TextSearch.h"

#include <QTimer>

#include <algorithm>
#include <chrono>

namespace {

/// A long list takes changes together, at most so late.
constexpr std::chrono::milliseconds placeDelay {40};

bool holds(const QString& text, const QString& literal, Qt::CaseSensitivity sensitivity)
{
    return sensitivity == Qt::CaseInsensitive ? containsIgnoringCase(text, literal) : text.contains(literal);
}

} // namespace

PinFilterProxyModel::PinFilterProxyModel(QObject* parent)
    : QSortFilterProxyModel(parent)
    , placeTimer(new QTimer(this))
{
    placeTimer->setSingleShot(true);
    placeTimer->setInterval(placeDelay);
    connect(placeTimer, &QTimer::timeout, this, &PinFilterProxyModel::placeChangedRows);
}

/// The stock proxy is left out: it would keep an order of its own beside this one.
void PinFilterProxyModel::setSourceModel(QAbstractItemModel* model)
{
    beginResetModel();
    if (sourceModel())
        disconnect(sourceModel(), nullptr, this, nullptr);
    QAbstractProxyModel::setSourceModel(model); // NOLINT(bugprone-parent-virtual-call)
    pins = qobject_cast<PinModel*>(model);
    Q_ASSERT(pins || !model);
    if (pins) {
        connect(pins, &PinModel::dataChanged, this, &PinFilterProxyModel::onSourceDataChanged);
        connect(pins, &PinModel::modelAboutToBeReset, this, [this] { beginResetModel(); });
        connect(pins, &PinModel::modelReset, this, [this] {
            takeRows(acceptedRows());
            endResetModel();
        });
    }
    takeRows(acceptedRows());
    endResetModel();
}

void PinFilterProxyModel::setTypeFilter(const QString& type)
{
    Filter changed = filter;
    changed.hidesIndirect = type == PinType::recursiveAndDirect;
    changeFilter(changed);
}

void PinFilterProxyModel::setSearchMode(SearchMode mode)
{
    Filter changed = filter;
    changed.searchMode = mode;
    changeFilter(changed);
}

void PinFilterProxyModel::setFilterFixedString(const QString& text)
{
    Filter changed = filter;
    changed.text = text;
    changeFilter(changed);
}

void PinFilterProxyModel::setFilterCaseSensitivity(Qt::CaseSensitivity sensitivity)
{
    Filter changed = filter;
    changed.sensitivity = sensitivity;
    changeFilter(changed);
}

bool PinFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex& /*sourceParent*/) const
{
    const PinEntry* pin = pins ? pins->pinAt(sourceRow) : nullptr;
    return pin && accepts(*pin);
}

/// Whether no row that `other` hides can be shown.
bool PinFilterProxyModel::Filter::isNarrowerThan(const Filter& other) const
{
    return hidesIndirect >= other.hidesIndirect
        && (other.text.isEmpty()
            || (searchMode == other.searchMode && sensitivity == other.sensitivity && text.contains(other.text)));
}

bool PinFilterProxyModel::accepts(const PinEntry& pin) const
{
    if (filter.hidesIndirect && pin.type == PinType::indirect)
        return false;
    return filter.text.isEmpty() || holds(searchedText(pin), filter.text, filter.sensitivity);
}

const QString& PinFilterProxyModel::searchedText(const PinEntry& pin) const
{
    return filter.searchMode == SearchByName ? pin.name : pin.cid;
}

bool PinFilterProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QString* leftText = heldText(left);
    const QString* rightText = heldText(right);
    // The stock order takes a number and the placeholder for equal, which leaves the numbers around it unsorted.
    const bool placeholderIsRight = !leftText && rightText && !rightText->isEmpty();
    if (placeholderIsRight && left.column() == PinModel::RefsColumn && sortRole() == Qt::DisplayRole)
        return true;
    if (!leftText || !rightText || sortRole() != Qt::DisplayRole || isSortLocaleAware())
        return QSortFilterProxyModel::lessThan(left, right);
    return leftText != rightText && leftText->compare(*rightText, sortCaseSensitivity()) < 0;
}

const QString* PinFilterProxyModel::heldText(const QModelIndex& sourceIndex) const
{
    return pins ? pins->heldText(sourceIndex.row(), static_cast<PinModel::Column>(sourceIndex.column())) : nullptr;
}

QModelIndex PinFilterProxyModel::mapToSource(const QModelIndex& proxyIndex) const
{
    if (!proxyIndex.isValid() || proxyIndex.row() >= rowCount())
        return {};
    return sourceModel()->index(sourceRows[static_cast<size_t>(proxyIndex.row())], proxyIndex.column());
}

QModelIndex PinFilterProxyModel::mapFromSource(const QModelIndex& sourceIndex) const
{
    if (!sourceIndex.isValid() || static_cast<size_t>(sourceIndex.row()) >= proxyRows.size())
        return {};
    return index(proxyRows[static_cast<size_t>(sourceIndex.row())], sourceIndex.column());
}

QModelIndex PinFilterProxyModel::index(int row, int column, const QModelIndex& parent) const
{
    const bool exists = !parent.isValid() && row >= 0 && row < rowCount() && column >= 0 && column < columnCount();
    return exists ? createIndex(row, column) : QModelIndex();
}

QModelIndex PinFilterProxyModel::sibling(int row, int column, const QModelIndex& index) const
{
    return index.isValid() ? this->index(row, column) : QModelIndex();
}

QModelIndex PinFilterProxyModel::parent(const QModelIndex& /*child*/) const
{
    return {};
}

int PinFilterProxyModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(sourceRows.size());
}

int PinFilterProxyModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || !pins ? 0 : pins->columnCount();
}

bool PinFilterProxyModel::hasChildren(const QModelIndex& parent) const
{
    return !parent.isValid() && !sourceRows.empty();
}

QVariant PinFilterProxyModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (!pins || orientation == Qt::Horizontal)
        return pins ? pins->headerData(section, orientation, role) : QVariant();
    const bool exists = section >= 0 && section < rowCount();
    return exists ? pins->headerData(sourceRows[static_cast<size_t>(section)], orientation, role) : QVariant();
}

const PinEntry* PinFilterProxyModel::pinAt(int row) const
{
    return row >= 0 && row < rowCount() ? pins->pinAt(sourceRows[static_cast<size_t>(row)]) : nullptr;
}
