// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"

#include <QList>
#include <QStringList>

/// What is missing of an add that went through.
struct AddShortfall
{
    int filesSent = 0;
    int filesReported = 0;
    int filesSkipped = 0;
    int foldersWithinThemselves = 0;
    bool rootLineMissing = false;
    QString serviceLeftOut {}; ///< why it was not pinned remotely, where that was wanted

    /// Whether content is missing; a folder within itself is in the upload once.
    bool isShort() const { return filesReported < filesSent || filesSkipped > 0 || rootLineMissing; }
    /// For people, a line for each thing that is missing; empty if nothing is.
    QString text() const;
};

/// The add that runs, or the latest one.
struct CurrentAdd
{
    bool isRunning = false; ///< from the dialog's acceptance to the end of the upload
    AddOptions options {};
    AddShortfall shortfall {};
    int missingPaths = 0; ///< chosen, and gone before it began
    QString address {};   ///< of the node that it goes to
};

/// The distinct CIDs of an add: its root if there is one, then its objects in their order.
QStringList addedCids(const QString& rootCid, const QList<AddEntry>& entries);
