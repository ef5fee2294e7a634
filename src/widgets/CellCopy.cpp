// SPDX-License-Identifier: MIT
#include "CellCopy.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCoreApplication>
#include <QItemSelectionModel>
#include <QTableView>
#include <QTreeView>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Where a cell is seen: its height in the view, and its column as it was moved to.
struct SeenCell
{
    int top = 0;
    int column = 0;
    QString text {};
};

SeenCell seenCell(const QAbstractItemView& view, const QModelIndex& cell)
{
    const QRect place = view.visualRect(cell);
    return {.top = place.top(), .column = place.left(), .text = cell.data().toString()};
}

bool isHidden(const QAbstractItemView& view, const QModelIndex& cell)
{
    if (const auto* table = qobject_cast<const QTableView*>(&view))
        return table->isRowHidden(cell.row()) || table->isColumnHidden(cell.column());
    const auto* tree = qobject_cast<const QTreeView*>(&view);
    return tree && (tree->isRowHidden(cell.row(), cell.parent()) || tree->isColumnHidden(cell.column()));
}

/// Quoted where a line feed or a tab in it would begin another cell.
QString amongOthers(const QString& text)
{
    if (!text.contains(u'\n') && !text.contains(u'\t'))
        return text;
    return u'"' + QString(text).replace(u'"', "\"\""_L1) + u'"';
}

} // namespace

QString selectedCells(const QAbstractItemView& view)
{
    if (!view.selectionModel())
        return {};
    QList<SeenCell> cells;
    const QModelIndexList selected = view.selectionModel()->selectedIndexes();
    cells.reserve(selected.size());
    for (const QModelIndex& cell : selected) {
        if (!isHidden(view, cell))
            cells.append(seenCell(view, cell));
    }
    const bool rightToLeft = view.layoutDirection() == Qt::RightToLeft;
    std::ranges::sort(cells, [rightToLeft](const SeenCell& a, const SeenCell& b) {
        const bool before = rightToLeft ? a.column > b.column : a.column < b.column;
        return a.top != b.top ? a.top < b.top : before;
    });
    if (cells.size() == 1)
        return cells.constFirst().text; // as it is, for a field or a command line
    QString text;
    for (qsizetype i = 0; i < cells.size(); ++i) {
        if (i > 0)
            text += cells.at(i).top == cells.at(i - 1).top ? QLatin1Char('\t') : QLatin1Char('\n');
        text += amongOthers(cells.at(i).text);
    }
    return text;
}

void copyCellsOnRequest(QAbstractItemView* view)
{
    auto* copy = new QAction(QCoreApplication::translate("CellCopy", "Copy"), view);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    QObject::connect(copy, &QAction::triggered, view, [view] {
        if (const QString text = selectedCells(*view); !text.isEmpty())
            QApplication::clipboard()->setText(text);
    });
    view->addAction(copy);
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
}
