#include "WidgetBuilders.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableView>

void makeRowTable(QTableView* table)
{
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table->setAlternatingRowColors(true);
    table->setShowGrid(false);
    table->setTabKeyNavigation(false); // Tab leads on to the next control
    table->setContextMenuPolicy(Qt::CustomContextMenu);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
}

QLabel* newCidHeading(const QString& markup, const QString& cid, QWidget* parent)
{
    auto* label = new QLabel(markup.arg(cid.toHtmlEscaped()), parent);
    label->setTextFormat(Qt::RichText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}
