// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <vector>

/// Many short texts (bytes of any kind) in one block of memory, in the order in which they came: a million CIDs take
/// 67 MB here and some 170 MB as strings of their own. Growing costs no copy of the texts where the system can move
/// pages.
class TextBlock
{
public:
    void append(QByteArrayView text)
    {
        bytes.append(text);
        ends.push_back(bytes.size());
    }

    qsizetype size() const { return static_cast<qsizetype>(ends.size()); }

    /// Valid until the block changes. `index` is below size().
    QByteArrayView at(qsizetype index) const
    {
        const qsizetype start = index == 0 ? 0 : ends[static_cast<size_t>(index) - 1];
        return QByteArrayView(bytes).sliced(start, ends[static_cast<size_t>(index)] - start);
    }

private:
    QByteArray bytes;
    std::vector<qsizetype> ends; ///< where each text ends in `bytes`
};
