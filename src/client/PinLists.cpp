// SPDX-License-Identifier: MIT
#include "PinLists.h"

#include "CidText.h"
#include "JsonReply.h"

#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace {

/// Where an entry belongs by CID: the next 16 characters after what all CIDs have in common, then its row.
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

/// No bytes, or an object that is no error.
bool isEmptyList(const QByteArray& body)
{
    return body.trimmed().isEmpty() || (QJsonDocument::fromJson(body).isObject() && rpcErrorMessage(body).isEmpty());
}

bool hasVersion0(const Cid& cid)
{
    constexpr QByteArrayView sha256 {"\x12\x20"}; // the hash function, and the length of what it gives
    return cid.codec == Cid::dagPbCodec && cid.multihash.startsWith(sha256);
}

/// Empty if there is no such form.
QString textOfVersion0(Cid cid)
{
    if (!hasVersion0(cid))
        return {};
    cid.version = 0;
    return encodeCid(cid);
}

/// Which of `refs` are none of `pinned` and none of the refs before.
std::vector<qsizetype> indexesOfUnpinned(const TextBlock& pinned, const TextBlock& refs)
{
    QSet<QByteArrayView> known;
    known.reserve(pinned.size() + refs.size());
    for (qsizetype i = 0; i < pinned.size(); ++i)
        known.insert(pinned.at(i));
    std::vector<qsizetype> unpinned;
    for (qsizetype i = 0; i < refs.size(); ++i) {
        const qsizetype before = known.size();
        known.insert(refs.at(i));
        if (known.size() > before)
            unpinned.push_back(i);
    }
    return unpinned;
}

} // namespace

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

TextBlock textsAccountedFor(const QList<PinEntry>& entries)
{
    TextBlock texts;
    for (const PinEntry& entry : entries) {
        if (entry.cid.isEmpty())
            continue;
        texts.append(entry.cid.toUtf8());
        auto cid = decodeCid(entry.cid);
        if (!cid)
            continue;
        texts.append(encodeCid({.version = 1, .codec = Cid::rawCodec, .multihash = cid->multihash}).toLatin1());
        if (const QString text = textOfVersion0(*cid); cid->version == 1 && !text.isEmpty())
            texts.append(text.toLatin1());
    }
    return texts;
}

QList<PinEntry> unpinnedEntries(UnpinnedHalves halves)
{
    const std::vector<qsizetype> unpinned = indexesOfUnpinned(halves.pinned, halves.localRefs);
    halves.pinned = {};
    QList<PinEntry> entries;
    entries.reserve(static_cast<qsizetype>(unpinned.size()));
    for (const qsizetype index : unpinned)
        entries.append({.cid = QString::fromUtf8(halves.localRefs.at(index))});
    return entries;
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

QList<std::optional<QString>> storedTexts(const QSet<QString>& pinned, const QStringList& requested,
                                          const QStringList& formatted)
{
    QList<std::optional<QString>> texts;
    texts.reserve(requested.size());
    for (qsizetype i = 0; i < requested.size(); ++i) {
        const auto cid = decodeCid(requested.at(i));
        const QStringList spellings {formatted.at(i), requested.at(i), cid ? encodeCid(*cid) : QString(),
                                     cid ? textOfVersion0(*cid) : QString()};
        const auto stored = std::ranges::find_if(
            spellings, [&pinned](const QString& text) { return !text.isEmpty() && pinned.contains(text); });
        if (stored != spellings.end())
            texts.append(*stored);
        else
            texts.append(cid ? std::optional(QString()) : std::nullopt);
    }
    return texts;
}

std::optional<QSet<QString>> pinnedTexts(const QList<QByteArray>& bodies)
{
    QSet<QString> texts;
    for (const QByteArray& body : bodies) {
        const QList<PinEntry> entries = parsePinList(body).entries;
        if (entries.isEmpty() && !isEmptyList(body))
            return std::nullopt;
        texts.reserve(texts.size() + entries.size());
        for (const PinEntry& entry : entries)
            texts.insert(entry.cid);
    }
    return texts;
}
