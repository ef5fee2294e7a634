// SPDX-License-Identifier: MIT
#include "NetworkStatsDialog.h"

#include "Detached.h"
#include "DialogSizing.h"
#include "FileWriter.h"
#include "FlowLayout.h"
#include "IpfsClient.h"
#include "LineView.h"
#include "NodeWords.h"
#include "PlainText.h"
#include "StatusLabel.h"

#include <QApplication>
#include <QBoxLayout>
#include <QClipboard>
#include <QFileDialog>
#include <QFontDatabase>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QTime>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype fewEntries = 1000; // a snapshot of them takes some ms

/// One of the calls of a refresh, in the order of their signals.
struct NetworkCall
{
    QLatin1StringView endpoint {};
    QLatin1StringView path {};
    bool NetworkFacts::*done = nullptr;
    bool NetworkFacts::*ok = nullptr;
    QString NetworkFacts::*error = nullptr;
    const char* noSignal = nullptr; ///< the line of its signal while nothing is known
    const char* cause = nullptr;
};

constexpr std::array networkCalls {
    NetworkCall {"swarm"_L1, "/swarm/peers"_L1, &NetworkFacts::swarmDone, &NetworkFacts::swarmOk,
                 &NetworkFacts::swarmError, QT_TRANSLATE_NOOP("NetworkStatsDialog", "Connectivity: —"),
                 QT_TRANSLATE_NOOP("NetworkStatsDialog", "Swarm peers: %1")},
    NetworkCall {"dht"_L1, "/stats/dht"_L1, &NetworkFacts::dhtDone, &NetworkFacts::dhtOk, &NetworkFacts::dhtError,
                 QT_TRANSLATE_NOOP("NetworkStatsDialog", "Routing: —"),
                 QT_TRANSLATE_NOOP("NetworkStatsDialog", "DHT statistics: %1")},
    NetworkCall {"bitswap"_L1, "/bitswap/stat"_L1, &NetworkFacts::bitswapDone, &NetworkFacts::bitswapOk,
                 &NetworkFacts::bitswapError, QT_TRANSLATE_NOOP("NetworkStatsDialog", "Exchange: —"),
                 QT_TRANSLATE_NOOP("NetworkStatsDialog", "Bitswap statistics: %1")}};

} // namespace

NetworkStatsDialog::NetworkStatsDialog(IpfsClient* newClient, QWidget* parent)
    : QDialog(parent)
    , client(newClient)
{
    setWindowTitle(tr("Network stats"));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/NetworkStatsDialog"_s,
                          .minimumSize = {760, 500},
                          .preferredSize = {1080, 740},
                          .maxWidthRatio = 0.7,
                          .maxHeightRatio = 0.7});
    setupUi();
    connectClient();
    forget();
}

void NetworkStatsDialog::setupUi()
{
    auto* column = new QVBoxLayout(this);
    column->addLayout(newHeaderRow());
    for (QLabel*& label : signalLabels) {
        label = newPlainLabel({}, this);
        label->setWordWrap(true);
        label->setStyleSheet(u"font-weight: bold;"_s);
        column->addWidget(label);
    }
    QList<NodeWords::Call> calls;
    calls.reserve(networkCalls.size());
    for (const NetworkCall& call : networkCalls)
        calls.append({.path = call.path, .line = tr(call.cause)});
    causes = new NodeWords(client, calls, this);
    column->addWidget(causes);
    jsonView = newView();
    column->addWidget(jsonView, 1);
    jsonView->setFocus(); // "Refresh" is disabled at first
}

QLayout* NetworkStatsDialog::newHeaderRow()
{
    auto* row = new FlowLayout;
    statusLabel = new StatusLabel(this);
    auto* copyButton = newButton(tr("&Copy JSON"), &NetworkStatsDialog::onCopyJsonClicked);
    auto* saveButton = newButton(tr("&Save snapshot..."), &NetworkStatsDialog::onSaveJsonClicked);
    refreshButton = newButton(tr("&Refresh"), &NetworkStatsDialog::onRefreshClicked);
    row->addWidgets({statusLabel, copyButton, saveButton, refreshButton});
    return row;
}

QPushButton* NetworkStatsDialog::newButton(const QString& text, void (NetworkStatsDialog::*slot)())
{
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false); // Return in the text presses none
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

LineView* NetworkStatsDialog::newView()
{
    auto* view = new LineView(this);
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    view->setAccessibleName(tr("Network snapshot"));
    view->setPlaceholderText(tr("Network snapshot JSON will appear here."));
    return view;
}

void NetworkStatsDialog::connectClient()
{
    connect(client, &IpfsClient::swarmPeersReceived, this, &NetworkStatsDialog::onSwarmPeersReceived);
    connect(client, &IpfsClient::swarmRequestFailed, this, &NetworkStatsDialog::onSwarmRequestFailed);
    connect(client, &IpfsClient::dhtStatsReceived, this, &NetworkStatsDialog::onDhtStatsReceived);
    connect(client, &IpfsClient::dhtStatsFailed, this, &NetworkStatsDialog::onDhtStatsFailed);
    connect(client, &IpfsClient::bitswapStatReceived, this, &NetworkStatsDialog::onBitswapStatReceived);
    connect(client, &IpfsClient::bitswapStatFailed, this, &NetworkStatsDialog::onBitswapStatFailed);
    connect(client, &IpfsClient::endpointChanged, this, &NetworkStatsDialog::onEndpointChanged);
}

/// A window that comes back from the task bar is asking already.
void NetworkStatsDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous() && json.isEmpty())
        onRefreshClicked();
}

void NetworkStatsDialog::dropFacts()
{
    ++refreshCount;
    outdated = false;
    facts = {};
    causes->forget();
}

/// As before the first refresh.
void NetworkStatsDialog::forget()
{
    dropFacts();
    setLoading(false);
    statusLabel->showHint(tr("Click Refresh to load network diagnostics"));
    QStringList lines;
    lines.reserve(networkCalls.size());
    for (const NetworkCall& call : networkCalls)
        lines.append(tr(call.noSignal));
    showSignalLines(lines);
    showJson({}, {});
}

void NetworkStatsDialog::setLoading(bool loading)
{
    refreshButton->setEnabled(!loading);
}

void NetworkStatsDialog::onEndpointChanged()
{
    forget();
    if (isVisible())
        onRefreshClicked();
}

void NetworkStatsDialog::onRefreshClicked()
{
    dropFacts();
    setLoading(true);
    statusLabel->showProgress(tr("Loading swarm, DHT, and bitswap stats..."));
    emit statusMessageRequested(tr("Fetching network diagnostics..."));
    client->fetchSwarmPeers();
    client->fetchDhtStats({});
    client->fetchBitswapStat(false, false);
}

void NetworkStatsDialog::onSwarmPeersReceived(const QStringList& peers)
{
    facts.swarmPeers = peers;
    markEndpointDone(u"swarm"_s, true, {});
}

void NetworkStatsDialog::onSwarmRequestFailed(const QString& operation, const QString& message)
{
    if (operation == "peers"_L1)
        markEndpointDone(u"swarm"_s, false, message);
}

void NetworkStatsDialog::onDhtStatsReceived(const QJsonValue& newData)
{
    facts.dhtData = newData;
    markEndpointDone(u"dht"_s, true, {});
}

void NetworkStatsDialog::onDhtStatsFailed(const QString& message)
{
    markEndpointDone(u"dht"_s, false, message);
}

void NetworkStatsDialog::onBitswapStatReceived(const QJsonObject& stat)
{
    facts.bitswapStat = stat;
    markEndpointDone(u"bitswap"_s, true, {});
}

void NetworkStatsDialog::onBitswapStatFailed(const QString& message)
{
    markEndpointDone(u"bitswap"_s, false, message);
}

void NetworkStatsDialog::markEndpointDone(const QString& endpoint, bool ok, const QString& error)
{
    for (const NetworkCall& call : networkCalls) {
        if (call.endpoint != endpoint)
            continue;
        facts.*call.done = true;
        facts.*call.ok = ok;
        facts.*call.error = error;
        causes->showFor(call.path, error);
    }
    refreshView();
}

/// A large snapshot is made on a thread, one at a time.
void NetworkStatsDialog::refreshView()
{
    if (building) {
        outdated = true;
        return;
    }
    const auto make
        = [asOf = facts, now = QDateTime::currentDateTime()] { return viewOfSnapshot(buildSnapshot(asOf, now)); };
    if (entriesIn(facts) <= fewEntries) {
        showSnapshot(make());
        return;
    }
    building = true;
    outdated = false;
    runDetached(this, make, [this, refresh = refreshCount](const SnapshotView& shown) {
        building = false;
        if (outdated)
            refreshView();
        else if (refresh == refreshCount)
            showSnapshot(shown);
    });
}

void NetworkStatsDialog::showSnapshot(const SnapshotView& shown)
{
    showJson(shown.json, shown.jsonLines);
    showSignalLines(shown.signalLines);
    if (facts.allDone())
        reportEnd();
    DialogSizing::requestRefit(this);
}

void NetworkStatsDialog::showJson(const QString& text, const QStringList& lines)
{
    json = text;
    jsonView->setLines({{.lines = lines}}, LineView::From::Start);
}

void NetworkStatsDialog::showSignalLines(const QStringList& lines)
{
    for (size_t i = 0; i < signalLabels.size(); ++i)
        signalLabels.at(i)->setText(lines.value(static_cast<qsizetype>(i)));
}

void NetworkStatsDialog::reportEnd()
{
    setLoading(false);
    if (facts.allOk()) {
        statusLabel->showProgress(
            tr("Network diagnostics loaded at %1").arg(QTime::currentTime().toString(u"hh:mm:ss"_s)));
        emit statusMessageRequested(tr("Network diagnostics loaded"));
    } else {
        statusLabel->showFailure(tr("Network diagnostics loaded with partial errors."));
        emit statusMessageRequested(tr("Network diagnostics loaded with errors"));
    }
}

void NetworkStatsDialog::onCopyJsonClicked()
{
    if (json.isEmpty())
        return;
    QApplication::clipboard()->setText(json);
    statusLabel->showProgress(tr("Copied network snapshot JSON to clipboard."));
    emit statusMessageRequested(tr("Network snapshot JSON copied"));
}

/// Opened without an event loop of its own, so this dialog may go while it is open. What is saved is what was shown
/// when the button was pressed.
void NetworkStatsDialog::onSaveJsonClicked()
{
    if (json.isEmpty())
        return;
    auto* picker = new QFileDialog(this, tr("Save network snapshot"));
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->setAcceptMode(QFileDialog::AcceptSave);
    picker->setNameFilter(tr("JSON files (*.json);;All files (*)"));
    picker->setSupportedSchemes({u"file"_s});
    picker->selectFile(u"network-snapshot-%1.json"_s.arg(QDateTime::currentDateTime().toString(u"yyyyMMdd-hhmmss"_s)));
    connect(picker, &QFileDialog::fileSelected, this, [this, shown = json](const QString& path) { save(path, shown); });
    picker->open();
}

void NetworkStatsDialog::save(const QString& path, const QString& text)
{
    if (path.isEmpty())
        return;
    if (const WriteResult written = writeFile(path, text.toUtf8()); !written.ok) {
        statusLabel->showFailure(tr("Failed to save snapshot: %1").arg(written.reason));
        emit statusMessageRequested(tr("Failed to save network snapshot"));
        return;
    }
    statusLabel->showProgress(tr("Saved network snapshot: %1").arg(path));
    emit statusMessageRequested(tr("Network snapshot saved"));
}
