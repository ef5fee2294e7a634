// SPDX-License-Identifier: MIT
#include "RefsParser.h"

#include "NdJson.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto refKey = "Ref"_L1;

/// The CID under "Ref", else under "Cid", there as a text or as a link `{"/": "…"}`.
QString refOf(const QJsonObject& line)
{
    if (const QJsonValue ref = line[refKey]; !ref.isUndefined())
        return ref.toString();
    const QJsonValue cid = line["Cid"_L1];
    return cid.isObject() ? cid["/"_L1].toString() : cid.toString();
}

/// The text under "Ref" of a line as a node writes it; nothing means that the line is the JSON parser's to judge.
std::optional<QLatin1StringView> plainRef(QByteArrayView line)
{
    std::optional<QLatin1StringView> ref;
    const bool plain = readPlainLine(line, [&ref](QLatin1StringView key, QLatin1StringView value) {
        if (key != refKey)
            return key == "Err"_L1;
        return !std::exchange(ref, value).has_value();
    });
    return plain ? ref : std::nullopt;
}

} // namespace

QByteArray refFromLine(QByteArrayView line)
{
    const QByteArrayView trimmed = line.trimmed();
    if (trimmed.isEmpty())
        return {};
    if (const auto ref = plainRef(trimmed))
        return {ref->data(), ref->size()};
    const auto object = parseJsonLine(trimmed);
    if (object && object->contains(refKey))
        return object->value(refKey).toString().toUtf8();
    const QByteArray text = QString::fromUtf8(trimmed).trimmed().toUtf8();
    return text.startsWith("Qm") || text.startsWith("ba") ? text : QByteArray();
}

QStringList parseRefs(const QByteArray& body)
{
    QStringList cids;
    forEachLine(body, [&cids](QByteArrayView line) {
        const auto plain = plainRef(line);
        const QString cid = plain ? QString(*plain) : refOf(parseJsonLine(line).value_or(QJsonObject()));
        if (!cid.isEmpty())
            cids.append(cid);
    });
    return cids;
}
