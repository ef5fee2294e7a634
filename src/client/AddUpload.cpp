// SPDX-License-Identifier: MIT
#include "AddUpload.h"

#include "AddParser.h"
#include "AddWalk.h"

AddUpload::AddUpload(const AddOptions& options, const AddWalk& walk)
    : addTotalFiles(walk.fileCount())
    , addOptionsByReply(options)
    , filesSkipped(walk.skipped())
    , foldersWithinThemselves(walk.foldersWithinThemselves())
    , awaited(walk.files())
{
}

void AddUpload::take(const QByteArray& chunk)
{
    addStreamBuffers.take(chunk, [this](QByteArrayView bytes) {
        const auto line = parseAddLine(bytes.trimmed());
        if (!line)
            return;
        if (line->error.isEmpty())
            keep(line->entry);
        else if (addStreamErrors.isEmpty())
            addStreamErrors = line->error;
    });
}

void AddUpload::takeLastLine()
{
    if (const auto line = parseAddLine(QByteArrayView(addStreamBuffers.openLine()).trimmed()))
        keep(line->entry);
}

/// A line without a CID only says how many bytes have been read.
void AddUpload::keep(const AddEntry& entry)
{
    if (entry.cid.isEmpty())
        return;
    if (const auto file = awaited.find(entry.name); file != awaited.end()) {
        ++reportedFiles;
        if (--*file == 0)
            awaited.remove(entry.name);
    }
    addEntries.append(entry);
}

bool AddUpload::rootLineMissing() const
{
    return addOptionsByReply.wrapWithDirectory && (addEntries.isEmpty() || !addEntries.constLast().name.isEmpty());
}

QString AddUpload::rootCid() const
{
    const bool hasRoot = addOptionsByReply.wrapWithDirectory ? !rootLineMissing() : addEntries.size() == 1;
    return hasRoot ? addEntries.constLast().cid : QString();
}

bool AddUpload::isShort() const
{
    return !awaited.isEmpty() || filesSkipped > 0 || rootLineMissing();
}
