// SPDX-License-Identifier: MIT
#include "NodeClient.h"

#include "JsonBody.h"
#include "RpcQuery.h"

using namespace Qt::StringLiterals;

void NodeClient::fetchConfig()
{
    ask(u"/config/show"_s, {}, &NodeClient::onConfigReplyFinished);
}

void NodeClient::onConfigReplyFinished(QNetworkReply* reply)
{
    if (isOfFormerNode(reply))
        reply->deleteLater();
    else if (reply->error() != QNetworkReply::NoError)
        endWithFailure(reply, tr("Failed to get config: %1").arg(reply->errorString()), &NodeClient::configFailed);
    else
        readBody(reply, parseJsonBody, [this](const JsonBody& answer) { deliverConfig(answer); });
}

void NodeClient::deliverConfig(const JsonBody& answer)
{
    if (answer.isObject)
        emit configReceived(answer.object);
    else
        reportFailure(tr("Invalid config JSON: %1").arg(answer.parserMessage), &NodeClient::configFailed);
}

void NodeClient::fetchConfigKey(const QString& key, bool expandAuto)
{
    const QString asked = key.trimmed();
    if (asked.isEmpty()) {
        emit configKeyRequestFailed(tr("Config key is required."));
        return;
    }
    QUrlQuery query = rpcQuery({{u"arg"_s, asked}});
    if (expandAuto)
        addQueryItem(query, u"expand-auto"_s, u"true"_s);
    ask(u"/config"_s, query, &NodeClient::onConfigKeyGetReplyFinished);
}

void NodeClient::onConfigKeyGetReplyFinished(QNetworkReply* reply)
{
    if (isOfFormerNode(reply)) {
        reply->deleteLater();
    } else if (reply->error() != QNetworkReply::NoError) {
        endWithFailure(reply, tr("Failed to get config key: %1").arg(reply->errorString()),
                       &NodeClient::configKeyRequestFailed);
    } else {
        readBody(reply, parseJsonBody, [this](const JsonBody& answer) {
            if (answer.isObject)
                emit configKeyReceived(answer.object.value("Key"_L1).toString(), answer.object.value("Value"_L1));
            else
                reportFailure(tr("Invalid config/get JSON: %1").arg(answer.parserMessage),
                              &NodeClient::configKeyRequestFailed);
        });
    }
}

void NodeClient::setConfigKey(const QString& key, const QString& value, bool isBool, bool isJson)
{
    const QString written = key.trimmed();
    if (written.isEmpty()) {
        emit configKeySetFailed(tr("Config key is required."));
        return;
    }
    if (isBool && isJson) {
        emit configKeySetFailed(tr("Invalid config write mode: bool and json flags are mutually exclusive."));
        return;
    }
    QUrlQuery query = rpcQuery({{u"arg"_s, written}, {u"arg"_s, value}});
    if (isBool)
        addQueryItem(query, u"bool"_s, u"true"_s);
    if (isJson)
        addQueryItem(query, u"json"_s, u"true"_s);
    call(u"/config"_s, query, &NodeClient::onConfigKeySetReplyFinished);
}

void NodeClient::onConfigKeySetReplyFinished(QNetworkReply* reply)
{
    if (reply->error() != QNetworkReply::NoError) {
        endWithFailure(reply, tr("Failed to set config key: %1").arg(reply->errorString()),
                       &NodeClient::configKeySetFailed);
        return;
    }
    readBody(reply, parseJsonBody, [this](const JsonBody& answer) {
        if (answer.isObject)
            emit configKeySet(answer.object.value("Key"_L1).toString(), answer.object.value("Value"_L1));
        else
            reportFailure(tr("Invalid config/set JSON: %1").arg(answer.parserMessage), &NodeClient::configKeySetFailed);
    });
}

void NodeClient::replaceConfig(const QByteArray& jsonPayload)
{
    if (jsonPayload.trimmed().isEmpty()) {
        emit configReplaceFailed(tr("Config JSON payload is empty."));
        return;
    }
    const QString path = u"/config/replace"_s;
    const QNetworkRequest request = transport->announce(endpoint, path, {});
    handOver(transport->uploadFile(request, u"config.json"_s, "application/json", jsonPayload), path,
             &NodeClient::onConfigReplaceReplyFinished);
}

/// A success has an empty body.
void NodeClient::onConfigReplaceReplyFinished(QNetworkReply* reply)
{
    if (reply->error() == QNetworkReply::NoError) {
        reply->deleteLater();
        emit configReplaceSucceeded();
        return;
    }
    const QString words = QString::fromUtf8(reply->readAll()).trimmed();
    endWithFailure(reply, tr("Failed to replace config: %1").arg(words.isEmpty() ? reply->errorString() : words),
                   &NodeClient::configReplaceFailed);
}
