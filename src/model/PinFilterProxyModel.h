// SPDX-License-Identifier: MIT
#pragma once

#include <QSortFilterProxyModel>

#include <vector>

class PinModel;
class QTimer;
struct PinEntry;

/// Narrows the pin table by pin type and search text. Sorts by the shown values in stock order, save that an unknown
/// number of refs comes after the known ones.
///
/// It keeps the rows and their order itself, since the stock proxy takes a second for half a million of them, and has
/// setters of its own for the search. A change of the filter that takes many rows away or brings them is a reset; rows
/// of a long list that a late fact moves follow within 50 ms.
class PinFilterProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    enum SearchMode { SearchByCid = 0, SearchByName = 1 };
    Q_ENUM(SearchMode)

    explicit PinFilterProxyModel(QObject* parent = nullptr);

    /// `model` is a PinModel: its rows change by resets and late facts alone.
    void setSourceModel(QAbstractItemModel* model) override;

    /// Only "recursive+direct" hides rows (those of type "indirect"); other filters are answered by the node itself.
    void setTypeFilter(const QString& type);
    /// Which column is searched.
    void setSearchMode(SearchMode mode);
    /// What the column has to hold; anything if it is empty.
    void setFilterFixedString(const QString& text);
    void setFilterCaseSensitivity(Qt::CaseSensitivity sensitivity);

    /// Null if `row` is out of range; valid until the content changes.
    const PinEntry* pinAt(int row) const;

    QModelIndex mapToSource(const QModelIndex& proxyIndex) const override;
    QModelIndex mapFromSource(const QModelIndex& sourceIndex) const override;
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    using QObject::parent;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    /// Stock order, without two QVariants per comparison.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    // These would change rows of the stock proxy's, which has none.
    using QSortFilterProxyModel::invalidate;
    using QSortFilterProxyModel::setFilterRegularExpression;
    using QSortFilterProxyModel::setFilterWildcard;

    using Rows = std::vector<int>;

    /// What a row has to match, ready for use.
    struct Filter
    {
        bool hidesIndirect = false;
        SearchMode searchMode = SearchByCid;
        QString text {};
        Qt::CaseSensitivity sensitivity = Qt::CaseSensitive;
        bool isNarrowerThan(const Filter& other) const;
        friend bool operator==(const Filter&, const Filter&) = default;
    };

    bool accepts(const PinEntry& pin) const;
    const QString& searchedText(const PinEntry& pin) const;
    void onSourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles);
    void placeChangedRows();
    void changeFilter(Filter changed);
    Rows acceptedRows() const;
    void showRows(Rows all, const Rows& going);
    void takeRows(Rows rows);
    void noteProxyRows();
    void orderRows(Rows& rows) const;
    void orderByRefs(Rows& rows) const;
    void orderBySize(Rows& rows) const;
    void merge(const Rows& placed);
    bool comesBefore(int sourceRow, int other) const;
    const QString* heldText(const QModelIndex& sourceIndex) const;
    template <typename Change> void changeLayout(Change change);

    const PinModel* pins = nullptr;
    Filter filter;
    int shownColumn = -1; ///< that rows are sorted by; -1 for the order of the source
    Qt::SortOrder shownOrder = Qt::AscendingOrder;
    Rows sourceRows;  ///< by row of this model
    Rows proxyRows;   ///< by row of the source; -1 where it is hidden
    Rows changedRows; ///< of the source, that may have to move
    QTimer* placeTimer;
};
