// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QAbstractItemView;

/// The texts of the cells that are selected in `view`, from the top: tabs between columns, line feeds between rows.
/// Hidden rows and columns are left out. A text of several lines is quoted, unless it is the only one.
QString selectedCells(const QAbstractItemView& view);

/// Lets the copy shortcut and a menu entry "Copy" put the selected cells on the clipboard. A QTableView or QTreeView;
/// left to itself it copies its current cell alone.
void copyCellsOnRequest(QAbstractItemView* view);
