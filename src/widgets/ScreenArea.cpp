// SPDX-License-Identifier: MIT
#include "ScreenArea.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>

QRect placedInside(const QRect& window, const QRect& available)
{
    if (!available.isValid())
        return window;
    const QSize size = window.size().boundedTo(available.size());
    const int left = std::clamp(window.left(), available.left(), available.left() + available.width() - size.width());
    const int top = std::clamp(window.top(), available.top(), available.top() + available.height() - size.height());
    return {QPoint(left, top), size};
}

void keepOnScreen(QWidget* window)
{
    if (window->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen))
        return;
    const QScreen* under = QGuiApplication::screenAt(window->frameGeometry().center());
    const QScreen* screen = under ? under : window->screen();
    if (!screen)
        return;
    const QRect inner = window->geometry();
    const QRect outer = window->frameGeometry();
    const QMargins frame(inner.left() - outer.left(), inner.top() - outer.top(), outer.right() - inner.right(),
                         outer.bottom() - inner.bottom());
    const QRect placed = placedInside(outer, screen->availableGeometry()).marginsRemoved(frame);
    if (placed != inner)
        window->setGeometry(placed);
}
