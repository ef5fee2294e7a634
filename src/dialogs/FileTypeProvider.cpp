// SPDX-License-Identifier: MIT
#include "FileTypeProvider.h"

#include <QCoreApplication>
#include <QMimeDatabase>

using namespace Qt::StringLiterals;

namespace {

QString typeOfSuffix(const QString& suffix)
{
    const QMimeType type = QMimeDatabase().mimeTypeForFile("x."_L1 + suffix, QMimeDatabase::MatchExtension);
    return type.isDefault() || suffix.isEmpty() ? QCoreApplication::translate("FileTypeProvider", "File")
                                                : type.comment();
}

} // namespace

FileTypeProvider::FileTypeProvider()
    : folderIcon(icon(Folder))
    , fileIcon(icon(File))
{
}

QIcon FileTypeProvider::icon(const QFileInfo& info) const
{
    return info.isDir() ? folderIcon : fileIcon;
}

QString FileTypeProvider::type(const QFileInfo& info) const
{
    if (!info.isFile())
        return QFileIconProvider::type(info);
    QString& type = types[info.suffix()];
    if (type.isEmpty())
        type = typeOfSuffix(info.suffix());
    return type;
}
