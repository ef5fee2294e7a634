// SPDX-License-Identifier: MIT
#pragma once

#include "DemoRepo.h"
#include "MultipartReader.h"
#include "UnixFsBuilder.h"
#include "UnixFsTree.h"

/// What a call of "/add" asks for.
struct AddChoices
{
    UnixFsLayout layout {};
    bool wraps = false;
    bool pins = true;
    bool onlyHashes = false;
    bool reportsProgress = false;
    bool keepsEmptyFolders = true;
    bool liftsVersion0 = false;
    QString pinName {};
};

/// One call of "/add": takes its body as it comes, and returns the lines that follow from it. Without wrapping each
/// top-level file or folder is an entry of its own, else there is one nameless entry for all.
class AddSession
{
public:
    AddSession(AddChoices newChoices, const QByteArray& boundary, DemoRepo& newRepo);

    NodeStep take(const QByteArray& piece, bool isEnd);

private:
    using Path = UnixFsTree::Path;
    enum Kind { File, Directory, Symlink, PassedOver };

    void onHead();
    void onPiece(QByteArrayView bytes);
    void onPartEnd();
    void readKind();
    bool enter(const Path& path);
    void leave(qsizetype depth);
    void openDirectory(const QByteArray& name, bool isImplied);
    void place(const DemoLink& link);
    void closeEntry();
    void finish();

    void keep(const DemoObject& object);
    void pin(const Cid& root);
    void reportProgress();
    void appendLine(const QByteArray& name, const DemoLink& link);
    void fail(const QByteArray& why) { failure = why; }
    Path inEntry(const Path& path) const;
    NodeAnswer failureAnswer() const;

    AddChoices choices;
    DemoRepo& repo;
    MultipartReader reader;
    bool isReading = true;
    bool hasAnswered = false;
    bool hasAdded = false;
    QByteArray lines;   ///< not yet returned
    QByteArray failure; ///< ends the call if it is not empty

    Path directories;               ///< those that the current part lies in
    QByteArray lastFile;            ///< the last entry read in them, if it is no folder
    std::optional<UnixFsTree> tree; ///< of the open entry; none between entries

    Path path; ///< of the current part
    Kind kind = File;
    std::optional<UnixFsFileBuilder> file;
    qint64 keptBytes = 0;      ///< of the file
    quint64 reportedBytes = 0; ///< of the file, by the last line of progress
    QByteArray target;         ///< of the symlink
};
