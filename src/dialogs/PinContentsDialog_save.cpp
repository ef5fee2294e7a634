// SPDX-License-Identifier: MIT
#include "PinContentsDialog.h"

#include "ContentsItem.h"
#include "Detached.h"
#include "FileNames.h"
#include "FileWriter.h"
#include "IpfsClient.h"
#include "StatusLabel.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

constexpr int detailsWidth = 640;

/// A node that is gone fails each of a hundred thousand files, and a text of as many lines stalls the window.
QString failureDetails(const QStringList& failures)
{
    constexpr qsizetype mostLines = 1000;
    if (failures.size() <= mostLines)
        return failures.join(u'\n');
    return failures.first(mostLines).join(u'\n')
        + QCoreApplication::translate("PinContentsDialog", "\n… and %1 more").arg(failures.size() - mostLines);
}

/// A message box is as wide as its text, which is too narrow for paths.
void widenMessage(QMessageBox* box)
{
    if (auto* grid = qobject_cast<QGridLayout*>(box->layout()))
        grid->addItem(new QSpacerItem(detailsWidth, 0), grid->rowCount(), 0, 1, grid->columnCount());
}

} // namespace

void PinContentsDialog::onSaveAllFiles()
{
    const QList<const ContentsItem*> files = allFileNodes();
    if (files.isEmpty())
        showNothingToSave(tr("Save all files"), tr("No files in this pin."));
    else
        askForFolder(tr("Save all files to folder"), files);
}

void PinContentsDialog::onSaveSelected()
{
    const QList<const ContentsItem*> files = selectedFileNodes();
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
void PinContentsDialog::askForFolder(const QString& title, const QList<const ContentsItem*>& files)
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

void PinContentsDialog::startSave(const QList<const ContentsItem*>& files, const QString& folder)
{
    if (folder.isEmpty())
        return;
    saveTargetDirectory = folder;
    saveQueue = files;
    saveFailures.clear();
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
        showFailures();
        return;
    }
    const FileNode file = saveQueue.at(saveIndex)->node();
    const QDir folder = QFileInfo(targetPath(file.relativePath)).absoluteDir();
    if (!folder.exists() && !folder.mkpath(u"."_s)) {
        status->showFailure(tr("Failed to create directory: %1").arg(folder.absolutePath()));
        endSave();
        return;
    }
    status->showProgress(tr("Downloading %1…").arg(file.relativePath));
    if (!file.cid.isEmpty()) {
        client->fetchCat(file.cid, this);
        return;
    }
    // No request would be sent, and no answer ever come.
    QMetaObject::invokeMethod(
        this, [this] { onCatFailed({}, tr("it has no CID")); }, Qt::QueuedConnection);
}

void PinContentsDialog::endSave()
{
    saveIndex = static_cast<int>(saveQueue.size()); // a download that still comes is not to be written
    progress->hide();
    setButtonsEnabled(true);
}

void PinContentsDialog::noteFailure(const QString& reason)
{
    saveFailures.append(tr("%1: %2").arg(saveQueue.at(saveIndex)->path(), reason));
}

/// Opened without an event loop of its own. The paths and reasons are plain text there.
void PinContentsDialog::showFailures()
{
    if (saveFailures.isEmpty())
        return;
    const QString text = tr("%1 of %2 file(s) were not saved.");
    auto* box = new QMessageBox(QMessageBox::Warning, tr("Files not saved"),
                                text.arg(QString::number(saveFailures.size()), QString::number(saveQueue.size())),
                                QMessageBox::Ok, this);
    box->setTextFormat(Qt::PlainText);
    box->setDetailedText(failureDetails(saveFailures));
    widenMessage(box);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void PinContentsDialog::setButtonsEnabled(bool on)
{
    saveAllButton->setEnabled(on);
    saveSelectedButton->setEnabled(on);
}

QString PinContentsDialog::targetPath(const QString& relativePath) const
{
    return saveTargetDirectory + u'/' + sanitizeRelativePath(relativePath);
}

/// While a file is written its download has ended, so whatever arrives then is another listener's.
bool PinContentsDialog::isCurrentDownload(const QString& cid) const
{
    return isSaving() && !writeInProgress && saveQueue.at(saveIndex)->cidOfItem() == cid;
}

void PinContentsDialog::onCatReceived(const QString& cid, const QByteArray& bytes)
{
    if (!isCurrentDownload(cid))
        return;
    const FileNode file = saveQueue.at(saveIndex)->node();
    const QString path = targetPath(file.relativePath);
    const bool unknownType = file.isRootSingleFile && QFileInfo(path).suffix().isEmpty();
    writeDownloadedFileAsync(unknownType ? path + suffixOf(bytes) : path, bytes);
}

void PinContentsDialog::onCatFailed(const QString& cid, const QString& errorMessage)
{
    if (!isCurrentDownload(cid))
        return;
    status->showFailure(tr("Failed to download %1: %2").arg(saveQueue.at(saveIndex)->path(), errorMessage));
    noteFailure(errorMessage);
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
    if (!ok)
        noteFailure(errorMessage);
    advanceSave();
}

void PinContentsDialog::advanceSave()
{
    ++saveIndex;
    progress->setValue(saveIndex);
    saveNextSelectedFile();
}
