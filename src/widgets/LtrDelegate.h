// SPDX-License-Identifier: MIT
#pragma once

#include <QStyledItemDelegate>

class QAbstractItemView;

/// Shows CIDs, addresses and paths from left to right in every language: where lines run from right to left, a path
/// would have its first slash at its end.
class LtrDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

/// Of all columns of `view`.
void showLeftToRight(QAbstractItemView* view);
