// SPDX-License-Identifier: MIT
#include "PinContentsDialog.h"

#include "CidText.h"
#include "ContentsItem.h"
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
constexpr int entryNameLetters = 24;
constexpr int sizeWidth = 80;
constexpr int rowHeight = 22;
constexpr qsizetype mostOpenListings = 16;
constexpr qsizetype mostEntries = 250'000; // a tree of links to the same folders has no end

/// A chunk of a file is a link without a name, or with a number for one.
bool looksLikeChunk(const LsEntry& entry)
{
    return entry.type != lsDirectory && std::ranges::all_of(entry.name.trimmed(), [](QChar c) { return c.isDigit(); });
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

/// Not by the tree, whose items would be deleted by recursion.
PinContentsDialog::~PinContentsDialog()
{
    clearTree();
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
    tree->setAccessibleName(tr("Files and folders"));
    tree->setHeaderLabels({tr("Name"), tr("Size"), tr("CID")});
    const QFontMetrics metrics = tree->fontMetrics();
    tree->setColumnWidth(0, std::max(nameWidth, entryNameLetters * metrics.averageCharWidth()));
    tree->setColumnWidth(1, std::max(sizeWidth, metrics.horizontalAdvance(u"1023.9 MB  "_s)));
    tree->header()->setStretchLastSection(true);
    tree->setAlternatingRowColors(true);
    tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tree->setUniformRowHeights(true);
    tree->setTextElideMode(Qt::ElideMiddle); // CIDs differ at their ends, and so do the suffixes of files
    showFocusAtFrame(tree);
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

void PinContentsDialog::clearTree()
{
    while (QTreeWidgetItem* item = tree->takeTopLevelItem(0))
        deleteWithDescendants(item);
}

void PinContentsDialog::startLoading()
{
    clearTree();
    listings = std::make_unique<QObject>();
    pendingNodes.clear();
    waitingItems.clear();
    pendingRootEntries.clear();
    rootKindRequested = false;
    waitingForRootKind = false;
    stopped = false;
    fileCount = 0;
    folderCount = 0;
    auto* root = new ContentsItem(u"."_s, {.cid = rootCid, .isDirectory = true});
    root->setSizeHint(0, {0, rowHeight}); // all rows are as high as the first
    tree->addTopLevelItem(root);
    pendingLsCount = 0;
    askForListing(root);
    sendListings();
}

void PinContentsDialog::askForListing(ContentsItem* item)
{
    if (item->cidOfItem().isEmpty())
        return; // no request would be sent, and no answer ever come
    waitingItems.enqueue(item);
    ++pendingLsCount;
}

void PinContentsDialog::sendListings()
{
    while (pendingNodes.size() < mostOpenListings && !waitingItems.isEmpty()) {
        ContentsItem* item = waitingItems.dequeue();
        pendingNodes.insert(item->cidOfItem(), item);
        client->fetchLs(item->cidOfItem(), listings.get());
    }
}

void PinContentsDialog::onLsReceived(const QString& cid, const QList<LsEntry>& entries)
{
    const auto newest = pendingNodes.constFind(cid);
    if (newest == pendingNodes.constEnd())
        return; // another listener's
    ContentsItem* item = *newest;
    pendingNodes.erase(newest);
    --pendingLsCount;
    if (item == tree->topLevelItem(0) && !rootKindRequested && looksLikeChunkedFileLinks(entries)) {
        pendingRootEntries = entries;
        askForRootKind();
    } else {
        addLsEntries(entries, item);
    }
    sendListings();
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
    client->fetchKind(rootCid, IpfsClient::AtOnce, this);
}

void PinContentsDialog::addLsEntries(const QList<LsEntry>& entries, QTreeWidgetItem* parent)
{
    const qsizetype shown = std::min(entries.size(), mostEntries - fileCount - folderCount);
    QList<QTreeWidgetItem*> children;
    children.reserve(shown);
    for (const LsEntry& entry : entries.first(shown)) {
        ContentsItem* child = ContentsItem::ofEntry(entry);
        children.append(child);
        ++(child->isDirectory() ? folderCount : fileCount);
        if (child->isDirectory())
            askForListing(child);
    }
    if (!children.isEmpty())
        parent->addChildren(children); // at one go: the view looks at them once
    if (shown < entries.size() || (fileCount + folderCount == mostEntries && pendingLsCount > 0))
        stopLoading();
}

/// Nothing more is asked for, and answers under way are aborted.
void PinContentsDialog::stopLoading()
{
    stopped = true;
    waitingItems.clear();
    pendingNodes.clear();
    pendingLsCount = 0;
    listings.reset();
}

void PinContentsDialog::onKindReceived(const QString& cid, const QString& kind)
{
    if (!waitingForRootKind || cid != rootCid)
        return;
    waitingForRootKind = false;
    if (kind == "File"_L1)
        addRootAsSingleFileLeaf();
    else
        addLsEntries(pendingRootEntries, tree->topLevelItem(0));
    pendingRootEntries.clear();
    sendListings();
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
    root->addChild(new ContentsItem(safe, {.cid = rootCid, .size = total, .isRootSingleFile = true}));
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
    const QString counts = tr("%1 file(s), %2 folder(s)").arg(QString::number(fileCount), QString::number(folderCount));
    status->showProgress(stopped ? counts + tr(" (stopped; more is not listed)") : counts);
    tree->expandItem(tree->topLevelItem(0));
    // A listing that comes late may end the loading again, in the middle of a save.
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

QList<const ContentsItem*> PinContentsDialog::allFileNodes() const
{
    return filesUnder({tree->topLevelItem(0)});
}

/// A file that is selected together with a folder that holds it is listed twice.
QList<const ContentsItem*> PinContentsDialog::selectedFileNodes() const
{
    return filesUnder(tree->selectedItems());
}
