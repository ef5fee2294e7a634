// SPDX-License-Identifier: MIT
#include "ByteText.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace {

constexpr long long kibi = 1024;
constexpr long long mebi = kibi * 1024;
constexpr long long gibi = mebi * 1024;

QString inUnit(long long bytes, long long unit, QLatin1StringView suffix)
{
    static const QLocale locale = QLocale::c();
    return locale.toString(static_cast<double>(bytes) / static_cast<double>(unit), 'f', 1) + suffix;
}

} // namespace

QString byteText(long long bytes)
{
    if (bytes < 0)
        return {};
    if (bytes < kibi)
        return QString::number(bytes) + " B"_L1;
    if (bytes < mebi)
        return inUnit(bytes, kibi, " KB"_L1);
    if (bytes < gibi)
        return inUnit(bytes, mebi, " MB"_L1);
    return inUnit(bytes, gibi, " GB"_L1);
}
