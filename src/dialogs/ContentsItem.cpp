// SPDX-License-Identifier: MIT
#include "ContentsItem.h"

#include "FileNames.h"
#include "LsEntry.h"

#include <QStringList>

#include <algorithm>

namespace {

const ContentsItem* asContents(const QTreeWidgetItem* item)
{
    return static_cast<const ContentsItem*>(item); // the tree holds no other kind
}

} // namespace

ContentsItem::ContentsItem(const QString& newName, const FileNode& node)
    : QTreeWidgetItem(UserType)
    , name(newName)
    , cid(node.cid)
    , size(node.size)
    , directory(node.isDirectory)
    , rootLeaf(node.isRootSingleFile)
{
}

ContentsItem* ContentsItem::ofEntry(const LsEntry& entry)
{
    const bool named = !entry.name.trimmed().isEmpty();
    return new ContentsItem(sanitizeFileName(named ? entry.name : entry.hash.left(shortCidLength)),
                            {.cid = entry.hash, .size = entry.size, .isDirectory = entry.type == lsDirectory});
}

QVariant ContentsItem::data(int column, int role) const
{
    if (role == Qt::DisplayRole)
        return shownText(column);
    if (column != 0)
        return QTreeWidgetItem::data(column, role);
    switch (role) {
    case PathRole:
        return path();
    case CidRole:
        return cid;
    case DirectoryRole:
        return directory;
    case SizeRole:
        return size;
    case RootLeafRole:
        return rootLeaf;
    default:
        return QTreeWidgetItem::data(column, role);
    }
}

QVariant ContentsItem::shownText(int column) const
{
    if (column == 0)
        return name;
    if (column != 1)
        return cid;
    const bool sizeKnown = !directory && (!rootLeaf || size > 0);
    return sizeKnown ? formatFileSize(size) : QString();
}

FileNode ContentsItem::node() const
{
    return {.relativePath = path(), .cid = cid, .size = size, .isDirectory = directory, .isRootSingleFile = rootLeaf};
}

/// The root has no part in the paths.
QString ContentsItem::path() const
{
    QStringList names;
    for (const QTreeWidgetItem* item = this; item->parent(); item = item->parent())
        names.append(asContents(item)->name);
    std::ranges::reverse(names);
    return names.join(u'/');
}

QList<QTreeWidgetItem*> withDescendants(QList<QTreeWidgetItem*> items)
{
    for (qsizetype i = 0; i < items.size(); ++i) {
        const QTreeWidgetItem* item = items.at(i);
        for (int row = 0; row < item->childCount(); ++row)
            items.append(item->child(row));
    }
    return items;
}

QList<const ContentsItem*> filesUnder(const QList<QTreeWidgetItem*>& items)
{
    QList<const ContentsItem*> files;
    for (const QTreeWidgetItem* item : withDescendants(items)) {
        if (!asContents(item)->isDirectory())
            files.append(asContents(item));
    }
    return files;
}

/// From the leaves up: taking children walks all that is below them.
void deleteWithDescendants(QTreeWidgetItem* item)
{
    const QList<QTreeWidgetItem*> items = withDescendants({item});
    std::for_each(items.crbegin(), items.crend(), [](QTreeWidgetItem* parent) { qDeleteAll(parent->takeChildren()); });
    delete item;
}
