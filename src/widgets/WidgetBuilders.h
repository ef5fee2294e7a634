// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QAbstractScrollArea;
class QLabel;
class QLineEdit;
class QTableView;
class QWidget;

/// A table of whole rows: extended selection, alternating colours, no grid, no row numbers, the last column stretched,
/// and a context menu that its owner provides.
void makeRowTable(QTableView* table);

/// Draws the view's frame in the highlight colour while it has the focus: Fusion shows that at cells only, and neither
/// an empty list nor a text that is read only has one.
void showFocusAtFrame(QAbstractScrollArea* view);

/// A caption; its mnemonic leads to `field`.
QLabel* newLabelFor(const QString& text, QWidget* field);
/// Makes the field at least as wide as the example that it shows while it is empty.
void makeRoomForPlaceholder(QLineEdit* field);
/// For the program's own texts, which may be markup.
QLabel* newWrappedLabel(const QString& text, QWidget* parent);

/// A word-wrapped line that names what a dialog is about. `markup` is the program's own text with %1 for `cid`, which
/// is shown as it is.
QLabel* newCidHeading(const QString& markup, const QString& cid, QWidget* parent);

/// Lets the user select the label's text, and copy all of it through a menu of the one entry `entry`.
void makeCopyable(QLabel* label, const QString& entry);
