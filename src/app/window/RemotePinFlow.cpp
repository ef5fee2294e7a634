// SPDX-License-Identifier: MIT
#include "RemotePinFlow.h"

#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

QSet<QString> cidsToPin(const QString& rootCid, const QList<AddEntry>& entries)
{
    if (!rootCid.isEmpty())
        return {rootCid};
    QSet<QString> cids;
    for (const AddEntry& entry : entries) {
        if (const QString cid = entry.cid.trimmed(); !cid.isEmpty())
            cids.insert(cid);
    }
    return cids;
}

QString countOf(const QSet<QString>& cids)
{
    return QString::number(cids.size());
}

} // namespace

RemotePinFlow::RemotePinFlow(QObject* parent)
    : QObject(parent)
    , remotePinPollTimer(new QTimer(this))
{
    remotePinPollTimer->setInterval(pollInterval);
    connect(remotePinPollTimer, &QTimer::timeout, this, &RemotePinFlow::onRemotePinPollTick);
}

void RemotePinFlow::setPace(std::chrono::milliseconds interval, int ticks)
{
    remotePinPollTimer->setInterval(interval);
    tickLimit = ticks;
}

void RemotePinFlow::start(const AddOptions& options, const QString& rootCid, const QList<AddEntry>& entries)
{
    const QString service = options.remoteServiceNickname.trimmed();
    if (service.isEmpty()) {
        emit notificationRequested(tr("Remote pin skipped: no remote service was provided."), true);
        return;
    }
    const QSet<QString> cids = cidsToPin(rootCid, entries);
    if (cids.isEmpty()) {
        emit notificationRequested(tr("Remote pin skipped: no CID returned from add."), true);
        return;
    }
    remotePinFlowActive = true;
    remotePinPollCount = 0;
    remotePinService = service;
    remotePinName = options.remotePinLabel.trimmed();
    remotePinUnpinLocal = options.unpinLocalAfterRemote;
    remotePinPending = cids;
    for (QSet<QString>* set : {&remotePinConfirmed, &remotePinFailed, &unanswered})
        set->clear();
    for (const QString& cid : cids)
        emit pinWanted(cid, remotePinService, remotePinName);
    remotePinPollTimer->start();
    onRemotePinPollTick();
}

void RemotePinFlow::onRemotePinPollTick()
{
    if (!remotePinFlowActive)
        return;
    if (remotePinPending.isEmpty()) {
        finalizeRemotePinFlow();
        return;
    }
    ++remotePinPollCount;
    const QSet<QString> asked = remotePinPending - unanswered;
    unanswered += asked;
    for (const QString& cid : asked)
        emit statusWanted(cid, remotePinService);
    if (remotePinPollCount >= tickLimit) {
        failPending();
        finalizeRemotePinFlow();
    }
}

void RemotePinFlow::failPending()
{
    remotePinFailed += remotePinPending;
    remotePinPending.clear();
}

void RemotePinFlow::leaveNode()
{
    if (!remotePinFlowActive)
        return;
    failPending();
    remotePinUnpinLocal = false;
    finalizeRemotePinFlow();
}

void RemotePinFlow::onRemotePinQueued(const QString& cid, const QString& service)
{
    emit statusMessageRequested(tr("Remote pin queued for %1 via service '%2'.").arg(cid, service));
}

void RemotePinFlow::onRemotePinQueueFailed(const QString& cid, const QString& service, const QString& message)
{
    const bool counts = !isOfAnother(cid, service);
    if (counts) {
        remotePinPending.remove(cid);
        remotePinFailed.insert(cid);
    }
    showProblem(tr("Remote pin queue failed (%1): %2").arg(service, message));
    if (counts && remotePinPending.isEmpty())
        finalizeRemotePinFlow();
}

/// In the status as well, and so in its log: the end of the flow may take the notification's place at once.
void RemotePinFlow::showProblem(const QString& text)
{
    emit notificationRequested(text, true);
    emit statusMessageRequested(text);
}

/// Whether an answer is not of the flow that runs. One that an earlier flow asked for must not have a pin removed that
/// this one is to keep.
bool RemotePinFlow::isOfAnother(const QString& cid, const QString& service) const
{
    return remotePinFlowActive
        && (service != remotePinService
            || !(remotePinPending.contains(cid) || remotePinConfirmed.contains(cid) || remotePinFailed.contains(cid)));
}

/// An answer that comes after the end changes a set that the next flow clears.
void RemotePinFlow::onRemotePinStatusReceived(const QString& cid, const QString& service, const QString& status)
{
    if (isOfAnother(cid, service))
        return;
    unanswered.remove(cid);
    const QString word = status.trimmed().toLower();
    if (word == "pinned"_L1 || word == "failed"_L1) {
        remotePinPending.remove(cid);
        (word == "pinned"_L1 ? remotePinConfirmed : remotePinFailed).insert(cid);
    }
    emit statusMessageRequested(
        tr("Remote pin status (%1): %2 pinned, %3 pending, %4 failed.")
            .arg(service, countOf(remotePinConfirmed), countOf(remotePinPending), countOf(remotePinFailed)));
    const bool hasAny = !remotePinConfirmed.isEmpty() || !remotePinFailed.isEmpty();
    if (hasAny && remotePinPending.isEmpty())
        finalizeRemotePinFlow();
}

/// The next tick asks again.
void RemotePinFlow::onRemotePinStatusFailed(const QString& cid, const QString& service, const QString& message)
{
    if (!isOfAnother(cid, service))
        unanswered.remove(cid);
    showProblem(tr("Remote status check failed (%1): %2").arg(service, message));
}

void RemotePinFlow::finalizeRemotePinFlow()
{
    if (!remotePinFlowActive)
        return;
    remotePinFlowActive = false;
    remotePinPollTimer->stop();
    if (remotePinUnpinLocal && !remotePinConfirmed.isEmpty())
        emit unpinWanted(QStringList(remotePinConfirmed.cbegin(), remotePinConfirmed.cend()));
    const QString pinned = countOf(remotePinConfirmed);
    const QString failed = countOf(remotePinFailed);
    emit notificationRequested(tr("Remote pin flow finished: %1 pinned, %2 failed.").arg(pinned, failed),
                               !remotePinFailed.isEmpty());
    emit statusMessageRequested(
        tr("Remote pin complete on '%1': %2 pinned, %3 failed.").arg(remotePinService, pinned, failed));
    remotePinService.clear();
    remotePinName.clear();
    remotePinUnpinLocal = false;
    remotePinPollCount = 0;
    for (QSet<QString>* set : {&remotePinPending, &remotePinConfirmed, &remotePinFailed})
        set->clear();
}
