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
