// SPDX-License-Identifier: MIT
#pragma once

#include "CidText.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

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
};

/// Makes the objects that a node would make: raw leaves, UnixFS directories, chunked files and symlinks in dag-pb.
class DemoStore
{
public:
    Cid addFile(const QByteArray& bytes);
    /// A file of several raw leaves of `chunkSize` bytes.
    Cid addChunkedFile(const QByteArray& bytes, qsizetype chunkSize);
    Cid addSymlink(const QByteArray& target);
    Cid addDirectory(QList<DemoLink> entries);
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
    /// The bytes of a file, or what of them stands before a missing block.
    QByteArray contentOf(const DemoObject& file) const;

private:
    Cid add(const DemoObject& object);

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
