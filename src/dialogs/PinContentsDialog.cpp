#include "PinContentsDialog.h"

#include "CidText.h"
#include "DialogSizing.h"
#include "FileNames.h"
#include "IpfsClient.h"
#include "StatusLabel.h"
#include "WidgetBuilders.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 8;
constexpr int nameWidth = 220;
constexpr int sizeWidth = 80;
constexpr int rowHeight = 22;
constexpr int lsDirectory = 1; // a listing's number for a directory
constexpr qsizetype shortCidLength = 12;

enum ItemRole { PathRole = Qt::UserRole, CidRole, DirectoryRole, SizeRole, RootLeafRole };

QTreeWidgetItem* newItem(const QString& name, const QString& sizeText, const FileNode& node)
{
    auto* item = new QTreeWidgetItem({name, sizeText, node.cid});
    item->setData(0, PathRole, node.relativePath);
    item->setData(0, CidRole, node.cid);
    item->setData(0, DirectoryRole, node.isDirectory);
    item->setData(0, SizeRole, node.size);
    item->setData(0, RootLeafRole, node.isRootSingleFile);
    return item;
}

FileNode nodeOf(const QTreeWidgetItem* item)
{
    return {.relativePath = item->data(0, PathRole).toString(),
            .cid = item->data(0, CidRole).toString(),
            .size = item->data(0, SizeRole).toLongLong(),
            .isDirectory = item->data(0, DirectoryRole).toBool(),
            .isRootSingleFile = item->data(0, RootLeafRole).toBool()};
}

bool isDirectory(const QTreeWidgetItem* item)
{
    return item->data(0, DirectoryRole).toBool();
}

QTreeWidgetItem* newEntryItem(const LsEntry& entry, const QString& parentPath)
{
    const bool named = !entry.name.trimmed().isEmpty();
    const QString safe = sanitizeFileName(named ? entry.name : entry.hash.left(shortCidLength));
    const bool directory = entry.type == lsDirectory;
    return newItem(safe, directory ? QString() : formatFileSize(entry.size),
                   {.relativePath = parentPath.isEmpty() ? safe : parentPath + u'/' + safe,
                    .cid = entry.hash,
                    .size = entry.size,
                    .isDirectory = directory});
}

/// A chunk of a file is a link without a name, or with a number for one.
bool looksLikeChunk(const LsEntry& entry)
{
    return entry.type != lsDirectory && std::ranges::all_of(entry.name.trimmed(), [](QChar c) { return c.isDigit(); });
}

/// The items and everything below them, breadth first.
QList<QTreeWidgetItem*> withDescendants(QList<QTreeWidgetItem*> items)
{
    for (qsizetype i = 0; i < items.size(); ++i) {
        const QTreeWidgetItem* item = items.at(i);
        for (int row = 0; row < item->childCount(); ++row)
            items.append(item->child(row));
    }
    return items;
}

QList<FileNode> filesUnder(const QList<QTreeWidgetItem*>& items)
{
    QList<FileNode> files;
    for (const QTreeWidgetItem* item : withDescendants(items)) {
        if (!isDirectory(item))
            files.append(nodeOf(item));
    }
    return files;
}

} // namespace

PinContentsDialog::PinContentsDialog(const QString& cid, IpfsClient* newClient, QWidget* parent,
                                     const QString& newRootName)
    : QDialog(parent)
    , rootCid(cid)
    , rootName(newRootName)
    , client(newClient)
{
    setWindowTitle(tr("Pin contents: %1").arg(titleCid(rootCid)));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/PinContentsDialog"_s,
                          .minimumSize = {560, 420},
                          .preferredSize = {700, 500},
                          .maxWidthRatio = 0.8,
                          .maxHeightRatio = 0.75});
    setupUi();
    connect(client, &IpfsClient::lsReceived, this, &PinContentsDialog::onLsReceived);
    connect(client, &IpfsClient::kindReceived, this, &PinContentsDialog::onKindReceived);
    connect(client, &IpfsClient::errorOccurred, this, &PinContentsDialog::onErrorOccurred);
    connect(client, &IpfsClient::catReceived, this, &PinContentsDialog::onCatReceived);
    connect(client, &IpfsClient::catFailed, this, &PinContentsDialog::onCatFailed);
    startLoading();
}

void PinContentsDialog::setupUi()
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->addWidget(newCidHeading(tr("Files under recursive pin: <b>%1</b>"), rootCid, this));
    status = new StatusLabel(this);
    status->showProgress(tr("Loading…"));
    column->addWidget(status);
    setupTree();
    column->addWidget(tree);
    progress = new QProgressBar(this);
    progress->setAccessibleName(tr("Files saved"));
    progress->setRange(0, 0);
    progress->hide();
    column->addWidget(progress);
    column->addLayout(newButtonRow());
    setButtonsEnabled(false);
}

void PinContentsDialog::setupTree()
{
    tree = new QTreeWidget(this);
    tree->setHeaderLabels({tr("Name"), tr("Size"), tr("CID")});
    tree->setColumnWidth(0, nameWidth);
    tree->setColumnWidth(1, sizeWidth);
    tree->header()->setStretchLastSection(true);
    tree->setAlternatingRowColors(true);
    tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tree->setUniformRowHeights(true);
    tree->setTextElideMode(Qt::ElideMiddle); // CIDs differ at their ends, and so do the suffixes of files
    tree->setFocus();
}

QLayout* PinContentsDialog::newButtonRow()
{
    auto* row = new QHBoxLayout;
    saveAllButton = new QPushButton(tr("Save all files to disk…"), this);
    connect(saveAllButton, &QPushButton::clicked, this, &PinContentsDialog::onSaveAllFiles);
    saveSelectedButton = new QPushButton(tr("Save selected to disk…"), this);
    connect(saveSelectedButton, &QPushButton::clicked, this, &PinContentsDialog::onSaveSelected);
    for (QPushButton* button : {saveAllButton, saveSelectedButton}) {
        button->setAutoDefault(false); // Return in the tree is no wish to save
        row->addWidget(button);
    }
    row->addStretch();
    return row;
}

void PinContentsDialog::startLoading()
{
    tree->clear();
    pendingNodes.clear();
    pendingRootEntries.clear();
    rootKindRequested = false;
    waitingForRootKind = false;
    fileCount = 0;
    folderCount = 0;
    auto* root = newItem(u"."_s, {}, {.cid = rootCid, .isDirectory = true});
    root->setSizeHint(0, {0, rowHeight}); // all rows are as high as the first
    tree->addTopLevelItem(root);
    pendingLsCount = 0;
    askForListing(root);
}

void PinContentsDialog::askForListing(QTreeWidgetItem* item)
{
    const FileNode node = nodeOf(item);
    if (node.cid.isEmpty())
        return; // no request would leave, and no answer ever come
    pendingNodes.insert(node.cid, {.item = item, .path = node.relativePath});
    ++pendingLsCount;
    client->fetchLs(node.cid);
}

void PinContentsDialog::onLsReceived(const QString& cid, const QList<LsEntry>& entries)
{
    const auto newest = pendingNodes.constFind(cid);
    if (newest == pendingNodes.constEnd())
        return; // another listener's
    const PendingNode node = *newest;
    pendingNodes.erase(newest);
    const bool isRoot = cid == rootCid && node.path.isEmpty();
    if (isRoot && !rootKindRequested && looksLikeChunkedFileLinks(entries)) {
        pendingRootEntries = entries;
        askForRootKind();
    } else {
        addLsEntries(entries, node.item, node.path);
    }
    --pendingLsCount;
    maybeFinishLoading();
}

/// A directory of numbered files looks the same, which is why the kind is asked for.
bool PinContentsDialog::looksLikeChunkedFileLinks(const QList<LsEntry>& entries) const
{
    return !entries.isEmpty() && std::ranges::all_of(entries, looksLikeChunk);
}

void PinContentsDialog::askForRootKind()
{
    rootKindRequested = true;
    waitingForRootKind = true;
    status->showProgress(tr("Detecting root type…"));
    client->fetchKind(rootCid, IpfsClient::AtOnce);
}

void PinContentsDialog::addLsEntries(const QList<LsEntry>& entries, QTreeWidgetItem* parent, const QString& parentPath)
{
    QList<QTreeWidgetItem*> children;
    children.reserve(entries.size());
    for (const LsEntry& entry : entries)
        children.append(newEntryItem(entry, parentPath));
    const auto folders = static_cast<int>(std::ranges::count_if(children, isDirectory));
    folderCount += folders;
    fileCount += static_cast<int>(children.size()) - folders;
    parent->addChildren(children); // at one go: the view looks at them once
    for (QTreeWidgetItem* child : std::as_const(children)) {
        if (isDirectory(child))
            askForListing(child);
    }
}

void PinContentsDialog::onKindReceived(const QString& cid, const QString& kind)
{
    if (!waitingForRootKind || cid != rootCid)
        return;
    waitingForRootKind = false;
    if (kind == "File"_L1)
        addRootAsSingleFileLeaf();
    else
        addLsEntries(pendingRootEntries, tree->topLevelItem(0), {});
    pendingRootEntries.clear();
    maybeFinishLoading();
}

void PinContentsDialog::addRootAsSingleFileLeaf()
{
    QTreeWidgetItem* root = tree->topLevelItem(0);
    if (root->childCount() > 0)
        return;
    qint64 total = 0;
    for (const LsEntry& entry : std::as_const(pendingRootEntries))
        total += std::clamp<qint64>(entry.size, 0, std::numeric_limits<qint64>::max() - total);
    const QString safe = sanitizeFileName(rootFileName());
    ++fileCount;
    root->addChild(
        newItem(safe, total > 0 ? formatFileSize(total) : QString(),
                {.relativePath = sanitizeRelativePath(safe), .cid = rootCid, .size = total, .isRootSingleFile = true}));
}

QString PinContentsDialog::rootFileName() const
{
    for (const LsEntry& entry : pendingRootEntries) {
        if (!entry.objectName.trimmed().isEmpty())
            return entry.objectName.trimmed();
    }
    const QString name = rootName.trimmed();
    return name.isEmpty() ? tr("root-file-%1").arg(rootCid.left(shortCidLength)) : name;
}

void PinContentsDialog::maybeFinishLoading()
{
    if (pendingLsCount >= 1 || waitingForRootKind)
        return;
    if (tree->topLevelItem(0)->childCount() == 0 && !rootKindRequested)
        askForRootKind(); // it may be a file without links
    else
        showCounts();
}

void PinContentsDialog::showCounts()
{
    status->showProgress(tr("%1 file(s), %2 folder(s)").arg(QString::number(fileCount), QString::number(folderCount)));
    tree->expandItem(tree->topLevelItem(0));
    // A listing that comes late may end the loading once more, in the middle of a save.
    setButtonsEnabled(!isSaving());
    DialogSizing::requestRefit(this);
}

void PinContentsDialog::onErrorOccurred(const QString& message)
{
    if (pendingLsCount <= 0)
        return;
    // Any error counts, and a failed listing also arrives as an empty one: a failing node ends the loading early.
    --pendingLsCount;
    status->showFailure(tr("Error: %1").arg(message));
    maybeFinishLoading();
    DialogSizing::requestRefit(this);
}

QList<FileNode> PinContentsDialog::allFileNodes() const
{
    return filesUnder({tree->topLevelItem(0)});
}

/// A file that is selected together with a folder that holds it is there twice.
QList<FileNode> PinContentsDialog::selectedFileNodes() const
{
    return filesUnder(tree->selectedItems());
}
