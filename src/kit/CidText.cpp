// SPDX-License-Identifier: MIT
#include "CidText.h"

#include <QCryptographicHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView base32Digits {"abcdefghijklmnopqrstuvwxyz234567"};
constexpr QByteArrayView base58Digits {"123456789ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz"};
constexpr char sha256Code = 0x12;
constexpr char sha256Length = 0x20;
/// Decoding base58 is quadratic, and no CID in use comes near this.
constexpr qsizetype longestCidText = 512;

void appendVarint(QByteArray& bytes, quint64 value)
{
    for (; value >= 0x80; value >>= 7)
        bytes.append(static_cast<char>((value & 0x7f) | 0x80));
    bytes.append(static_cast<char>(value));
}

std::optional<quint64> takeVarint(QByteArrayView& bytes)
{
    quint64 value = 0;
    for (int shift = 0; shift < 63 && !bytes.isEmpty(); shift += 7) {
        const auto byte = static_cast<uchar>(bytes.front());
        bytes = bytes.sliced(1);
        value |= quint64 {byte & 0x7fU} << shift;
        if ((byte & 0x80) == 0)
            return value;
    }
    return std::nullopt;
}

QString toBase32(const QByteArray& bytes)
{
    QString text;
    text.reserve((bytes.size() * 8 + 4) / 5);
    quint32 bits = 0;
    int count = 0;
    for (const char byte : bytes) {
        bits = (bits << 8) | static_cast<uchar>(byte);
        for (count += 8; count >= 5; count -= 5)
            text.append(QLatin1Char(base32Digits[(bits >> (count - 5)) & 31]));
    }
    if (count > 0)
        text.append(QLatin1Char(base32Digits[(bits << (5 - count)) & 31]));
    return text;
}

std::optional<QByteArray> fromBase32(QStringView text)
{
    QByteArray bytes;
    quint32 bits = 0;
    int count = 0;
    for (const QChar c : text) {
        const qsizetype digit = base32Digits.indexOf(c.toLatin1());
        if (c.unicode() > 0x7f || digit < 0)
            return std::nullopt;
        bits = (bits << 5) | static_cast<quint32>(digit);
        count += 5;
        if (count >= 8) {
            count -= 8;
            bytes.append(static_cast<char>(bits >> count));
        }
    }
    const bool paddingIsZero = (bits & ((1U << count) - 1U)) == 0;
    return count < 5 && paddingIsZero ? std::optional(bytes) : std::nullopt;
}

/// Writes the number that `digits` holds (big-endian, base `from`) in base `to`.
QByteArray rebased(QByteArrayView digits, int from, int to)
{
    QByteArray result; // little-endian while it grows
    for (const char digit : digits) {
        int carry = static_cast<uchar>(digit);
        for (char& place : result) {
            carry += static_cast<uchar>(place) * from;
            place = static_cast<char>(carry % to);
            carry /= to;
        }
        for (; carry > 0; carry /= to)
            result.append(static_cast<char>(carry % to));
    }
    const qsizetype leadingZeros = std::ranges::find_if(digits, [](char d) { return d != 0; }) - digits.begin();
    result.append(leadingZeros, '\0');
    std::ranges::reverse(result);
    return result;
}

QString toBase58(const QByteArray& bytes)
{
    QString text;
    for (const char digit : rebased(bytes, 256, 58))
        text.append(QLatin1Char(base58Digits[digit]));
    return text;
}

std::optional<QByteArray> fromBase58(QStringView text)
{
    QByteArray digits;
    for (const QChar c : text) {
        const qsizetype digit = base58Digits.indexOf(c.toLatin1());
        if (c.unicode() > 0x7f || digit < 0)
            return std::nullopt;
        digits.append(static_cast<char>(digit));
    }
    return rebased(digits, 58, 256);
}

bool isMultihash(QByteArrayView bytes)
{
    const auto code = takeVarint(bytes);
    const auto length = takeVarint(bytes);
    return code && length && std::cmp_equal(bytes.size(), *length);
}

std::optional<Cid> decodeVersion0(QStringView text)
{
    const auto bytes = fromBase58(text);
    if (!bytes || bytes->size() != 34 || bytes->at(0) != sha256Code || bytes->at(1) != sha256Length)
        return std::nullopt;
    return Cid {.version = 0, .codec = Cid::dagPbCodec, .multihash = *bytes};
}

} // namespace

std::optional<Cid> decodeCid(QStringView text)
{
    if (text.size() < 2 || text.size() > longestCidText)
        return std::nullopt;
    if (text.size() == 46 && text.startsWith("Qm"_L1))
        return decodeVersion0(text);
    std::optional<QByteArray> bytes;
    if (text.front() == u'b')
        bytes = fromBase32(text.sliced(1));
    else if (text.front() == u'z')
        bytes = fromBase58(text.sliced(1));
    if (!bytes)
        return std::nullopt;
    QByteArrayView rest = *bytes;
    const auto version = takeVarint(rest);
    const auto codec = takeVarint(rest);
    if (version != 1U || !codec || !isMultihash(rest))
        return std::nullopt;
    return Cid {.version = 1, .codec = *codec, .multihash = rest.toByteArray()};
}

QByteArray cidBytes(const Cid& cid)
{
    if (cid.version == 0)
        return cid.multihash;
    QByteArray bytes;
    appendVarint(bytes, 1);
    appendVarint(bytes, cid.codec);
    return bytes + cid.multihash;
}

QString encodeCid(const Cid& cid)
{
    return cid.version == 0 ? toBase58(cid.multihash) : u'b' + toBase32(cidBytes(cid));
}

Cid cidOfBlock(const QByteArray& block, quint64 codec)
{
    const char prefix[] {sha256Code, sha256Length};
    return {.version = 1,
            .codec = codec,
            .multihash = QByteArray(prefix, 2) + QCryptographicHash::hash(block, QCryptographicHash::Sha256)};
}

QString titleCid(const QString& cid)
{
    constexpr qsizetype longest = 50;
    constexpr qsizetype kept = 47;
    return cid.size() <= longest ? cid : cid.first(kept) + u'…';
}
