// SPDX-License-Identifier: MIT
#pragma once

#include "DemoObject.h"

#include <functional>
#include <map>
#include <memory>

/// A folder while it is being filled, with the folders in it.
class UnixFsTree
{
public:
    using Path = QList<QByteArray>;

    /// Makes the folder and its parents; empty, or the words for what is in its way.
    QByteArray makeDirectory(const Path& path);
    /// Puts a file or a symlink at `path`, whose folders are made; empty, or the words for what is in its way.
    QByteArray put(const Path& path, const DemoLink& entry);

    /// Calls `visit` with each folder, children before parents and sorted by name, itself last.
    using Visit = std::function<void(const Path& path, const DemoObject& directory)>;
    DemoLink build(int version, const Visit& visit) const;

private:
    struct Directory
    {
        std::map<QByteArray, DemoLink> entries {};
        std::map<QByteArray, std::unique_ptr<Directory>> folders {};
    };

    Directory* directoryAt(const Path& path);
    static DemoLink buildOne(const Directory& directory, Path& path, int version, const Visit& visit);

    Directory root;
};
