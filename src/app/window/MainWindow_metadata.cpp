// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ContentMode.h"
#include "IpfsClient.h"
#include "PinModel.h"
#include "PinToolBar.h"
#include "StatsFrame.h"

#include <QDateTime>
#include <QTimer>

#include <algorithm>

namespace {

/// Above this many targets the count labels also follow directly, once a second, and not by the timer alone.
constexpr int manyTargets = 2500;
constexpr qint64 directUpdateMs = 1000;

/// CIDs planned in one turn of the event loop.
constexpr int planSlice = 5'000;
/// So many CIDs are asked about ahead: minutes of work for a node, and little to keep and to drop.
constexpr int plannedAhead = 20'000;

} // namespace

bool MainWindow::wantsMetadata() const
{
    return values.loadMetadata && values.contentMode == ContentMode::pinned;
}

void MainWindow::planMetadata(const QList<PinEntry>& list)
{
    dropPlan();
    plan.startList();
    planPosition = 0;
    if (values.contentMode == ContentMode::pinned) {
        for (const QString& cid : plan.takeRefs(list))
            client->fetchRefs(cid);
    }
    planNextFacts();
}

/// A short list is planned at once. A long one takes a turn of the event loop for each slice, and waits for answers
/// before it goes far ahead, since planning hundreds of thousands of CIDs would hold up the window longer than showing
/// them does.
void MainWindow::planNextFacts()
{
    if (!wantsMetadata() || planTimer->isActive() || unplannedRows() == 0
        || plan.targetCount() - plan.doneCount() > plannedAhead)
        return;
    const int end = std::min(planPosition + planSlice, pinModel->rowCount());
    for (; planPosition < end; ++planPosition) {
        const QString cid = pinModel->pinAt(planPosition)->cid;
        if (cid.isEmpty())
            continue;
        const MetadataPlan::Wanted wanted = plan.addTarget(cid);
        if (wanted.size)
            client->fetchObjectStat(cid);
        if (wanted.kind)
            client->fetchKind(cid);
    }
    if (unplannedRows() > 0)
        planTimer->start();
    startCountTimer();
}

int MainWindow::unplannedRows() const
{
    return planPosition < 0 ? 0 : std::max(pinModel->rowCount() - planPosition, 0);
}

void MainWindow::dropPlan()
{
    planTimer->stop();
    planPosition = -1;
    ++listsTaken;
}

void MainWindow::onRefsReceivedForTable(const QString& rootCid, const QStringList& cids)
{
    if (plan.refsReceived(rootCid))
        pinModel->setRefsCount(rootCid, static_cast<int>(cids.size()));
}

void MainWindow::onDagStatReceived(const QString& cid, long long cumulativeSize)
{
    pinModel->setDagSize(cid, cumulativeSize);
    plan.sizeReceived(cid, cumulativeSize);
    planNextFacts();
    updateCountLabelsSoon();
}

void MainWindow::onKindReceived(const QString& cid, const QString& kind)
{
    pinModel->setKind(cid, kind);
    plan.kindReceived(cid, kind);
    planNextFacts();
    updateCountLabelsSoon();
}

/// A burst of results costs one update an interval, and its first result is not put off by the later ones.
void MainWindow::startCountTimer()
{
    if (!countUpdateTimer->isActive())
        countUpdateTimer->start(CountText::countUpdateIntervalMs(pinModel->rowCount()));
}

void MainWindow::updateCountLabelsSoon()
{
    startCountTimer();
    if (plan.targetCount() <= manyTargets)
        return;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const bool recent = lastCountLabelUpdateMs != 0 && now - lastCountLabelUpdateMs < directUpdateMs;
    const bool isLast
        = plan.doneCount() == plan.targetCount() && unplannedRows() == 0 && plan.doneCount() != countedDone;
    if (recent && !isLast) // a result of a former list changes nothing, and a look at all rows takes 10 ms for each
        return;
    countedDone = plan.doneCount();
    lastCountLabelUpdateMs = now;
    updateCountLabels();
}

/// The sum over the shown rows, in bytes; grows as sizes come in.
long long MainWindow::shownDagSize() const
{
    long long sum = 0;
    for (int row = 0; row < proxyModel->rowCount(); ++row) {
        const PinEntry* pin = proxyModel->pinAt(row);
        sum = CountText::addBytes(sum, pin ? pin->dagSize : 0);
    }
    return sum;
}

void MainWindow::updateCountLabels()
{
    const bool unpinned = showsUnpinned();
    statsFrame->showCounts(
        CountText::lines({.unpinned = unpinned,
                          .searching = !toolBar->searchText().isEmpty(),
                          .total = pinModel->rowCount(),
                          .shown = proxyModel->rowCount(),
                          .types = unpinned ? PinModel::TypeCounts() : pinModel->countsByType(),
                          .dagSize = unpinned ? 0 : shownDagSize(),
                          .metadataDone = plan.doneCount(),
                          .metadataTargets = wantsMetadata() ? plan.targetCount() + unplannedRows() : 0}));
    updateEmptyText();
}
