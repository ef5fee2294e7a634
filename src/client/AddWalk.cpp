// SPDX-License-Identifier: MIT
#include "AddWalk.h"

#include "AddBody.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

namespace {

/// How many entries a folder has; one more than there are if it can't be read to its end. A listing of Qt's leaves out
/// names that it can't decode, and ends at an error as at the end.
qsizetype entryCount(const QString& path)
{
    std::error_code error;
    qsizetype count = 0;
    for (std::filesystem::directory_iterator entry(QFileInfo(path).filesystemFilePath(), error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        ++count;
    return error ? count + 1 : count;
}

} // namespace

AddWalk::AddWalk(AddBody& newBody)
    : body(newBody)
{
}

void AddWalk::add(const LocalPathSelection& selection)
{
    const QFileInfo chosen(selection.path);
    if (chosen.exists())
        addEntry(chosen, selection.name.isEmpty() ? chosen.fileName() : selection.name);
    else
        ++skippedCount;
}

/// Sockets, pipes and links that lead nowhere are no content.
void AddWalk::addEntry(const QFileInfo& entry, const QString& name)
{
    const QString path = entry.absoluteFilePath();
    if (entry.isDir()) {
        addFolder(path, name);
    } else if (!entry.isFile()) {
        if (!entry.exists() && !entry.isSymLink()) // gone since the folder was listed
            ++skippedCount;
    } else if (body.appendFile(path, name)) {
        ++fileNames[name];
        ++filesInBody;
    } else {
        ++skippedCount;
    }
}

/// The root of a file system has no name: what is in it goes to the top.
void AddWalk::addFolder(const QString& path, const QString& name)
{
    if (!name.isEmpty())
        body.appendDirectory(name);
    const QFileInfo folder(path);
    const QString canonical = folder.canonicalFilePath();
    if (above.contains(canonical)) {
        ++loopCount;
    } else if (!folder.isReadable() || !folder.isExecutable()) {
        ++skippedCount;
    } else {
        above.insert(canonical);
        walk(path, name);
        above.remove(canonical);
    }
}

void AddWalk::walk(const QString& path, const QString& name)
{
    constexpr auto entries = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    const QFileInfoList list = QDir(path).entryInfoList(entries, QDir::Name | QDir::DirsFirst);
    skippedCount += static_cast<int>(std::max<qsizetype>(entryCount(path) - list.size(), 0));
    for (const QFileInfo& entry : list)
        addEntry(entry, name.isEmpty() ? entry.fileName() : u"%1/%2"_s.arg(name, entry.fileName()));
}
