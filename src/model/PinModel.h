// SPDX-License-Identifier: MIT
#pragma once

#include "PinEntry.h"
#include "PinIndex.h"

#include <QAbstractTableModel>
#include <QFont>
#include <QList>

#include <functional>
#include <optional>

/// The pins of one listing as a read-only table of six columns. Late facts about a CID reach their cells in constant
/// time, however long the list is.
class PinModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { CidColumn, RefsColumn, TypeColumn, KindColumn, SizeColumn, NameColumn, ColumnCount };

    struct TypeCounts
    {
        int recursive = 0;
        int direct = 0;
        int indirect = 0;
    };

    explicit PinModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// Replaces the whole content in one model reset; selection and scroll position of views are lost.
    void setPins(const QList<PinEntry>& newPins);
    void clear();

    /// Late facts. A CID that no row holds is ignored; one that several rows hold is updated in each. For the first
    /// moments of a long list they wait.
    void setRefsCount(const QString& cid, int count);
    void setDagSize(const QString& cid, long long size);
    void setKind(const QString& cid, const QString& kind);

    /// Null if `row` is out of range; valid until the content changes.
    const PinEntry* pinAt(int row) const;
    /// The text that a cell shows, without a copy; null where the cell shows a number or a formatted text.
    const QString* heldText(int row, Column column) const;
    /// Rows of other types count in none of the three.
    TypeCounts countsByType() const;
    /// All non-empty CIDs in row order, duplicates included.
    QStringList allCids() const;

    /// Bytes for people, as the size column shows them; empty for a negative number.
    static QString formatSize(long long bytes);

private:
    template <typename Field>
    void setFact(const QString& cid, Field PinEntry::*field, const Field& value, Column column,
                 const QList<int>& roles);
    QVariant displayData(const PinEntry& pin, int column) const;
    QVariant foregroundData(const PinEntry& pin, int column) const;
    const QFont& fontOfCids() const;
    const QFont& fontOfHeaders() const;

    void startIndex();
    void useIndex(PinIndex newIndex);

    QList<PinEntry> pins;
    quint64 resets = 0; ///< how often the content was replaced
    PinIndex rowsByCid;
    bool indexReady = true;
    QList<std::function<void()>> factsInWaiting; ///< until the index is ready
    mutable std::optional<TypeCounts> typeCounts;
    mutable QFont cidFont;
    mutable QFont headerFont;
    mutable bool headerFontReady = false;
    mutable double cidFontDpi = -1.0;
};
