// SPDX-License-Identifier: MIT
#include "PlainText.h"

#include <QLabel>
#include <QStringList>
#include <QTextDocument>

#include <algorithm>

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
    const auto breaksLine = [](QChar c) {
        return c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
    };
    std::ranges::replace_if(line, breaksLine, u' ');
    return line;
}

QString paragraphForLabel(const QString& text)
{
    constexpr qsizetype longestWord = 80;
    constexpr qsizetype kept = (longestWord - 1) / 2;
    QStringList words = lineForLabel(text).split(u' ');
    for (QString& word : words) {
        if (word.size() > longestWord)
            word = word.first(kept) + u'…' + word.last(kept);
    }
    return words.join(u' ');
}
