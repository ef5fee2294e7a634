// SPDX-License-Identifier: MIT
#include "PlainText.h"

#include <QLabel>
#include <QTextDocument>

using namespace Qt::StringLiterals;

QLabel* newPlainLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    return label;
}

void setPlainToolTip(QWidget* widget, const QString& text)
{
    widget->setToolTip(
        Qt::mightBeRichText(text) ? u"<p style=\"white-space: pre-wrap\">%1</p>"_s.arg(text.toHtmlEscaped()) : text);
}

QString messageForLabel(const QString& text)
{
    constexpr qsizetype head = 400;
    constexpr qsizetype tail = 200;
    QString line = text;
    line.replace(u'\n', u' ');
    return line.size() <= head + tail ? line : line.first(head) + u" … "_s + line.last(tail);
}
