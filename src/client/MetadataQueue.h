// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QSet>
#include <QString>

/// A bounded queue of CIDs that one fact is asked for.
struct MetadataQueue
{
    QList<QString> queue {}; ///< not yet sent, oldest first
    QSet<QString> known {};  ///< queued or in flight
    int inFlight = 0;        ///< replies open for this queue
};
