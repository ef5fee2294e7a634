// SPDX-License-Identifier: MIT
#include "PinListParser.h"

#include "NdJson.h"

#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto cidKey = "Cid"_L1;
constexpr auto typeKey = "Type"_L1;
constexpr auto nameKey = "Name"_L1;
constexpr auto keysKey = "Keys"_L1;
constexpr auto wrappedLineKey = "PinLsObject"_L1;
constexpr auto wrappedListKey = "PinLsList"_L1;

/// Bytes; a node's lines are a little longer. A body of shorter ones, as of line feeds alone, gets no room in advance.
constexpr qsizetype usualLine = 64;

const std::array<QString, 3>& knownTypes()
{
    static const std::array types {QString(PinType::recursive), QString(PinType::direct), QString(PinType::indirect)};
    return types;
}

/// A list of hundreds of thousands says one of these in each entry: its storage is the program's, not the entry's.
template <typename Text> QString sharedType(const Text& type)
{
    const auto match = std::ranges::find_if(knownTypes(), [&type](const QString& word) { return word == type; });
    return match == knownTypes().end() ? QString(type) : *match;
}

PinEntry entryOf(const QString& cid, const QJsonObject& facts)
{
    return {.cid = cid, .type = sharedType(facts.value(typeKey).toString()), .name = facts.value(nameKey).toString()};
}

QJsonObject keysOf(const QJsonObject& document)
{
    const QJsonValue wrapped = document.value(wrappedListKey);
    return (wrapped.isObject() ? wrapped.toObject() : document).value(keysKey).toObject();
}

void readDocument(const QByteArray& body, PinList& list)
{
    const QJsonObject keys = keysOf(QJsonDocument::fromJson(body).object());
    list.keyCount = static_cast<int>(keys.size());
    list.entries.reserve(keys.size());
    for (auto key = keys.begin(); key != keys.end(); ++key)
        list.entries.append(entryOf(key.key(), key.value().toObject()));
}

void readLines(const QByteArray& body, PinList& list)
{
    list.entries.reserve(std::min(body.count('\n') + 1, body.size() / usualLine));
    forEachLine(body, [&list](QByteArrayView line) {
        if (auto entry = parsePinLine(line))
            list.entries.append(*std::move(entry));
    });
}

bool endsInOpenEntry(const QByteArray& body)
{
    const QByteArrayView tail = QByteArrayView(body).sliced(body.lastIndexOf('\n') + 1).trimmed();
    return !tail.isEmpty() && parsePinLine(tail).has_value();
}

/// The line as a node writes it, `{"Cid":"…","Name":"…","Type":"…"}`, each key once; nothing means that the line is the
/// JSON parser's to judge.
std::optional<PinEntry> parsePlainLine(QByteArrayView line)
{
    std::optional<QLatin1StringView> cid;
    std::optional<QLatin1StringView> type;
    std::optional<QLatin1StringView> name;
    const bool plain = readPlainLine(line, [&](QLatin1StringView key, QLatin1StringView value) {
        auto* field = key == cidKey ? &cid : key == typeKey ? &type : key == nameKey ? &name : nullptr;
        return field && !std::exchange(*field, value).has_value();
    });
    if (!plain || !cid || cid->isEmpty())
        return std::nullopt;
    return PinEntry {.cid = *cid, .type = sharedType(type.value_or(""_L1)), .name = name ? QString(*name) : QString()};
}

} // namespace

std::optional<PinEntry> parsePinLine(QByteArrayView line)
{
    if (auto entry = parsePlainLine(line))
        return entry;
    const auto object = parseJsonLine(line);
    if (!object)
        return std::nullopt;
    const auto wrapped = object->constFind(wrappedLineKey);
    const QJsonObject facts = wrapped == object->constEnd() ? *object : wrapped->toObject();
    const QString cid = facts.value(cidKey).toString();
    return cid.isEmpty() ? std::nullopt : std::optional(entryOf(cid, facts));
}

PinList parsePinList(const QByteArray& body)
{
    PinList list;
    readDocument(body, list);
    if (list.entries.isEmpty())
        readLines(body, list);
    list.hasOpenLine = endsInOpenEntry(body);
    return list;
}
