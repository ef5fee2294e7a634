// SPDX-License-Identifier: MIT
#include "ConnectionStatusDot.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

constexpr int diameter = 12;

QColor colorOf(ConnectionStatusDot::State state)
{
    switch (state) {
    case ConnectionStatusDot::Checking:
        return QColor(u"#f1c40f"_s);
    case ConnectionStatusDot::Connected:
        return QColor(u"#27ae60"_s);
    case ConnectionStatusDot::Disconnected:
        return QColor(u"#e74c3c"_s);
    default:
        return QColor(u"#95a5a6"_s);
    }
}

} // namespace

ConnectionStatusDot::ConnectionStatusDot(QWidget* parent)
    : QWidget(parent)
{
    setFixedSize(diameter, diameter);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ConnectionStatusDot::setState(ConnectionStatusDot::State newState)
{
    if (state == newState)
        return;
    state = newState;
    update();
}

void ConnectionStatusDot::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colorOf(state));
    painter.drawEllipse(rect().adjusted(1, 1, -1, -1));
}
