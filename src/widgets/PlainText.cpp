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
    widget->setToolTip(plainToolTip(text));
}

QString plainToolTip(const QString& text)
{
    return Qt::mightBeRichText(text) ? u"<p style=\"white-space: pre-wrap\">%1</p>"_s.arg(text.toHtmlEscaped()) : text;
}

QString messageForLabel(const QString& text)
{
    constexpr qsizetype head = 400;
    constexpr qsizetype tail = 200;
    return text.size() <= head + tail ? text : text.first(head) + u" … "_s + text.last(tail);
}

QString lineForLabel(const QString& text)
{
    QString line = messageForLabel(text);
    return line.replace(u'\n', u' ');
}
