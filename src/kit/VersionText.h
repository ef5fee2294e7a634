// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// How a running version compares with a published one.
struct VersionVerdict
{
    enum Kind { Unparsable, UpToDate, Newer };

    Kind kind = Unparsable;
    QString current {}; ///< as it is shown: without "v", at most 100 letters
    QString latest {};  ///< likewise
};

/// `body` is a file whose first line is the published version, with or without "v"; `current` is written likewise. A
/// running version beyond the published one is up to date.
VersionVerdict judgeVersions(const QByteArray& body, const QString& current);
