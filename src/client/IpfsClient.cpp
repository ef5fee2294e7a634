// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "ReplyProperties.h"

#include <QNetworkReply>

IpfsClient::IpfsClient(QObject* parent)
    : NodeClient(parent)
    , dagStatRequests(24, [this](const QString& cid) { sendQueued(dagStatRequest(), cid); })
    , kindRequests(24, [this](const QString& cid) { sendQueued(kindRequest(), cid); })
    , refsRequests(8, [this](const QString& cid) { sendQueued(refsRequest(), cid); })
{
}

/// A reply that is cancelled, or whose load has been replaced, ends in silence.
bool IpfsClient::isSilenced(const QNetworkReply* reply) const
{
    const QVariant epoch = reply->property(ReplyProperty::pinsEpoch);
    return reply->property(ReplyProperty::cancelledByClient).toBool() || (epoch.isValid() && !isCurrent(reply));
}

void IpfsClient::registerLoadReply(QNetworkReply* reply)
{
    if (!reply)
        return;
    activeLoadReplies.insert(reply);
    connect(reply, &QObject::destroyed, this, [this, reply] { activeLoadReplies.remove(reply); });
}

/// Nothing is emitted for a reply that its owner's end aborts.
void IpfsClient::endWith(QObject* owner, QNetworkReply* reply)
{
    if (!owner)
        return;
    connect(owner, &QObject::destroyed, reply, [reply] {
        reply->setProperty(ReplyProperty::cancelledByClient, true);
        reply->abort();
    });
}

void IpfsClient::cancelActiveLoading()
{
    load.cancel();
    knownCids.endLoad();
    ++cancelCount;
    for (MetadataQueue* queue : {&dagStatRequests, &kindRequests, &refsRequests})
        queue->clear();
    const QSet<QNetworkReply*> replies = activeLoadReplies; // an abort ends its reply before it returns
    for (QNetworkReply* reply : replies) {
        reply->setProperty(ReplyProperty::cancelledByClient, true);
        reply->abort();
    }
}
