// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>

class QWidget;

/// `window` moved, and made smaller where it has to be, so that it lies inside `available`. An invalid area changes
/// nothing.
QRect placedInside(const QRect& window, const QRect& available);

/// Brings a window with its frame inside the available area of its screen. One that is maximised or covers the screen
/// stays as it is. For restored geometry: the screen that it was saved on may be gone or smaller.
void keepOnScreen(QWidget* window);
