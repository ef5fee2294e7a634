// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// One link of a listing.
struct LsEntry
{
    QString name {};       ///< may be empty for the chunks of a file
    QString objectName {}; ///< the name of the listed object, where the node gives one
    QString hash {};       ///< the link's CID
    qint64 size = 0;       ///< bytes; 0 where the node gives none
    int type = 0;          ///< the node's number; 1 is a directory
    friend bool operator==(const LsEntry&, const LsEntry&) = default;
};
