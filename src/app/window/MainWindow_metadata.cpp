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
constexpr int planSlice = 10'000;

} // namespace

bool MainWindow::wantsMetadata() const
{
    return values.loadMetadata && values.contentMode == ContentMode::pinned;
}

void MainWindow::planMetadata(const QList<PinEntry>& list)
{
    dropPlan();
    plan.startList();
    if (values.contentMode == ContentMode::pinned) {
        for (const QString& cid : plan.takeRefs(list))
            client->fetchRefs(cid);
    }
    if (wantsMetadata())
        planNextFacts();
}

/// A short list is planned at once. A long one takes a turn of the event loop for each slice, since planning hundreds
/// of thousands of CIDs would hold up the window longer than showing them does.
void MainWindow::planNextFacts()
{
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
    if (planPosition < pinModel->rowCount())
        planTimer->start();
    startCountTimer();
}

void MainWindow::dropPlan()
{
    planTimer->stop();
    planPosition = 0;
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
    updateCountLabelsSoon();
}

void MainWindow::onKindReceived(const QString& cid, const QString& kind)
{
    pinModel->setKind(cid, kind);
    plan.kindReceived(cid, kind);
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
    if (recent && plan.doneCount() < plan.targetCount())
        return;
    lastCountLabelUpdateMs = now;
    updateCountLabels();
}

/// The sum over the shown rows, in bytes; grows as sizes come in.
long long MainWindow::shownDagSize() const
{
    long long sum = 0;
    for (int row = 0; row < proxyModel->rowCount(); ++row) {
        const PinEntry* pin = pinModel->pinAt(proxyModel->mapToSource(proxyModel->index(row, 0)).row());
        sum = CountText::addBytes(sum, pin ? pin->dagSize : 0);
    }
    return sum;
}

void MainWindow::updateCountLabels()
{
    const bool unpinned = showsUnpinned();
    statsFrame->showCounts(CountText::lines({.unpinned = unpinned,
                                             .searching = !toolBar->searchText().isEmpty(),
                                             .total = pinModel->rowCount(),
                                             .shown = proxyModel->rowCount(),
                                             .types = unpinned ? PinModel::TypeCounts() : pinModel->countsByType(),
                                             .dagSize = unpinned ? 0 : shownDagSize(),
                                             .metadataDone = plan.doneCount(),
                                             .metadataTargets = wantsMetadata() ? plan.targetCount() : 0}));
    updateEmptyText();
}
