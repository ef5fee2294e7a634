// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"
#include "LineBuffer.h"

#include <QHash>
#include <QList>

class AddWalk;

/// What an upload has come to so far. Its reply holds it.
class AddUpload
{
public:
    /// What `walk` has put into the body.
    AddUpload(const AddOptions& options, const AddWalk& walk);

    /// Takes the next bytes of the node's answer.
    void take(const QByteArray& chunk);
    /// Takes what came after the last line feed, as an object and not as an error.
    void takeLastLine();

    /// The one object that holds all that was added; empty if there is none.
    QString rootCid() const;
    /// Whether something was to be added and is not in what the node reported.
    bool isShort() const;
    int filesReported() const { return reportedFiles; }
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

    QHash<QString, int> awaited; ///< names of files that the node has not reported, with how often
    int reportedFiles = 0;
};
