// SPDX-License-Identifier: MIT
#include "UnixFsTree.h"

#include "UnixFsBuilder.h"

/// Null if one of its names is a file's.
UnixFsTree::Directory* UnixFsTree::directoryAt(const Path& path)
{
    Directory* directory = &root;
    for (const QByteArray& name : path) {
        if (directory->entries.contains(name))
            return nullptr;
        auto& folder = directory->folders[name];
        if (!folder)
            folder = std::make_unique<Directory>();
        directory = folder.get();
    }
    return directory;
}

QByteArray UnixFsTree::makeDirectory(const Path& path)
{
    return directoryAt(path) ? QByteArray() : "file already exists";
}

QByteArray UnixFsTree::put(const Path& path, const DemoLink& entry)
{
    const Path parents = path.first(path.size() - 1);
    Directory* directory = directoryAt(parents);
    if (!directory)
        return '/' + parents.join('/') + " is not a directory";
    const QByteArray& name = path.constLast();
    if (directory->folders.contains(name) || directory->entries.contains(name))
        return "directory already has entry by that name";
    directory->entries.emplace(name, DemoLink {.name = name, .cid = entry.cid, .size = entry.size});
    return {};
}

DemoLink UnixFsTree::build(int version, const Visit& visit) const
{
    Path path;
    return buildOne(root, path, version, visit);
}

DemoLink UnixFsTree::buildOne(const Directory& directory, Path& path, int version, const Visit& visit)
{
    QList<DemoLink> links;
    for (const auto& [name, entry] : directory.entries)
        links.append(entry);
    for (const auto& [name, folder] : directory.folders) {
        path.append(name);
        links.append(buildOne(*folder, path, version, visit));
        path.removeLast();
    }
    const DemoObject object = unixFsDirectory(links, version);
    visit(path, object);
    return {.name = path.isEmpty() ? QByteArray() : path.constLast(), .cid = object.cid, .size = object.cumulativeSize};
}
