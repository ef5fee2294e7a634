// SPDX-License-Identifier: MIT
#pragma once

#include "PinListParser.h"
#include "TextBlock.h"

#include <QList>
#include <QSet>
#include <QStringList>

#include <optional>

/// A parsed pin list, and what was derived from it where that is wanted.
struct ParsedPins
{
    PinList list {};
    QStringList cids {};           ///< in the order of the reply; none of a short list
    TextBlock accountedFor {};     ///< by textsAccountedFor
    QSet<QString> indirectCids {}; ///< by indirectCidsOf
};

/// What the view of unpinned blocks is made of.
struct UnpinnedHalves
{
    TextBlock pinned {};    ///< by textsAccountedFor
    TextBlock localRefs {}; ///< CIDs as the node lists them
};

/// Sorts by CID, case-sensitively, and leaves out entries without one; of equal CIDs the one that came last stays.
void sortPinsByCid(QList<PinEntry>& entries);

/// Joins two lists sorted by sortPinsByCid; of equal CIDs the one of `later` stays. Linear, and in the room of the
/// longer one.
QList<PinEntry> mergePinsByCid(QList<PinEntry> earlier, QList<PinEntry> later);

/// The CIDs of the entries, and for each that decodes the CIDs under which a node may list its block: same multihash,
/// version 1, codec raw, base32; and version 0 where there is one.
TextBlock textsAccountedFor(const QList<PinEntry>& entries);

/// An entry for each local ref whose text is none of the pinned ones, in the order of the refs; one for a ref that
/// comes several times. Takes a second for a million refs, and frees on the way what it no longer needs.
QList<PinEntry> unpinnedEntries(UnpinnedHalves halves);

/// The CIDs of the entries of type "indirect" that no entry of another type has as well: lifted to version 1, a pin of
/// version 0 reads like a block below another pin.
QSet<QString> indirectCidsOf(const QList<PinEntry>& entries);

/// For each CID of `requested` the text in `pinned` under which it is pinned: as in `formatted`, else as requested or
/// in the node's spelling of that. An empty text means not pinned, no text that the CID does not decode.
QList<std::optional<QString>> storedTexts(const QSet<QString>& pinned, const QStringList& requested,
                                          const QStringList& formatted);

/// The CIDs of bodies of "/pin/ls"; nothing if one of them is no pin list.
std::optional<QSet<QString>> pinnedTexts(const QList<QByteArray>& bodies);
