// SPDX-License-Identifier: MIT
#pragma once

#include "PinModel.h"

#include <QCoreApplication>
#include <QString>

/// What the two count lines below the table show, and how often they follow.
class CountText
{
    Q_DECLARE_TR_FUNCTIONS(CountText)

public:
    struct Counts
    {
        bool unpinned = false;  ///< the list is of blocks without a pin
        bool searching = false; ///< a search text narrows the list
        int total = 0;
        int shown = 0;
        PinModel::TypeCounts types {};
        long long dagSize = 0;   ///< bytes of all shown rows, as far as known
        int metadataDone = 0;    ///< of the targets
        int metadataTargets = 0; ///< 0 if no metadata is loaded
    };
    struct Lines
    {
        QString first {}; ///< empty unless the list is searched
        QString second {};
        friend bool operator==(const Lines&, const Lines&) = default;
    };

    static Lines lines(const Counts& counts);
    /// Milliseconds between two updates while facts come in, longer for long lists.
    static int countUpdateIntervalMs(int rows);
    /// The sum of two byte counts, of which the second may be whatever a node reports; it stops at the largest number.
    static long long addBytes(long long sum, long long more);

private:
    static QString listText(const Counts& counts);
};
