#include "MainWindow.h"

#include "ContentMode.h"
#include "IpfsClient.h"
#include "PinFilterProxyModel.h"
#include "PinModel.h"

#include <QComboBox>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTime>
#include <QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto loadMessageShown = 5000ms;
constexpr auto errorMessageShown = 8000ms;
/// Longest list whose columns are measured.
constexpr int fittedRows = 1200;
constexpr int cidLength = 59;
constexpr int minimumCidTextWidth = 392;
constexpr int cidColumnPadding = 28;

} // namespace

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
    return contentMode == ContentMode::unpinned;
}

void MainWindow::onContentChanged()
{
    contentMode = contentCombo->currentData().toString();
    filterCombo->setEnabled(contentMode == ContentMode::pinned);
    if (showsUnpinned())
        onSelectionChanged(); // there is nothing to unpin; the other way round the rows are not pins until they come
    triggerRefresh(true);
}

void MainWindow::onFilterChanged()
{
    typeFilter = filterCombo->currentData().toString();
    proxyModel->setTypeFilter(typeFilter);
    triggerRefresh(true);
}

void MainWindow::triggerRefresh(bool force)
{
    if (force) {
        dropPlan();
        client->cancelActiveLoading();
    } else if (!refreshButton->isEnabled()) {
        return;
    }
    streamCounts.clear();
    lastCountLabelUpdateMs = 0;
    setConnectionDotState(ConnectionStatusDot::Checking, tr("Checking %1").arg(client->baseUrl()));
    setRefreshing(true);
    notificationLabel->hide();
    const QString message = showsUnpinned() ? tr("Fetching unpinned refs from %1…") : tr("Fetching pins from %1…");
    setStatusMessage(message.arg(client->baseUrl()));
    fetchList();
    client->fetchNodeInfo();
}

void MainWindow::fetchList()
{
    if (showsUnpinned())
        client->fetchUnpinned();
    else
        client->fetchPins(typeFilter, u"base32"_s, true);
}

/// The button's enabled state is the one refresh flag of the program.
void MainWindow::setRefreshing(bool on)
{
    if (on && refreshButton->hasFocus())
        pinTable->setFocus(); // a disabled button would hand the focus on to whatever stands next to it
    refreshButton->setEnabled(!on);
    refreshButton->setText(on ? tr("⟳  Loading…") : tr("⟳  Refresh"));
}

void MainWindow::onStreamEntriesLoaded(const QString& source, int count)
{
    if (count <= 0 || refreshButton->isEnabled())
        return;
    int& highest = streamCounts[source];
    highest = std::max(highest, count);
    if (source == (showsUnpinned() ? "refs/local"_L1 : "pin/ls"_L1))
        setStatusMessage(tr("Entries loaded: %1").arg(highest));
}

/// What the table gets of a listing, with what earlier refreshes have told. Facts set here cost nothing; set one by one
/// in the table each would be sorted in by itself.
QList<PinEntry> MainWindow::listForTable(const QList<PinEntry>& pins) const
{
    QList<PinEntry> list = pins;
    if (typeFilter == PinType::recursiveAndDirect)
        list.removeIf([](const PinEntry& pin) { return pin.type == PinType::indirect; });
    if (wantsMetadata() && !(dagSizeCache.isEmpty() && kindCache.isEmpty())) {
        for (PinEntry& pin : list) {
            pin.dagSize = dagSizeCache.value(pin.cid, pin.dagSize);
            pin.kind = kindCache.value(pin.cid);
        }
    }
    return list;
}

void MainWindow::onPinsReceived(const QList<PinEntry>& pins)
{
    setRefreshing(false);
    const QList<PinEntry> list = listForTable(pins);
    pinModel->setPins(list);
    planMetadata(list);
    proxyModel->setTypeFilter(typeFilter);
    if (!showsUnpinned()) {
        QTimer::singleShot(0ms, this, &MainWindow::fitColumns);
        if (list.size() > fittedRows)
            setStatusMessage(tr("Loaded %1 pin(s) — large list mode (auto-resize skipped)").arg(pins.size()));
    }
    searchDebounceTimer->stop();
    proxyModel->setFilterFixedString(searchEdit->text());
    updateCountLabels();

    const QString now = QTime::currentTime().toString(u"hh:mm:ss"_s);
    const QString loaded = showsUnpinned() ? tr("Loaded %1 unpinned CID(s) — %2") : tr("Loaded %1 pin(s) — %2");
    setStatusMessage(loaded.arg(QString::number(pins.size()), now));
    resetStatusLater(loadMessageShown, [](const QString& shown) {
        return shown.contains("pin(s)"_L1) || shown.contains("unpinned CID(s)"_L1);
    });
    onSelectionChanged();
}

void MainWindow::onErrorOccurred(const QString& message)
{
    setRefreshing(false);
    showNotification(message, true);
    setStatusMessage(tr("Error: ") + message);
    resetStatusLater(errorMessageShown, [](const QString& shown) { return shown.startsWith(tr("Error: ")); });
}

/// Runs after the event loop has had a turn. Longer lists keep the widths they have.
void MainWindow::fitColumns()
{
    if (showsUnpinned() || pinModel->rowCount() > fittedRows)
        return;
    QHeaderView* header = pinTable->horizontalHeader();
    for (int column = PinModel::CidColumn; column <= PinModel::SizeColumn; ++column) {
        header->setSectionResizeMode(column, QHeaderView::ResizeToContents);
        pinTable->resizeColumnToContents(column);
        header->setSectionResizeMode(column, QHeaderView::Interactive);
        if (column == PinModel::CidColumn)
            header->resizeSection(column, std::max(header->sectionSize(column), minimumCidColumnWidth()));
    }
}

int MainWindow::minimumCidColumnWidth() const
{
    const QFontMetrics metrics(QFont(u"Courier New"_s, 12));
    const int textWidth = metrics.horizontalAdvance(QString(cidLength, u'm'));
    return std::max(textWidth, minimumCidTextWidth) + cidColumnPadding;
}

void MainWindow::setSearchMode(PinFilterProxyModel::SearchMode mode, const QString& hint)
{
    proxyModel->setSearchMode(mode);
    searchEdit->setPlaceholderText(hint);
    onSearchDebounceTimeout();
}
