// SPDX-License-Identifier: MIT
#include "NodeClient.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

NodeClient::NodeClient(QObject* parent)
    : RpcClient(parent)
{
    connect(this, &RpcClient::endpointChanged, this, [this] { peersOfAddress.clear(); });
}

void NodeClient::ping()
{
    call(u"/version"_s, {}, &NodeClient::onPingReplyFinished);
}

void NodeClient::onPingReplyFinished(QNetworkReply* reply)
{
    reply->deleteLater();
    const bool reached = reply->error() == QNetworkReply::NoError;
    emit connectionStatusChanged(reached);
    if (!reached)
        emit errorOccurred(tr("Cannot connect to Kubo RPC: %1").arg(reply->errorString()));
}

void NodeClient::fetchNodeInfo()
{
    ask(u"/id"_s, {}, &NodeClient::onNodeInfoReplyFinished);
}

void NodeClient::onNodeInfoReplyFinished(QNetworkReply* reply)
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
