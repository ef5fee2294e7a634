#pragma once

#include "LsEntry.h"

#include <QDialog>
#include <QList>
#include <QMultiHash>

class IpfsClient;
class QLayout;
class QProgressBar;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class StatusLabel;

/// What an item of the tree stands for.
struct FileNode
{
    QString relativePath {}; ///< cleaned; empty for the root
    QString cid {};
    qint64 size = 0; ///< bytes
    bool isDirectory = false;
    bool isRootSingleFile = false; ///< the pin is this file
};

/// The tree of files under one recursive pin, and the saving of all or some of them to a folder. It loads by itself
/// once it is made. Files are downloaded one after the other and each is written on a thread of its own; a file that
/// fails does not stop the others. Closing the dialog ends a save behind the file that is being written.
class PinContentsDialog : public QDialog
{
    Q_OBJECT

public:
    /// `rootName` names the file if the pin is a single one; it may be empty. The client is not owned.
    PinContentsDialog(const QString& cid, IpfsClient* newClient, QWidget* parent, const QString& newRootName);

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
    struct PendingNode
    {
        QTreeWidgetItem* item = nullptr;
        QString path {};
    };

    void setupUi();
    void setupTree();
    QLayout* newButtonRow();

    void startLoading();
    void askForListing(QTreeWidgetItem* item);
    void askForRootKind();
    void addLsEntries(const QList<LsEntry>& entries, QTreeWidgetItem* parent, const QString& parentPath);
    void addRootAsSingleFileLeaf();
    bool looksLikeChunkedFileLinks(const QList<LsEntry>& entries) const;
    QString rootFileName() const;
    void maybeFinishLoading();
    void showCounts();

    QList<FileNode> allFileNodes() const;
    QList<FileNode> selectedFileNodes() const;
    void showNothingToSave(const QString& title, const QString& text);
    void askForFolder(const QString& title, const QList<FileNode>& files);
    void startSave(const QList<FileNode>& files, const QString& folder);
    void saveNextSelectedFile();
    void advanceSave();
    void endSave();
    bool isCurrentDownload(const QString& cid) const;
    QString targetPath(const FileNode& file) const;
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

    int pendingLsCount = 0;                        ///< below 0 once a failed listing has been counted twice
    QMultiHash<QString, PendingNode> pendingNodes; ///< listings in flight; one CID may stand at several places
    int fileCount = 0; ///< items of the tree, kept along: late listings may end the loading many times
    int folderCount = 0;
    bool rootKindRequested = false;
    bool waitingForRootKind = false;
    QList<LsEntry> pendingRootEntries; ///< held until the root's kind is known

    QList<FileNode> saveQueue;
    QString saveTargetDirectory {};
    int saveIndex = 0; ///< at the end of the queue while nothing is being saved
    bool writeInProgress = false;
};
