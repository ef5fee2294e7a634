// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"
#include "LineBuffer.h"

#include <QList>
#include <QSet>

/// What an upload has come to so far. Its reply holds it.
class AddUpload
{
public:
    /// `files` are the names of the files in the body.
    AddUpload(const AddOptions& options, const QSet<QString>& files, int skipped, int foldersWithinThemselves);

    /// Takes the next bytes of the node's answer.
    void take(const QByteArray& chunk);
    /// Takes what came after the last line feed, as an object and not as an error.
    void takeLastLine();

    /// The one object that holds all that was added; empty if there is none.
    QString rootCid() const;
    /// Whether something was to be added and is not in what the node reported.
    bool isShort() const;
    int filesReported() const { return addTotalFiles - static_cast<int>(awaited.size()); }
    bool rootLineMissing() const;

    LineBuffer addStreamBuffers;   ///< what came after the last line feed
    QList<AddEntry> addEntries {}; ///< in the order in which they came
    int addTotalFiles;             ///< in the body
    AddOptions addOptionsByReply;
    QString addStreamErrors {}; ///< the first error in the stream
    int filesSkipped;
    int foldersWithinThemselves;

    int reported = 0;         ///< how many of the entries have been announced
    bool isReporting = false; ///< an announcement is under way, which may run an event loop
    bool isFinished = false;  ///< nothing more comes

private:
    void keep(const AddEntry& entry);

    QSet<QString> awaited; ///< files that the node has not reported
};
