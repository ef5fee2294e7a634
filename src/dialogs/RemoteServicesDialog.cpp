// SPDX-License-Identifier: MIT
#include "RemoteServicesDialog.h"

#include "ActionBox.h"
#include "DialogSizing.h"
#include "IpfsClient.h"
#include "PlainText.h"
#include "StatusLabel.h"
#include "WidgetBuilders.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int serviceSpacing = 10;
constexpr int servicesShare = 2;
constexpr int formShare = 3;

QString textOf(const QLineEdit* edit)
{
    return edit->text().trimmed();
}

QString rowText(const RemoteServiceEntry& service)
{
    return lineForLabel(service.endpoint.isEmpty() ? service.name : u"%1  (%2)"_s.arg(service.name, service.endpoint));
}

} // namespace

RemoteServicesDialog::RemoteServicesDialog(IpfsClient* newClient, QWidget* parent)
    : QDialog(parent)
    , client(newClient)
{
    setWindowTitle(tr("Remote pinning services"));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/RemoteServicesDialog"_s,
                          .minimumSize = {720, 420},
                          .preferredSize = {820, 500},
                          .maxWidthRatio = 0.85,
                          .maxHeightRatio = 0.8});
    setupUi();
    connectClient();
    updateButtons();
    serviceList->setFocus();
    onRefreshClicked();
}

/// Fields are made in the order in which they are read, which is that of the Tab key as well.
void RemoteServicesDialog::setupUi()
{
    auto* column = new QVBoxLayout(this);
    column->setSpacing(serviceSpacing);
    column->addLayout(newHeaderRow());
    auto* body = new QHBoxLayout;
    body->setSpacing(serviceSpacing);
    body->addLayout(newListColumn(), servicesShare);
    body->addLayout(newFormColumn(), formShare);
    column->addLayout(body, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    saveButton->setDefault(true); // Return in a field saves, and does nothing while a field is empty
}

QLayout* RemoteServicesDialog::newHeaderRow()
{
    auto* row = new QHBoxLayout;
    row->addWidget(newWrappedLabel(tr("Configure Kubo remote pinning services.\nThe access token is saved to Kubo. "
                                      "Use the service nickname in Add to IPFS."),
                                   this),
                   1);
    refreshButton = newButton(tr("&Refresh"), &RemoteServicesDialog::onRefreshClicked);
    row->addWidget(refreshButton);
    return row;
}

QLayout* RemoteServicesDialog::newListColumn()
{
    setupList();
    auto* column = new QVBoxLayout;
    column->addWidget(newLabelFor(tr("Configured &services"), serviceList));
    column->addWidget(serviceList, 1);
    return column;
}

void RemoteServicesDialog::setupList()
{
    serviceList = new QListWidget(this);
    serviceList->setAccessibleName(tr("Configured services"));
    showFocusAtFrame(serviceList);
    serviceList->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(serviceList, &QListWidget::itemSelectionChanged, this, &RemoteServicesDialog::onServiceSelected);
}

QLayout* RemoteServicesDialog::newFormColumn()
{
    setupFields();
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->addRow(tr("Service &nickname:"), nicknameEdit);
    form->addRow(tr("API &endpoint:"), endpointEdit);
    form->addRow(tr("Access to&ken:"), tokenEdit);
    hintLabel = newWrappedLabel(tr("<small><i>Save to Kubo stores this service in your local Kubo config.\n"
                                   "The Add to IPFS dialog expects the service nickname, not the token.</i></small>"),
                                this);
    hintLabel->setTextFormat(Qt::RichText);

    auto* column = new QVBoxLayout;
    column->addLayout(form);
    column->addWidget(hintLabel);
    column->addLayout(newButtonRow());
    statusLabel = new StatusLabel(this);
    statusLabel->showHint(tr("Click Refresh to load configured remote services."));
    column->addWidget(statusLabel);
    column->addStretch(1);
    return column;
}

void RemoteServicesDialog::setupFields()
{
    nicknameEdit = new QLineEdit(this);
    nicknameEdit->setPlaceholderText(tr("e.g. pinata-prod"));
    endpointEdit = new QLineEdit(this);
    endpointEdit->setPlaceholderText(tr("e.g. https://pins.example.com/psa"));
    tokenEdit = new QLineEdit(this);
    tokenEdit->setPlaceholderText(tr("API key / access token"));
    tokenEdit->setEchoMode(QLineEdit::Password);
    for (QLineEdit* edit : {nicknameEdit, endpointEdit, tokenEdit}) {
        makeRoomForPlaceholder(edit);
        connect(edit, &QLineEdit::textChanged, this, &RemoteServicesDialog::updateButtons);
    }
}

QLayout* RemoteServicesDialog::newButtonRow()
{
    saveButton = newButton(tr("Sa&ve to Kubo"), &RemoteServicesDialog::onAddOrUpdateClicked);
    testButton = newButton(tr("&Test"), &RemoteServicesDialog::onTestClicked);
    removeButton = newButton(tr("Re&move"), &RemoteServicesDialog::onRemoveClicked);
    auto* row = new QHBoxLayout;
    for (QPushButton* button : {saveButton, testButton, removeButton})
        row->addWidget(button);
    row->addStretch(1);
    return row;
}

QPushButton* RemoteServicesDialog::newButton(const QString& text, void (RemoteServicesDialog::*slot)())
{
    auto* button = new QPushButton(text, this);
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

void RemoteServicesDialog::connectClient()
{
    connect(client, &IpfsClient::remoteServicesReceived, this, &RemoteServicesDialog::onServicesReceived);
    connect(client, &IpfsClient::remoteServicesFailed, this, &RemoteServicesDialog::onServicesFailed);
    connect(client, &IpfsClient::remoteServiceAdded, this, &RemoteServicesDialog::onServiceAdded);
    connect(client, &IpfsClient::remoteServiceAddFailed, this, &RemoteServicesDialog::onServiceAddFailed);
    connect(client, &IpfsClient::remoteServiceRemoved, this, &RemoteServicesDialog::onServiceRemoved);
    connect(client, &IpfsClient::remoteServiceRemoveFailed, this, &RemoteServicesDialog::onServiceRemoveFailed);
    connect(client, &IpfsClient::remoteServiceTested, this, &RemoteServicesDialog::onServiceTested);
    connect(client, &IpfsClient::endpointChanged, this, &RemoteServicesDialog::onEndpointChanged);
}

void RemoteServicesDialog::updateButtons()
{
    const bool isNamed = !textOf(nicknameEdit).isEmpty();
    const bool isComplete = isNamed && !textOf(endpointEdit).isEmpty() && !textOf(tokenEdit).isEmpty();
    refreshButton->setEnabled(!busy);
    saveButton->setEnabled(!busy && isComplete);
    removeButton->setEnabled(!busy && isNamed);
    testButton->setEnabled(!busy && isNamed);
    serviceList->setEnabled(!busy);
    for (QLineEdit* field : {nicknameEdit, endpointEdit, tokenEdit})
        field->setEnabled(!busy);
}

/// While its widget is disabled, the focus waits at the dialog itself. Else it would go on to Close, and whoever
/// presses Return twice would close the dialog.
void RemoteServicesDialog::setBusy(bool on)
{
    if (on && !busy) {
        focusBefore = focusWidget();
        setFocus();
    }
    busy = on;
    updateButtons();
    if (on || focusWidget() != this || !focusBefore)
        return;
    QWidget* next = focusBefore->isEnabled() ? focusBefore.data() : serviceList;
    next->setFocus();
}

/// The list's current row. While it reports a change of selection by keys, its own current row is still the one before.
int RemoteServicesDialog::selectedRow() const
{
    const QModelIndexList selected = serviceList->selectionModel()->selectedRows();
    return selected.isEmpty() ? serviceList->currentRow() : selected.constFirst().row();
}

void RemoteServicesDialog::start(const QString& progress, const QString& statusMessage)
{
    setBusy(true);
    statusLabel->showProgress(progress);
    emit statusMessageRequested(statusMessage);
}

void RemoteServicesDialog::reportSuccess(const QString& text, const QString& statusMessage)
{
    statusLabel->showProgress(text);
    emit statusMessageRequested(statusMessage);
}

void RemoteServicesDialog::reportFailure(const QString& message, const QString& statusMessage)
{
    setBusy(false);
    statusLabel->showFailure(message);
    emit statusMessageRequested(statusMessage);
}

/// The node's list is asked for anew, since it has changed.
void RemoteServicesDialog::finishChange(const QString& text, const QString& statusMessage)
{
    setBusy(false);
    reportSuccess(text, statusMessage);
    tokenEdit->clear();
    onRefreshClicked();
}

/// As reportFailure, and in a box; the dialog may be gone when this returns.
void RemoteServicesDialog::failInBox(const QString& message, const QString& statusMessage)
{
    reportFailure(message, statusMessage);
    showBox(QMessageBox::Warning, message);
}

/// The dialog may be gone when this returns.
void RemoteServicesDialog::showBox(QMessageBox::Icon icon, const QString& text)
{
    showMessageBox(icon, tr("Remote services"), text, this);
}

void RemoteServicesDialog::onRefreshClicked()
{
    start(tr("Loading remote services from Kubo..."), tr("Loading remote services..."));
    client->fetchRemoteServices(false, QString());
}

void RemoteServicesDialog::onServiceSelected()
{
    const int row = selectedRow();
    if (row >= 0 && row < services.size()) {
        nicknameEdit->setText(services.at(row).name);
        endpointEdit->setText(services.at(row).endpoint);
        tokenEdit->clear(); // that of another service
    }
    updateButtons();
}

/// What a second save under the same nickname means is the node's to decide.
void RemoteServicesDialog::onAddOrUpdateClicked()
{
    const QString name = textOf(nicknameEdit);
    const QString endpoint = textOf(endpointEdit);
    const QString token = textOf(tokenEdit);
    if (name.isEmpty() || endpoint.isEmpty() || token.isEmpty()) {
        showBox(QMessageBox::Information, tr("Service nickname, API endpoint, and access token are required."));
        return;
    }
    start(tr("Saving service '%1' to Kubo...").arg(name), tr("Saving remote service '%1'...").arg(name));
    client->addRemoteService(name, endpoint, token);
}

void RemoteServicesDialog::onTestClicked()
{
    const QString name = textOf(nicknameEdit);
    if (name.isEmpty()) {
        showBox(QMessageBox::Information, tr("Select or enter a service nickname to test."));
        return;
    }
    start(tr("Testing service '%1'...").arg(name), tr("Testing remote service '%1'...").arg(name));
    client->testRemoteService(name);
}

void RemoteServicesDialog::onRemoveClicked()
{
    const QString name = textOf(nicknameEdit);
    if (name.isEmpty()) {
        showBox(QMessageBox::Information, tr("Select or enter a service nickname to remove."));
        return;
    }
    if (!askYesNo(QMessageBox::Question, tr("Remove remote service"),
                  tr("Remove service '%1' from Kubo configuration?").arg(name), this))
        return; // perhaps with the dialog gone
    start(tr("Removing service '%1'...").arg(name), tr("Removing remote service '%1'...").arg(name));
    client->removeRemoteService(name);
}

void RemoteServicesDialog::onServicesReceived(const QList<RemoteServiceEntry>& newServices)
{
    setBusy(false);
    services = newServices;
    serviceList->clear();
    for (const RemoteServiceEntry& service : services)
        serviceList->addItem(rowText(service));
    if (!services.isEmpty())
        serviceList->setCurrentRow(0); // fills the fields
    reportSuccess(tr("Loaded %1 remote service(s).").arg(services.size()),
                  tr("Loaded %1 remote service(s)").arg(services.size()));
    DialogSizing::requestRefit(this);
}

/// What is shown, and a token that was typed, belong to the former node.
void RemoteServicesDialog::onEndpointChanged()
{
    services.clear();
    serviceList->clear();
    for (QLineEdit* field : {nicknameEdit, endpointEdit, tokenEdit})
        field->clear();
    onRefreshClicked();
}

void RemoteServicesDialog::onServicesFailed(const QString& message)
{
    reportFailure(message, message);
    DialogSizing::requestRefit(this);
}

void RemoteServicesDialog::onServiceAdded(const QString& name)
{
    finishChange(tr("Service '%1' saved to Kubo.").arg(name), tr("Saved remote service '%1'").arg(name));
}

void RemoteServicesDialog::onServiceAddFailed(const QString& message)
{
    failInBox(message, message);
}

void RemoteServicesDialog::onServiceRemoved(const QString& name)
{
    finishChange(tr("Service '%1' removed.").arg(name), tr("Removed remote service '%1'").arg(name));
}

void RemoteServicesDialog::onServiceRemoveFailed(const QString& message)
{
    failInBox(message, message);
}

void RemoteServicesDialog::onServiceTested(const QString& name, bool ok, const QString& message)
{
    if (!ok) {
        failInBox(message, tr("Remote service '%1' test failed").arg(name));
        return;
    }
    setBusy(false);
    reportSuccess(message, tr("Remote service '%1' test passed").arg(name));
    showBox(QMessageBox::Information, message);
}
