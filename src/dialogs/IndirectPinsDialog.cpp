// SPDX-License-Identifier: MIT
#include "IndirectPinsDialog.h"

#include "CidText.h"
#include "DialogSizing.h"
#include "Gateway.h"
#include "IpfsClient.h"
#include "PlainText.h"
#include "WidgetBuilders.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QShortcut>
#include <QStringListModel>
#include <QTableView>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int listMargin = 8;
constexpr int listRowHeight = 24;

} // namespace

IndirectPinsDialog::IndirectPinsDialog(const QString& cid, IpfsClient* newClient, QWidget* parent)
    : QDialog(parent)
    , rootCid(cid)
    , client(newClient)
    , model(new QStringListModel(this))
    , table(new QTableView(this))
    , countLabel(newPlainLabel(tr("Loading…"), this))
{
    setWindowTitle(tr("Indirect pins under %1").arg(titleCid(rootCid)));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/IndirectPinsDialog"_s,
                          .minimumSize = {500, 400},
                          .preferredSize = {620, 480},
                          .maxWidthRatio = 0.75,
                          .maxHeightRatio = 0.75});
    setupUi();
    connect(client, &IpfsClient::refsReceived, this, &IndirectPinsDialog::onRefsReceived);
    connect(client, &IpfsClient::errorOccurred, this, &IndirectPinsDialog::onErrorOccurred);
    client->fetchRefs(rootCid, IpfsClient::AtOnce, this);
    showRows({tr("Loading…")});
}

void IndirectPinsDialog::setupUi()
{
    countLabel->setObjectName("countLabel"_L1);
    setupTable();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(listMargin, listMargin, listMargin, listMargin);
    column->addWidget(newCidHeading(tr("CIDs referenced under recursive pin: <b>%1</b>"), rootCid, this));
    column->addWidget(countLabel);
    column->addWidget(table, 1);
    table->setFocus();
}

void IndirectPinsDialog::setupTable()
{
    makeRowTable(table);
    table->setAccessibleName(tr("Indirect pins"));
    table->setModel(model);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers); // a string list can be edited
    table->setTextElideMode(Qt::ElideMiddle);                  // CIDs differ at their ends
    table->horizontalHeader()->hide();                         // it would call the one column "1"
    table->verticalHeader()->setDefaultSectionSize(listRowHeight);
    connect(table, &QTableView::customContextMenuRequested, this, &IndirectPinsDialog::onCustomContextMenuRequested);
    // The view's own copying takes the current row alone, and a placeholder as well.
    const auto* copy = new QShortcut(QKeySequence::Copy, table, nullptr, nullptr, Qt::WidgetShortcut);
    connect(copy, &QShortcut::activated, this, &IndirectPinsDialog::onCopyCid);
}

void IndirectPinsDialog::onRefsReceived(const QString& root, const QStringList& cids)
{
    if (root != rootCid)
        return;
    if (std::exchange(ownCallFailed, false) && cids.isEmpty()) {
        countLabel->setText(u"—"_s); // a failed call ends in an empty list as well, which doesn't mean no refs
        return;
    }
    showRows(cids.isEmpty() ? QStringList {tr("(no refs)", "keep the parenthesis in front: it marks the row as no CID")}
                            : cids);
    const QString count = cids.size() == 1 ? tr("1 indirect pin") : tr("%1 indirect pins").arg(cids.size());
    countLabel->setText(count);
    setWindowTitle(tr("Indirect pins under %1 (%2)").arg(titleCid(rootCid), count));
    DialogSizing::requestRefit(this);
}

/// Whatever the error is about. Only that of a call for the root's refs is followed by an empty list.
void IndirectPinsDialog::onErrorOccurred(const QString& message)
{
    ownCallFailed = message.startsWith(IpfsClient::tr("Failed to get refs for %1: %2").arg(rootCid, QString()));
    showRows({tr("Error:") + u' ' + messageForLabel(message)});
    table->resizeRowToContents(0); // an address in a message is longer than a line
}

void IndirectPinsDialog::showRows(const QStringList& texts)
{
    model->setStringList(texts);
    table->setRowHeight(0, listRowHeight); // an error before may have made it higher
}

/// "Loading…" passes: until the answer has come, that row is treated like a CID, on purpose.
bool IndirectPinsDialog::isUsable(const QString& text) const
{
    return !text.isEmpty() && !text.startsWith(u'(') && !text.startsWith(tr("Error:"));
}

QString IndirectPinsDialog::cidAtRow(int row) const
{
    return model->index(row, 0).data().toString();
}

/// In the order of the selection, whether usable or not.
QStringList IndirectPinsDialog::selectedTexts() const
{
    const QModelIndexList rows = table->selectionModel()->selectedRows();
    QStringList texts;
    texts.reserve(rows.size());
    for (const QModelIndex& index : rows)
        texts.append(cidAtRow(index.row()));
    return texts;
}

/// Empty if the row selected first holds no CID.
QString IndirectPinsDialog::firstSelectedCid() const
{
    const QString text = selectedTexts().value(0);
    return isUsable(text) ? text : QString();
}

/// The entries work on the selection and not on the row under the pointer.
void IndirectPinsDialog::onCustomContextMenuRequested(const QPoint& pos)
{
    const QModelIndex index = table->indexAt(pos);
    if (!index.isValid() || !isUsable(cidAtRow(index.row())))
        return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("Copy CID"), this, &IndirectPinsDialog::onCopyCid);
    menu->addAction(tr("Open from gateway"), this, &IndirectPinsDialog::onOpenInGateway);
    menu->addAction(tr("Open from local"), this, &IndirectPinsDialog::onOpenFromLocal);
    menu->exec(table->mapToGlobal(pos));
}

void IndirectPinsDialog::onCopyCid()
{
    QStringList cids = selectedTexts();
    cids.removeIf([this](const QString& text) { return !isUsable(text); });
    if (!cids.isEmpty())
        QGuiApplication::clipboard()->setText(cids.join(u'\n'));
}

void IndirectPinsDialog::onOpenInGateway()
{
    if (const QString cid = firstSelectedCid(); !cid.isEmpty())
        QDesktopServices::openUrl(publicGatewayUrl(ipfsPath(cid)));
}

void IndirectPinsDialog::onOpenFromLocal()
{
    if (const QString cid = firstSelectedCid(); !cid.isEmpty())
        QDesktopServices::openUrl(localGatewayUrl(client->endpointHost(), ipfsPath(cid)));
}
