// SPDX-License-Identifier: MIT
#include "SwarmDialog.h"

#include "ActionBox.h"
#include "AddressTable.h"
#include "IpfsClient.h"

#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

const auto addAct = u"add"_s;
const auto removeAct = u"remove"_s;

QStringList withoutBlanks(const QStringList& texts)
{
    QStringList kept;
    for (const QString& text : texts) {
        if (QString trimmed = text.trimmed(); !trimmed.isEmpty())
            kept.append(std::move(trimmed));
    }
    return kept;
}

} // namespace

void SwarmDialog::connectBootstrap()
{
    connect(client, &IpfsClient::bootstrapPeersReceived, this, &SwarmDialog::onBootstrapPeersReceived);
    connect(client, &IpfsClient::bootstrapAddResult, this, &SwarmDialog::onBootstrapAddResult);
    connect(client, &IpfsClient::bootstrapRemoveResult, this, &SwarmDialog::onBootstrapRemoveResult);
    connect(client, &IpfsClient::bootstrapRequestFailed, this, &SwarmDialog::onRequestFailed);
}

void SwarmDialog::showBootstrapPeers(const QStringList& peers)
{
    bootstrapPeers = peers;
    bootstrapTable->setRows(bootstrapPeers);
    removeAllButton->setEnabled(!bootstrapPeers.isEmpty());
    finishList();
}

/// The progress text stays after the answer, on purpose: this is no refresh whose answers are counted.
void SwarmDialog::onRefreshBootstrapClicked()
{
    start(tr("Loading bootstrap peers..."), tr("Fetching bootstrap peers..."));
    client->fetchBootstrapPeers(false);
}

void SwarmDialog::onBootstrapPeersReceived(const QStringList& peers)
{
    showBootstrapPeers(peers);
    markRefreshPartCompleted(u"bootstrap-list"_s);
}

void SwarmDialog::onBootstrapAddClicked()
{
    const QString peer = bootstrapEdit->text().trimmed();
    if (peer.isEmpty()) {
        refuse(tr("Bootstrap peer address is required."), tr("Bootstrap add failed: peer address is required"));
        return;
    }
    start(tr("Adding bootstrap peer %1...").arg(peer), tr("Adding bootstrap peer: %1").arg(peer));
    beginAct(addAct, {peer});
    client->bootstrapAddPeer(peer);
}

void SwarmDialog::onBootstrapRemoveSelectedClicked()
{
    QStringList peers = withoutBlanks(bootstrapTable->selectedTexts());
    if (peers.isEmpty())
        peers = withoutBlanks({bootstrapEdit->text()});
    if (peers.isEmpty()) {
        refuse(tr("Select bootstrap peers to remove or enter one in the field."),
               tr("Bootstrap remove failed: no peer selected"));
        return;
    }
    start(tr("Removing %1 bootstrap peer(s)...").arg(peers.size()),
          tr("Removing %1 bootstrap peer(s)").arg(peers.size()));
    beginAct(removeAct, peers);
    client->bootstrapRemovePeers(peers);
}

void SwarmDialog::onBootstrapRemoveAllClicked()
{
    const QString asked = client->baseUrl();
    if (!askYesNo(QMessageBox::Warning, tr("Remove all bootstrap peers"),
                  tr("This will remove all bootstrap peers from your local Kubo node.\n\nContinue?"), this))
        return; // perhaps with the dialog gone
    if (client->baseUrl() != asked)
        return; // it is not that node's list that was to go
    start(tr("Removing all bootstrap peers..."), tr("Removing all bootstrap peers"));
    beginAct(removeAct, {});
    client->bootstrapRemoveAllPeers();
}

/// The table shows just what the node names in its answer; the list is not read again.
void SwarmDialog::onBootstrapAddResult(const QString& target, bool ok, const QStringList& peers)
{
    const bool isOfFormerNode = endAct(addAct, {target});
    if (!ok)
        return;
    if (!isOfFormerNode)
        showBootstrapPeers(peers);
    report(tr("Added bootstrap peer: %1").arg(target), tr("Bootstrap peer added: %1").arg(target));
}

/// As onBootstrapAddResult. Nothing was named if all were to go, and so both texts count 0 then.
void SwarmDialog::onBootstrapRemoveResult(const QStringList& removed, bool ok, const QStringList& peers)
{
    const bool isOfFormerNode = endAct(removeAct, removed);
    if (!ok)
        return;
    if (!isOfFormerNode)
        showBootstrapPeers(peers);
    report(tr("Removed %1 bootstrap peer(s).").arg(removed.size()),
           tr("Bootstrap peers removed: %1").arg(removed.size()));
}
