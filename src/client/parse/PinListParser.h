// SPDX-License-Identifier: MIT
#pragma once

#include "PinEntry.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <optional>

/// The entries of one pin list. Only `cid`, `type` and `name` of an entry are filled; equal type texts share storage.
struct PinList
{
    QList<PinEntry> entries {};
    int keyCount = 0;         ///< members of the whole-document form, 0 for a stream of lines
    bool hasOpenLine = false; ///< a last line without a line feed gave an entry
};

/// One line of the stream, flat or wrapped in "PinLsObject"; nothing if it holds no CID.
std::optional<PinEntry> parsePinLine(QByteArrayView line);

/// The body of "/pin/ls" in the whole-document form ("Keys", also inside "PinLsList") or as a stream of lines.
/// What does not parse is passed over. Of a stream the CIDs that are in `formerCids` as well, in nearly the same order,
/// share their storage with those. Frees the body, if nobody else has it, as it goes.
PinList parsePinList(QByteArray body, const QStringList& formerCids = {});
