// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <optional>

/// One line as a JSON object; nothing if it is anything else.
std::optional<QJsonObject> parseJsonLine(QByteArrayView line);

/// Calls `visit` with each line of `body`: split at line feeds, trimmed, empty lines left out. Nothing is copied, so a
/// view lives as long as `body`.
template <typename Visit> void forEachLine(QByteArrayView body, Visit visit)
{
    while (!body.isEmpty()) {
        const qsizetype feed = body.indexOf('\n');
        const QByteArrayView line = (feed < 0 ? body : body.first(feed)).trimmed();
        body = feed < 0 ? QByteArrayView() : body.sliced(feed + 1);
        if (!line.isEmpty())
            visit(line);
    }
}

namespace NdJson {

/// Takes `word` off the front of `line`, if it begins so.
bool take(QByteArrayView& line, QByteArrayView word);
/// Takes a JSON string of printable ASCII without escapes off the front of `line`.
std::optional<QLatin1StringView> takePlainString(QByteArrayView& line);

} // namespace NdJson

/// Reads a line as a node writes it, `{"key":"text",…}` with no blanks, many times as fast as by way of a JSON
/// document: calls `member(key, value)` for each member, which answers whether to go on. False if the line is anything
/// but plain ASCII texts without escapes, or `member` stopped it; what it was given then means nothing, and the line is
/// the JSON parser's to judge.
template <typename Member> bool readPlainLine(QByteArrayView line, Member member)
{
    if (!NdJson::take(line, "{"))
        return false;
    do {
        const auto key = NdJson::takePlainString(line);
        if (!key || !NdJson::take(line, ":"))
            return false;
        const auto value = NdJson::takePlainString(line);
        if (!value || !member(*key, *value))
            return false;
    } while (NdJson::take(line, ","));
    return line == "}";
}
