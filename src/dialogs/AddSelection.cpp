// SPDX-License-Identifier: MIT
#include "AddSelection.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

/// Without a slash at its end, which a dropped folder may have. Empty if there is nothing at `path`.
QString existingPath(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() ? QDir::cleanPath(info.absoluteFilePath()) : QString();
}

/// Looks each folder above `path` up: in the sorted order "a.txt" comes between "a" and "a/b", so the path kept last
/// needn't be the folder that holds this one.
bool isInsideOne(const QString& path, const QSet<QString>& chosen)
{
    for (qsizetype slash = path.indexOf(u'/'); slash >= 0; slash = path.indexOf(u'/', slash + 1)) {
        const QString folder = slash == 0 ? u"/"_s : path.first(slash);
        if (folder != path && chosen.contains(folder))
            return true;
    }
    return false;
}

QString baseName(const QFileInfo& info)
{
    const QString name = info.fileName().trimmed();
    const bool isPlace = name.isEmpty() || name == "."_L1 || name == ".."_L1; // to a node, not a name
    return isPlace ? QCoreApplication::translate("AddSelection", "item") : name;
}

/// Names within one directory.
class UniqueNames
{
public:
    QString nameFor(const QString& base)
    {
        int& seen = timesSeen[base];
        QString name = ++seen == 1 ? base : numbered(base, seen);
        while (taken.contains(name)) // by a file that is really called so
            name = numbered(base, ++seen);
        taken.insert(name);
        return name;
    }

private:
    static QString numbered(const QString& base, int number) { return u"%1-%2"_s.arg(base, QString::number(number)); }

    QHash<QString, int> timesSeen; ///< or the number that was given last
    QSet<QString> taken;
};

} // namespace

QStringList normalizedPaths(const QStringList& paths)
{
    QSet<QString> chosen;
    for (const QString& path : paths) {
        if (const QString existing = existingPath(path); !existing.isEmpty())
            chosen.insert(existing);
    }
    QStringList kept(chosen.cbegin(), chosen.cend());
    kept.removeIf([&chosen](const QString& path) { return isInsideOne(path, chosen); });
    kept.sort();
    return kept;
}

QList<LocalPathSelection> uploadSelections(const QStringList& paths)
{
    QList<LocalPathSelection> selections;
    selections.reserve(paths.size());
    UniqueNames names;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (info.exists())
            selections.append({info.absoluteFilePath(), names.nameFor(baseName(info)), info.isDir()});
    }
    return selections;
}
