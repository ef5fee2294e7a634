// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class IpfsClient;
class LineView;
class NodeWords;
class QPushButton;
class StatusLabel;
struct LinePart;

/// Shows what the node's repository holds, and runs its garbage collection. Asks for the former when it is shown with
/// nothing in its view.
class GcDialog : public QDialog
{
    Q_OBJECT

public:
    /// `newClient` is not owned and has to outlive the dialog.
    explicit GcDialog(IpfsClient* newClient, QWidget* parent = nullptr);

signals:
    /// A short text for the main window's status line.
    void statusMessageRequested(QString message);

protected:
    void showEvent(QShowEvent* event) override;

private slots:
    void onRepoStatsClicked();
    void onRunGcClicked();
    void onRepoStatReceived(const QJsonObject& stat);
    void onRepoStatFailed(const QString& message);
    void onRepoGcCompleted(const QStringList& collectedCids, const QStringList& errors);
    void onRepoGcFailed(const QString& message);
    void onEndpointChanged();

private:
    void setupUi();
    void connectClient();
    void setLoading(bool on);
    void start(const QString& progress, const QString& statusMessage);
    void showText(const QList<LinePart>& text);
    void showFailure(const QString& message);
    bool takeFormerGc();

    IpfsClient* client;
    StatusLabel* statusLabel = nullptr;
    NodeWords* nodeWords = nullptr;
    QPushButton* statsButton = nullptr;
    QPushButton* gcButton = nullptr;
    LineView* textView = nullptr;
    bool loading = false;
    bool gcRuns = false; ///< at the node that is asked now
    int formerGcs = 0;   ///< collections that a former node has not answered
};
