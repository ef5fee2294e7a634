// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

/// Writes a file below `folder`, and the folders above it. Returns its path.
inline QString writeTestFile(const QString& folder, const QString& name, const QByteArray& content)
{
    QString path = folder + u'/' + name;
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        QTest::qFail("can't write a test's file", __FILE__, __LINE__);
    return path;
}
