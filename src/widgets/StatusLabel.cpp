// SPDX-License-Identifier: MIT
#include "StatusLabel.h"

#include "PlainText.h"

using namespace Qt::StringLiterals;

namespace {

const QColor failureGround(255, 214, 214);

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
    show(text, u"color: gray;"_s, false);
}

void StatusLabel::showProgress(const QString& text)
{
    show(text, {}, false);
}

void StatusLabel::showFailure(const QString& text)
{
    show(text, u"color: darkred;"_s, true);
}

void StatusLabel::show(const QString& text, const QString& style, bool onLightGround)
{
    if (styleSheet() != style)
        setStyleSheet(style);
    QPalette ground = palette();
    ground.setColor(QPalette::Window, failureGround); // dark red can't be read on the dark window
    setPalette(onLightGround ? ground : QPalette());
    setAutoFillBackground(onLightGround);
    setText(messageForLabel(text));
}
