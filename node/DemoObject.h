// SPDX-License-Identifier: MIT
#pragma once

#include "CidText.h"

#include <QByteArray>
#include <QList>

#include <numeric>
#include <utility>

/// A named link of a dag-pb block. `size` is the cumulative size of what it leads to, in bytes.
struct DemoLink
{
    QByteArray name {};
    Cid cid {};
    quint64 size = 0;
};

/// One object of the node's store: a real block with its real CID.
struct DemoObject
{
    enum Kind { File, Directory, Symlink };

    Cid cid {};
    QByteArray block {};
    Kind kind = File;
    QByteArray content {}; ///< a file's bytes where the block itself holds them, or a symlink's target
    quint64 fileSize = 0;  ///< bytes of the whole file
    QList<DemoLink> links {};
    quint64 cumulativeSize = 0;

    /// Whether it holds bytes of a file.
    bool isLeaf() const { return kind == File && links.isEmpty(); }
    /// Whether a leaf's bytes were thrown away; all else about it is known.
    bool isHollow() const { return isLeaf() && std::cmp_less(content.size(), fileSize); }
    /// Bytes, also of a block that was thrown away.
    quint64 blockSize() const
    {
        return std::accumulate(links.begin(), links.end(), cumulativeSize,
                               [](quint64 rest, const DemoLink& link) { return rest - link.size; });
    }
};
