// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "AddProgress.h"
#include "ContentMode.h"
#include "IpfsClient.h"
#include "PinModel.h"
#include "PinTable.h"
#include "PinToolBar.h"
#include "RemotePinFlow.h"
#include "StatsFrame.h"
#include "UpdateCheck.h"

#include <QGuiApplication>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto firstRefreshDelay = 200ms;
constexpr auto searchDelay = 150ms;
constexpr auto firstCountInterval = 100ms;
constexpr auto copiedPeerIdShown = 1000ms;
constexpr QSize minimumWindowSize(800, 520);
constexpr QSize initialWindowSize(1060, 640);
constexpr int centralSpacing = 6;

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : ToolWindowHost(parent)
    , client(new IpfsClient(this))
    , pinModel(new PinModel(this))
    , proxyModel(new PinFilterProxyModel(this))
    , autoRefreshTimer(new QTimer(this))
    , searchDebounceTimer(new QTimer(this))
    , countUpdateTimer(new QTimer(this))
    , planTimer(new QTimer(this))
    , settings(new QSettings(u"Norvo"_s, u"settings"_s, this))
    , addProgress(new AddProgress(this))
    , remotePinFlow(new RemotePinFlow(this))
    , updateCheck(new UpdateCheck(this))
    , values {.contentMode = ContentMode::pinned, .typeFilter = PinType::recursiveAndDirect}
{
    updateWindowTitleForActivationState();
    setMinimumSize(minimumWindowSize);
    resize(initialWindowSize);
    setAcceptDrops(true);

    proxyModel->setSourceModel(pinModel);
    proxyModel->setFilterCaseSensitivity(Qt::CaseInsensitive);
    proxyModel->setTypeFilter(values.typeFilter);

    setupToolWindows();
    setupMenuBar();
    setupToolBar();
    setupCentralWidget();
    toolBar->setupOverflow();
    pinTable->setFocus();
    connectClient();
    setupRemotePinFlow();
    setupTimers();

    connect(updateCheck, &UpdateCheck::finished, this, &MainWindow::onUpdateCheckFinished);
    connect(updateCheck, &UpdateCheck::cancelled, this, [this] { setStatusMessage(tr("Update check cancelled")); });
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &MainWindow::onApplicationStateChanged);

    updateEmptyText();
    loadSettings();
    QTimer::singleShot(firstRefreshDelay, this, &MainWindow::onRefreshClicked);
}

/// Tool windows use the client, so they go first.
MainWindow::~MainWindow()
{
    delete toolWindows;
    saveSettings();
}

void MainWindow::onApplicationStateChanged(Qt::ApplicationState state)
{
    pinTable->setUpdatesEnabled(state == Qt::ApplicationActive);
    if (state == Qt::ApplicationActive)
        pinTable->update();
}

void MainWindow::updateWindowTitleForActivationState()
{
    setWindowTitle(u"Norvo"_s);
}

void MainWindow::setupToolBar()
{
    toolBar = new PinToolBar(*toolWindows, this);
    addToolBar(toolBar);
    connect(toolBar, &PinToolBar::refreshClicked, this, &MainWindow::onRefreshClicked);
    connect(toolBar, &PinToolBar::addClicked, this, &MainWindow::onAddToIpfsClicked);
    connect(toolBar, &PinToolBar::contentChanged, this, &MainWindow::onContentChanged);
    connect(toolBar, &PinToolBar::filterChanged, this, &MainWindow::onFilterChanged);
    connect(toolBar, &PinToolBar::searchTextChanged, this, &MainWindow::onSearchTextChanged);
    connect(toolBar, &PinToolBar::searchLeft, this, &MainWindow::onSearchLeft);
    connect(toolBar, &PinToolBar::searchModeChanged, this, &MainWindow::onSearchModeChanged);
    connect(toolBar, &PinToolBar::toolWindowRequested, toolWindows, &ToolWindows::show);
}

void MainWindow::setupCentralWidget()
{
    auto* central = new QWidget(this);
    auto* column = new QVBoxLayout(central);
    column->setContentsMargins(8, 8, 8, 4);
    column->setSpacing(centralSpacing);

    column->addWidget(noticeWidget());
    setupPinTable();
    column->addWidget(pinTable, 1);
    statsFrame = new StatsFrame(this);
    connect(statsFrame, &StatsFrame::peerIdCopied, this, [this] {
        statusBar()->showMessage(tr("Copied to clipboard"), static_cast<int>(copiedPeerIdShown.count()));
    });
    column->addWidget(statsFrame);
    setCentralWidget(central);
}

void MainWindow::setupPinTable()
{
    pinTable = new PinTable(proxyModel, this);
    connect(pinTable, &QWidget::customContextMenuRequested, this, &MainWindow::onTableContextMenuRequested);
    connect(pinTable, &QTableView::doubleClicked, this, &MainWindow::onTableDoubleClicked);
    connect(pinTable->selectionModel(), &QItemSelectionModel::selectionChanged, this, &MainWindow::onSelectionChanged);
    connect(pinTable, &PinTable::indirectPinsRequested, this, &MainWindow::onShowIndirectPins);
    connect(pinTable, &PinTable::contentsRequested, this, &MainWindow::showContents);
    connect(pinTable, &PinTable::unpinRequested, this, &MainWindow::unpin);
    connect(pinTable, &PinTable::copyRequested, this, &MainWindow::copyCids);
    connect(pinTable, &PinTable::publishRequested, this, &MainWindow::publishToIpns);
    connect(pinTable, &PinTable::openViaIpnsRequested, this, &MainWindow::onOpenViaIpnsClicked);
    connect(pinTable, &PinTable::gatewayRequested, this, &MainWindow::openInGateway);
    connect(pinTable, &PinTable::localGatewayRequested, this, &MainWindow::openFromLocal);
}

void MainWindow::connectClient()
{
    connect(client, &IpfsClient::pinsReceived, this, &MainWindow::onPinsReceived);
    connect(client, &IpfsClient::listFailed, this, &MainWindow::onListFailed);
    connect(client, &IpfsClient::errorOccurred, this, &MainWindow::onErrorOccurred);
    connect(client, &IpfsClient::nodeSaid, this, &MainWindow::onNodeSaid);
    connect(client, &IpfsClient::connectionStatusChanged, this, &MainWindow::onConnectionStatusChanged);
    connect(client, &IpfsClient::nodeInfoReceived, this, &MainWindow::onNodeInfoReceived);
    connect(client, &IpfsClient::refsReceived, this, &MainWindow::onRefsReceivedForTable);
    connect(client, &IpfsClient::dagStatReceived, this, &MainWindow::onDagStatReceived);
    connect(client, &IpfsClient::kindReceived, this, &MainWindow::onKindReceived);
    connect(client, &IpfsClient::unpinned, this, &MainWindow::onUnpinned);
    connect(client, &IpfsClient::unpinProgress, this, &MainWindow::onUnpinProgress);
    connect(client, &IpfsClient::pinsMayHaveChanged, this, &MainWindow::onPinsMayHaveChanged);
    connect(client, &IpfsClient::addBytesSent, addProgress, &AddProgress::showBytes);
    connect(client, &IpfsClient::addProgress, this, &MainWindow::onAddProgress);
    connect(client, &IpfsClient::addShortfall, this, &MainWindow::onAddShortfall);
    connect(client, &IpfsClient::addCompleted, this, &MainWindow::onAddCompleted);
    connect(client, &IpfsClient::addFailed, this, &MainWindow::onAddFailed);
    connect(client, &IpfsClient::rpcRequestIssued, this, &MainWindow::onRpcRequestIssued);
    connect(client, &IpfsClient::ipnsKeysReceived, this, &MainWindow::onIpnsKeysReceived);
    connect(client, &IpfsClient::ipnsKeysFailed, this, &MainWindow::onIpnsKeysFailed);
    connect(client, &IpfsClient::ipnsPublished, this, &MainWindow::onIpnsPublished);
    connect(client, &IpfsClient::ipnsPublishFailed, this, &MainWindow::onIpnsPublishFailed);
    connect(client, &IpfsClient::ipnsResolved, this, &MainWindow::onIpnsResolved);
    connect(client, &IpfsClient::ipnsResolveFailed, this, &MainWindow::onIpnsResolveFailed);
    connect(client, &IpfsClient::streamEntriesLoaded, this, &MainWindow::onStreamEntriesLoaded);
}

void MainWindow::setupTimers()
{
    connect(autoRefreshTimer, &QTimer::timeout, this, &MainWindow::onAutoRefreshTick);
    searchDebounceTimer->setSingleShot(true);
    searchDebounceTimer->setInterval(searchDelay);
    connect(searchDebounceTimer, &QTimer::timeout, this, &MainWindow::onSearchDebounceTimeout);
    countUpdateTimer->setSingleShot(true);
    countUpdateTimer->setInterval(firstCountInterval);
    connect(countUpdateTimer, &QTimer::timeout, this, &MainWindow::updateCountLabels);
    planTimer->setSingleShot(true);
    connect(planTimer, &QTimer::timeout, this, &MainWindow::planNextFacts);
}

void MainWindow::onConnectionStatusChanged(bool on)
{
    connected = on;
    if (on) {
        load.isAnswered = true;
        statsFrame->setConnectionDotState(ConnectionStatusDot::Connected, tr("Connected to %1").arg(client->baseUrl()));
        return;
    }
    statsFrame->setConnectionDotState(ConnectionStatusDot::Disconnected,
                                      tr("Disconnected from %1").arg(client->baseUrl()));
    nodeAgent.clear();
    statsFrame->showNoPeer();
}

void MainWindow::onListFailed(const QString& message)
{
    load.error = message;
    if (!load.rowsContent.isEmpty() && load.rowsContent != values.contentMode)
        dropRows(); // of the other view; those of this one stay
    showListState(stateAfter(message));
}

void MainWindow::onNodeInfoReceived(const QString& id, const QString& agent)
{
    nodeAgent = agent;
    statsFrame->showPeer(id, agent);
}

void MainWindow::onErrorOccurred(const QString& message)
{
    setRefreshing(false);
    showError(message);
}
