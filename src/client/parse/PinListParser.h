#pragma once

#include "PinEntry.h"

#include <QByteArray>
#include <QList>
#include <QSet>

#include <optional>

/// The entries of one pin list. Only `cid`, `type` and `name` of an entry are filled; equal type texts share storage.
struct PinList
{
    QList<PinEntry> entries {};
    int keyCount = 0;              ///< members of the whole-document form, 0 for a stream of lines
    bool hasOpenLine = false;      ///< a last line without a line feed gave an entry
    QSet<QString> accountedFor {}; ///< what textsAccountedFor makes of the entries, where that is wanted
    QSet<QString> indirectCids {}; ///< what indirectCidsOf finds, where that is wanted
};

/// One line of the stream, flat or wrapped in "PinLsObject"; nothing if it holds no CID.
std::optional<PinEntry> parsePinLine(QByteArrayView line);

/// The body of "/pin/ls" in the whole-document form ("Keys", also inside "PinLsList") or as a stream of lines.
/// What does not parse is passed over.
PinList parsePinList(const QByteArray& body);

/// Sorts by CID, case-sensitively, and leaves out entries without one; of equal CIDs the one that came last stays.
void sortPinsByCid(QList<PinEntry>& entries);

/// Joins two lists sorted by sortPinsByCid; of equal CIDs the one of `later` stays. Linear.
QList<PinEntry> mergePinsByCid(QList<PinEntry> earlier, QList<PinEntry> later);

/// The CIDs of the entries, and for each that decodes the CID under which a node lists its block: same multihash,
/// version 1, codec raw, base32.
QSet<QString> textsAccountedFor(const QList<PinEntry>& entries);

/// The CIDs of the entries of type "indirect" that no entry of another type has as well: lifted to version 1, a pin of
/// version 0 reads like a block below another pin.
QSet<QString> indirectCidsOf(const QList<PinEntry>& entries);
