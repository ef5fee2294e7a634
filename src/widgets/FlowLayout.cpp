// SPDX-License-Identifier: MIT
#include "FlowLayout.h"

#include <QFontMetrics>
#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace {

constexpr int readableLetters = 24; ///< of text that wraps, in a line

/// Pixels below which the item goes to the next line.
int wantedWidth(QLayoutItem* item)
{
    if (!item->hasHeightForWidth() || !item->widget())
        return std::max(item->sizeHint().width(), item->minimumSize().width());
    const QWidget* text = item->widget();
    return std::max(text->minimumWidth(), text->fontMetrics().averageCharWidth() * readableLetters);
}

int heightOf(QLayoutItem* item, int width)
{
    return item->hasHeightForWidth() ? item->heightForWidth(width) : item->sizeHint().height();
}

bool canGrow(const QLayoutItem* item)
{
    return item->hasHeightForWidth() || item->expandingDirections().testFlag(Qt::Horizontal);
}

} // namespace

FlowLayout::FlowLayout(QWidget* parent)
    : QLayout(parent)
{
    if (!parent)
        setContentsMargins({});
}

FlowLayout::~FlowLayout()
{
    while (!items.isEmpty()) // a layout that is deleted takes itself out of the one around it
        delete items.takeLast();
}

void FlowLayout::addWidgets(const QList<QWidget*>& widgets)
{
    for (QWidget* widget : widgets)
        addWidget(widget);
}

void FlowLayout::addLayout(QLayout* layout)
{
    addChildLayout(layout);
    addItem(layout);
}

void FlowLayout::addStretch()
{
    addItem(new QSpacerItem(0, 0, QSizePolicy::Expanding));
}

void FlowLayout::addItem(QLayoutItem* item)
{
    items.append(item);
    invalidate();
}

QLayoutItem* FlowLayout::takeAt(int index)
{
    return index >= 0 && index < items.size() ? items.takeAt(index) : nullptr;
}

/// All in one line.
QSize FlowLayout::sizeHint() const
{
    QSize size(-spacing(), 0);
    for (const Place& place : shownItems())
        size = {size.width() + spacing() + place.width, std::max(size.height(), place.item->sizeHint().height())};
    return size.expandedTo({0, 0}).grownBy(contentsMargins());
}

/// Each in a line of its own; how many lines that makes is for heightForWidth to say.
QSize FlowLayout::minimumSize() const
{
    QSize size(0, 0);
    for (const QLayoutItem* item : items)
        size = size.expandedTo(item->minimumSize());
    return size.grownBy(contentsMargins());
}

void FlowLayout::setGeometry(const QRect& area)
{
    QLayout::setGeometry(area);
    placeItems(area, true);
}

/// The height that the lines take.
int FlowLayout::placeItems(const QRect& area, bool forGood) const
{
    const QRect inner = area.marginsRemoved(contentsMargins());
    const bool rightToLeft = parentWidget() && parentWidget()->layoutDirection() == Qt::RightToLeft;
    int top = inner.top();
    for (QList<Place> rest = shownItems(); !rest.isEmpty();) {
        const QList<Place> line = takeLine(rest, inner.width());
        int height = 0;
        for (const Place& place : line)
            height = std::max(height, heightOf(place.item, place.width));
        int left = inner.left();
        for (const Place& place : line) {
            const QRect rect(left, top, place.width, height);
            if (forGood)
                place.item->setGeometry(
                    QStyle::visualRect(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight, inner, rect));
            left += place.width + spacing();
        }
        top += rest.isEmpty() ? height : height + spacing();
    }
    return top - area.top() + contentsMargins().bottom();
}

/// With the widths that they want.
QList<FlowLayout::Place> FlowLayout::shownItems() const
{
    QList<Place> shown;
    shown.reserve(items.size());
    for (QLayoutItem* item : items) {
        if (!item->isEmpty() || item->spacerItem())
            shown.append({.item = item, .width = wantedWidth(item)});
    }
    return shown;
}

/// The first of `rest` that go into `room` pixels, at least one, with the widths that they get.
QList<FlowLayout::Place> FlowLayout::takeLine(QList<Place>& rest, int room) const
{
    QList<Place> line;
    int free = room + spacing();
    while (!rest.isEmpty() && (line.isEmpty() || rest.constFirst().width + spacing() <= free)) {
        free -= rest.constFirst().width + spacing();
        line.append(rest.takeFirst());
    }
    if (free < 0)
        line.first().width = room;
    auto growing
        = static_cast<int>(std::ranges::count_if(line, [](const Place& place) { return canGrow(place.item); }));
    for (Place& place : line) {
        if (free <= 0 || growing < 1 || !canGrow(place.item))
            continue;
        const int share = free / growing--;
        place.width += share;
        free -= share;
    }
    return line;
}
