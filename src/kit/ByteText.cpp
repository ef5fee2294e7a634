// SPDX-License-Identifier: MIT
#include "ByteText.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace {

constexpr long long kibi = 1024;
constexpr long long mebi = kibi * 1024;
constexpr long long gibi = mebi * 1024;

QString inUnit(long long bytes, long long unit, QLatin1StringView prefix, ByteUnits units)
{
    static const QLocale locale = QLocale::c();
    return locale.toString(static_cast<double>(bytes) / static_cast<double>(unit), 'f', 1) + prefix
        + (units == ByteUnits::Binary ? "iB"_L1 : "B"_L1);
}

} // namespace

QString byteText(long long bytes, ByteUnits units)
{
    if (bytes < 0)
        return {};
    if (bytes < kibi)
        return QString::number(bytes) + " B"_L1;
    if (bytes < mebi)
        return inUnit(bytes, kibi, " K"_L1, units);
    if (bytes < gibi)
        return inUnit(bytes, mebi, " M"_L1, units);
    return inUnit(bytes, gibi, " G"_L1, units);
}
