// SPDX-License-Identifier: MIT
#pragma once

#include "RemoteServiceEntry.h"

#include <QDialog>
#include <QList>
#include <QMessageBox>
#include <QPointer>

class IpfsClient;
class QLabel;
class QLayout;
class QLineEdit;
class QListWidget;
class QPushButton;
class StatusLabel;

/// Lists the remote pinning services that the node is configured for, and adds, removes and tests them. Asks the node
/// for them when it is made. An access token goes from its field to the node and nowhere else, and none is read back.
class RemoteServicesDialog : public QDialog
{
    Q_OBJECT

public:
    /// `newClient` is not owned and has to outlive the dialog.
    explicit RemoteServicesDialog(IpfsClient* newClient, QWidget* parent = nullptr);

signals:
    /// A short text for the main window's status line.
    void statusMessageRequested(QString message);

private slots:
    void onRefreshClicked();
    void onAddOrUpdateClicked();
    void onRemoveClicked();
    void onTestClicked();
    void onServiceSelected();
    void onServicesReceived(const QList<RemoteServiceEntry>& newServices);
    void onServicesFailed(const QString& message);
    void onServiceAdded(const QString& name);
    void onServiceAddFailed(const QString& message);
    void onServiceRemoved(const QString& name);
    void onServiceRemoveFailed(const QString& message);
    void onServiceTested(const QString& name, bool ok, const QString& message);
    void onEndpointChanged();

private:
    void setupUi();
    void setupList();
    void setupFields();
    QLayout* newHeaderRow();
    QLayout* newListColumn();
    QLayout* newFormColumn();
    QLayout* newButtonRow();
    QPushButton* newButton(const QString& text, void (RemoteServicesDialog::*slot)());
    void connectClient();

    void updateButtons();
    void setBusy(bool on);
    int selectedRow() const;
    void start(const QString& progress, const QString& statusMessage);
    void reportSuccess(const QString& text, const QString& statusMessage);
    void reportFailure(const QString& message, const QString& statusMessage);
    void finishChange(const QString& text, const QString& statusMessage);
    void failInBox(const QString& message, const QString& statusMessage);
    void showBox(QMessageBox::Icon icon, const QString& text);

    IpfsClient* client;
    QList<RemoteServiceEntry> services; ///< as last received; the rows of the list
    QListWidget* serviceList = nullptr;
    QLineEdit* nicknameEdit = nullptr;
    QLineEdit* endpointEdit = nullptr;
    QLineEdit* tokenEdit = nullptr;
    QLabel* hintLabel = nullptr;
    StatusLabel* statusLabel = nullptr;
    QPushButton* refreshButton = nullptr;
    QPushButton* saveButton = nullptr;
    QPushButton* removeButton = nullptr;
    QPushButton* testButton = nullptr;
    QPointer<QWidget> focusBefore {}; ///< where the focus was when the request began
    bool busy = false;
};
