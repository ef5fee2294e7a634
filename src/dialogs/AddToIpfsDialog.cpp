// SPDX-License-Identifier: MIT
#include "AddToIpfsDialog.h"

#include "AddSelection.h"
#include "AppSettings.h"
#include "DialogSizing.h"
#include "DroppedFiles.h"
#include "FileTypeProvider.h"
#include "IpfsClient.h"
#include "PlainText.h"
#include "StatusLabel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QMessageBox>
#include <QSet>
#include <QTreeView>
#include <QTreeWidget>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto nicknameKey = "addToIpfs/lastRemoteServiceNickname"_L1;
constexpr auto lastFolderKey = "addToIpfs/lastFolder"_L1;

QString storedNickname()
{
    return openAppSettings().value(nicknameKey).toString().trimmed();
}

bool isInside(const QString& path, const QString& folder)
{
    return path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

} // namespace

AddToIpfsDialog::AddToIpfsDialog(IpfsClient* newClient, bool newTrialMode, QWidget* parent)
    : QDialog(parent)
    , fileTypes(std::make_unique<FileTypeProvider>())
    , client(newClient)
    , trialMode(newTrialMode)
{
    setWindowTitle(tr("Add files/directories to IPFS"));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/AddToIpfsDialog"_s,
                          .minimumSize = {920, 560},
                          .preferredSize = {1020, 620},
                          .maxWidthRatio = 0.95,
                          .maxHeightRatio = 0.9});
    setupUi();
    setAcceptDrops(true);
    goToLastFolder();
    connect(pinDestinationCombo, &QComboBox::currentTextChanged, this, &AddToIpfsDialog::onPinDestinationChanged);
    onPinDestinationChanged();
    askForServices();
}

AddToIpfsDialog::~AddToIpfsDialog() = default;

void AddToIpfsDialog::askForServices()
{
    if (!client) {
        remoteServicesStatusLabel->showFailure(tr("Remote service list unavailable."));
        return;
    }
    connect(client, &IpfsClient::remoteServicesReceived, this, &AddToIpfsDialog::onRemoteServicesReceived);
    connect(client, &IpfsClient::remoteServicesFailed, this, &AddToIpfsDialog::onRemoteServicesFailed);
    client->fetchRemoteServices(false, QString());
}

/// The root stays the home folder. Its rows come in later, so what is opened here is scrolled to when they are there.
void AddToIpfsDialog::goToLastFolder()
{
    const QString folder = openAppSettings().value(lastFolderKey).toString();
    if (!isInside(folder, fileSystemModel->rootPath()) || !QFileInfo(folder).isDir())
        return;
    lastFolder = fileSystemModel->index(folder);
    for (QModelIndex index = lastFolder; index.isValid() && index != browserTree->rootIndex(); index = index.parent())
        browserTree->expand(index);
    // Not selected: nobody has chosen it to be added.
    browserTree->selectionModel()->setCurrentIndex(lastFolder, QItemSelectionModel::NoUpdate);
    connect(fileSystemModel, &QFileSystemModel::directoryLoaded, this, &AddToIpfsDialog::onDirectoryLoaded);
    connect(fileSystemModel, &QFileSystemModel::layoutChanged, this, &AddToIpfsDialog::onRowsSorted);
}

/// Rows that come in above the last folder move it out of sight. They are sorted some time after this.
void AddToIpfsDialog::onDirectoryLoaded(const QString& path)
{
    const QString folder = fileSystemModel->filePath(lastFolder);
    lastFolderMoves = path == folder || isInside(folder, path); // else the user is opening another folder
}

void AddToIpfsDialog::onRowsSorted()
{
    if (std::exchange(lastFolderMoves, false) && browserTree->currentIndex() == lastFolder)
        browserTree->scrollTo(lastFolder, QAbstractItemView::PositionAtCenter);
}

/// A row that is current but not selected is one that the focus came to by itself: nobody has been there.
void AddToIpfsDialog::storeLastFolder() const
{
    const QModelIndex current = browserTree->currentIndex();
    if (!browserTree->selectionModel()->isSelected(current))
        return;
    const QModelIndex folder = fileSystemModel->isDir(current) ? current : current.parent();
    QSettings settings = openAppSettings();
    settings.setValue(lastFolderKey, fileSystemModel->filePath(folder));
}

void AddToIpfsDialog::dragEnterEvent(QDragEnterEvent* event)
{
    acceptLocalPaths(event);
}

void AddToIpfsDialog::dropEvent(QDropEvent* event)
{
    addPaths(acceptLocalPaths(event));
}

void AddToIpfsDialog::onAddFromBrowser()
{
    const QModelIndexList rows = browserTree->selectionModel()->selectedRows(0);
    QStringList paths;
    paths.reserve(rows.size());
    for (const QModelIndex& index : rows)
        paths.append(fileSystemModel->filePath(index));
    paths.removeIf([](const QString& path) { return path.isEmpty(); });
    addPaths(paths);
}

void AddToIpfsDialog::onAddFiles()
{
    addPaths(QFileDialog::getOpenFileNames(this, tr("Choose files to add")));
}

void AddToIpfsDialog::onAddFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Choose folder to add"));
    if (!folder.isEmpty())
        addPaths({folder});
}

void AddToIpfsDialog::addPaths(const QStringList& paths)
{
    if (paths.isEmpty())
        return;
    selectedPaths = normalizedPaths(selectedPaths + paths);
    updateSelectedTree();
}

/// A path that is gone has no row, but stays on the list: it may come back.
void AddToIpfsDialog::updateSelectedTree()
{
    QList<QTreeWidgetItem*> rows;
    for (const QString& path : std::as_const(selectedPaths)) {
        const QFileInfo info(path);
        if (!info.exists())
            continue;
        auto* row = new QTreeWidgetItem({path, info.isDir() ? tr("Directory") : tr("File")});
        row->setData(0, Qt::UserRole, path);
        row->setToolTip(0, plainToolTip(path));
        rows.append(row);
    }
    selectedTree->clear();
    selectedTree->addTopLevelItems(rows);
    DialogSizing::requestRefit(this);
}

void AddToIpfsDialog::onRemoveSelected()
{
    QSet<QString> removed;
    const QList<QTreeWidgetItem*> rows = selectedTree->selectedItems();
    for (const QTreeWidgetItem* row : rows)
        removed.insert(row->data(0, Qt::UserRole).toString());
    if (removed.isEmpty())
        return;
    selectedPaths.removeIf([&removed](const QString& path) { return removed.contains(path); });
    updateSelectedTree();
}

/// The row that takes the place is selected, so that the next press removes that one.
void AddToIpfsDialog::onDeletePressed()
{
    int place = selectedTree->topLevelItemCount();
    const QList<QTreeWidgetItem*> rows = selectedTree->selectedItems();
    for (QTreeWidgetItem* row : rows)
        place = std::min(place, selectedTree->indexOfTopLevelItem(row));
    if (rows.isEmpty())
        return;
    onRemoveSelected();
    selectedTree->setCurrentItem(selectedTree->topLevelItem(std::min(place, selectedTree->topLevelItemCount() - 1)));
}

void AddToIpfsDialog::onClearAll()
{
    selectedPaths.clear();
    updateSelectedTree();
}

QString AddToIpfsDialog::pinDestination() const
{
    return pinDestinationCombo->currentData().toString();
}

QString AddToIpfsDialog::serviceNickname() const
{
    return remoteServiceCombo->currentText().trimmed();
}

/// Leaving the remote destinations changes no box back.
void AddToIpfsDialog::onPinDestinationChanged()
{
    const bool remote = isRemoteDestination(pinDestination());
    for (QWidget* field : std::initializer_list<QWidget*> {remoteServiceCombo, remotePinLabelEdit, unpinLocalCheck})
        field->setEnabled(remote);
    if (pinDestination() == "remote"_L1)
        unpinLocalCheck->setChecked(true);
    if (remote)
        pinCheck->setChecked(true); // a service fetches the blocks from this node
    pinCheck->setEnabled(!remote);
}

void AddToIpfsDialog::onRemoteServicesReceived(const QList<RemoteServiceEntry>& services)
{
    const QString stored = storedNickname();
    const QString preferred = stored.isEmpty() ? serviceNickname() : stored;
    remoteServiceCombo->clear();
    for (const RemoteServiceEntry& service : services) {
        if (const QString name = service.name.trimmed(); !name.isEmpty())
            remoteServiceCombo->addItem(name);
    }
    if (!preferred.isEmpty()) {
        remoteServiceCombo->setCurrentIndex(remoteServiceCombo->findText(preferred));
        remoteServiceCombo->setEditText(preferred); // the node may not know it any more
    } else if (remoteServiceCombo->count() > 0) {
        remoteServiceCombo->setCurrentIndex(0);
    }
    remoteServicesStatusLabel->showHint(
        services.isEmpty() ? tr("No configured services found. Configure one in File -> Remote Services.")
                           : tr("Loaded %1 configured service(s).").arg(services.size()));
}

void AddToIpfsDialog::onRemoteServicesFailed(const QString& message)
{
    remoteServicesStatusLabel->showFailure(tr("Could not load services: %1").arg(message));
}

/// Why the add can't begin; empty if it can.
QString AddToIpfsDialog::refusal() const
{
    if (selectedPaths.isEmpty())
        return tr("Select at least one file or folder first.");
    const AddOptions wanted = options();
    if (!isRemoteDestination(wanted.pinDestination))
        return {};
    if (wanted.remoteServiceNickname.isEmpty())
        return tr("Remote service is required for remote pinning.");
    if (wanted.onlyHash)
        return tr("Remote pinning requires data blocks to be available. Disable 'Only hash' for remote pinning.");
    return {};
}

void AddToIpfsDialog::onAcceptClicked()
{
    if (const QString reason = refusal(); !reason.isEmpty()) {
        QMessageBox::information(this, tr("Add to IPFS"), reason);
        return;
    }
    if (const QString nickname = serviceNickname(); !nickname.isEmpty()) { // for a local add as well
        QSettings settings = openAppSettings();
        settings.setValue(nicknameKey, nickname);
    }
    storeLastFolder();
    accept();
}

AddOptions AddToIpfsDialog::options() const
{
    return {.wrapWithDirectory = wrapCheck->isChecked(),
            .pin = isRemoteDestination(pinDestination()) || pinCheck->isChecked(),
            .onlyHash = onlyHashCheck->isChecked(),
            .cidVersion = cidVersionCombo->currentData().toInt(),
            .pinDestination = pinDestination(),
            .remoteServiceNickname = serviceNickname(),
            .remotePinLabel = remotePinLabelEdit->text().trimmed(),
            .unpinLocalAfterRemote = unpinLocalCheck->isChecked()};
}

int AddToIpfsDialog::missingPaths() const
{
    return static_cast<int>(
        std::ranges::count_if(selectedPaths, [](const QString& path) { return !QFileInfo::exists(path); }));
}

QList<LocalPathSelection> AddToIpfsDialog::selections() const
{
    return uploadSelections(selectedPaths);
}
