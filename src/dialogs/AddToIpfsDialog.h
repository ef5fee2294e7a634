// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"
#include "RemoteServiceEntry.h"

#include <QDialog>
#include <QList>
#include <QPersistentModelIndex>
#include <QStringList>

#include <memory>

class FileTypeProvider;
class IpfsClient;
class QCheckBox;
class QComboBox;
class QFileSystemModel;
class QLayout;
class QLineEdit;
class QPushButton;
class QTreeView;
class QTreeWidget;
class StatusLabel;

/// Gathers local files and folders, the options of an add and where its result is to be pinned. It uploads nothing:
/// after acceptance the caller reads selections() and options(). Asks the node for its remote pinning services when it
/// is made.
class AddToIpfsDialog : public QDialog
{
    Q_OBJECT

public:
    /// `newClient` is not owned; without one the services are not listed. Trial mode restricts nothing.
    AddToIpfsDialog(IpfsClient* newClient, bool newTrialMode, QWidget* parent = nullptr);
    ~AddToIpfsDialog() override;

    /// What was chosen and still exists, with names that differ from each other. Empty if all of it is gone.
    QList<LocalPathSelection> selections() const;
    /// How many of the chosen paths are gone.
    int missingPaths() const;
    AddOptions options() const;
    /// Puts files and folders on the list. What doesn't exist is left out, and so is what is inside a folder on the
    /// list.
    void addPaths(const QStringList& paths);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private slots:
    void onAddFromBrowser();
    void onAddFiles();
    void onAddFolder();
    void onRemoveSelected();
    void onClearAll();
    void onAcceptClicked();
    void onPinDestinationChanged();
    void onRemoteServicesReceived(const QList<RemoteServiceEntry>& services);
    void onRemoteServicesFailed(const QString& message);

private:
    void setupUi();
    QLayout* newBrowserColumn();
    void setupBrowser();
    void setupBrowserColumns();
    QLayout* newListColumn();
    void setupList();
    QLayout* newOptionsBlock();
    QLayout* newAddRow();
    QLayout* newPinRow();
    QLayout* newButtonRow(const QList<QWidget*>& buttons);
    QPushButton* newButton(const QString& text, void (AddToIpfsDialog::*slot)());
    void setupServiceFields();
    void askForServices();

    void goToLastFolder();
    void onDirectoryLoaded(const QString& path);
    void onRowsSorted();
    void storeLastFolder() const;
    void onDeletePressed();
    void updateSelectedTree();
    QString pinDestination() const;
    QString refusal() const;
    QString serviceNickname() const;

    std::unique_ptr<FileTypeProvider> fileTypes;
    QFileSystemModel* fileSystemModel = nullptr;
    QTreeView* browserTree = nullptr;
    QTreeWidget* selectedTree = nullptr;
    QCheckBox* wrapCheck = nullptr;
    QCheckBox* pinCheck = nullptr;
    QCheckBox* onlyHashCheck = nullptr;
    QComboBox* cidVersionCombo = nullptr;
    QComboBox* pinDestinationCombo = nullptr;
    QComboBox* remoteServiceCombo = nullptr;
    QLineEdit* remotePinLabelEdit = nullptr;
    StatusLabel* remoteServicesStatusLabel = nullptr;
    QCheckBox* unpinLocalCheck = nullptr;
    IpfsClient* client;
    QStringList selectedPaths; ///< absolute, sorted, each once, none inside another; some may be gone meanwhile
    [[maybe_unused]] bool trialMode;
    QPersistentModelIndex lastFolder; ///< where the browser was the last time
    bool lastFolderMoves = false;     ///< what is above it or in it has been loaded and not sorted yet
};
