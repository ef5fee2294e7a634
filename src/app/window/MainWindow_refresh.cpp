// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ContentMode.h"
#include "Detached.h"
#include "IpfsClient.h"
#include "PinModel.h"
#include "PinTable.h"
#include "PinToolBar.h"
#include "StatsFrame.h"

#include <QTime>
#include <QTimer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto loadMessageShown = 5000ms;
/// Longest list whose columns are measured.
constexpr int fittedRows = 1200;
/// Longest list that is made ready for the table in one turn.
constexpr qsizetype preparedAtOnce = 20'000;
/// Until the former list and all that reading this one has taken are free.
constexpr auto trimDelay = 600ms;

} // namespace

struct MainWindow::ListRules
{
    bool hidesIndirect = false;
    MetadataPlan::KnownFacts known {};

    /// What the table gets of a listing, with what earlier refreshes brought.
    QList<PinEntry> appliedTo(QList<PinEntry> pins) const
    {
        if (hidesIndirect)
            pins.removeIf([](const PinEntry& pin) { return pin.type == PinType::indirect; });
        known.fillIn(pins);
        return pins;
    }
};

void MainWindow::onRefreshClicked()
{
    triggerRefresh(false);
}

void MainWindow::onAutoRefreshTick()
{
    triggerRefresh(false);
}

bool MainWindow::showsUnpinned() const
{
    return values.contentMode == ContentMode::unpinned;
}

void MainWindow::onContentChanged()
{
    values.contentMode = toolBar->contentMode();
    toolBar->setFilterEnabled(values.contentMode == ContentMode::pinned);
    if (showsUnpinned())
        onSelectionChanged(); // there is nothing to unpin; the other way round the rows are not pins until they come
    triggerRefresh(true);
}

/// Where the change comes as a reset, what was selected and is still there stays selected.
template <typename Change> void MainWindow::changeFilter(Change change)
{
    const PinTable::Place place = pinTable->place();
    bool wasReset = false;
    const auto watch = connect(proxyModel, &PinFilterProxyModel::modelReset, this, [&wasReset] { wasReset = true; });
    change();
    disconnect(watch);
    if (!wasReset)
        return;
    pinTable->restore(place);
    onSelectionChanged(); // a reset takes a selection away without a word
}

void MainWindow::onFilterChanged()
{
    values.typeFilter = toolBar->typeFilter();
    changeFilter([this] { proxyModel->setTypeFilter(values.typeFilter); });
    triggerRefresh(true);
}

void MainWindow::triggerRefresh(bool force)
{
    if (force) {
        dropPlan();
        client->cancelActiveLoading();
    } else if (toolBar->isRefreshing()) {
        return;
    }
    streamCounts.clear();
    lastCountLabelUpdateMs = 0;
    countedDone = 0;
    statsFrame->setConnectionDotState(ConnectionStatusDot::Checking, tr("Checking %1").arg(client->baseUrl()));
    setRefreshing(true);
    hideNotification();
    const QString message = showsUnpinned() ? tr("Fetching unpinned refs from %1…") : tr("Fetching pins from %1…");
    setStatusMessage(message.arg(client->baseUrl()));
    fetchList();
    client->fetchNodeInfo();
}

void MainWindow::fetchList()
{
    ++listsTaken; // one that is still made ready is older than what is asked for now
    load.isAnswered = false;
    load.error.clear();
    showListState(EmptyTable::Loading);
    if (showsUnpinned())
        client->fetchUnpinned();
    else
        client->fetchPins(values.typeFilter, u"base32"_s, true);
}

void MainWindow::setRefreshing(bool on)
{
    if (on && toolBar->refreshHasFocus())
        pinTable->setFocus(); // a disabled button would hand the focus on to whatever is next to it
    toolBar->setRefreshing(on);
}

void MainWindow::onStreamEntriesLoaded(const QString& source, int count)
{
    if (count <= 0 || !toolBar->isRefreshing())
        return;
    int& highest = streamCounts[source];
    highest = std::max(highest, count);
    if (source == (showsUnpinned() ? "refs/local"_L1 : "pin/ls"_L1))
        setStatusMessage(tr("Entries loaded: %1").arg(highest));
}

/// Whether an empty list means that nothing is known: the node can't be reached. Blocks that it refused to list are
/// none.
bool MainWindow::knowsNoList() const
{
    const bool blocksWereRefused = showsUnpinned() && isNodesReply(load.error);
    return !load.isAnswered && !blocksWereRefused;
}

void MainWindow::dropRows()
{
    pinModel->clear();
    load.rowsContent.clear();
    plan.startList();
    updateCountLabels();
    onSelectionChanged();
}

void MainWindow::showRows(const QList<PinEntry>& list)
{
    load.rowsContent = values.contentMode;
    load.rowsFilter = values.typeFilter;
    pinModel->setPins(list);
    planMetadata(list);
    proxyModel->setTypeFilter(values.typeFilter);
}

/// A long list is made ready on a thread.
void MainWindow::onPinsReceived(const QList<PinEntry>& pins)
{
    const ListRules rules {.hidesIndirect = values.typeFilter == PinType::recursiveAndDirect,
                           .known = wantsMetadata() ? plan.knownFacts() : MetadataPlan::KnownFacts()};
    const int taken = ++listsTaken;
    if (pins.size() <= preparedAtOnce) {
        takeList(rules.appliedTo(pins), pins.size());
        return;
    }
    // In a turn of its own: with the sender's list gone, the rows are written without a copy.
    QMetaObject::invokeMethod(
        this, [this, list = pins, rules, taken]() mutable { prepareList(std::move(list), rules, taken); },
        Qt::QueuedConnection);
}

void MainWindow::prepareList(QList<PinEntry> pins, const ListRules& rules, int taken)
{
    if (taken != listsTaken) {
        discard(std::move(pins));
        return;
    }
    const qsizetype count = pins.size();
    runDetached(
        this, [pins = std::move(pins), rules]() mutable { return rules.appliedTo(std::move(pins)); },
        [this, taken, count](QList<PinEntry> list) {
            if (taken == listsTaken)
                takeList(list, count);
            else
                discard(std::move(list));
        });
}

void MainWindow::takeList(const QList<PinEntry>& list, qsizetype pinsReceived)
{
    if (list.size() > preparedAtOnce)
        QTimer::singleShot(trimDelay, this, [] { startDetached(nullptr, trimMemory, nullptr); });
    setRefreshing(false);
    if (pinsReceived == 0 && knowsNoList())
        return; // the errors have been reported
    if (pinsReceived > 0 || load.state == EmptyTable::Loading)
        load.state = EmptyTable::Loaded; // else a part of the list has failed
    const PinTable::Place place = load.rowsContent == values.contentMode && load.rowsFilter == values.typeFilter
        ? pinTable->place()
        : PinTable::Place();
    showRows(list);
    if (!showsUnpinned()) {
        QTimer::singleShot(0ms, this, &MainWindow::fitColumns);
        if (list.size() > fittedRows)
            setStatusMessage(tr("Loaded %1 pin(s) — large list mode (auto-resize skipped)").arg(pinsReceived));
    }
    searchDebounceTimer->stop();
    proxyModel->setFilterFixedString(toolBar->searchText());
    pinTable->restore(place);
    updateCountLabels();

    const QString now = QTime::currentTime().toString(u"hh:mm:ss"_s);
    const QString loaded = showsUnpinned() ? tr("Loaded %1 unpinned CID(s) — %2") : tr("Loaded %1 pin(s) — %2");
    showStatusFor(loadMessageShown, loaded.arg(QString::number(pinsReceived), now));
    onSelectionChanged();
}

void MainWindow::showListState(EmptyTable::State state)
{
    load.state = state;
    updateEmptyText();
}

/// Where nothing is pinned recursively or directly, nothing is pinned at all.
void MainWindow::updateEmptyText()
{
    const bool isAnyType = values.typeFilter == PinType::all || values.typeFilter == PinType::recursiveAndDirect;
    pinTable->setEmptyText(emptyTableText({.state = load.state,
                                           .unpinned = showsUnpinned(),
                                           .hasAnyType = isAnyType,
                                           .searching = !toolBar->searchText().isEmpty(),
                                           .total = pinModel->rowCount(),
                                           .shown = proxyModel->rowCount(),
                                           .address = client->baseUrl(),
                                           .reason = load.error}));
}

/// Runs after the event loop has had a turn. Longer lists keep the widths they have.
void MainWindow::fitColumns()
{
    if (!showsUnpinned() && pinModel->rowCount() <= fittedRows)
        pinTable->fitColumns();
}

void MainWindow::onSearchTextChanged(const QString& /*text*/)
{
    searchDebounceTimer->start();
}

void MainWindow::onSearchDebounceTimeout()
{
    changeFilter([this] { proxyModel->setFilterFixedString(toolBar->searchText()); });
    updateCountLabels();
}

void MainWindow::onSearchLeft()
{
    searchDebounceTimer->stop();
    onSearchDebounceTimeout();
    pinTable->setFocus();
    pinTable->scrollTo(pinTable->currentIndex());
}

void MainWindow::onSearchModeChanged(PinFilterProxyModel::SearchMode mode)
{
    changeFilter([this, mode] { proxyModel->setSearchMode(mode); });
    onSearchDebounceTimeout();
}
