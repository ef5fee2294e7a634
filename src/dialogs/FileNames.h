// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// `name` as one name that every file system takes: no separator, no control or reserved character, no blank or dot
/// at its end. Never empty, "." or "..". Cleaning a clean name changes nothing.
QString sanitizeFileName(const QString& name);

/// `path` with each of its parts cleaned. The result is relative, never empty and stays inside the folder that it is
/// appended to.
QString sanitizeRelativePath(const QString& path);

/// Whether Windows takes the name for a device, whatever its case, its suffix and its folder.
bool isDeviceName(const QString& name);

/// A number of bytes for the tree: "512", "1.5 KB", "3.0 MB", "2.2 GB".
QString formatFileSize(qint64 bytes);

/// The suffix, with its dot, that belongs to a file of these bytes; empty if they show none.
QString suffixOf(const QByteArray& data);
