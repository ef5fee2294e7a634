// SPDX-License-Identifier: MIT
#pragma once

#include "AddRecords.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

#include <chrono>

class QTimer;

/// Pins what an add brought at a remote service, asks after it until each CID has come to an end or the time is over,
/// and then has the local pins of those that are safe removed, if that is wanted. What it wants of the node goes out as
/// signals, and the answers come in by its slots. One flow runs at a time; a new one takes the place of the old.
class RemotePinFlow : public QObject
{
    Q_OBJECT

public:
    explicit RemotePinFlow(QObject* parent = nullptr);

    /// With the remote options of an add. Shows why, and does nothing, if there is no service or no CID.
    void start(const AddOptions& options, const QString& rootCid, const QList<AddEntry>& entries);
    /// The node has been left: what is pending counts as failed, and nothing is unpinned.
    void leaveNode();
    bool isActive() const { return remotePinFlowActive; }
    /// How often to ask, and how many times at most; for tests.
    void setPace(std::chrono::milliseconds interval, int ticks);

    static constexpr std::chrono::milliseconds pollInterval {2500};
    static constexpr int mostTicks = 120; ///< 300 seconds

public slots:
    void onRemotePinQueued(const QString& cid, const QString& service);
    void onRemotePinQueueFailed(const QString& cid, const QString& service, const QString& message);
    void onRemotePinStatusReceived(const QString& cid, const QString& service, const QString& status);
    void onRemotePinStatusFailed(const QString& cid, const QString& service, const QString& message);

signals:
    void pinWanted(QString cid, QString service, QString name);
    void statusWanted(QString cid, QString service);
    void unpinWanted(QStringList cids);
    void statusMessageRequested(QString text);
    void notificationRequested(QString text, bool warning);

private slots:
    void onRemotePinPollTick();

private:
    bool isOfAnother(const QString& cid, const QString& service) const;
    void showProblem(const QString& text);
    void finalizeRemotePinFlow();
    void failPending();

    QTimer* remotePinPollTimer;
    int tickLimit = mostTicks;
    bool remotePinFlowActive = false;
    int remotePinPollCount = 0; ///< ticks so far in this flow
    QString remotePinService {};
    QString remotePinName {}; ///< the label of the pins; may be empty
    bool remotePinUnpinLocal = false;
    QSet<QString> remotePinPending;
    QSet<QString> remotePinConfirmed;
    QSet<QString> remotePinFailed; ///< those that ran out of time as well
    QSet<QString> unanswered;      ///< CIDs whose last question is still open
};
