// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QLabel;
class QWidget;

/// Texts from a node, a file or a person are never markup. These show a text as it is where Qt would guess.
QLabel* newPlainLabel(const QString& text, QWidget* parent);
void setPlainToolTip(QWidget* widget, const QString& text);
/// `text` as a tool tip has to be given to be shown as it is.
QString plainToolTip(const QString& text);

/// The middle of a very long message is left out: an error names the address it
/// came from, and an unpin of thousands has an address of hundreds of kilobytes.
QString messageForLabel(const QString& text);
/// As messageForLabel, in one line: a node's text may have hundreds.
QString lineForLabel(const QString& text);
/// As lineForLabel, for a label that wraps: no word is longer than a line.
QString paragraphForLabel(const QString& text);
