// SPDX-License-Identifier: MIT
#include "GcReportText.h"

#include "ByteText.h"

#include <QCoreApplication>
#include <QJsonValue>
#include <QVariant>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

struct GcReportText
{
    Q_DECLARE_TR_FUNCTIONS(GcReportText)
};

constexpr double firstTooLarge = 9223372036854775808.0; // 2^63

/// What 64 bits hold is kept as such, and comes out as a double no more exact than 2^63 is.
bool isTooLarge(const QJsonValue& value)
{
    return value.toVariant().typeId() == QMetaType::Double && value.toDouble() >= firstTooLarge;
}

/// -1 for what 64 bits don't hold, and 0 for what is no number.
long long wholeNumber(const QJsonValue& value)
{
    if (isTooLarge(value) || value.toDouble() < -firstTooLarge)
        return -1;
    return value.toVariant().toLongLong();
}

QString countText(long long count)
{
    return count < 0 ? u"—"_s : QString::number(count);
}

QString sizeText(long long bytes)
{
    if (bytes < 0)
        return countText(bytes);
    return GcReportText::tr("%1 (%2 B)").arg(byteText(bytes, ByteUnits::Binary), QString::number(bytes));
}

/// A limit that can't be read as a number is shown above the other lines, and a numeric one below "RepoSize".
void insertStorageMax(const QJsonValue& value, QStringList& lines)
{
    const QVariant limit = value.toVariant();
    const QString line = GcReportText::tr("StorageMax: %1");
    if (isTooLarge(value))
        lines.append(line.arg(GcReportText::tr("no limit")));
    else if (limit.canConvert<qlonglong>() && wholeNumber(value) >= 0)
        lines.append(line.arg(sizeText(wholeNumber(value))));
    else if (!limit.canConvert<qlonglong>() && limit.canConvert<QString>())
        lines.insert(1, line.arg(limit.toString()));
}

} // namespace

QStringList repoStatLines(const QJsonObject& stat, const QString& time)
{
    QStringList lines {GcReportText::tr("[%1] /api/v0/repo/stat").arg(time),
                       GcReportText::tr("NumObjects: %1").arg(countText(wholeNumber(stat.value("NumObjects"_L1)))),
                       GcReportText::tr("RepoSize: %1").arg(sizeText(wholeNumber(stat.value("RepoSize"_L1))))};
    insertStorageMax(stat.value("StorageMax"_L1), lines);
    if (const QString path = stat.value("RepoPath"_L1).toString(); !path.isEmpty())
        lines.append(GcReportText::tr("RepoPath: %1").arg(path));
    if (const QString version = stat.value("Version"_L1).toString(); !version.isEmpty())
        lines.append(GcReportText::tr("Version: %1").arg(version));
    return lines;
}

QList<LinePart> gcReportParts(const QStringList& collectedCids, const QStringList& errors, const QString& time)
{
    const QString indent = u" - "_s;
    QList<LinePart> parts {{.lines = {GcReportText::tr("[%1] /api/v0/repo/gc completed").arg(time),
                                      GcReportText::tr("Collected entries: %1").arg(collectedCids.size()),
                                      GcReportText::tr("Errors: %1").arg(errors.size()), QString()}}};
    if (!errors.isEmpty()) {
        parts.append({.lines = {GcReportText::tr("Errors:")}});
        parts.append({.lines = errors, .prefix = indent});
        parts.append({.lines = {QString()}});
    }
    if (collectedCids.isEmpty()) {
        parts.append({.lines = {GcReportText::tr("No collected CIDs returned.")}});
    } else {
        parts.append({.lines = {GcReportText::tr("Collected CIDs:")}});
        parts.append({.lines = collectedCids, .prefix = indent});
    }
    return parts;
}
