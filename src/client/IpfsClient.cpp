// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "ReplyProperties.h"

#include <QJsonDocument>
#include <QNetworkReply>

using namespace Qt::StringLiterals;

IpfsClient::IpfsClient(QObject* parent)
    : QObject(parent)
    , transport(new RpcTransport(this))
    , endpoint(RpcEndpoint::at(u"127.0.0.1"_s, 5001))
    , dagStatRequests(24, [this](const QString& cid) { sendQueued(dagStatRequest(), cid); })
    , kindRequests(24, [this](const QString& cid) { sendQueued(kindRequest(), cid); })
    , refsRequests(8, [this](const QString& cid) { sendQueued(refsRequest(), cid); })
{
    connect(transport, &RpcTransport::requestIssued, this, &IpfsClient::rpcRequestIssued);
}

void IpfsClient::setEndpoint(const QString& newHost, unsigned short newPort)
{
    const QString former = endpoint.base;
    endpoint = RpcEndpoint::at(newHost, newPort);
    if (endpoint.base != former)
        emit endpointChanged();
}

QNetworkReply* IpfsClient::postRequest(const QString& path, const QUrlQuery& query)
{
    return transport->post(endpoint, path, query);
}

QNetworkReply* IpfsClient::callQuietly(const QString& path, const QUrlQuery& query, ReplyHandler handler)
{
    return callQuietly(endpoint, path, query, handler);
}

QNetworkReply* IpfsClient::callQuietly(const RpcEndpoint& node, const QString& path, const QUrlQuery& query,
                                       ReplyHandler handler)
{
    QNetworkReply* reply = transport->post(node, path, query);
    connect(reply, &QNetworkReply::finished, this, [this, reply, handler] { (this->*handler)(reply); });
    return reply;
}

QNetworkReply* IpfsClient::call(const QString& path, const QUrlQuery& query, ReplyHandler handler)
{
    QNetworkReply* reply = postRequest(path, query);
    handOver(reply, path, handler);
    return reply;
}

void IpfsClient::handOver(QNetworkReply* reply, const QString& path, ReplyHandler handler)
{
    connect(reply, &QNetworkReply::finished, this, [this, reply, path] { reportNodeWords(reply, path); });
    connect(reply, &QNetworkReply::finished, this, [this, reply, handler] { (this->*handler)(reply); });
}

/// Whether the reply may only be of the node in use, and isn't.
bool IpfsClient::isOfFormerNode(const QNetworkReply* reply) const
{
    const QVariant base = reply->property(ReplyProperty::base);
    return base.isValid() && base.toString() != endpoint.base;
}

/// A reply that is cancelled, or whose load has been replaced, ends in silence.
void IpfsClient::reportNodeWords(const QNetworkReply* reply, const QString& path)
{
    const QVariant epoch = reply->property(ReplyProperty::pinsEpoch);
    if (reply->property(ReplyProperty::cancelledByClient).toBool() || (epoch.isValid() && !isCurrent(reply))
        || isOfFormerNode(reply))
        return;
    if (const QString words = nodeWords(reply); !words.isEmpty())
        emit nodeSaid(path, words);
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
    ++cancelCount;
    for (MetadataQueue* queue : {&dagStatRequests, &kindRequests, &refsRequests})
        queue->clear();
    const QSet<QNetworkReply*> replies = activeLoadReplies; // an abort ends its reply before it returns
    for (QNetworkReply* reply : replies) {
        reply->setProperty(ReplyProperty::cancelledByClient, true);
        reply->abort();
    }
}

void IpfsClient::ping()
{
    call(u"/version"_s, {}, &IpfsClient::onPingReplyFinished);
}

void IpfsClient::onPingReplyFinished(QNetworkReply* reply)
{
    reply->deleteLater();
    const bool reached = reply->error() == QNetworkReply::NoError;
    emit connectionStatusChanged(reached);
    if (!reached)
        emit errorOccurred(tr("Cannot connect to Kubo RPC: %1").arg(reply->errorString()));
}

void IpfsClient::fetchNodeInfo()
{
    call(u"/id"_s, {}, &IpfsClient::onNodeInfoReplyFinished)->setProperty(ReplyProperty::base, endpoint.base);
}

void IpfsClient::onNodeInfoReplyFinished(QNetworkReply* reply)
{
    reply->deleteLater();
    if (isOfFormerNode(reply))
        return;
    if (reply->error() != QNetworkReply::NoError) {
        emit errorOccurred(tr("Failed to get node info: %1").arg(reply->errorString()));
        return;
    }
    const QJsonDocument answer = QJsonDocument::fromJson(reply->readAll());
    if (answer.isObject())
        emit nodeInfoReceived(answer["ID"_L1].toString(), answer["AgentVersion"_L1].toString());
}
