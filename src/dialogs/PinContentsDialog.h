// SPDX-License-Identifier: MIT
#pragma once

#include "LsEntry.h"

#include <QDialog>
#include <QList>
#include <QMultiHash>
#include <QQueue>
#include <QStringList>

#include <memory>

class ContentsItem;
class IpfsClient;
class QLayout;
class QProgressBar;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class StatusLabel;

/// The tree of files under one recursive pin, and the saving of all or some of them to a folder. Loads when it is made,
/// with a limit of open listings and of entries, since a tree may be hostile. Files are downloaded one after the other
/// and each is written on a thread of its own; a file that fails does not stop the others, and a box lists those that
/// failed. Destroying the dialog ends its calls, and a save after the file that is being written.
class PinContentsDialog : public QDialog
{
    Q_OBJECT

public:
    /// `rootName` names the file if the pin is a single one; it may be empty. The client is not owned.
    PinContentsDialog(const QString& cid, IpfsClient* newClient, QWidget* parent, const QString& newRootName);
    ~PinContentsDialog() override;

    bool isSaving() const { return saveIndex < saveQueue.size(); }

private slots:
    void onLsReceived(const QString& cid, const QList<LsEntry>& entries);
    void onKindReceived(const QString& cid, const QString& kind);
    void onErrorOccurred(const QString& message);
    void onSaveAllFiles();
    void onSaveSelected();
    void onCatReceived(const QString& cid, const QByteArray& bytes);
    void onCatFailed(const QString& cid, const QString& errorMessage);
    void onAsyncFileWriteFinished(bool ok, const QString& errorMessage);

private:
    void setupUi();
    void setupTree();
    QLayout* newButtonRow();

    void startLoading();
    void stopLoading();
    void clearTree();
    void askForListing(ContentsItem* item);
    void sendListings();
    void askForRootKind();
    void addLsEntries(const QList<LsEntry>& entries, QTreeWidgetItem* parent);
    void addRootAsSingleFileLeaf();
    bool looksLikeChunkedFileLinks(const QList<LsEntry>& entries) const;
    QString rootFileName() const;
    void maybeFinishLoading();
    void showCounts();

    QList<const ContentsItem*> allFileNodes() const;
    QList<const ContentsItem*> selectedFileNodes() const;
    void showNothingToSave(const QString& title, const QString& text);
    void askForFolder(const QString& title, const QList<const ContentsItem*>& files);
    void startSave(const QList<const ContentsItem*>& files, const QString& folder);
    void saveNextSelectedFile();
    void advanceSave();
    void endSave();
    void noteFailure(const QString& reason);
    void showFailures();
    bool isCurrentDownload(const QString& cid) const;
    QString targetPath(const QString& relativePath) const;
    void writeDownloadedFileAsync(const QString& path, const QByteArray& bytes);
    void setButtonsEnabled(bool on);

    QString rootCid;
    QString rootName;
    IpfsClient* client;

    StatusLabel* status = nullptr;
    QTreeWidget* tree = nullptr;
    QProgressBar* progress = nullptr;
    QPushButton* saveAllButton = nullptr;
    QPushButton* saveSelectedButton = nullptr;

    int pendingLsCount = 0;             ///< not answered yet; below 0 after a failed listing that was counted twice
    std::unique_ptr<QObject> listings;  ///< owns the calls for listings
    QQueue<ContentsItem*> waitingItems; ///< folders whose listing is not asked for yet
    QMultiHash<QString, ContentsItem*> pendingNodes; ///< listings in flight; several items may have the same CID
    int fileCount = 0; ///< counted while items are added: late listings may end the loading many times
    int folderCount = 0;
    bool stopped = false; ///< there were too many entries
    bool rootKindRequested = false;
    bool waitingForRootKind = false;
    QList<LsEntry> pendingRootEntries; ///< held until the root's kind is known

    QList<const ContentsItem*> saveQueue;
    QStringList saveFailures; ///< "path: reason"
    QString saveTargetDirectory {};
    int saveIndex = 0; ///< at the end of the queue while nothing is being saved
    bool writeInProgress = false;
};
