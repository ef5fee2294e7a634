// SPDX-License-Identifier: MIT
#include "FileNames.h"

#include "ByteText.h"

#include <QStringList>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t firstPrintable = 32;
constexpr QStringView reservedCharacters = u"/\\*:?\"<>|";
constexpr qint64 firstUnit = 1024; // bytes; fewer are shown as a bare number

constexpr std::array devices {"CON"_L1, "PRN"_L1, "AUX"_L1, "NUL"_L1};
constexpr std::array numberedDevices {"COM"_L1, "LPT"_L1};
constexpr QStringView deviceNumbers = u"123456789¹²³";

struct Signature
{
    QByteArrayView prefix;
    QByteArrayView form; ///< what follows a container's name and length
    QLatin1StringView suffix;
};

constexpr qsizetype formStart = 8;

constexpr std::array signatures {Signature {"\x89PNG\r\n\x1a\n", {}, ".png"_L1},
                                 Signature {"\xff\xd8\xff", {}, ".jpg"_L1},
                                 Signature {"GIF87a", {}, ".gif"_L1},
                                 Signature {"GIF89a", {}, ".gif"_L1},
                                 Signature {"RIFF", "WEBP", ".webp"_L1},
                                 Signature {"%PDF-", {}, ".pdf"_L1}};

QString fallbackName()
{
    return u"file"_s;
}

bool isForbidden(QChar c)
{
    return c.unicode() < firstPrintable || reservedCharacters.contains(c);
}

bool isTrailing(QChar c)
{
    return c == u'.' || c.isSpace();
}

QString cleanPart(const QString& part)
{
    return part == ".."_L1 ? u"_"_s : sanitizeFileName(part);
}

} // namespace

QString sanitizeFileName(const QString& name)
{
    QString clean = name.trimmed();
    if (clean.isEmpty())
        return fallbackName();
    std::ranges::replace_if(clean, isForbidden, u'_');
    const auto last = std::find_if_not(clean.crbegin(), clean.crend(), isTrailing);
    clean.truncate(std::distance(last, clean.crend()));
#ifdef Q_OS_WIN
    if (isDeviceName(clean))
        clean.prepend(u'_'); // it would be written to the device instead of the folder
#endif
    return clean.isEmpty() ? fallbackName() : clean;
}

QString sanitizeRelativePath(const QString& path)
{
    QStringList parts = path.split(u'/', Qt::SkipEmptyParts);
    parts.removeAll(u"."_s);
    std::ranges::transform(parts, parts.begin(), cleanPart);
    return parts.isEmpty() ? fallbackName() : parts.join(u'/');
}

bool isDeviceName(const QString& name)
{
    const QString base = name.section(u'.', 0, 0).trimmed().toUpper();
    if (std::ranges::find(devices, base) != devices.end())
        return true;
    return base.size() == 4 && deviceNumbers.contains(base.back())
        && std::ranges::find(numberedDevices, base.first(3)) != numberedDevices.end();
}

QString formatFileSize(qint64 bytes)
{
    return bytes < firstUnit ? QString::number(bytes) : byteText(bytes);
}

QString suffixOf(const QByteArray& data)
{
    const auto* const row = std::ranges::find_if(signatures, [&data](const Signature& s) {
        return data.startsWith(s.prefix) && data.mid(formStart, s.form.size()) == s.form;
    });
    return row == signatures.end() ? QString() : QString(row->suffix);
}
