#include "PinTable.h"

#include "PinModel.h"
#include "WidgetBuilders.h"

#include <QClipboard>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMenu>
#include <QShortcut>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr int heightOfRows = 24;
constexpr int cidLength = 59;
constexpr int minimumCidTextWidth = 392;
constexpr int cidColumnPadding = 28;

struct Section
{
    int column;
    int width; ///< pixels at the start, 0 for Qt's own
    QHeaderView::ResizeMode mode;
};

constexpr std::array sections {Section {PinModel::CidColumn, 420, QHeaderView::Interactive},
                               Section {PinModel::RefsColumn, 52, QHeaderView::Interactive},
                               Section {PinModel::TypeColumn, 88, QHeaderView::Interactive},
                               Section {PinModel::SizeColumn, 100, QHeaderView::Interactive},
                               Section {PinModel::NameColumn, 0, QHeaderView::Stretch}};

QString cellText(const QModelIndex& index, PinModel::Column column)
{
    return index.siblingAtColumn(column).data(Qt::DisplayRole).toString();
}

} // namespace

PinTable::PinTable(QAbstractItemModel* pins, QWidget* parent)
    : QTableView(parent)
{
    setModel(pins);
    setSortingEnabled(true);
    makeRowTable(this);
    setAccessibleName(tr("Pins"));
    verticalHeader()->setDefaultSectionSize(heightOfRows);
    setupColumns();
    sortByColumn(PinModel::RefsColumn, Qt::AscendingOrder);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        const auto* open = new QShortcut(key, this, nullptr, nullptr, Qt::WidgetShortcut);
        connect(open, &QShortcut::activated, this, &PinTable::openCurrentRow);
    }
}

void PinTable::setupColumns()
{
    QHeaderView* header = horizontalHeader();
    header->setDefaultAlignment(Qt::AlignLeft);
    for (const Section& section : sections) {
        header->setSectionResizeMode(section.column, section.mode);
        if (section.width > 0)
            header->resizeSection(section.column, section.width);
    }
}

QString PinTable::cidOf(const QModelIndex& index) const
{
    return index.siblingAtColumn(PinModel::CidColumn).data(Qt::UserRole).toString();
}

bool PinTable::isRecursivePin(const QModelIndex& index) const
{
    return cellText(index, PinModel::TypeColumn) == PinType::recursive && !cidOf(index).isEmpty();
}

bool PinTable::hasSelection() const
{
    return selectionModel()->hasSelection();
}

/// Looks at ranges: all of a long list may be selected.
bool PinTable::hasSeveralRowsSelected() const
{
    const QItemSelection ranges = selectionModel()->selection();
    return ranges.size() > 1 || (!ranges.isEmpty() && ranges.constFirst().height() > 1);
}

QString PinTable::firstSelectedCid() const
{
    const QItemSelection ranges = selectionModel()->selection();
    return ranges.isEmpty() ? QString() : cidOf(ranges.constFirst().topLeft());
}

QStringList PinTable::selectedCids() const
{
    QStringList cids;
    for (const QModelIndex& row : selectionModel()->selectedRows()) {
        if (const QString cid = cidOf(row); !cid.isEmpty())
            cids.append(cid);
    }
    return cids;
}

int PinTable::copySelectedCids() const
{
    if (!hasSelection())
        return -1;
    const QStringList cids = selectedCids();
    QGuiApplication::clipboard()->setText(cids.join(u'\n'));
    return static_cast<int>(cids.size());
}

/// The Return key acts as a double click does, on the current row, so that row has to be selected.
void PinTable::openCurrentRow()
{
    const QModelIndex current = currentIndex();
    if (current.isValid() && !selectionModel()->isSelected(current))
        selectRow(current.row());
    emit doubleClicked(current);
}

void PinTable::showRowMenu(const QPoint& pos, bool pinned)
{
    const QModelIndex index = indexAt(pos);
    if (!index.isValid())
        return;
    const bool several = pinned && selectionModel()->isRowSelected(index.row()) && hasSeveralRowsSelected();
    auto* menu = new QMenu(this); // on the stack it would be deleted twice if the table went while it is open
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (several) {
        menu->addAction(tr("Unpin"), this, &PinTable::unpinRequested);
    } else {
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        fillRowMenu(menu, index, pinned);
    }
    menu->exec(viewport()->mapToGlobal(pos));
}

void PinTable::fillRowMenu(QMenu* menu, const QModelIndex& index, bool pinned)
{
    if (isRecursivePin(index)) {
        const QString cid = cidOf(index);
        const QString name = cellText(index, PinModel::NameColumn);
        menu->addAction(tr("Show indirect pins"), this, [this, cid] { emit indirectPinsRequested(cid); });
        menu->addAction(tr("List files / Export…"), this, [this, cid, name] { emit contentsRequested(cid, name); });
        menu->addSeparator();
    }
    if (pinned) {
        addUnavailable(menu, tr("Publish to IPNS..."));
        menu->addAction(tr("Unpin"), this, &PinTable::unpinRequested);
        menu->addSeparator();
    }
    menu->addAction(tr("Copy CID"), this, &PinTable::copyRequested);
    addUnavailable(menu, tr("Open via IPNS..."));
    menu->addAction(tr("Open from gateway"), this, &PinTable::gatewayRequested);
    menu->addAction(tr("Open from local"), this, &PinTable::localGatewayRequested);
}

void PinTable::fitColumns()
{
    QHeaderView* header = horizontalHeader();
    for (int column = PinModel::CidColumn; column <= PinModel::SizeColumn; ++column) {
        header->setSectionResizeMode(column, QHeaderView::ResizeToContents);
        resizeColumnToContents(column);
        header->setSectionResizeMode(column, QHeaderView::Interactive);
        if (column == PinModel::CidColumn)
            header->resizeSection(column, std::max(header->sectionSize(column), minimumCidColumnWidth()));
    }
}

int PinTable::minimumCidColumnWidth()
{
    const QFontMetrics metrics(QFont(u"Courier New"_s, 12));
    const int textWidth = metrics.horizontalAdvance(QString(cidLength, u'm'));
    return std::max(textWidth, minimumCidTextWidth) + cidColumnPadding;
}
