// SPDX-License-Identifier: MIT
#include "NdJson.h"

#include <QJsonDocument>

#include <algorithm>

std::optional<QJsonObject> parseJsonLine(QByteArrayView line)
{
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromRawData(line.data(), line.size()));
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

bool NdJson::take(QByteArrayView& line, QByteArrayView word)
{
    if (!line.startsWith(word))
        return false;
    line = line.sliced(word.size());
    return true;
}

std::optional<QLatin1StringView> NdJson::takePlainString(QByteArrayView& line)
{
    if (!take(line, "\""))
        return std::nullopt;
    const qsizetype end = line.indexOf('"');
    if (end < 0)
        return std::nullopt;
    const QByteArrayView text = line.first(end);
    const auto isPlain = [](char c) {
        const auto byte = static_cast<uchar>(c); // whether char has a sign is the platform's affair
        return byte >= 0x20 && byte < 0x80 && byte != '\\';
    };
    if (!std::ranges::all_of(text, isPlain))
        return std::nullopt;
    line = line.sliced(end + 1);
    return QLatin1StringView(text.data(), text.size());
}
