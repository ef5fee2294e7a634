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

/// Where an entry belongs by CID: the next 8 characters after what all CIDs have in common, then its row.
struct SortKey
{
    quint64 head = 0;
    int row = 0;
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
SortKey sortKeyOf(QStringView cid, qsizetype prefix, int row)
{
    constexpr quint64 beyond = 0xff;
    SortKey key {.row = row};
    quint64 code = 0;
    for (qsizetype i = prefix; i < prefix + 8; ++i) {
        if (code != beyond)
            code = i < cid.size() ? std::min<quint64>(cid.at(i).unicode(), beyond) : 0;
        key.head = (key.head << 8) | code;
    }
    return key;
}

/// Puts in each place the entry that its key names, and the place into the key. A second list would take as much
/// memory again as the first.
void permute(QList<PinEntry>& entries, std::vector<SortKey>& keys)
{
    PinEntry* const list = entries.data();
    for (size_t first = 0; first < keys.size(); ++first) {
        if (keys[first].row == static_cast<int>(first))
            continue;
        PinEntry held = std::move(list[first]);
        size_t place = first;
        for (auto from = static_cast<size_t>(keys[place].row); from != first;
             from = static_cast<size_t>(keys[place].row)) {
            list[place] = std::move(list[from]);
            keys[place].row = static_cast<int>(place);
            place = from;
        }
        list[place] = std::move(held);
        keys[place].row = static_cast<int>(place);
    }
}

/// Of sorted entries, leaves out those without a CID, and of equal CIDs all but the last.
void keepLastOfEach(QList<PinEntry>& entries, const std::vector<SortKey>& keys)
{
    PinEntry* const list = entries.data();
    size_t kept = 0;
    for (size_t i = 0; i < keys.size(); ++i) {
        if (list[i].cid.isEmpty())
            continue;
        const bool again = kept > 0 && keys[i].head == keys[i - 1].head && list[i].cid == list[kept - 1].cid;
        if (!again)
            ++kept;
        if (kept - 1 != i)
            list[kept - 1] = std::move(list[i]);
    }
    entries.resize(static_cast<qsizetype>(kept));
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
    unpinned.reserve(static_cast<size_t>(refs.size()));
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
    for (int row = 0; row < entries.size(); ++row)
        keys.push_back(sortKeyOf(entries.at(row).cid, prefix, row));
    std::ranges::sort(keys, [&entries](const SortKey& a, const SortKey& b) {
        if (a.head != b.head)
            return a.head < b.head;
        const int order = entries.at(a.row).cid.compare(entries.at(b.row).cid);
        return order != 0 ? order < 0 : a.row < b.row;
    });

    permute(entries, keys);
    keepLastOfEach(entries, keys);
}

QList<PinEntry> mergePinsByCid(QList<PinEntry> earlier, QList<PinEntry> later)
{
    QList<PinEntry> merged = std::move(earlier);
    QList<PinEntry> other = std::move(later);
    const bool longIsLater = other.size() > merged.size();
    if (longIsLater)
        merged.swap(other);
    qsizetype left = merged.size();
    qsizetype free = left + other.size(); // from the end, so that nothing is overwritten
    merged.resize(free);
    PinEntry* const list = merged.data();
    while (!other.isEmpty()) {
        const int order = left > 0 ? list[left - 1].cid.compare(other.constLast().cid) : -1;
        if (order > 0) {
            list[--free] = std::move(list[--left]);
            continue;
        }
        PinEntry taken = other.takeLast();
        if (order == 0) {
            --left;
            if (longIsLater)
                taken = std::move(list[left]);
        }
        list[--free] = std::move(taken);
    }
    merged.remove(left, free - left); // as many as were in both
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
