#include "MainWindow.h"

#include "ContentMode.h"
#include "Gateway.h"
#include "IndirectPinsDialog.h"
#include "IpfsClient.h"
#include "PinContentsDialog.h"
#include "PinModel.h"

#include <QAction>
#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>
#include <QTableView>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto copyMessageShown = 3000ms;
constexpr auto openMessageShown = 3000ms;
constexpr auto unpinMessageShown = 4000ms;

QString cellText(const QModelIndex& index, PinModel::Column column)
{
    return index.siblingAtColumn(column).data(Qt::DisplayRole).toString();
}

QString cidOf(const QModelIndex& index)
{
    return index.siblingAtColumn(PinModel::CidColumn).data(Qt::UserRole).toString();
}

void showOnce(QDialog* dialog)
{
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

} // namespace

void MainWindow::onSelectionChanged()
{
    const bool pinned = contentMode == ContentMode::pinned;
    const bool selected = pinTable->selectionModel()->hasSelection();
    unpinSelectedAction->setEnabled(selected && pinned);
    unpinAllAction->setEnabled(pinned && pinModel->rowCount() > 0);
}

/// Looks at ranges: all of a long list may be selected.
bool MainWindow::hasSeveralRowsSelected() const
{
    const QItemSelection ranges = pinTable->selectionModel()->selection();
    return ranges.size() > 1 || (!ranges.isEmpty() && ranges.constFirst().height() > 1);
}

/// Empty if nothing is selected.
QString MainWindow::firstSelectedCid() const
{
    const QItemSelection ranges = pinTable->selectionModel()->selection();
    return ranges.isEmpty() ? QString() : cidOf(ranges.constFirst().topLeft());
}

/// Those of the selected rows that have one, in the order of the selection.
QStringList MainWindow::selectedCids() const
{
    QStringList cids;
    for (const QModelIndex& row : pinTable->selectionModel()->selectedRows()) {
        if (const QString cid = cidOf(row); !cid.isEmpty())
            cids.append(cid);
    }
    return cids;
}

bool MainWindow::isRecursivePin(const QModelIndex& index) const
{
    return cellText(index, PinModel::TypeColumn) == PinType::recursive && !cidOf(index).isEmpty();
}

/// A row outside a selection of several becomes the selection; there is no menu on empty space.
void MainWindow::onTableContextMenuRequested(const QPoint& pos)
{
    const QModelIndex index = pinTable->indexAt(pos);
    if (!index.isValid())
        return;
    QItemSelectionModel* selection = pinTable->selectionModel();
    const bool several
        = contentMode == ContentMode::pinned && selection->isRowSelected(index.row()) && hasSeveralRowsSelected();
    auto* menu = new QMenu(this); // on the stack it would go twice, if the window went while it is open
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (several) {
        menu->addAction(tr("Unpin"), this, &MainWindow::onUnpinSelected);
    } else {
        selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        fillRowMenu(menu, index);
    }
    menu->exec(pinTable->viewport()->mapToGlobal(pos));
}

void MainWindow::fillRowMenu(QMenu* menu, const QModelIndex& index)
{
    if (isRecursivePin(index)) {
        const QString cid = cidOf(index);
        const QString name = cellText(index, PinModel::NameColumn);
        menu->addAction(tr("Show indirect pins"), this, [this, cid] { onShowIndirectPins(cid); });
        menu->addAction(tr("List files / Export…"), this,
                        [this, cid, name] { showOnce(new PinContentsDialog(cid, client, this, name)); });
        menu->addSeparator();
    }
    if (contentMode == ContentMode::pinned) {
        addUnavailable(menu, tr("Publish to IPNS..."));
        menu->addAction(tr("Unpin"), this, &MainWindow::onUnpinSelected);
        menu->addSeparator();
    }
    menu->addAction(tr("Copy CID"), this, &MainWindow::onCopySelectedCID);
    addUnavailable(menu, tr("Open via IPNS..."));
    menu->addAction(tr("Open from gateway"), this, &MainWindow::onOpenInGateway);
    menu->addAction(tr("Open from local"), this, &MainWindow::onOpenFromLocal);
}

void MainWindow::onTableDoubleClicked(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    if (isRecursivePin(index))
        onShowIndirectPins(cidOf(index));
    else
        onCopySelectedCID();
}

/// The Return key's double click. It acts on the current row, so that one is to be selected.
void MainWindow::openCurrentRow()
{
    const QModelIndex current = pinTable->currentIndex();
    if (current.isValid() && !pinTable->selectionModel()->isSelected(current))
        pinTable->selectRow(current.row());
    onTableDoubleClicked(current);
}

void MainWindow::onShowIndirectPins(const QString& rootCid)
{
    showOnce(new IndirectPinsDialog(rootCid, client, this));
}

void MainWindow::onCopySelectedCID()
{
    if (!pinTable->selectionModel()->hasSelection())
        return;
    const QStringList cids = selectedCids();
    QGuiApplication::clipboard()->setText(cids.join(u'\n'));
    setStatusMessage(tr("%1 CID(s) copied to clipboard").arg(cids.size()));
    resetStatusLater(copyMessageShown, [](const QString& shown) { return shown.contains("copied to clipboard"_L1); });
}

void MainWindow::onOpenInGateway()
{
    openFirstSelected(tr("Opening %1 in browser…"), [](const QString& path) { return publicGatewayUrl(path); });
}

void MainWindow::onOpenFromLocal()
{
    openFirstSelected(tr("Opening %1 from local gateway…"),
                      [this](const QString& path) { return localGatewayUrl(client->endpointHost(), path); });
}

/// The status reads the same whether or not a browser could be started.
void MainWindow::openFirstSelected(const QString& message, const std::function<QUrl(const QString& path)>& urlOf)
{
    const QString cid = firstSelectedCid();
    if (cid.isEmpty())
        return;
    QDesktopServices::openUrl(urlOf(ipfsPath(cid)));
    setStatusMessage(message.arg(cid));
    resetStatusLater(openMessageShown, [](const QString& shown) { return shown.startsWith("Opening "_L1); });
}

/// Asks nothing first, as onUnpinAll does: the entries' own texts are the warning.
void MainWindow::onUnpinSelected()
{
    unpin(selectedCids());
}

/// All rows of the list, those hidden by the search included.
void MainWindow::onUnpinAll()
{
    unpin(pinModel->allCids());
}

/// Thousands of CIDs may have to be gone through one by one, so the status tells at once that it is under way.
void MainWindow::unpin(const QStringList& cids)
{
    if (contentMode != ContentMode::pinned || cids.isEmpty())
        return;
    setStatusMessage(tr("Unpinning %1 CID(s)…").arg(cids.size()));
    client->unpin(cids, true);
}

/// The list comes anew without the refresh flag, so that the notification stays until a later refresh.
void MainWindow::onUnpinned(const QStringList& cids)
{
    showNotification(tr("Unpinned %1 CID(s). Refreshing list…").arg(cids.size()), false);
    setStatusMessage(tr("Unpinned %1 CID(s)").arg(cids.size()));
    fetchList();
    resetStatusLater(unpinMessageShown, [](const QString& shown) { return shown.startsWith("Unpinned "_L1); });
}
