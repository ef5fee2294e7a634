// SPDX-License-Identifier: MIT
#include "NodeAccessManager.h"

#include "CurlLoop.h"
#include "NodeReply.h"

NodeAccessManager::NodeAccessManager(QObject* parent)
    : QNetworkAccessManager(parent)
    , loop(std::make_unique<CurlLoop>())
{
}

NodeAccessManager::~NodeAccessManager()
{
    qDeleteAll(findChildren<NodeReply*>(Qt::FindDirectChildrenOnly)); // before the loop that they are on
}

QByteArray NodeAccessManager::failureBody(const QNetworkReply* reply)
{
    const auto* nodeReply = qobject_cast<const NodeReply*>(reply);
    return nodeReply ? nodeReply->failureBody() : QByteArray();
}

QNetworkReply* NodeAccessManager::createRequest(Operation operation, const QNetworkRequest& request,
                                                QIODevice* outgoingData)
{
    return new NodeReply(*loop, operation, request, outgoingData, this);
}
