// SPDX-License-Identifier: MIT
#pragma once

#include "DemoObject.h"

#include <deque>
#include <functional>
#include <future>
#include <vector>

/// How a file becomes blocks. `version` is that of the dag-pb blocks; raw blocks are always version 1.
struct UnixFsLayout
{
    int version = 1;
    bool rawLeaves = true;            ///< else a leaf is a dag-pb block with the bytes inside
    qsizetype chunkSize = 256 * 1024; ///< bytes of each leaf but the last
};

/// A file of one raw block.
DemoObject rawFile(const QByteArray& bytes);

/// `target` is kept as it is, whether something is there or not.
DemoObject unixFsSymlink(const QByteArray& target, int version = 1);

/// A plain directory of any size; a node shards one whose block would exceed some 256 KiB, and its CID is another then.
DemoObject unixFsDirectory(QList<DemoLink> entries, int version = 1);

/// Makes the blocks of a file from its bytes: a balanced tree with up to 174 links a node, as a node makes it. Keeps
/// one chunk and the links of unfinished nodes.
class UnixFsFileBuilder
{
public:
    /// Called with each block, children before parents, on the thread of the caller.
    using Sink = std::function<void(const DemoObject&)>;

    UnixFsFileBuilder(const UnixFsLayout& newLayout, Sink newSink);

    void append(QByteArrayView bytes);
    quint64 size() const { return fileSize; }
    /// The nameless link to the whole file. Call once, last.
    DemoLink finish();

private:
    struct Child
    {
        DemoLink link {};
        quint64 fileSize = 0;
    };

    void endChunk();
    void deliverLeaf();
    void add(size_t level, const Child& child);
    Child endNode(size_t level);
    Child deliver(const DemoObject& object) const;

    UnixFsLayout layout;
    Sink sink;
    QByteArray chunk;
    quint64 fileSize = 0;
    std::deque<std::future<DemoObject>> leaves; ///< being hashed, in order
    std::vector<QList<Child>> levels;           ///< from the leaves up, what no node links to yet
};
