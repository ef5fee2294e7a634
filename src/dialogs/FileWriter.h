// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

struct WriteResult
{
    bool ok = false;
    QString message {}; ///< for people; empty if ok
    QString reason {};  ///< the system's, without the name of the file
};

/// Writes a whole file, on any thread, and replaces one of that name. A write that fails or is interrupted leaves
/// nothing under the name, or the file that was there before; only a file in a folder that takes no new files is
/// written in place, and the message says that a failure has cost its former content.
WriteResult writeFile(const QString& path, const QByteArray& data);
