#pragma once

#include <QByteArray>
#include <QString>

struct WriteResult
{
    bool ok = false;
    QString message {}; ///< for people; empty if ok
};

/// Writes a whole file, on any thread, and replaces one of that name. A write that fails or is broken off leaves
/// nothing under the name, or the file that stood there before.
WriteResult writeFile(const QString& path, const QByteArray& data);
