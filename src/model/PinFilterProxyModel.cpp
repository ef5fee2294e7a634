// SPDX-License-Identifier: MIT
#include "PinFilterProxyModel.h"

#include "PinModel.h"

#include <QRegularExpression>

PinFilterProxyModel::PinFilterProxyModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{
}

void PinFilterProxyModel::setTypeFilter(const QString& type)
{
    if (typeFilter == type)
        return;
    typeFilter = type;
    invalidate();
}

void PinFilterProxyModel::setSearchMode(SearchMode mode)
{
    if (searchMode == mode)
        return;
    searchMode = mode;
    invalidateFilter();
}

bool PinFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const QAbstractItemModel* source = sourceModel();
    if (!source)
        return true;
    if (typeFilter == PinType::recursiveAndDirect
        && source->index(sourceRow, PinModel::TypeColumn, sourceParent).data().toString() == PinType::indirect) {
        return false;
    }
    const QRegularExpression expression = filterRegularExpression();
    if (expression.pattern().isEmpty())
        return true;
    const int column = searchMode == SearchByName ? PinModel::NameColumn : PinModel::CidColumn;
    const QString text = source->index(sourceRow, column, sourceParent).data(filterRole()).toString();
    return expression.match(text).hasMatch();
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
    const auto* pins = qobject_cast<const PinModel*>(sourceModel());
    return pins ? pins->heldText(sourceIndex.row(), static_cast<PinModel::Column>(sourceIndex.column())) : nullptr;
}
