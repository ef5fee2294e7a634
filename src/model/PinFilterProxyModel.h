// SPDX-License-Identifier: MIT
#pragma once

#include <QSortFilterProxyModel>

/// Narrows the pin table by pin type and search text. Sorts by the shown values in stock order, save that an unknown
/// number of refs comes after the known ones.
class PinFilterProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    enum SearchMode { SearchByCid = 0, SearchByName = 1 };
    Q_ENUM(SearchMode)

    explicit PinFilterProxyModel(QObject* parent = nullptr);

    /// Only "recursive+direct" hides rows (those of type "indirect"); other filters are answered by the node itself.
    void setTypeFilter(const QString& type);
    /// Which column the filter expression is matched with.
    void setSearchMode(SearchMode mode);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    /// Stock order, without two QVariants per comparison: a sort of a long list takes millions.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    const QString* heldText(const QModelIndex& sourceIndex) const;

    QString typeFilter;
    SearchMode searchMode = SearchByCid;
};
