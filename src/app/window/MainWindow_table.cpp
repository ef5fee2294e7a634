// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ContentMode.h"
#include "Gateway.h"
#include "IndirectPinsDialog.h"
#include "IpfsClient.h"
#include "PinContentsDialog.h"
#include "PinModel.h"
#include "PinTable.h"

#include <QAction>
#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto copyMessageShown = 3000ms;
constexpr auto openMessageShown = 3000ms;
constexpr auto unpinMessageShown = 4000ms;

void showOnce(QDialog* dialog)
{
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

} // namespace

void MainWindow::onSelectionChanged()
{
    const bool pinned = values.contentMode == ContentMode::pinned;
    const bool hasPinSelected = pinned && pinTable->hasSelection();
    unpinSelectedAction->setEnabled(hasPinSelected);
    publishToIpnsAction->setEnabled(hasPinSelected);
    unpinAllAction->setEnabled(pinned && pinModel->rowCount() > 0);
}

void MainWindow::onTableContextMenuRequested(const QPoint& pos)
{
    pinTable->showRowMenu(pos, values.contentMode == ContentMode::pinned);
}

void MainWindow::onTableDoubleClicked(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    if (pinTable->isRecursivePin(index))
        onShowIndirectPins(pinTable->cidOf(index));
    else
        onCopySelectedCID();
}

void MainWindow::onShowIndirectPins(const QString& rootCid)
{
    showOnce(new IndirectPinsDialog(rootCid, client, this));
}

void MainWindow::showContents(const QString& rootCid, const QString& name)
{
    showOnce(new PinContentsDialog(rootCid, client, this, name));
}

void MainWindow::onCopySelectedCID()
{
    if (pinTable->hasSelection())
        copyCids(pinTable->selectedCids());
}

void MainWindow::copyCids(const QStringList& cids)
{
    QGuiApplication::clipboard()->setText(cids.join(u'\n'));
    showStatusFor(copyMessageShown, tr("%1 CID(s) copied to clipboard").arg(cids.size()));
}

void MainWindow::onOpenInGateway()
{
    openInGateway(pinTable->firstSelectedCid());
}

void MainWindow::onOpenFromLocal()
{
    openFromLocal(pinTable->firstSelectedCid());
}

void MainWindow::openInGateway(const QString& cid)
{
    openInBrowser(cid, publicGatewayUrl(ipfsPath(cid)), tr("Opening %1 in browser…"));
}

void MainWindow::openFromLocal(const QString& cid)
{
    openInBrowser(cid, localGatewayUrl(client->endpointHost(), ipfsPath(cid)), tr("Opening %1 from local gateway…"));
}

/// The status reads the same whether or not a browser could be started.
void MainWindow::openInBrowser(const QString& cid, const QUrl& url, const QString& message)
{
    if (cid.isEmpty())
        return;
    QDesktopServices::openUrl(url);
    showStatusFor(openMessageShown, message.arg(cid));
}

/// Asks nothing first, as onUnpinAll does: the entries' own texts are the warning.
void MainWindow::onUnpinSelected()
{
    unpin(pinTable->selectedCids());
}

/// All rows of the list, those hidden by the search included.
void MainWindow::onUnpinAll()
{
    unpin(pinModel->allCids());
}

/// Thousands of CIDs may have to be gone through one by one, so the status says at once that it is under way.
void MainWindow::unpin(const QStringList& cids)
{
    if (values.contentMode != ContentMode::pinned || cids.isEmpty())
        return;
    setStatusMessage(tr("Unpinning %1 CID(s)…").arg(cids.size()));
    client->unpin(cids, true);
}

/// The list is fetched again without the refresh flag, so that the notification stays until a later refresh.
void MainWindow::onUnpinned(const QStringList& cids)
{
    showNotification(tr("Unpinned %1 CID(s). Refreshing list…").arg(cids.size()), false);
    showStatusFor(unpinMessageShown, tr("Unpinned %1 CID(s)").arg(cids.size()));
    fetchList();
}

void MainWindow::onUnpinProgress(int done, int total)
{
    showProgress(tr("Unpinning %1 of %2…").arg(QString::number(done), QString::number(total)));
}

/// An unpin of several that failed may have removed some: the list is fetched again, as after one that succeeded.
void MainWindow::onPinsMayHaveChanged()
{
    fetchList();
}
