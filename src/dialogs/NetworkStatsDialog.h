// SPDX-License-Identifier: MIT
#pragma once

#include "NetworkSnapshot.h"

#include <QDialog>

#include <array>

class IpfsClient;
class LineView;
class NodeWords;
class QLabel;
class QLayout;
class QPushButton;
class StatusLabel;

/// Asks the node for its peers, its DHT and its exchange of blocks at once, and shows what has come as one JSON
/// document, with a verdict on the node's health. What another window asks of these is shown as well.
class NetworkStatsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit NetworkStatsDialog(IpfsClient* newClient, QWidget* parent = nullptr);

signals:
    void statusMessageRequested(QString message);

protected:
    void showEvent(QShowEvent* event) override;

private slots:
    void onRefreshClicked();
    void onCopyJsonClicked();
    void onSaveJsonClicked();
    void onSwarmPeersReceived(const QStringList& peers);
    void onSwarmRequestFailed(const QString& operation, const QString& message);
    void onDhtStatsReceived(const QJsonValue& newData);
    void onDhtStatsFailed(const QString& message);
    void onBitswapStatReceived(const QJsonObject& stat);
    void onBitswapStatFailed(const QString& message);
    void onEndpointChanged();

private:
    void setupUi();
    QLayout* newHeaderRow();
    QPushButton* newButton(const QString& text, void (NetworkStatsDialog::*slot)());
    LineView* newView();
    void connectClient();

    void dropFacts();
    void forget();
    void setLoading(bool loading);
    void markEndpointDone(const QString& endpoint, bool ok, const QString& error);
    void refreshView();
    void showSnapshot(const SnapshotView& shown);
    void showJson(const QString& text, const QStringList& lines);
    void showSignalLines(const QStringList& lines);
    void reportEnd();
    void save(const QString& path, const QString& text);

    IpfsClient* client;
    NetworkFacts facts {};
    QString json {};          ///< all of the snapshot, whether or not the view has it yet
    quint64 refreshCount = 0; ///< a snapshot of an earlier refresh isn't shown any more
    bool building = false;    ///< on a thread
    bool outdated = false;    ///< more has come since that began
    StatusLabel* statusLabel = nullptr;
    QPushButton* refreshButton = nullptr;
    std::array<QLabel*, 3> signalLabels {};
    NodeWords* causes = nullptr; ///< why a call brought nothing, or not all
    LineView* jsonView = nullptr;
};
