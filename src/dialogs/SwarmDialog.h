// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>
#include <QHash>
#include <QStringList>

class AddressTable;
class IpfsClient;
class QLabel;
class QLayout;
class QLineEdit;
class QPushButton;
class StatusLabel;

/// Shows the node's connections, listen addresses, known addresses and bootstrap peers; connects and disconnects peers
/// and edits the bootstrap list. Asks the node for all of it when it is shown empty. Answers that others have asked
/// for are shown as well.
class SwarmDialog : public QDialog
{
    Q_OBJECT

public:
    /// `newClient` is not owned and has to outlive the dialog.
    explicit SwarmDialog(IpfsClient* newClient, QWidget* parent = nullptr);

signals:
    /// A short text for the main window's status line.
    void statusMessageRequested(QString message);

protected:
    void showEvent(QShowEvent* event) override;

private slots:
    void onRefreshClicked();
    void onRefreshBootstrapClicked();
    void onConnectClicked();
    void onDisconnectSelectedClicked();
    void onBootstrapAddClicked();
    void onBootstrapRemoveSelectedClicked();
    void onBootstrapRemoveAllClicked();
    void onFilterTextChanged(const QString& text);
    void onPeersReceived(const QStringList& peers);
    void onAddrsReceived(const QHash<QString, QStringList>& peerAddrs);
    void onListenAddrsReceived(const QStringList& newListenAddrs);
    void onConnectResult(const QString& target, bool ok, const QStringList& messages);
    void onDisconnectResult(const QString& target, bool ok, const QStringList& messages);
    void onBootstrapPeersReceived(const QStringList& peers);
    void onBootstrapAddResult(const QString& target, bool ok, const QStringList& peers);
    void onBootstrapRemoveResult(const QStringList& removed, bool ok, const QStringList& peers);
    void onRequestFailed(const QString& operation, const QString& message);
    void onNodeSaid(const QString& path, const QString& words);
    void onEndpointChanged();

private:
    void setupUi();
    QLayout* newPeerRow();
    QWidget* newTabs();
    QWidget* newBootstrapPage();
    QLayout* newBootstrapRow();
    QLineEdit* newField(const QString& name, const QString& placeholder);
    QPushButton* newButton(const QString& text, void (SwarmDialog::*slot)());
    void connectClient();
    void connectBootstrap();

    void setLoading(bool on);
    void refreshSummary();
    void markRefreshPartCompleted(const QString& part);
    void applyTableFilter(AddressTable* table, const QString& text);
    void finishList();
    void showBootstrapPeers(const QStringList& peers);
    void start(const QString& progress, const QString& statusMessage);
    void refuse(const QString& text, const QString& statusMessage);
    void report(const QString& text, const QString& statusMessage);
    void beginAct(const QString& operation, const QStringList& targets);
    bool endAct(const QString& operation, const QStringList& targets);

    IpfsClient* client;
    QStringList connectedPeers; ///< each as last received
    QStringList listenAddrs;
    QStringList bootstrapPeers;
    QHash<QString, QStringList> knownAddrs;
    QStringList openActs;        ///< changes that the node in use has been asked for
    QStringList formerActs;      ///< those that a former node has not answered
    int pendingRefreshParts = 0; ///< answers still awaited in a refresh

    QLineEdit* filterEdit = nullptr;
    QLineEdit* targetEdit = nullptr;
    QLineEdit* bootstrapEdit = nullptr;
    QPushButton* refreshButton = nullptr;
    QPushButton* refreshBootstrapButton = nullptr;
    QPushButton* removeAllButton = nullptr;
    QLabel* summaryLabel = nullptr;
    StatusLabel* statusLabel = nullptr;
    StatusLabel* nodeWordsLabel = nullptr; ///< hidden while the node has given no reason
    AddressTable* peersTable = nullptr;
    AddressTable* listenTable = nullptr;
    AddressTable* knownTable = nullptr;
    AddressTable* bootstrapTable = nullptr;
};
