#include "PinListParser.h"

#include "CidText.h"
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
    list.entries.reserve(body.count('\n') + 1);
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

/// Where an entry belongs by CID: the next 16 characters behind what all CIDs have in common, then its row.
struct SortKey
{
    std::array<quint64, 2> head {};
    qsizetype row = 0;
};

qsizetype commonPrefix(const QList<PinEntry>& entries)
{
    QStringView prefix = entries.constFirst().cid;
    for (const PinEntry& entry : entries) {
        const auto [mine, other] = std::ranges::mismatch(prefix, entry.cid);
        prefix = prefix.first(mine - prefix.begin());
    }
    return prefix.size();
}

/// The next characters in the order of their codes. From the first one above 254 on all count as equal, so that the
/// whole CIDs decide.
SortKey sortKeyOf(QStringView cid, qsizetype prefix, qsizetype row)
{
    constexpr quint64 beyond = 0xff;
    SortKey key {.row = row};
    quint64 code = 0;
    for (qsizetype i = 0; i < 16; ++i) {
        if (code != beyond)
            code = prefix + i < cid.size() ? std::min<quint64>(cid.at(prefix + i).unicode(), beyond) : 0;
        quint64& word = key.head.at(static_cast<size_t>(i / 8));
        word = (word << 8) | code;
    }
    return key;
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

void sortPinsByCid(QList<PinEntry>& entries)
{
    if (entries.isEmpty())
        return;
    // Comparing whole CIDs all over memory takes several times as long as comparing a few characters in one place.
    const qsizetype prefix = commonPrefix(entries);
    std::vector<SortKey> keys;
    keys.reserve(static_cast<size_t>(entries.size()));
    for (qsizetype row = 0; row < entries.size(); ++row)
        keys.push_back(sortKeyOf(entries.at(row).cid, prefix, row));
    std::ranges::sort(keys, [&entries](const SortKey& a, const SortKey& b) {
        if (a.head != b.head)
            return a.head < b.head;
        const int order = entries.at(a.row).cid.compare(entries.at(b.row).cid);
        return order != 0 ? order < 0 : a.row < b.row;
    });

    QList<PinEntry> sorted;
    sorted.reserve(entries.size());
    std::array<quint64, 2> lastHead {};
    for (const SortKey& key : keys) {
        PinEntry& entry = entries[key.row];
        const bool again = key.head == lastHead && !sorted.isEmpty() && sorted.constLast().cid == entry.cid;
        lastHead = key.head;
        if (again)
            sorted.last() = std::move(entry);
        else if (!entry.cid.isEmpty())
            sorted.append(std::move(entry));
    }
    entries = std::move(sorted);
}

QList<PinEntry> mergePinsByCid(QList<PinEntry> earlier, QList<PinEntry> later)
{
    if (earlier.isEmpty() || later.isEmpty())
        return earlier.isEmpty() ? later : earlier;
    QList<PinEntry> merged;
    merged.reserve(earlier.size() + later.size());
    auto left = earlier.begin();
    auto right = later.begin();
    while (left != earlier.end() && right != later.end()) {
        const int order = left->cid.compare(right->cid);
        merged.append(std::move(order < 0 ? *left++ : *right++));
        if (order == 0)
            ++left;
    }
    std::move(left, earlier.end(), std::back_inserter(merged));
    std::move(right, later.end(), std::back_inserter(merged));
    return merged;
}

QSet<QString> textsAccountedFor(const QList<PinEntry>& entries)
{
    QSet<QString> texts;
    texts.reserve(2 * entries.size());
    for (const PinEntry& entry : entries) {
        if (entry.cid.isEmpty())
            continue;
        texts.insert(entry.cid);
        if (const auto cid = decodeCid(entry.cid))
            texts.insert(encodeCid({.version = 1, .codec = Cid::rawCodec, .multihash = cid->multihash}));
    }
    return texts;
}

QSet<QString> indirectCidsOf(const QList<PinEntry>& entries)
{
    QSet<QString> cids;
    for (const PinEntry& entry : entries) {
        if (entry.type == PinType::indirect)
            cids.insert(entry.cid);
    }
    for (qsizetype i = 0; i < entries.size() && !cids.isEmpty(); ++i) {
        if (entries.at(i).type != PinType::indirect)
            cids.remove(entries.at(i).cid);
    }
    return cids;
}
