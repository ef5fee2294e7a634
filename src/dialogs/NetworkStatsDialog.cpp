// SPDX-License-Identifier: MIT
#include "NetworkStatsDialog.h"

#include "Detached.h"
#include "DialogSizing.h"
#include "FileWriter.h"
#include "GradualText.h"
#include "IpfsClient.h"
#include "PlainText.h"
#include "StatusLabel.h"

#include <QApplication>
#include <QBoxLayout>
#include <QClipboard>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QTextEdit>
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
        label->setStyleSheet(u"font-weight: bold;"_s);
        column->addWidget(label);
    }
    causeLabel = newPlainLabel({}, this);
    causeLabel->setWordWrap(true);
    causeLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addWidget(causeLabel);
    setupView();
    column->addWidget(jsonView, 1);
    jsonView->setFocus(); // "Refresh" is disabled at first
}

QLayout* NetworkStatsDialog::newHeaderRow()
{
    auto* row = new QHBoxLayout;
    statusLabel = new StatusLabel(this);
    row->addWidget(statusLabel, 1);
    row->addWidget(newButton(tr("&Copy JSON"), &NetworkStatsDialog::onCopyJsonClicked));
    row->addWidget(newButton(tr("&Save snapshot..."), &NetworkStatsDialog::onSaveJsonClicked));
    refreshButton = newButton(tr("&Refresh"), &NetworkStatsDialog::onRefreshClicked);
    row->addWidget(refreshButton);
    return row;
}

QPushButton* NetworkStatsDialog::newButton(const QString& text, void (NetworkStatsDialog::*slot)())
{
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false); // Return in the text presses none
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

void NetworkStatsDialog::setupView()
{
    jsonView = new QTextEdit(this);
    jsonView->setAccessibleName(tr("Network snapshot"));
    jsonView->setPlaceholderText(tr("Network snapshot JSON will appear here."));
    jsonView->setLineWrapMode(QTextEdit::NoWrap);
    jsonView->setTabChangesFocus(true);
    jsonText = new GradualText(jsonView);
}

void NetworkStatsDialog::connectClient()
{
    connect(client, &IpfsClient::swarmPeersReceived, this, &NetworkStatsDialog::onSwarmPeersReceived);
    connect(client, &IpfsClient::swarmRequestFailed, this, &NetworkStatsDialog::onSwarmRequestFailed);
    connect(client, &IpfsClient::dhtStatsReceived, this, &NetworkStatsDialog::onDhtStatsReceived);
    connect(client, &IpfsClient::dhtStatsFailed, this, &NetworkStatsDialog::onDhtStatsFailed);
    connect(client, &IpfsClient::bitswapStatReceived, this, &NetworkStatsDialog::onBitswapStatReceived);
    connect(client, &IpfsClient::bitswapStatFailed, this, &NetworkStatsDialog::onBitswapStatFailed);
    connect(client, &IpfsClient::nodeSaid, this, &NetworkStatsDialog::onNodeSaid);
    connect(client, &IpfsClient::endpointChanged, this, &NetworkStatsDialog::onEndpointChanged);
}

/// A window that comes back from the task bar is asking already.
void NetworkStatsDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous() && jsonText->text().isEmpty())
        onRefreshClicked();
}

void NetworkStatsDialog::dropFacts()
{
    ++refreshCount;
    outdated = false;
    facts = {};
    nodeWords = {};
    causes = {};
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
    showCauses();
    jsonText->setText({});
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

/// Comes before the call's own signal. An error's text may leave the node's reason out, and wraps it in JSON otherwise.
void NetworkStatsDialog::onNodeSaid(const QString& path, const QString& words)
{
    for (size_t i = 0; i < networkCalls.size(); ++i) {
        if (networkCalls.at(i).path == path)
            nodeWords.at(i) = words;
    }
}

void NetworkStatsDialog::markEndpointDone(const QString& endpoint, bool ok, const QString& error)
{
    for (size_t i = 0; i < networkCalls.size(); ++i) {
        const NetworkCall& call = networkCalls.at(i);
        if (call.endpoint != endpoint)
            continue;
        facts.*call.done = true;
        facts.*call.ok = ok;
        facts.*call.error = error;
        causes.at(i) = nodeWords.at(i).isEmpty() ? error : nodeWords.at(i);
        nodeWords.at(i).clear();
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
    jsonText->setText(shown.json);
    showSignalLines(shown.signalLines);
    showCauses();
    if (facts.allDone())
        reportEnd();
    DialogSizing::requestRefit(this);
}

void NetworkStatsDialog::showSignalLines(const QStringList& lines)
{
    for (size_t i = 0; i < signalLabels.size(); ++i)
        signalLabels.at(i)->setText(lines.value(static_cast<qsizetype>(i)));
}

void NetworkStatsDialog::showCauses()
{
    QStringList lines;
    lines.reserve(static_cast<qsizetype>(causes.size()));
    for (size_t i = 0; i < causes.size(); ++i) {
        if (!causes.at(i).isEmpty())
            lines.append(tr(networkCalls.at(i).cause).arg(lineForLabel(causes.at(i))));
    }
    causeLabel->setText(lines.join(u'\n'));
    causeLabel->setVisible(!lines.isEmpty());
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
    if (jsonText->text().isEmpty())
        return;
    QApplication::clipboard()->setText(jsonText->text());
    statusLabel->showProgress(tr("Copied network snapshot JSON to clipboard."));
    emit statusMessageRequested(tr("Network snapshot JSON copied"));
}

/// Opened without an event loop of its own, so this dialog may go while it is open. What is saved is what was shown
/// when the button was pressed.
void NetworkStatsDialog::onSaveJsonClicked()
{
    const QString json = jsonText->text();
    if (json.isEmpty())
        return;
    auto* picker = new QFileDialog(this, tr("Save network snapshot"));
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->setAcceptMode(QFileDialog::AcceptSave);
    picker->setNameFilter(tr("JSON files (*.json);;All files (*)"));
    picker->setSupportedSchemes({u"file"_s});
    picker->selectFile(u"network-snapshot-%1.json"_s.arg(QDateTime::currentDateTime().toString(u"yyyyMMdd-hhmmss"_s)));
    connect(picker, &QFileDialog::fileSelected, this, [this, json](const QString& path) { save(path, json); });
    picker->open();
}

void NetworkStatsDialog::save(const QString& path, const QString& json)
{
    if (path.isEmpty())
        return;
    if (const WriteResult written = writeFile(path, json.toUtf8()); !written.ok) {
        statusLabel->showFailure(tr("Failed to save snapshot: %1").arg(written.reason));
        emit statusMessageRequested(tr("Failed to save network snapshot"));
        return;
    }
    statusLabel->showProgress(tr("Saved network snapshot: %1").arg(path));
    emit statusMessageRequested(tr("Network snapshot saved"));
}
