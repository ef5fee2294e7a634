// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>
#include <QPointer>

class DhtGroups;
class IpfsClient;
class NodeWords;
class QComboBox;
class QLayout;
class QPushButton;
class QScrollArea;
class QVBoxLayout;
class StatusLabel;

/// Shows the routing tables of the node's DHTs: a group for each DHT, in it one for each bucket with a table of its
/// peers. Asks for them when it is shown with nothing in it. Shows what anybody else has asked for as well.
class DhtStatsDialog : public QDialog
{
    Q_OBJECT

public:
    /// `newClient` is not owned and has to outlive the dialog.
    explicit DhtStatsDialog(IpfsClient* newClient, QWidget* parent = nullptr);

signals:
    /// A short text for the main window's status line.
    void statusMessageRequested(QString message);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private slots:
    void onDhtStatsReceived(const QJsonValue& answer);
    void onError(const QString& message);
    void onRefreshClicked();
    void onDhtChosen();
    void onEndpointChanged();

private:
    void setupUi();
    void setupCombo();
    QLayout* newHeaderRow();
    QScrollArea* newScrollArea();
    void connectClient();
    void setLoading(bool on);
    bool isEmpty() const;
    void clearContent();
    void buildContentFromValue(const QJsonValue& value);

    IpfsClient* client;
    QComboBox* dhtCombo = nullptr;
    StatusLabel* statusLabel = nullptr;
    NodeWords* nodeWords = nullptr;
    QPushButton* refreshButton = nullptr;
    QWidget* content = nullptr;
    QVBoxLayout* contentLayout = nullptr; ///< its last item is a stretch
    QPointer<DhtGroups> groups {};        ///< while they are being built
    QPointer<QWidget> focusBefore {};     ///< where the focus was when a request began
    bool loading = false;
};
