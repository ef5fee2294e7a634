// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"

#include <QHash>
#include <QSet>
#include <QString>

class AddBody;
class QFileInfo;

/// Puts what was chosen into an upload's body: each folder, hidden entries included, before what is in it, with its own
/// folders first. Links are followed, but a folder inside itself is not walked again.
class AddWalk
{
public:
    explicit AddWalk(AddBody& newBody);

    /// What can't be read is skipped and counted.
    void add(const LocalPathSelection& selection);

    /// The names of the files in the body, each with how often it is there.
    const QHash<QString, int>& files() const { return fileNames; }
    int fileCount() const { return filesInBody; }
    /// Files and folders that could not be opened, or are gone.
    int skipped() const { return skippedCount; }
    int foldersWithinThemselves() const { return loopCount; }

private:
    void addEntry(const QFileInfo& entry, const QString& name);
    void addFolder(const QString& path, const QString& name);
    void walk(const QString& path, const QString& name);

    AddBody& body;
    QHash<QString, int> fileNames;
    QSet<QString> above; ///< canonical paths of the folders that the walk is in
    int filesInBody = 0;
    int skippedCount = 0;
    int loopCount = 0;
};
