// SPDX-License-Identifier: MIT
#include "SplitActionButton.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

constexpr int halvesGap = 2;
constexpr int minimumButtonHeight = 28;
constexpr int secondaryWidth = 28;

} // namespace

SplitActionButton::SplitActionButton(const QString& text, QWidget* parent)
    : QWidget(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(halvesGap);

    primaryButton = newButton(text, u"actionBtn"_s);
    primaryButton->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(primaryButton, &QPushButton::clicked, this, &SplitActionButton::primaryClicked);

    secondaryButton = newButton({}, u"actionBtnSecondary"_s);
    secondaryButton->setFixedWidth(secondaryWidth);
    secondaryButton->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(secondaryButton, &QPushButton::clicked, this, &SplitActionButton::secondaryClicked);
    if (const QIcon icon = QIcon::fromTheme(u"window-new"_s); icon.isNull())
        secondaryButton->setText(u"↗"_s);
    else
        secondaryButton->setIcon(icon);
    //: %1 is the caption of the button's first half
    secondaryButton->setAccessibleName(tr("%1 in a new window").arg(text));

    setStyleSheet(u"QPushButton#actionBtnSecondary {  padding-left: 5px;  padding-right: 5px;  font-weight: 600;}"_s);
}

QPushButton* SplitActionButton::newButton(const QString& text, const QString& name)
{
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setCursor(Qt::PointingHandCursor);
    button->setMinimumHeight(minimumButtonHeight);
    layout()->addWidget(button);
    return button;
}

void SplitActionButton::setPrimaryToolTip(const QString& text)
{
    if (primaryButton)
        primaryButton->setToolTip(text);
}

void SplitActionButton::setSecondaryToolTip(const QString& text)
{
    if (secondaryButton)
        secondaryButton->setToolTip(text);
}
