// SPDX-License-Identifier: MIT
#include "Appearance.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>
#include <QToolTip>

#include <memory>

#ifdef Q_OS_MACOS
#include <objc/message.h>
#include <objc/runtime.h>
#endif

using namespace Qt::StringLiterals;

void disableWindowTabbing()
{
#ifdef Q_OS_MACOS
    const auto window = reinterpret_cast<id>(objc_getClass("NSWindow"));
    if (!window)
        return;
    const SEL setter = sel_registerName("setAllowsAutomaticWindowTabbing:");
    const auto answers = reinterpret_cast<BOOL (*)(id, SEL, SEL)>(objc_msgSend);
    if (answers(window, sel_registerName("respondsToSelector:"), setter))
        reinterpret_cast<void (*)(id, SEL, BOOL)>(objc_msgSend)(window, setter, NO);
#endif
}

QPalette darkPalette()
{
    const QColor window(53, 53, 53);
    const QColor base(25, 25, 25);
    const QColor accent(42, 130, 218);
    const QColor faded(127, 127, 127);

    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, Qt::white);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, Qt::white);
    palette.setColor(QPalette::ToolTipText, Qt::white);
    palette.setColor(QPalette::Text, Qt::white);
    palette.setColor(QPalette::PlaceholderText, {150, 150, 150}); // Qt's own is black
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::BrightText, Qt::red);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faded);
    // Fusion etches disabled menu entries in this colour; white would make them look enabled.
    palette.setColor(QPalette::Disabled, QPalette::Light, window);
    return palette;
}

QPalette toolTipPalette()
{
    QPalette palette = darkPalette();
    palette.setColor(QPalette::ToolTipBase, palette.color(QPalette::Base));
    palette.setColor(QPalette::Window, palette.color(QPalette::Base)); // what some styles fill a tool tip with
    return palette;
}

void applyFusionLook()
{
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(u"Fusion"_s));
    if (!fusion)
        return;
    QApplication::setStyle(u"Fusion"_s);
    QApplication::setPalette(darkPalette());
    QToolTip::setPalette(toolTipPalette());
}

QIcon overflowIcon(const QPalette& palette)
{
    constexpr int side = 32;
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette.color(QPalette::ButtonText), 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const int left : {5, 16}) {
        const QPointF chevron[] {QPointF(left, 6), QPointF(left + 10, 16), QPointF(left, 26)};
        painter.drawPolyline(chevron, 3);
    }
    return pixmap;
}
