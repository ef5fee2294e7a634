// SPDX-License-Identifier: MIT
#include "CountText.h"

#include <algorithm>
#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

struct UpdateRate
{
    int belowRows;
    int intervalMs;
};

constexpr std::array updateRates {UpdateRate {2000, 100}, UpdateRate {5000, 350}, UpdateRate {10000, 600}};
constexpr int slowestUpdateMs = 900;

/// The text cut in two before its totals; the first part loses the separators at its end.
CountText::Lines splitBeforeTotals(const QString& text)
{
    qsizetype start = text.indexOf("Total:"_L1);
    if (start < 0)
        start = text.indexOf("Total DAG size"_L1);
    if (start < 0)
        return {.second = text};
    QString first = text.first(start).trimmed();
    while (first.endsWith(u'|'))
        first.chop(1);
    return {.first = first.trimmed(), .second = text.sliced(start).trimmed()};
}

} // namespace

CountText::Lines CountText::lines(const Counts& counts)
{
    const bool sizeKnown = !counts.unpinned && counts.dagSize > 0;
    QString text = listText(counts)
        + tr("  |  Total DAG size of all displayed CIDs: %1")
              .arg(sizeKnown ? PinModel::formatSize(counts.dagSize) : u"—"_s);
    if (counts.metadataTargets > 0) {
        text += tr("  |  Metadata loaded: %1/%2 CIDs")
                    .arg(QString::number(counts.metadataDone), QString::number(counts.metadataTargets));
    }
    return splitBeforeTotals(text);
}

QString CountText::listText(const Counts& counts)
{
    const QString total = QString::number(counts.total);
    const QString shown = QString::number(counts.shown);
    if (counts.unpinned) {
        return counts.searching ? tr("%1 / %2 shown (unpinned)").arg(shown, total)
                                : tr("Total: %1 (unpinned)").arg(total);
    }
    const QString recursive = QString::number(counts.types.recursive);
    const QString direct = QString::number(counts.types.direct);
    const QString indirect = QString::number(counts.types.indirect);
    return counts.searching
        ? tr("%1 / %2 shown  |  R:%3  D:%4  I:%5").arg(shown, total, recursive, direct, indirect)
        : tr("Total: %1  |  Recursive: %2  |  Direct: %3  |  Indirect: %4").arg(total, recursive, direct, indirect);
}

int CountText::countUpdateIntervalMs(int rows)
{
    const auto* const rate
        = std::ranges::find_if(updateRates, [rows](const UpdateRate& r) { return rows < r.belowRows; });
    return rate == updateRates.end() ? slowestUpdateMs : rate->intervalMs;
}

long long CountText::addBytes(long long sum, long long more)
{
    return more > 0 ? sum + std::min(more, std::numeric_limits<long long>::max() - sum) : sum;
}
