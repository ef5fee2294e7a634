#include "MainWindow.h"

#include "ContentMode.h"
#include "IpfsClient.h"
#include "LogTime.h"
#include "PinFilterProxyModel.h"
#include "PinModel.h"
#include "PlainText.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QSettings>
#include <QShortcut>
#include <QStatusBar>
#include <QTableView>
#include <QTime>
#include <QTimer>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto firstRefreshDelay = 200ms;
constexpr auto searchDelay = 150ms;
constexpr auto firstCountInterval = 100ms;
constexpr auto copiedPeerIdShown = 1000ms;
constexpr QSize minimumWindowSize(800, 520);
constexpr QSize initialWindowSize(1060, 640);

/// In the order of ConnectionStatusDot::State.
constexpr std::array stateWords {
    QT_TRANSLATE_NOOP("MainWindow", "Unknown"), QT_TRANSLATE_NOOP("MainWindow", "Checking"),
    QT_TRANSLATE_NOOP("MainWindow", "Connected"), QT_TRANSLATE_NOOP("MainWindow", "Disconnected")};

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , client(new IpfsClient(this))
    , pinModel(new PinModel(this))
    , proxyModel(new PinFilterProxyModel(this))
    , autoRefreshTimer(new QTimer(this))
    , searchDebounceTimer(new QTimer(this))
    , countUpdateTimer(new QTimer(this))
    , planTimer(new QTimer(this))
    , settings(new QSettings(u"Norvo"_s, u"settings"_s, this))
    , contentMode(ContentMode::pinned)
    , typeFilter(PinType::recursiveAndDirect)
{
    updateWindowTitleForActivationState();
    setMinimumSize(minimumWindowSize);
    resize(initialWindowSize);

    proxyModel->setSourceModel(pinModel);
    proxyModel->setFilterCaseSensitivity(Qt::CaseInsensitive);
    proxyModel->setTypeFilter(typeFilter);

    setupMenuBar();
    setupShortcuts();
    setupToolBar();
    setupCentralWidget();
    setupToolBarOverflow();
    setupStatusBar();
    pinTable->setFocus();
    connectClient();
    setupTimers();

    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &MainWindow::onApplicationStateChanged);

    loadSettings();
    QTimer::singleShot(firstRefreshDelay, this, &MainWindow::onRefreshClicked);
}

MainWindow::~MainWindow()
{
    deleteToolWindows();
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

void MainWindow::setupShortcuts()
{
    for (const QKeySequence& key : {QKeySequence(QKeySequence::Refresh), QKeySequence(Qt::Key_F5)}) {
        auto* shortcut = new QShortcut(key, this);
        shortcut->setContext(Qt::ApplicationShortcut);
        connect(shortcut, &QShortcut::activated, this, &MainWindow::onRefreshClicked);
        // Where the platform's refresh key is F5 itself, Qt calls the two ambiguous and takes them in turn.
        connect(shortcut, &QShortcut::activatedAmbiguously, this, &MainWindow::onRefreshClicked);
    }
}

void MainWindow::connectClient()
{
    connect(client, &IpfsClient::pinsReceived, this, &MainWindow::onPinsReceived);
    connect(client, &IpfsClient::errorOccurred, this, &MainWindow::onErrorOccurred);
    connect(client, &IpfsClient::connectionStatusChanged, this, &MainWindow::onConnectionStatusChanged);
    connect(client, &IpfsClient::nodeInfoReceived, this, &MainWindow::onNodeInfoReceived);
    connect(client, &IpfsClient::refsReceived, this, &MainWindow::onRefsReceivedForTable);
    connect(client, &IpfsClient::dagStatReceived, this, &MainWindow::onDagStatReceived);
    connect(client, &IpfsClient::kindReceived, this, &MainWindow::onKindReceived);
    connect(client, &IpfsClient::unpinned, this, &MainWindow::onUnpinned);
    connect(client, &IpfsClient::rpcRequestIssued, this, &MainWindow::onRpcRequestIssued);
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
        setConnectionDotState(ConnectionStatusDot::Connected, tr("Connected to %1").arg(client->baseUrl()));
        return;
    }
    setConnectionDotState(ConnectionStatusDot::Disconnected, tr("Disconnected from %1").arg(client->baseUrl()));
    nodeId.clear();
    peerIdLabel->setText(tr("Not connected"));
    peerIdLabel->setFocusPolicy(Qt::NoFocus);
    peerIdLabel->setCursor(Qt::ArrowCursor);
    peerIdLabel->setToolTip({});
}

void MainWindow::onNodeInfoReceived(const QString& id, const QString& agent)
{
    nodeId = id;
    peerIdLabel->setText(tr("PeerID: %1  |  %2").arg(id, agent));
    peerIdLabel->setToolTip({});
    peerIdLabel->setCursor(Qt::PointingHandCursor);
    peerIdLabel->setFocusPolicy(Qt::TabFocus); // the space bar copies as a click does
}

void MainWindow::setConnectionDotState(ConnectionStatusDot::State state, const QString& detail)
{
    connectionDot->setState(state);
    const QString word = tr(stateWords.at(static_cast<size_t>(state)));
    QString tip = tr("Connection: %1").arg(word);
    if (!detail.trimmed().isEmpty())
        tip += u'\n' + detail;
    tip += u'\n' + tr("Updated: %1").arg(QTime::currentTime().toString(u"hh:mm:ss"_s));
    setPlainToolTip(connectionDot, tip);
    connectionDot->setAccessibleName(tr("Connection: %1").arg(word));
}

void MainWindow::setStatusMessage(const QString& text)
{
    statusLabel->setText(messageForLabel(text));
    const QString line = logTime() + u"  "_s + text;
    statusLogLines.append(line);
    emit statusLogAppended(line);
}

void MainWindow::resetStatusLater(std::chrono::milliseconds delay, std::function<bool(const QString&)> isOurs)
{
    QTimer::singleShot(delay, this, [this, isOurs = std::move(isOurs)] {
        if (isOurs(statusLabel->text()))
            setStatusMessage(tr("Ready"));
    });
}

void MainWindow::showNotification(const QString& text, bool warning)
{
    const QString shown = messageForLabel(text);
    notificationLabel->setText(warning ? tr("⚠  %1").arg(shown) : shown);
    notificationLabel->show();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != peerIdLabel)
        return QMainWindow::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress: // consumed whatever the button
        if (static_cast<const QMouseEvent*>(event)->button() == Qt::LeftButton)
            copyPeerId();
        return true;
    case QEvent::KeyPress:
        if (static_cast<const QKeyEvent*>(event)->key() != Qt::Key_Space)
            return false;
        copyPeerId();
        return true;
    case QEvent::FocusIn:
    case QEvent::FocusOut:
        peerIdLabel->setFrameShape(event->type() == QEvent::FocusIn ? QFrame::Box : QFrame::NoFrame);
        return false;
    default:
        return false;
    }
}

void MainWindow::copyPeerId()
{
    if (nodeId.isEmpty())
        return;
    QGuiApplication::clipboard()->setText(nodeId);
    statusBar()->showMessage(tr("Copied to clipboard"), static_cast<int>(copiedPeerIdShown.count()));
}
