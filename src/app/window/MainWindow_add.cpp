// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ActionBox.h"
#include "AddProgress.h"
#include "AddToIpfsDialog.h"
#include "ContentMode.h"
#include "DroppedFiles.h"
#include "FileWriter.h"
#include "IpfsClient.h"
#include "PinToolBar.h"
#include "PlainText.h"
#include "RemotePinFlow.h"

#include <QAction>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QPointer>
#include <QTimer>

using namespace Qt::StringLiterals;

void MainWindow::setupRemotePinFlow()
{
    connect(client, &IpfsClient::remotePinQueued, remotePinFlow, &RemotePinFlow::onRemotePinQueued);
    connect(client, &IpfsClient::remotePinQueueFailed, remotePinFlow, &RemotePinFlow::onRemotePinQueueFailed);
    connect(client, &IpfsClient::remotePinStatusReceived, remotePinFlow, &RemotePinFlow::onRemotePinStatusReceived);
    connect(client, &IpfsClient::remotePinStatusFailed, remotePinFlow, &RemotePinFlow::onRemotePinStatusFailed);
    connect(remotePinFlow, &RemotePinFlow::pinWanted, client,
            [this](const QString& cid, const QString& service, const QString& name) {
                client->remotePinAdd(cid, service, name, true);
            });
    connect(remotePinFlow, &RemotePinFlow::statusWanted, client, &IpfsClient::fetchRemotePinStatus);
    connect(remotePinFlow, &RemotePinFlow::unpinWanted, client,
            [this](const QStringList& cids) { client->unpin(cids, true); });
    connect(remotePinFlow, &RemotePinFlow::statusMessageRequested, this, &MainWindow::setStatusMessage);
    connect(remotePinFlow, &RemotePinFlow::notificationRequested, this, &MainWindow::showNotification);
}

void MainWindow::onAddToIpfsClicked()
{
    chooseAndAdd({});
}

/// `paths` are in the dialog's list from the start.
void MainWindow::chooseAndAdd(const QStringList& paths)
{
    if (currentAdd.isRunning) {
        setStatusMessage(tr("Add is already in progress…"));
        return;
    }
    QPointer<AddToIpfsDialog> dialog = new AddToIpfsDialog(client, isTrial(), this);
    dialog->addPaths(paths);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    if (!dialog) // it went with this window
        return;
    const QList<LocalPathSelection> selections = dialog->selections();
    const AddOptions options = dialog->options();
    currentAdd.missingPaths = dialog->missingPaths();
    delete dialog;
    if (accepted)
        startAdd(selections, options);
}

void MainWindow::startAdd(const QList<LocalPathSelection>& selections, const AddOptions& options)
{
    currentAdd.options = options;
    if (selections.isEmpty()) {
        showNotification(tr("No valid files/folders were selected."), true);
        return;
    }
    setAdding(true);
    currentAdd.shortfall = {.filesSkipped = currentAdd.missingPaths};
    currentAdd.address = client->baseUrl();
    addProgress->start();
    setStatusMessage(tr("Uploading %1 item(s) to IPFS…").arg(selections.size()));
    client->addLocalPaths(selections, currentAdd.options);
}

void MainWindow::setAdding(bool on)
{
    currentAdd.isRunning = on;
    toolBar->setAddEnabled(!on);
    addToIpfsAction->setEnabled(!on);
}

void MainWindow::onAddProgress(const QString& currentName, int processedEntries, int totalFiles)
{
    QString name = currentName.trimmed();
    if (name.isEmpty())
        name = tr("(wrapped root)");
    setStatusMessage(totalFiles < 1 ? tr("Adding to IPFS: %1").arg(name)
                                    : tr("Adding to IPFS: %1/%2 — %3")
                                          .arg(QString::number(processedEntries), QString::number(totalFiles), name));
    addProgress->showObject(name, processedEntries, totalFiles);
}

void MainWindow::onAddShortfall(int filesSent, int filesReported, int filesSkipped, int foldersWithinThemselves,
                                bool rootLineMissing)
{
    currentAdd.shortfall = {.filesSent = filesSent,
                            .filesReported = filesReported,
                            .filesSkipped = filesSkipped + currentAdd.missingPaths,
                            .foldersWithinThemselves = foldersWithinThemselves,
                            .rootLineMissing = rootLineMissing};
}

void MainWindow::onAddCompleted(const QString& rootCid, const QList<AddEntry>& entries)
{
    setAdding(false);
    addProgress->finish(true);
    if (!showsUnpinned())
        triggerRefresh(false);
    const bool isShort = currentAdd.shortfall.isShort();
    const bool pinsRemotely = isRemoteDestination(currentAdd.options.pinDestination);
    const bool nodeWasLeft = currentAdd.address != client->baseUrl();
    if (pinsRemotely && (isShort || nodeWasLeft)) {
        currentAdd.shortfall.serviceLeftOut = nodeWasLeft
            ? tr("It was not pinned at the remote service: the node's address has changed.")
            : tr("It was not pinned at the remote service, since it is not complete.");
    }
    if (rootCid.isEmpty()) {
        showNotification(tr("Added %1 object(s) to IPFS.").arg(entries.size()), isShort);
        setStatusMessage(tr("Added %1 object(s) to IPFS").arg(entries.size()));
    } else {
        showNotification(tr("Added to IPFS successfully. Root CID: %1").arg(rootCid), isShort);
        setStatusMessage(tr("Added to IPFS: %1").arg(rootCid));
    }
    if (pinsRemotely && currentAdd.shortfall.serviceLeftOut.isEmpty())
        remotePinFlow->start(currentAdd.options, rootCid, entries);
    showAddResult(rootCid, entries);
}

void MainWindow::showAddResult(const QString& rootCid, const QList<AddEntry>& entries)
{
    const QString text = rootCid.isEmpty()
        ? tr("Add operation completed successfully.\n\nReturned objects: %1").arg(entries.size())
        : tr("Add operation completed successfully.\n\nRoot CID:\n%1").arg(messageForLabel(rootCid));
    const QStringList actions
        = rootCid.isEmpty() && entries.isEmpty() ? QStringList() : QStringList {tr("Copy CIDs"), tr("Export CIDs")};
    QPointer<ActionBox> box
        = new ActionBox(currentAdd.shortfall.isShort() ? QMessageBox::Warning : QMessageBox::Information,
                        tr("Add to IPFS"), text, actions, this);
    box->setInformativeText(currentAdd.shortfall.text());
    const int choice = box->choose();
    if (!box) // it went with this window
        return;
    delete box;
    if (choice == 0)
        copyAddedCids(addedCids(rootCid, entries));
    else if (choice == 1)
        exportCids(addedCids(rootCid, entries));
}

void MainWindow::copyAddedCids(const QStringList& cids)
{
    QGuiApplication::clipboard()->setText(cids.join(u'\n'));
    setStatusMessage(tr("Copied %1 CID(s) to clipboard").arg(cids.size()));
}

void MainWindow::exportCids(const QStringList& cids)
{
    const QPointer<MainWindow> self = this;
    const QString path = QFileDialog::getSaveFileName(this, tr("Export CIDs"), u"cids.txt"_s,
                                                      tr("Text files (*.txt);;CSV files (*.csv);;All files (*)"));
    if (!self || path.isEmpty())
        return;
    const WriteResult result = writeFile(path, (cids.join(u'\n') + u'\n').toUtf8());
    if (result.ok)
        setStatusMessage(tr("Exported %1 CID(s) to %2").arg(QString::number(cids.size()), path));
    else
        showNotification(tr("Failed to write file: %1").arg(result.reason), true);
}

void MainWindow::onAddFailed(const QString& message)
{
    setAdding(false);
    addProgress->finish(false);
    showNotification(message, true);
    setStatusMessage(tr("Error: ") + message);
    showMessageBox(QMessageBox::Critical, tr("Add to IPFS failed"), message, this);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    acceptLocalPaths(event);
}

/// The dialog opens once the drop is over, since it waits for the user.
void MainWindow::dropEvent(QDropEvent* event)
{
    if (const QStringList paths = acceptLocalPaths(event); !paths.isEmpty())
        QTimer::singleShot(0, this, [this, paths] { chooseAndAdd(paths); });
}
