// SPDX-License-Identifier: MIT
#include "AddResult.h"

#include <QCoreApplication>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("AddResult", text);
}

} // namespace

QString AddShortfall::text() const
{
    QStringList lines;
    if (filesReported < filesSent)
        lines.append(tr("The node reported %1 of the %2 files that were sent.")
                         .arg(QString::number(filesReported), QString::number(filesSent)));
    if (filesSkipped > 0)
        lines.append(tr("%1 file(s) or folder(s) could not be read and were left out.").arg(filesSkipped));
    if (rootLineMissing)
        lines.append(tr("The node did not report the directory around it all: the add may have been cut short."));
    if (foldersWithinThemselves > 0)
        lines.append(tr("%1 folder(s) lead back to a folder that they are in, and were not entered again.")
                         .arg(foldersWithinThemselves));
    if (!serviceLeftOut.isEmpty())
        lines.append(serviceLeftOut);
    return lines.join(u'\n');
}

QStringList addedCids(const QString& rootCid, const QList<AddEntry>& entries)
{
    QStringList cids;
    QSet<QString> seen {QString()};
    const auto append = [&](const QString& cid) {
        if (const qsizetype before = seen.size(); seen.insert(cid), seen.size() > before)
            cids.append(cid);
    };
    append(rootCid);
    for (const AddEntry& entry : entries)
        append(entry.cid.trimmed());
    return cids;
}
