#pragma once

#include <QString>

class QLabel;
class QWidget;

/// Texts from a node, a file or a person are never markup. These show a text as it stands where Qt would guess.
QLabel* newPlainLabel(const QString& text, QWidget* parent);
void setPlainToolTip(QWidget* widget, const QString& text);
