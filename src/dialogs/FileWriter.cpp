// SPDX-License-Identifier: MIT
#include "FileWriter.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QUuid>

#include <filesystem>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestName = 255;   // bytes, on the common file systems
constexpr qsizetype temporarySuffix = 7; // what a save file appends while it is written

/// Whether the file system would take the name but not with a save file's suffix appended.
bool leavesNoRoom(const QString& name)
{
    const qsizetype length = QFile::encodeName(name).size();
    return length <= longestName && length + temporarySuffix > longestName;
}

/// Puts one file in the place of another in one step, or removes it.
bool moveOver(const QString& from, const QFileInfo& to)
{
    std::error_code error;
    std::filesystem::rename(QFileInfo(from).filesystemFilePath(), to.filesystemFilePath(), error);
    if (error)
        QFile::remove(from);
    return !error;
}

} // namespace

WriteResult writeFile(const QString& path, const QByteArray& data)
{
    const QFileInfo target(path);
    const bool detour = leavesNoRoom(target.fileName());
    const QString written
        = detour ? target.path() + u"/.norvo-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces) : path;
    QSaveFile file(written);
    bool inPlace = false;
    if (!file.open(QIODevice::WriteOnly)) {
        file.setDirectWriteFallback(true); // the folder may be closed to new files, and the file open to writing
        inPlace = file.open(QIODevice::WriteOnly);
        if (!inPlace)
            return {.message = QCoreApplication::translate("FileWriter", "Cannot write: %1").arg(file.errorString()),
                    .reason = file.errorString()};
    }
    // A commit does not notice that the last bytes, or all of a short file, could not be flushed.
    const bool complete = file.write(data) == data.size() && file.flush() && file.commit();
    if (!complete || (detour && !moveOver(written, target))) {
        const QString message = inPlace
            ? QCoreApplication::translate("FileWriter", "Failed to write %1, which has lost its former content")
            : QCoreApplication::translate("FileWriter", "Failed to write %1");
        return {.message = message.arg(target.fileName()), .reason = file.errorString()};
    }
    return {.ok = true};
}
