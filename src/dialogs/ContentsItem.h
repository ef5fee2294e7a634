// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QTreeWidgetItem>

struct LsEntry;

/// What an item of the contents tree shows.
struct FileNode
{
    QString relativePath {}; ///< cleaned; empty for the root
    QString cid {};
    qint64 size = 0; ///< bytes
    bool isDirectory = false;
    bool isRootSingleFile = false; ///< the pin is this file
};

/// A file or a folder of the contents tree: name, size and CID. It keeps its own name only and builds its path from its
/// parents when asked, since the paths of a deep tree take memory that grows with the square of the depth.
class ContentsItem : public QTreeWidgetItem
{
public:
    enum Role { PathRole = Qt::UserRole, CidRole, DirectoryRole, SizeRole, RootLeafRole };

    /// The path in `node` is ignored.
    ContentsItem(const QString& newName, const FileNode& node);
    static ContentsItem* ofEntry(const LsEntry& entry);

    QVariant data(int column, int role) const override;
    FileNode node() const;
    QString path() const;
    const QString& cidOfItem() const { return cid; }
    bool isDirectory() const { return directory; }

private:
    QVariant shownText(int column) const;

    QString name;
    QString cid;
    qint64 size;
    bool directory;
    bool rootLeaf;
};

/// A listing's number for a directory.
inline constexpr int lsDirectory = 1;

/// How many letters of a CID are shown in place of a name.
inline constexpr qsizetype shortCidLength = 12;

/// The items and everything below them, breadth first.
QList<QTreeWidgetItem*> withDescendants(QList<QTreeWidgetItem*> items);

/// The files among the items and below them, breadth first.
QList<const ContentsItem*> filesUnder(const QList<QTreeWidgetItem*>& items);

/// Deletes an item that is in no tree, with all below it. The destructor of a stock item recurses, and a tree of a
/// hundred thousand levels would overflow the stack.
void deleteWithDescendants(QTreeWidgetItem* item);
