#pragma once

#include <QString>

class QLabel;
class QTableView;
class QWidget;

/// A table of whole rows: extended selection, alternating colours, no grid, no row numbers, the last column stretched,
/// and a context menu of its owner's.
void makeRowTable(QTableView* table);

/// A word-wrapped line that names what a dialog is about. `markup` is the program's own text with %1 for `cid`, which
/// is shown as it stands.
QLabel* newCidHeading(const QString& markup, const QString& cid, QWidget* parent);
