#include "PinListParser.h"

#include "NdJson.h"

#include <QJsonDocument>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr auto cidKey = "Cid"_L1;
constexpr auto typeKey = "Type"_L1;
constexpr auto nameKey = "Name"_L1;
constexpr auto keysKey = "Keys"_L1;
constexpr auto wrappedLineKey = "PinLsObject"_L1;
constexpr auto wrappedListKey = "PinLsList"_L1;

/// A list of hundreds of thousands says one of these in each entry: its storage is the program's, not the entry's.
QString sharedType(const QString& type)
{
    const std::array known {u"recursive"_s, u"direct"_s, u"indirect"_s};
    const auto* match = std::ranges::find(known, type);
    return match == known.end() ? type : *match;
}

PinEntry entryOf(const QString& cid, const QJsonObject& facts)
{
    return {.cid = cid,
            .type = sharedType(facts.value(typeKey).toString()),
            .name = facts.value(nameKey).toString()};
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

} // namespace

std::optional<PinEntry> parsePinLine(QByteArrayView line)
{
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
    std::ranges::stable_sort(entries, {}, &PinEntry::cid);
    // The last of each run of equal CIDs is the first one seen from behind.
    const auto kept = std::unique(entries.rbegin(), entries.rend(),
                                  [](const PinEntry& a, const PinEntry& b) { return a.cid == b.cid; });
    entries.erase(entries.begin(), kept.base());
    if (!entries.isEmpty() && entries.constFirst().cid.isEmpty())
        entries.removeFirst();
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
