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
    const auto textOf = [&](int column, int role) {
        return source->index(sourceRow, column, sourceParent).data(role).toString();
    };
    if (typeFilter == PinType::recursiveAndDirect
        && textOf(PinModel::TypeColumn, Qt::DisplayRole) == PinType::indirect) {
        return false;
    }
    const QRegularExpression expression = filterRegularExpression();
    if (expression.pattern().isEmpty())
        return true;
    const int column = searchMode == SearchByName ? PinModel::NameColumn : PinModel::CidColumn;
    return expression.match(textOf(column, filterRole())).hasMatch();
}
