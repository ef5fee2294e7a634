// SPDX-License-Identifier: MIT
#include "ShortcutsDialog.h"

#include "CellCopy.h"
#include "DialogSizing.h"
#include "WidgetBuilders.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int columnGap = 12;

} // namespace

ShortcutsDialog::ShortcutsDialog(const QList<ShortcutRow>& rows, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Keyboard shortcuts — Norvo"));
    DialogSizing::attach(
        this, {.settingsKey = u"Dialogs/ShortcutsDialog"_s, .minimumSize = {420, 280}, .preferredSize = {720, 720}});
    auto* column = new QVBoxLayout(this);
    column->addWidget(newTable(rows), 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
}

QTableWidget* ShortcutsDialog::newTable(const QList<ShortcutRow>& rows)
{
    auto* table = new QTableWidget(static_cast<int>(rows.size()), 3, this);
    makeRowTable(table);
    table->setAccessibleName(tr("Keyboard shortcuts"));
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setHorizontalHeaderLabels({tr("Key"), tr("Where"), tr("What it does")});
    copyCellsOnRequest(table);
    int row = 0;
    for (const ShortcutRow& shortcut : rows) {
        int cell = 0;
        for (const QString& text : {shortcut.keys, shortcut.place, shortcut.effect})
            table->setItem(row, cell++, new QTableWidgetItem(text));
        ++row;
    }
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table->resizeColumnsToContents();
    for (int column = 0; column < table->columnCount(); ++column)
        table->setColumnWidth(column, table->columnWidth(column) + columnGap);
    table->resizeRowsToContents();
    return table;
}
