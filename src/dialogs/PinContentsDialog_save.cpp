#include "PinContentsDialog.h"

#include "Detached.h"
#include "FileNames.h"
#include "FileWriter.h"
#include "IpfsClient.h"
#include "StatusLabel.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>

using namespace Qt::StringLiterals;

void PinContentsDialog::onSaveAllFiles()
{
    const QList<FileNode> files = allFileNodes();
    if (files.isEmpty())
        showNothingToSave(tr("Save all files"), tr("No files in this pin."));
    else
        askForFolder(tr("Save all files to folder"), files);
}

void PinContentsDialog::onSaveSelected()
{
    const QList<FileNode> files = selectedFileNodes();
    if (files.isEmpty())
        showNothingToSave(tr("Save selected"), tr("Select one or more files in the tree (directories are skipped)."));
    else
        askForFolder(tr("Save selected files to folder"), files);
}

void PinContentsDialog::showNothingToSave(const QString& title, const QString& text)
{
    auto* box = new QMessageBox(QMessageBox::Information, title, text, QMessageBox::Ok, this);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

/// Opened without an event loop of its own, so this dialog may go while it is open.
void PinContentsDialog::askForFolder(const QString& title, const QList<FileNode>& files)
{
    auto* picker = new QFileDialog(this, title);
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->setFileMode(QFileDialog::Directory);
    picker->setOption(QFileDialog::ShowDirsOnly);
    picker->setSupportedSchemes({u"file"_s});
    connect(picker, &QFileDialog::fileSelected, this,
            [this, files](const QString& folder) { startSave(files, folder); });
    picker->open();
}

void PinContentsDialog::startSave(const QList<FileNode>& files, const QString& folder)
{
    if (folder.isEmpty())
        return;
    saveTargetDirectory = folder;
    saveQueue = files;
    saveIndex = 0;
    setButtonsEnabled(false);
    progress->setRange(0, static_cast<int>(saveQueue.size()));
    progress->setValue(0);
    progress->show();
    saveNextSelectedFile();
}

void PinContentsDialog::saveNextSelectedFile()
{
    if (!isSaving()) {
        status->showProgress(tr("Saved %1 file(s) to %2").arg(QString::number(saveQueue.size()), saveTargetDirectory));
        endSave();
        return;
    }
    const FileNode& file = saveQueue.at(saveIndex);
    const QDir folder = QFileInfo(targetPath(file)).absoluteDir();
    if (!folder.exists() && !folder.mkpath(u"."_s)) {
        status->showFailure(tr("Failed to create directory: %1").arg(folder.absolutePath()));
        endSave();
        return;
    }
    status->showProgress(tr("Downloading %1…").arg(file.relativePath));
    if (!file.cid.isEmpty()) {
        client->fetchCat(file.cid);
        return;
    }
    // No request would leave, and no answer ever come.
    QMetaObject::invokeMethod(
        this, [this] { onCatFailed({}, tr("it has no CID")); }, Qt::QueuedConnection);
}

void PinContentsDialog::endSave()
{
    saveIndex = static_cast<int>(saveQueue.size()); // a download that still comes is not to be written
    progress->hide();
    setButtonsEnabled(true);
}

void PinContentsDialog::setButtonsEnabled(bool on)
{
    saveAllButton->setEnabled(on);
    saveSelectedButton->setEnabled(on);
}

QString PinContentsDialog::targetPath(const FileNode& file) const
{
    return saveTargetDirectory + u'/' + sanitizeRelativePath(file.relativePath);
}

/// While a file is written its download has ended, so whatever arrives then is another listener's.
bool PinContentsDialog::isCurrentDownload(const QString& cid) const
{
    return isSaving() && !writeInProgress && saveQueue.at(saveIndex).cid == cid;
}

void PinContentsDialog::onCatReceived(const QString& cid, const QByteArray& bytes)
{
    if (!isCurrentDownload(cid))
        return;
    const FileNode& file = saveQueue.at(saveIndex);
    const QString path = targetPath(file);
    const bool unknownType = file.isRootSingleFile && QFileInfo(path).suffix().isEmpty();
    writeDownloadedFileAsync(unknownType ? path + suffixOf(bytes) : path, bytes);
}

void PinContentsDialog::onCatFailed(const QString& cid, const QString& errorMessage)
{
    if (!isCurrentDownload(cid))
        return;
    status->showFailure(tr("Failed to download %1: %2").arg(saveQueue.at(saveIndex).relativePath, errorMessage));
    advanceSave();
}

void PinContentsDialog::writeDownloadedFileAsync(const QString& path, const QByteArray& bytes)
{
    writeInProgress = true;
    status->showProgress(tr("Saving %1…").arg(QFileInfo(path).fileName()));
    runDetached(
        this, [path, bytes] { return writeFile(path, bytes); },
        [this](const WriteResult& result) { onAsyncFileWriteFinished(result.ok, result.message); });
}

void PinContentsDialog::onAsyncFileWriteFinished(bool ok, const QString& errorMessage)
{
    writeInProgress = false;
    if (!ok && !errorMessage.isEmpty())
        status->showFailure(errorMessage);
    advanceSave();
}

void PinContentsDialog::advanceSave()
{
    ++saveIndex;
    progress->setValue(saveIndex);
    saveNextSelectedFile();
}
