// SPDX-License-Identifier: MIT
#include "PicturePalette.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <utility>

namespace {

constexpr qsizetype paletteSize = 256;

/// Colours with the same one can hardly be distinguished.
QRgb roughColor(QRgb color)
{
    return color & 0xe0e0e0;
}

/// The picture's most frequent colours; before all others the most frequent one of each rough colour, since the
/// connection's dot may be small but is to stay green.
QList<QRgb> paletteOf(const QImage& picture)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    QList<QRgb> colors = counts.keys();
    std::ranges::sort(colors, {}, [&counts](QRgb color) { return std::pair(-counts.value(color), color); });
    QList<QRgb> first;
    QList<QRgb> others;
    QSet<QRgb> seen;
    for (const QRgb color : std::as_const(colors)) {
        const bool isNew = !seen.contains(roughColor(color));
        (isNew ? first : others).append(color);
        seen.insert(roughColor(color));
    }
    return (first + others).first(std::min(colors.size(), paletteSize));
}

} // namespace

QImage withPalette(const QImage& picture)
{
    return picture.convertToFormat(QImage::Format_Indexed8, paletteOf(picture), Qt::ThresholdDither | Qt::AvoidDither);
}
