// SPDX-License-Identifier: MIT
#pragma once

#include "PinEntry.h"

#include <QList>
#include <QString>

#include <vector>

/// The rows of each CID of a list. It holds no texts, so it takes 8 bytes a row, and half a million of them in a tenth
/// of a second; it is of use with that very list only.
class PinIndex
{
public:
    PinIndex() = default;
    /// Rows without a CID are left out.
    explicit PinIndex(const QList<PinEntry>& pins);

    /// In ascending order.
    std::vector<int> rowsOf(const QString& cid, const QList<PinEntry>& pins) const;

private:
    struct Slot
    {
        quint32 hash = 0;
        int row = 0;
    };
    static quint32 hashOf(const QString& cid);

    std::vector<Slot> sorted;
};
