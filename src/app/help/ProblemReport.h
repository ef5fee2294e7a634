// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// What a report of a problem is made of.
struct ProblemReport
{
    QStringList facts {};     ///< about the program and the system, a line each; they name nobody
    QString agent {};         ///< what the node last called itself; empty if it has not answered
    QStringList statusLog {}; ///< oldest first; the last 50 lines are reported

    /// The report. Unless `withAddresses`, redactedText is applied to what came from elsewhere.
    QString text(bool withAddresses) const;
};

/// Versions of the program and its libraries, the system, the screen and the look.
QStringList systemFacts();
