// SPDX-License-Identifier: MIT
#include "SwarmDialog.h"

#include "AddressTable.h"
#include "DialogSizing.h"
#include "IpfsClient.h"
#include "PlainText.h"
#include "StatusLabel.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTime>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array refreshParts {"peers"_L1, "addrs"_L1, "listen"_L1, "bootstrap-list"_L1};
const auto connectAct = u"connect"_s;
const auto disconnectAct = u"disconnect"_s;

/// A peer's addresses are lines of one cell.
QList<QStringList> rowsOf(const QHash<QString, QStringList>& addresses)
{
    QList<QStringList> rows;
    rows.reserve(addresses.size());
    for (auto peer = addresses.cbegin(); peer != addresses.cend(); ++peer)
        rows.append({peer.key(), peer.value().join(u'\n')});
    std::ranges::sort(rows, {}, [](const QStringList& cells) -> const QString& { return cells.constFirst(); });
    return rows;
}

QString actName(const QString& operation, const QStringList& targets)
{
    return operation + u'\n' + targets.join(u'\n');
}

QString detailOf(const QStringList& messages, const QString& withoutAny)
{
    return messages.isEmpty() ? withoutAny : messages.join(" | "_L1);
}

} // namespace

SwarmDialog::SwarmDialog(IpfsClient* newClient, QWidget* parent)
    : QDialog(parent)
    , client(newClient)
{
    setWindowTitle(tr("Swarm"));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/SwarmDialog"_s,
                          .minimumSize = {720, 460},
                          .preferredSize = {1080, 760},
                          .maxWidthRatio = 0.7,
                          .maxHeightRatio = 0.65});
    setupUi();
    refreshSummary();
    connectClient();
    connectBootstrap();
}

void SwarmDialog::connectClient()
{
    connect(client, &IpfsClient::swarmPeersReceived, this, &SwarmDialog::onPeersReceived);
    connect(client, &IpfsClient::swarmAddrsReceived, this, &SwarmDialog::onAddrsReceived);
    connect(client, &IpfsClient::swarmListenAddrsReceived, this, &SwarmDialog::onListenAddrsReceived);
    connect(client, &IpfsClient::swarmConnectResult, this, &SwarmDialog::onConnectResult);
    connect(client, &IpfsClient::swarmDisconnectResult, this, &SwarmDialog::onDisconnectResult);
    connect(client, &IpfsClient::swarmRequestFailed, this, &SwarmDialog::onRequestFailed);
    connect(client, &IpfsClient::nodeSaid, this, &SwarmDialog::onNodeSaid);
    connect(client, &IpfsClient::endpointChanged, this, &SwarmDialog::onEndpointChanged);
}

/// A refresh may be on its way: one that is moved to another kind of window is hidden and shown meanwhile.
void SwarmDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    const std::array tables {peersTable, listenTable, knownTable, bootstrapTable};
    const bool isEmpty = std::ranges::all_of(tables, [](const auto* table) { return table->rowCount() == 0; });
    if (isEmpty && pendingRefreshParts == 0)
        onRefreshClicked();
}

void SwarmDialog::setLoading(bool on)
{
    for (QPushButton* button : {refreshButton, refreshBootstrapButton})
        button->setEnabled(!on);
}

void SwarmDialog::refreshSummary()
{
    summaryLabel->setText(tr("Connected peers: %1 | Listen addrs: %2 | Known peers: %3 | Bootstrap peers: %4")
                              .arg(QString::number(connectedPeers.size()), QString::number(listenAddrs.size()),
                                   QString::number(knownAddrs.size()), QString::number(bootstrapPeers.size())));
    DialogSizing::requestRefit(this);
}

/// Counts answers, whoever asked for them. A failure shown in red stays.
void SwarmDialog::markRefreshPartCompleted(const QString& part)
{
    if (pendingRefreshParts <= 0 || std::ranges::find(refreshParts, part) == refreshParts.end())
        return;
    if (--pendingRefreshParts > 0)
        return;
    setLoading(false);
    if (statusLabel->styleSheet().isEmpty())
        statusLabel->showProgress(
            tr("Swarm diagnostics loaded at %1").arg(QTime::currentTime().toString(u"hh:mm:ss"_s)));
    emit statusMessageRequested(tr("Swarm diagnostics loaded"));
}

void SwarmDialog::applyTableFilter(AddressTable* table, const QString& text)
{
    table->showMatches(text);
}

void SwarmDialog::onFilterTextChanged(const QString& text)
{
    for (AddressTable* table : {peersTable, listenTable, knownTable, bootstrapTable})
        applyTableFilter(table, text);
}

void SwarmDialog::finishList()
{
    onFilterTextChanged(filterEdit->text());
    refreshSummary();
}

/// Begins a call; what the node said about another one is over.
void SwarmDialog::start(const QString& progress, const QString& statusMessage)
{
    nodeWordsLabel->hide();
    report(progress, statusMessage);
}

void SwarmDialog::report(const QString& text, const QString& statusMessage)
{
    statusLabel->showProgress(text);
    emit statusMessageRequested(statusMessage);
}

void SwarmDialog::refuse(const QString& text, const QString& statusMessage)
{
    nodeWordsLabel->hide();
    statusLabel->showFailure(text);
    emit statusMessageRequested(statusMessage);
}

void SwarmDialog::onRefreshClicked()
{
    setLoading(true);
    pendingRefreshParts = static_cast<int>(refreshParts.size());
    start(tr("Loading swarm diagnostics..."), tr("Fetching swarm and bootstrap diagnostics..."));
    client->fetchSwarmPeers();
    client->fetchSwarmAddrs();
    client->fetchSwarmListenAddrs();
    client->fetchBootstrapPeers(false);
}

void SwarmDialog::onPeersReceived(const QStringList& peers)
{
    connectedPeers = peers;
    peersTable->setRows(peers);
    finishList();
    markRefreshPartCompleted(u"peers"_s);
}

void SwarmDialog::onListenAddrsReceived(const QStringList& newListenAddrs)
{
    listenAddrs = newListenAddrs;
    listenTable->setRows(listenAddrs);
    finishList();
    markRefreshPartCompleted(u"listen"_s);
}

void SwarmDialog::onAddrsReceived(const QHash<QString, QStringList>& peerAddrs)
{
    knownAddrs = peerAddrs;
    knownTable->setRows(rowsOf(knownAddrs));
    finishList();
    markRefreshPartCompleted(u"addrs"_s);
}

void SwarmDialog::onConnectClicked()
{
    const QString target = targetEdit->text().trimmed();
    if (target.isEmpty()) {
        refuse(tr("Peer multiaddr is required."), tr("Swarm connect failed: peer multiaddr is required"));
        return;
    }
    start(tr("Connecting to %1...").arg(target), tr("Connecting to swarm peer: %1").arg(target));
    beginAct(connectAct, {target});
    client->swarmConnect(target);
}

void SwarmDialog::onDisconnectSelectedClicked()
{
    QString target = peersTable->selectedTexts().value(0).trimmed();
    if (target.isEmpty())
        target = targetEdit->text().trimmed();
    if (target.isEmpty()) {
        refuse(tr("Select a connected peer row or enter a multiaddr."),
               tr("Swarm disconnect failed: no target selected"));
        return;
    }
    start(tr("Disconnecting from %1...").arg(target), tr("Disconnecting swarm peer: %1").arg(target));
    beginAct(disconnectAct, {target});
    client->swarmDisconnect(target);
}

/// Says success after a failure as well, on purpose: onRequestFailed has just reported that.
void SwarmDialog::onConnectResult(const QString& target, bool /*ok*/, const QStringList& messages)
{
    report(tr("Connect: %1").arg(detailOf(messages, tr("Connected."))), tr("Swarm connect success: %1").arg(target));
    if (!endAct(connectAct, {target}))
        client->fetchSwarmPeers();
}

/// As onConnectResult.
void SwarmDialog::onDisconnectResult(const QString& target, bool /*ok*/, const QStringList& messages)
{
    report(tr("Disconnect: %1").arg(detailOf(messages, tr("Disconnected."))),
           tr("Swarm disconnect success: %1").arg(target));
    if (!endAct(disconnectAct, {target}))
        client->fetchSwarmPeers();
}

void SwarmDialog::onRequestFailed(const QString& operation, const QString& message)
{
    statusLabel->showFailure(message);
    emit statusMessageRequested(operation.startsWith("bootstrap-"_L1)
                                    ? tr("Bootstrap error: %1").arg(message)
                                    : tr("Swarm %1 error: %2").arg(operation, message));
    markRefreshPartCompleted(operation);
}

/// The reason of a failure that is about to be reported, whose own text leaves it out.
void SwarmDialog::onNodeSaid(const QString& path, const QString& words)
{
    if (!path.startsWith("/swarm/"_L1) && !path.startsWith("/bootstrap/"_L1))
        return;
    nodeWordsLabel->showProgress(tr("The node says: %1").arg(lineForLabel(words)));
    nodeWordsLabel->setVisible(true);
}

/// What is shown belongs to the former node. What it was asked to do is still reported.
void SwarmDialog::onEndpointChanged()
{
    formerActs += openActs;
    openActs.clear();
    pendingRefreshParts = 0;
    setLoading(false);
    nodeWordsLabel->hide();
    onPeersReceived({});
    onListenAddrsReceived({});
    onAddrsReceived({});
    showBootstrapPeers({});
    if (isVisible())
        onRefreshClicked();
    else
        statusLabel->showHint(tr("Click Refresh to load swarm diagnostics"));
}

void SwarmDialog::beginAct(const QString& operation, const QStringList& targets)
{
    openActs.append(actName(operation, targets));
}

/// Returns true if it was a former node that did it. Of two calls alike, the former node's counts as the first to end.
bool SwarmDialog::endAct(const QString& operation, const QStringList& targets)
{
    const QString name = actName(operation, targets);
    if (formerActs.removeOne(name))
        return true;
    openActs.removeOne(name);
    return false;
}
