// SPDX-License-Identifier: MIT
#include "DroppedFiles.h"

#include <QDropEvent>
#include <QMimeData>
#include <QSysInfo>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

/// Empty if `url` is none of a local file. Some file managers name this computer as the host; on Windows another host
/// is a share.
QString localPathOf(QUrl url)
{
    if (!url.isLocalFile())
        return {};
    const QString host = url.host();
    if (host == "localhost"_L1 || host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0)
        url.setHost({});
#ifndef Q_OS_WIN
    if (!url.host().isEmpty())
        return {};
#endif
    return url.toLocalFile();
}

} // namespace

QStringList localPathsOf(const QMimeData& data)
{
    QStringList paths;
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls) {
        if (const QString path = localPathOf(url); !path.isEmpty())
            paths.append(path);
    }
    return paths;
}

QStringList acceptLocalPaths(QDropEvent* event)
{
    QStringList paths = localPathsOf(*event->mimeData());
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(!paths.isEmpty());
    return paths;
}
