// SPDX-License-Identifier: MIT
#include "StatusLabel.h"

#include "PlainText.h"

using namespace Qt::StringLiterals;

namespace {

// The inks are darker than the window's own, and can't be read on it.
const QColor failureGround(255, 214, 214);
const QColor hintGround(20, 20, 20);

} // namespace

StatusLabel::StatusLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setMinimumWidth(1); // a long address in a message is not to widen the dialog
    setTextInteractionFlags(Qt::TextSelectableByMouse);
}

void StatusLabel::showHint(const QString& text)
{
    show(text, u"color: gray;"_s, hintGround);
}

void StatusLabel::showProgress(const QString& text)
{
    show(text, {}, {});
}

void StatusLabel::showFailure(const QString& text)
{
    show(text, u"color: darkred;"_s, failureGround);
}

void StatusLabel::show(const QString& text, const QString& style, const QColor& ground)
{
    if (styleSheet() != style)
        setStyleSheet(style);
    QPalette colors = palette();
    colors.setColor(QPalette::Window, ground);
    setPalette(ground.isValid() ? colors : QPalette());
    setAutoFillBackground(ground.isValid());
    setText(messageForLabel(text));
}
