#include "MainWindow.h"

#include "ContentMode.h"
#include "IpfsClient.h"
#include "PinFilterProxyModel.h"
#include "PinModel.h"

#include <QDateTime>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

#include <algorithm>
#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

/// Ref counts asked for in one refresh.
constexpr int refsLimit = 500;
/// Above this many targets the count labels also follow directly, once a second, and not by the timer alone.
constexpr int manyTargets = 2500;
constexpr qint64 directUpdateMs = 1000;

/// CIDs planned in one turn of the event loop.
constexpr int planSlice = 10'000;

struct UpdateRate
{
    int belowRows;
    int intervalMs;
};

constexpr std::array updateRates {UpdateRate {2000, 100}, UpdateRate {5000, 350}, UpdateRate {10000, 600}};
constexpr int slowestUpdateMs = 900;

/// The text cut in two before its totals; the first part loses the separators at its end.
std::pair<QString, QString> splitBeforeTotals(const QString& text)
{
    qsizetype start = text.indexOf("Total:"_L1);
    if (start < 0)
        start = text.indexOf("Total DAG size"_L1);
    if (start < 0)
        return {{}, text};
    QString first = text.first(start).trimmed();
    while (first.endsWith(u'|'))
        first.chop(1);
    return {first.trimmed(), text.sliced(start).trimmed()};
}

} // namespace

bool MainWindow::wantsMetadata() const
{
    return loadMetadata && contentMode == ContentMode::pinned;
}

void MainWindow::planMetadata(const QList<PinEntry>& list)
{
    for (QSet<QString>* set : {&metadataTargets, &dagDone, &kindDone, &metadataDone, &refsPending})
        set->clear();
    dropPlan();
    if (contentMode == ContentMode::pinned)
        planRefs(list);
    if (!wantsMetadata())
        return;
    metadataTargets.reserve(list.size());
    planNextFacts();
}

/// A short list is planned at once. A long one takes a turn of the event loop for each slice, since planning hundreds
/// of thousands of CIDs would hold up the window longer than showing them does.
void MainWindow::planNextFacts()
{
    const int end = std::min(planPosition + planSlice, pinModel->rowCount());
    for (; planPosition < end; ++planPosition) {
        if (const QString cid = pinModel->pinAt(planPosition)->cid; !cid.isEmpty())
            planFacts(cid);
    }
    if (planPosition < pinModel->rowCount())
        planTimer->start();
    startCountTimer();
}

void MainWindow::dropPlan()
{
    planTimer->stop();
    planPosition = 0;
}

void MainWindow::planRefs(const QList<PinEntry>& list)
{
    int asked = 0;
    for (const PinEntry& pin : list) {
        if (pin.type != PinType::recursive || pin.cid.isEmpty())
            continue;
        refsPending.insert(pin.cid);
        client->fetchRefs(pin.cid);
        if (++asked == refsLimit)
            return;
    }
}

void MainWindow::planFacts(const QString& cid)
{
    metadataTargets.insert(cid);
    const auto size = dagSizeCache.constFind(cid);
    const bool sizeKnown = size != dagSizeCache.constEnd();
    if (sizeKnown) {
        pinModel->setDagSize(cid, *size);
        dagDone.insert(cid);
    } else {
        client->fetchObjectStat(cid);
    }
    const auto kind = kindCache.constFind(cid);
    const bool kindKnown = kind != kindCache.constEnd();
    if (kindKnown) {
        pinModel->setKind(cid, *kind);
        kindDone.insert(cid);
    } else {
        client->fetchKind(cid);
    }
    if (sizeKnown && kindKnown)
        metadataDone.insert(cid);
}

void MainWindow::onRefsReceivedForTable(const QString& rootCid, const QStringList& cids)
{
    if (refsPending.remove(rootCid))
        pinModel->setRefsCount(rootCid, static_cast<int>(cids.size()));
}

void MainWindow::onDagStatReceived(const QString& cid, long long cumulativeSize)
{
    pinModel->setDagSize(cid, cumulativeSize);
    if (cumulativeSize >= 0)
        dagSizeCache.insert(cid, cumulativeSize);
    if (metadataTargets.contains(cid))
        dagDone.insert(cid);
    if (kindDone.contains(cid))
        metadataDone.insert(cid);
    updateCountLabelsSoon();
}

void MainWindow::onKindReceived(const QString& cid, const QString& kind)
{
    pinModel->setKind(cid, kind);
    if (!kind.isEmpty())
        kindCache.insert(cid, kind);
    if (metadataTargets.contains(cid))
        kindDone.insert(cid);
    if (dagDone.contains(cid))
        metadataDone.insert(cid);
    updateCountLabelsSoon();
}

int MainWindow::countUpdateIntervalMs() const
{
    const int rows = pinModel->rowCount();
    const auto* const rate
        = std::ranges::find_if(updateRates, [rows](const UpdateRate& r) { return rows < r.belowRows; });
    return rate == updateRates.end() ? slowestUpdateMs : rate->intervalMs;
}

/// A burst of results costs one update an interval, and its first result is not put off by the later ones.
void MainWindow::startCountTimer()
{
    if (!countUpdateTimer->isActive())
        countUpdateTimer->start(countUpdateIntervalMs());
}

void MainWindow::updateCountLabelsSoon()
{
    startCountTimer();
    if (metadataTargets.size() <= manyTargets)
        return;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const bool recent = lastCountLabelUpdateMs != 0 && now - lastCountLabelUpdateMs < directUpdateMs;
    if (recent && metadataDone.size() < metadataTargets.size())
        return;
    lastCountLabelUpdateMs = now;
    updateCountLabels();
}

QString MainWindow::countText() const
{
    const int total = pinModel->rowCount();
    const int shown = proxyModel->rowCount();
    const bool searching = !searchEdit->text().isEmpty();
    const auto number = [](int n) { return QString::number(n); };
    if (showsUnpinned()) {
        return searching ? tr("%1 / %2 shown (unpinned)").arg(number(shown), number(total))
                         : tr("Total: %1 (unpinned)").arg(total);
    }
    const PinModel::TypeCounts counts = pinModel->countsByType();
    const QString recursive = number(counts.recursive);
    const QString direct = number(counts.direct);
    const QString indirect = number(counts.indirect);
    return searching
        ? tr("%1 / %2 shown  |  R:%3  D:%4  I:%5").arg(number(shown), number(total), recursive, direct, indirect)
        : tr("Total: %1  |  Recursive: %2  |  Direct: %3  |  Indirect: %4")
              .arg(number(total), recursive, direct, indirect);
}

/// The sum over the shown rows; grows as sizes come in.
QString MainWindow::shownDagSizeText() const
{
    long long sum = 0;
    for (int row = 0; !showsUnpinned() && row < proxyModel->rowCount(); ++row) {
        const PinEntry* pin = pinModel->pinAt(proxyModel->mapToSource(proxyModel->index(row, 0)).row());
        if (pin && pin->dagSize > 0) // as large as a node says: the sum stops at the largest number there is
            sum += std::min(pin->dagSize, std::numeric_limits<long long>::max() - sum);
    }
    return sum > 0 ? PinModel::formatSize(sum) : u"—"_s;
}

QString MainWindow::metadataTail() const
{
    if (!wantsMetadata() || metadataTargets.isEmpty())
        return {};
    return tr("  |  Metadata loaded: %1/%2 CIDs")
        .arg(QString::number(metadataDone.size()), QString::number(metadataTargets.size()));
}

void MainWindow::updateCountLabels()
{
    const QString text
        = countText() + tr("  |  Total DAG size of all displayed CIDs: %1").arg(shownDagSizeText()) + metadataTail();
    const auto [first, second] = splitBeforeTotals(text);
    statsLine1Label->setText(first);
    statsLine1Label->setVisible(!first.isEmpty());
    countLabel->setText(second);
}

void MainWindow::onSearchTextChanged(const QString& /*text*/)
{
    searchDebounceTimer->start();
}

void MainWindow::onSearchDebounceTimeout()
{
    proxyModel->setFilterFixedString(searchEdit->text());
    updateCountLabels();
}
