// SPDX-License-Identifier: MIT
#include "RpcClient.h"

using namespace Qt::StringLiterals;

RpcClient::RpcClient(QObject* parent)
    : QObject(parent)
    , transport(new RpcTransport(this))
    , endpoint(RpcEndpoint::at(u"127.0.0.1"_s, 5001))
{
    connect(transport, &RpcTransport::requestIssued, this, &RpcClient::rpcRequestIssued);
}

void RpcClient::setEndpoint(const QString& newHost, unsigned short newPort)
{
    const QString former = endpoint.base;
    endpoint = RpcEndpoint::at(newHost, newPort);
    if (endpoint.base != former)
        emit endpointChanged();
}

QNetworkReply* RpcClient::postRequest(const QString& path, const QUrlQuery& query)
{
    return transport->post(endpoint, path, query);
}

void RpcClient::markAsQuestion(QNetworkReply* reply) const
{
    reply->setProperty(ReplyProperty::base, endpoint.base);
}

/// Whether the reply may only be of the node in use, and isn't.
bool RpcClient::isOfFormerNode(const QNetworkReply* reply) const
{
    const QVariant base = reply->property(ReplyProperty::base);
    return base.isValid() && base.toString() != endpoint.base;
}

void RpcClient::reportNodeWords(const QNetworkReply* reply, const QString& path)
{
    if (isSilenced(reply) || isOfFormerNode(reply))
        return;
    if (const QString words = nodeWords(reply); !words.isEmpty())
        emit nodeSaid(path, words);
}
