// SPDX-License-Identifier: MIT
#include "PinModel.h"

#include "ByteText.h"
#include "Detached.h"

#include <QBrush>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array headers {QT_TRANSLATE_NOOP("PinModel", "CID"),
                              QT_TRANSLATE_NOOP("PinModel", "Refs"),
                              QT_TRANSLATE_NOOP("PinModel", "Type"),
                              QT_TRANSLATE_NOOP("PinModel", "Kind"),
                              QT_TRANSLATE_NOOP("PinModel", "Total DAG size"),
                              QT_TRANSLATE_NOOP("PinModel", "Name")};
static_assert(headers.size() == PinModel::ColumnCount);

/// Longest list that is indexed while it is set.
constexpr int rowsIndexedAtOnce = 20'000;

struct Brushes
{
    QVariant cid = QBrush(QColor(u"#9ca3af"_s));
    QVariant unknown = QBrush(QColor(u"#bdc3c7"_s));
    QVariant recursive = QBrush(QColor(u"#27ae60"_s));
    QVariant direct = QBrush(QColor(u"#2980b9"_s));
    QVariant indirect = QBrush(QColor(u"#8e44ad"_s));
};

const Brushes& brushes()
{
    static const Brushes made;
    return made;
}

const QString& placeholder()
{
    static const QString text = u"…"_s;
    return text;
}

bool isRecursive(const PinEntry& pin)
{
    return pin.type == PinType::recursive;
}

QVariant typeBrush(const QString& type)
{
    if (type == PinType::recursive)
        return brushes().recursive;
    if (type == PinType::direct)
        return brushes().direct;
    if (type == PinType::indirect)
        return brushes().indirect;
    return {};
}

const QString* refsText(const PinEntry& pin)
{
    static const QString none = u""_s;
    if (!isRecursive(pin))
        return &none;
    return pin.refsCount < 0 ? &placeholder() : nullptr;
}

/// Null where the cell shows a number or a formatted text.
const QString* textOf(const PinEntry& pin, int column)
{
    switch (column) {
    case PinModel::CidColumn:
        return &pin.cid;
    case PinModel::RefsColumn:
        return refsText(pin);
    case PinModel::TypeColumn:
        return &pin.type;
    case PinModel::KindColumn:
        return pin.kind.isEmpty() ? &placeholder() : &pin.kind;
    case PinModel::SizeColumn:
        return pin.dagSize < 0 ? &placeholder() : nullptr;
    case PinModel::NameColumn:
        return &pin.name;
    default:
        return nullptr;
    }
}

} // namespace

PinModel::PinModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

int PinModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(pins.size());
}

int PinModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PinModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= pins.size())
        return {};
    const PinEntry& pin = pins.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return displayData(pin, index.column());
    case Qt::UserRole:
        return pin.cid;
    case Qt::FontRole:
        return index.column() == CidColumn ? QVariant(fontOfCids()) : QVariant();
    case Qt::ForegroundRole:
        return foregroundData(pin, index.column());
    default:
        return {};
    }
}

QVariant PinModel::displayData(const PinEntry& pin, int column) const
{
    if (const QString* text = textOf(pin, column))
        return *text;
    switch (column) {
    case RefsColumn:
        return pin.refsCount;
    case SizeColumn:
        return formatSize(pin.dagSize);
    default:
        return {};
    }
}

QVariant PinModel::foregroundData(const PinEntry& pin, int column) const
{
    const auto unknownIf = [](bool unknown) { return unknown ? brushes().unknown : QVariant(); };
    switch (column) {
    case CidColumn:
        return brushes().cid;
    case RefsColumn:
        return unknownIf(!isRecursive(pin) || pin.refsCount < 0);
    case TypeColumn:
        return typeBrush(pin.type);
    case KindColumn:
        return unknownIf(pin.kind.isEmpty());
    case SizeColumn:
        return unknownIf(pin.dagSize < 0);
    case NameColumn:
        return unknownIf(pin.name.isEmpty());
    default:
        return {};
    }
}

QVariant PinModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return tr(headers.at(static_cast<size_t>(section)));
    return role == Qt::FontRole ? QVariant(fontOfHeaders()) : QVariant();
}

Qt::ItemFlags PinModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags;
}

void PinModel::setPins(const QList<PinEntry>& newPins)
{
    beginResetModel();
    ++resets;
    QList<PinEntry> former = std::exchange(pins, newPins);
    factsInWaiting.clear();
    indexReady = false;
    const auto resetsBefore = resets;
    endResetModel(); // before the threads begin: it takes all that a processor gives
    if (former.size() > rowsIndexedAtOnce)
        discard(std::move(former));
    if (resets == resetsBefore) // no slot has brought another list
        startIndex();
}

/// A long list is indexed on a thread, with a copy that is gone before the index is used: to write into shared rows
/// would copy them all.
void PinModel::startIndex()
{
    typeCounts.reset();
    rowsByCid = {};
    if (pins.size() <= rowsIndexedAtOnce) {
        useIndex(PinIndex(pins)); // a slot of the reset may have brought facts
        return;
    }
    runDetached(
        this, [copy = pins]() mutable { return PinIndex(std::exchange(copy, {})); },
        [this, of = resets](PinIndex made) {
            if (of == resets)
                useIndex(std::move(made));
        });
}

void PinModel::useIndex(PinIndex newIndex)
{
    rowsByCid = std::move(newIndex);
    indexReady = true;
    const QList<std::function<void()>> facts = std::exchange(factsInWaiting, {});
    const auto resetsBefore = resets;
    for (const auto& setWaiting : facts) {
        if (resets != resetsBefore)
            return; // a slot of dataChanged has brought another list
        setWaiting();
    }
}

void PinModel::clear()
{
    setPins({});
}

template <typename Field>
void PinModel::setFact(const QString& cid, Field PinEntry::*field, const Field& value, Column column,
                       const QList<int>& roles)
{
    if (!indexReady) {
        factsInWaiting.append([=, this] { setFact(cid, field, value, column, roles); });
        return;
    }
    const std::vector<int> rows = rowsByCid.rowsOf(cid, pins);
    const auto resetsBefore = resets;
    for (const int row : rows) {
        if (resets != resetsBefore)
            return; // the rows of the new list are not those that the value is meant for
        if (std::as_const(pins).at(row).*field == value)
            continue;
        pins[row].*field = value;
        const QModelIndex cell = index(row, column);
        emit dataChanged(cell, cell, roles);
    }
}

void PinModel::setRefsCount(const QString& cid, int count)
{
    static const QList<int> roles {Qt::DisplayRole, Qt::ToolTipRole};
    setFact(cid, &PinEntry::refsCount, count, RefsColumn, roles);
}

void PinModel::setDagSize(const QString& cid, long long size)
{
    static const QList<int> roles {Qt::DisplayRole, Qt::ForegroundRole, Qt::ToolTipRole};
    setFact(cid, &PinEntry::dagSize, size, SizeColumn, roles);
}

void PinModel::setKind(const QString& cid, const QString& kind)
{
    static const QList<int> roles {Qt::DisplayRole, Qt::ForegroundRole, Qt::ToolTipRole};
    setFact(cid, &PinEntry::kind, kind, KindColumn, roles);
}

const PinEntry* PinModel::pinAt(int row) const
{
    return row >= 0 && row < pins.size() ? &pins.at(row) : nullptr;
}

const QString* PinModel::heldText(int row, Column column) const
{
    const PinEntry* pin = pinAt(row);
    return pin ? textOf(*pin, column) : nullptr;
}

/// No late fact changes a type.
PinModel::TypeCounts PinModel::countsByType() const
{
    if (typeCounts)
        return *typeCounts;
    TypeCounts counts;
    for (const PinEntry& pin : pins) {
        counts.recursive += pin.type == PinType::recursive;
        counts.direct += pin.type == PinType::direct;
        counts.indirect += pin.type == PinType::indirect;
    }
    typeCounts = counts;
    return counts;
}

QStringList PinModel::allCids() const
{
    QStringList cids;
    cids.reserve(pins.size());
    for (const PinEntry& pin : pins) {
        if (!pin.cid.isEmpty())
            cids.append(pin.cid);
    }
    return cids;
}

QString PinModel::formatSize(long long bytes)
{
    return byteText(bytes);
}

const QFont& PinModel::fontOfCids() const
{
    if (cidFontDpi < 0) {
        const QScreen* screen = QGuiApplication::primaryScreen();
        cidFontDpi = screen ? screen->logicalDotsPerInch() : 96.0;
        cidFont = QFont(u"Courier New"_s, 12);
    }
    return cidFont;
}

const QFont& PinModel::fontOfHeaders() const
{
    if (!headerFontReady) {
        headerFont = QGuiApplication::font();
        headerFont.setWeight(QFont::Bold);
        headerFont.setPointSize(std::max(headerFont.pointSize(), 8) + 2);
        headerFontReady = true;
    }
    return headerFont;
}
