// SPDX-License-Identifier: MIT
#include "UnixFsBuilder.h"

#include <QThread>

#include <algorithm>
#include <utility>

namespace {

enum UnixFsType : quint8 { UnixFsFile = 2, UnixFsDirectory = 1, UnixFsSymlink = 4 };

constexpr qsizetype mostLinks = 174; // of a file's node

void appendVarint(QByteArray& out, quint64 value)
{
    for (; value >= 0x80; value >>= 7)
        out.append(static_cast<char>((value & 0x7f) | 0x80));
    out.append(static_cast<char>(value));
}

QByteArray numberField(int field, quint64 value)
{
    QByteArray out;
    appendVarint(out, static_cast<quint64>(field) << 3);
    appendVarint(out, value);
    return out;
}

QByteArray bytesField(int field, const QByteArray& bytes)
{
    QByteArray out;
    appendVarint(out, (static_cast<quint64>(field) << 3) | 2);
    appendVarint(out, static_cast<quint64>(bytes.size()));
    return out + bytes;
}

/// A dag-pb node in its canonical order: the links first, then the data.
QByteArray dagPb(const QList<DemoLink>& links, const QByteArray& data)
{
    QByteArray out;
    for (const DemoLink& link : links) {
        out += bytesField(2, bytesField(1, cidBytes(link.cid)) + bytesField(2, link.name) + numberField(3, link.size));
    }
    return out + bytesField(1, data);
}

DemoObject dagPbObject(DemoObject::Kind kind, const QList<DemoLink>& links, const QByteArray& data, int version)
{
    const QByteArray block = dagPb(links, data);
    DemoObject object {.cid = cidOfBlock(block, Cid::dagPbCodec),
                       .block = block,
                       .kind = kind,
                       .links = links,
                       .cumulativeSize = static_cast<quint64>(block.size())};
    object.cid.version = version;
    for (const DemoLink& link : links)
        object.cumulativeSize += link.size;
    return object;
}

/// A leaf that holds its bytes in a dag-pb block.
DemoObject wrappedLeaf(const QByteArray& bytes, int version)
{
    const auto size = static_cast<quint64>(bytes.size());
    const QByteArray held = bytes.isEmpty() ? QByteArray() : bytesField(2, bytes);
    DemoObject leaf
        = dagPbObject(DemoObject::File, {}, numberField(1, UnixFsFile) + held + numberField(3, size), version);
    leaf.content = bytes;
    leaf.fileSize = size;
    return leaf;
}

DemoObject leafOf(const QByteArray& bytes, const UnixFsLayout& layout)
{
    return layout.rawLeaves ? rawFile(bytes) : wrappedLeaf(bytes, layout.version);
}

size_t mostLeavesAtOnce()
{
    return static_cast<size_t>(std::max(1, QThread::idealThreadCount()));
}

} // namespace

DemoObject rawFile(const QByteArray& bytes)
{
    const auto size = static_cast<quint64>(bytes.size());
    return {.cid = cidOfBlock(bytes, Cid::rawCodec),
            .block = bytes,
            .kind = DemoObject::File,
            .content = bytes,
            .fileSize = size,
            .cumulativeSize = size};
}

DemoObject unixFsSymlink(const QByteArray& target, int version)
{
    DemoObject link
        = dagPbObject(DemoObject::Symlink, {}, numberField(1, UnixFsSymlink) + bytesField(2, target), version);
    link.content = target;
    return link;
}

DemoObject unixFsDirectory(QList<DemoLink> entries, int version)
{
    std::ranges::sort(entries, {}, &DemoLink::name);
    return dagPbObject(DemoObject::Directory, entries, numberField(1, UnixFsDirectory), version);
}

UnixFsFileBuilder::UnixFsFileBuilder(const UnixFsLayout& newLayout, Sink newSink)
    : layout(newLayout)
    , sink(std::move(newSink))
{
}

void UnixFsFileBuilder::append(QByteArrayView bytes)
{
    fileSize += static_cast<quint64>(bytes.size());
    while (!bytes.isEmpty()) {
        const qsizetype taken = std::min(layout.chunkSize - chunk.size(), bytes.size());
        chunk.append(bytes.first(taken));
        bytes = bytes.sliced(taken);
        if (chunk.size() == layout.chunkSize)
            endChunk();
    }
}

void UnixFsFileBuilder::endChunk()
{
    leaves.push_back(std::async(std::launch::async, leafOf, std::exchange(chunk, {}), layout));
    chunk.reserve(layout.chunkSize);
    if (leaves.size() > mostLeavesAtOnce())
        deliverLeaf();
}

void UnixFsFileBuilder::deliverLeaf()
{
    add(0, deliver(leaves.front().get()));
    leaves.pop_front();
}

DemoLink UnixFsFileBuilder::finish()
{
    while (!leaves.empty())
        deliverLeaf();
    if (!chunk.isEmpty() || fileSize == 0)
        add(0, deliver(leafOf(chunk, layout))); // at once: most files are small, and a thread costs more than they do
    size_t level = 0;
    for (; levels[level].size() > 1 || level + 1 < levels.size(); ++level)
        add(level + 1, endNode(level));
    return levels[level].constFirst().link;
}

/// A node is made only when the next child shows that the file goes on, so that a root never has a single child.
void UnixFsFileBuilder::add(size_t level, const Child& child)
{
    if (level == levels.size())
        levels.emplace_back();
    if (levels[level].size() == mostLinks)
        add(level + 1, endNode(level));
    levels[level].append(child);
}

UnixFsFileBuilder::Child UnixFsFileBuilder::endNode(size_t level)
{
    QList<DemoLink> links;
    quint64 sum = 0;
    QByteArray sizes;
    for (const Child& child : std::exchange(levels[level], {})) {
        links.append(child.link);
        sum += child.fileSize;
        sizes += numberField(4, child.fileSize);
    }
    DemoObject node = dagPbObject(DemoObject::File, links, numberField(1, UnixFsFile) + numberField(3, sum) + sizes,
                                  layout.version);
    node.fileSize = sum;
    return deliver(node);
}

UnixFsFileBuilder::Child UnixFsFileBuilder::deliver(const DemoObject& object) const
{
    if (sink)
        sink(object);
    return {.link = {.cid = object.cid, .size = object.cumulativeSize}, .fileSize = object.fileSize};
}
