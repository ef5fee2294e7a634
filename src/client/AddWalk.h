// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"

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

    /// The names of the files in the body.
    const QSet<QString>& files() const { return fileNames; }
    /// Files and folders that could not be opened, or are gone.
    int skipped() const { return skippedCount; }
    int foldersWithinThemselves() const { return loopCount; }

private:
    void addEntry(const QFileInfo& entry, const QString& name);
    void addFolder(const QString& path, const QString& name);
    void walk(const QString& path, const QString& name);

    AddBody& body;
    QSet<QString> fileNames;
    QSet<QString> above; ///< canonical paths of the folders that the walk is in
    int skippedCount = 0;
    int loopCount = 0;
};
