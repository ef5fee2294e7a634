// SPDX-License-Identifier: MIT
#include "LtrDelegate.h"

#include <QAbstractItemView>

/// The text stays at the side where the view has it.
void LtrDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->displayAlignment = QStyle::visualAlignment(option->direction, option->displayAlignment);
    option->direction = Qt::LeftToRight;
}

void showLeftToRight(QAbstractItemView* view)
{
    view->setItemDelegate(new LtrDelegate(view));
}
