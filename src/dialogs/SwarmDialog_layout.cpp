// SPDX-License-Identifier: MIT
#include "SwarmDialog.h"

#include "AddressTable.h"
#include "FlowLayout.h"
#include "PlainText.h"
#include "StatusLabel.h"
#include "WidgetBuilders.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int peerIdWidth = 320;

AddressTable* newTable(const QStringList& headers, const QString& name, QWidget* parent)
{
    auto* table = new AddressTable(headers, parent);
    table->setAccessibleName(name);
    return table;
}

} // namespace

/// Fields are made in the order in which they are read, which is that of the Tab key as well.
void SwarmDialog::setupUi()
{
    auto* column = new QVBoxLayout(this);
    column->addLayout(newPeerRow());
    summaryLabel = newPlainLabel({}, this);
    summaryLabel->setWordWrap(true);
    summaryLabel->setStyleSheet(u"font-weight: bold;"_s);
    column->addWidget(summaryLabel);
    statusLabel = new StatusLabel(this);
    statusLabel->showHint(tr("Click Refresh to load swarm diagnostics"));
    column->addWidget(statusLabel);
    nodeWordsLabel = new StatusLabel(this);
    nodeWordsLabel->setObjectName(u"nodeWordsLabel"_s);
    nodeWordsLabel->hide();
    column->addWidget(nodeWordsLabel);
    column->addWidget(newTabs(), 1);
}

QLayout* SwarmDialog::newPeerRow()
{
    auto* row = new FlowLayout;
    filterEdit = newField(tr("Filter"), tr("Quick filter peers/addresses..."));
    filterEdit->setClearButtonEnabled(true);
    connect(filterEdit, &QLineEdit::textChanged, this, &SwarmDialog::onFilterTextChanged);
    targetEdit = newField(tr("Peer"), tr("Peer multiaddr (example: /ip4/.../tcp/.../p2p/<peerId>)"));
    connect(targetEdit, &QLineEdit::returnPressed, this, &SwarmDialog::onConnectClicked);
    auto* connectButton = newButton(tr("Connect"), &SwarmDialog::onConnectClicked);
    auto* disconnectButton = newButton(tr("Disconnect selected"), &SwarmDialog::onDisconnectSelectedClicked);
    refreshButton = newButton(tr("Refresh"), &SwarmDialog::onRefreshClicked);
    row->addWidgets({filterEdit, targetEdit, connectButton, disconnectButton, refreshButton});
    return row;
}

QWidget* SwarmDialog::newTabs()
{
    auto* tabs = new QTabWidget(this);
    peersTable = newTable({tr("Connected peer multiaddr")}, tr("Connected peers"), tabs);
    peersTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    peersTable->setSelectionMode(QAbstractItemView::SingleSelection);
    tabs->addTab(peersTable, tr("Connected peers"));

    listenTable = newTable({tr("Listen address")}, tr("Listen addresses"), tabs);
    tabs->addTab(listenTable, tr("Listen addresses"));

    knownTable = newTable({tr("Peer ID"), tr("Known addresses")}, tr("Known addresses"), tabs);
    knownTable->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Interactive);
    knownTable->setColumnWidth(0, peerIdWidth);
    tabs->addTab(knownTable, tr("Known addresses"));

    tabs->addTab(newBootstrapPage(), tr("Bootstrap"));
    return tabs;
}

QWidget* SwarmDialog::newBootstrapPage()
{
    auto* page = new QWidget(this);
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(newBootstrapRow());
    bootstrapTable = newTable({tr("Bootstrap peer multiaddr")}, tr("Bootstrap peers"), page);
    bootstrapTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    bootstrapTable->setSelectionMode(QAbstractItemView::ExtendedSelection);
    column->addWidget(bootstrapTable, 1);
    return page;
}

QLayout* SwarmDialog::newBootstrapRow()
{
    auto* row = new FlowLayout;
    bootstrapEdit = newField(tr("Bootstrap peer"), tr("Bootstrap peer (example: /ip4/.../tcp/.../p2p/<peerId>)"));
    connect(bootstrapEdit, &QLineEdit::returnPressed, this, &SwarmDialog::onBootstrapAddClicked);
    auto* addPeerButton = newButton(tr("Add peer"), &SwarmDialog::onBootstrapAddClicked);
    auto* removeButton = newButton(tr("Remove selected"), &SwarmDialog::onBootstrapRemoveSelectedClicked);
    removeAllButton = newButton(tr("Remove all"), &SwarmDialog::onBootstrapRemoveAllClicked);
    removeAllButton->setEnabled(false);
    refreshBootstrapButton = newButton(tr("Refresh bootstrap"), &SwarmDialog::onRefreshBootstrapClicked);
    row->addWidgets({bootstrapEdit, addPeerButton, removeButton, removeAllButton, refreshBootstrapButton});
    return row;
}

QLineEdit* SwarmDialog::newField(const QString& name, const QString& placeholder)
{
    auto* field = new QLineEdit(this);
    field->setAccessibleName(name);
    field->setPlaceholderText(placeholder);
    makeRoomForPlaceholder(field);
    return field;
}

/// Return belongs to the fields: in each of them it would press the first of all buttons.
QPushButton* SwarmDialog::newButton(const QString& text, void (SwarmDialog::*slot)())
{
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}
