// SPDX-License-Identifier: MIT
#pragma once

#include "DemoObject.h"

#include <QHash>
#include <QString>

#include <functional>
#include <optional>

/// Makes the objects that a node would make: raw leaves, UnixFS directories, chunked files and symlinks in dag-pb.
class DemoStore
{
public:
    /// Keeps the object's block from here on.
    Cid add(const DemoObject& object);
    Cid addFile(const QByteArray& bytes);
    /// A file of several raw leaves of `chunkSize` bytes.
    Cid addChunkedFile(const QByteArray& bytes, qsizetype chunkSize);
    Cid addSymlink(const QByteArray& target);
    Cid addDirectory(const QList<DemoLink>& entries);
    /// As addDirectory, kept and printed as version 0.
    Cid addVersion0Directory(const QList<DemoLink>& entries);
    DemoLink link(const QByteArray& name, const Cid& cid) const;

    /// The `number`th of the small numbered files; it is made when it is looked at.
    Cid addNote(int number);
    /// From here on the block is missing.
    void forget(const Cid& cid);

    /// Nothing if the store does not hold the block; another version or codec of the same multihash is the same block.
    std::optional<DemoObject> find(const Cid& cid) const;
    /// The multihashes of all blocks, in no order.
    QList<QByteArray> multihashes() const { return byMultihash.keys() + notes.keys(); }
    /// Of all blocks, in bytes.
    quint64 totalSize() const;
    /// Calls `visit` with each CID below `roots`, each block walked once. The first block that is missing, if any.
    std::optional<Cid> walk(QList<Cid> roots, const std::function<void(const Cid&)>& visit) const;
    /// The bytes of a file, or those before a missing block.
    QByteArray contentOf(const DemoObject& file) const;

private:
    bool appendContent(const DemoObject& file, QByteArray& bytes) const;

    QHash<QByteArray, DemoObject> byMultihash;
    QHash<QByteArray, int> notes; ///< by digest
};

struct DemoPin
{
    Cid cid {};
    QString name {};
    bool recursive = true;
};

/// A small believable set of pins with what lies under them, and numbered notes up to `count` pins in all.
QList<DemoPin> demoPins(DemoStore& store, int count);

/// A pin named "big tree": `entries` small numbered files, a hundred in a folder.
DemoPin bigTreePin(DemoStore& store, int entries);
