// SPDX-License-Identifier: MIT
#include "PinListParser.h"

#include "NdJson.h"

#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

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
constexpr qsizetype pieceSize = 2 * 1024 * 1024;

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

/// Finds the CIDs of a list in those of the former one, which a node lists in the same order, but for what has come and
/// gone since.
class FormerCids
{
public:
    explicit FormerCids(QStringList newCids)
        : cids(std::move(newCids))
        , comparisons(8 * cids.size())
    {
    }

    /// The former list's text, with its storage, if it is found near the one found last.
    QString textOf(QLatin1StringView cid)
    {
        const qsizetype end = std::min(cids.size(), next + farthest);
        for (qsizetype i = next; i < end && comparisons > 0; ++i, --comparisons) {
            if (cids.at(i) == cid) {
                next = i + 1;
                return cids.at(i);
            }
        }
        return cid;
    }

private:
    static constexpr qsizetype farthest = 4096;

    QStringList cids;
    qsizetype next = 0;
    qsizetype comparisons; ///< still allowed: another order makes nothing slow
};

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

/// The line as a node writes it, `{"Cid":"…","Name":"…","Type":"…"}`, each key once; nothing means that the line is the
/// JSON parser's to judge.
std::optional<PinEntry> parsePlainLine(QByteArrayView line, FormerCids& former)
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
    return PinEntry {.cid = former.textOf(*cid),
                     .type = sharedType(type.value_or(""_L1)),
                     .name = name ? QString(*name) : QString()};
}

std::optional<PinEntry> parseLine(QByteArrayView line, FormerCids& former)
{
    if (auto entry = parsePlainLine(line, former))
        return entry;
    const auto object = parseJsonLine(line);
    if (!object)
        return std::nullopt;
    const auto wrapped = object->constFind(wrappedLineKey);
    const QJsonObject facts = wrapped == object->constEnd() ? *object : wrapped->toObject();
    const QString cid = facts.value(cidKey).toString();
    return cid.isEmpty() ? std::nullopt : std::optional(entryOf(cid, facts));
}

/// Takes a body apart into pieces of whole lines, the last one first. The body gives up what it no longer holds.
std::vector<QByteArray> takePieces(QByteArray& body)
{
    std::vector<QByteArray> pieces;
    while (body.size() > pieceSize) {
        const qsizetype start = body.lastIndexOf('\n', -pieceSize) + 1;
        pieces.push_back(body.sliced(start));
        body.resize(start);
        body.squeeze();
    }
    pieces.push_back(std::exchange(body, {}));
    return pieces;
}

/// Frees each piece of the body that it has read: the entries need the room.
void readLines(QByteArray body, const QStringList& formerCids, PinList& list)
{
    FormerCids former(formerCids);
    list.entries.reserve(std::min(body.count('\n') + 1, body.size() / usualLine));
    for (auto pieces = takePieces(body); !pieces.empty(); pieces.pop_back()) {
        forEachLine(pieces.back(), [&](QByteArrayView line) {
            if (auto entry = parseLine(line, former))
                list.entries.append(*std::move(entry));
        });
    }
}

bool endsInOpenEntry(const QByteArray& body)
{
    const QByteArrayView tail = QByteArrayView(body).sliced(body.lastIndexOf('\n') + 1).trimmed();
    FormerCids none({});
    return !tail.isEmpty() && parseLine(tail, none).has_value();
}

} // namespace

std::optional<PinEntry> parsePinLine(QByteArrayView line)
{
    FormerCids none({});
    return parseLine(line, none);
}

PinList parsePinList(QByteArray body, const QStringList& formerCids)
{
    PinList list;
    list.hasOpenLine = endsInOpenEntry(body);
    readDocument(body, list);
    if (list.entries.isEmpty())
        readLines(std::move(body), formerCids, list);
    return list;
}
