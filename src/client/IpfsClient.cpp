#include "IpfsClient.h"

#include "AppSettings.h"
#include "ConnectionGroup.h"
#include "LogTime.h"
#include "OriginValue.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>

using namespace Qt::StringLiterals;

namespace {

/// Read from the store for each request, so that a change is in force for the next one.
QByteArray originHeader()
{
    const QSettings settings = openAppSettings();
    if (!settings.value(SettingsKeys::sendOrigin, false).toBool())
        return {};
    return effectiveOriginValue(settings.value(SettingsKeys::originValue).toString()).toUtf8();
}

/// A default node refuses Qt's own agent, "Mozilla/5.0", with 403.
QString userAgent()
{
    return u"Norvo/"_s + QCoreApplication::applicationVersion();
}

} // namespace

IpfsClient::IpfsClient(QObject* parent)
    : QObject(parent)
    , network(new QNetworkAccessManager(this))
{
    setEndpoint(u"127.0.0.1"_s, 5001);
}

void IpfsClient::setEndpoint(const QString& newHost, unsigned short newPort)
{
    host = newHost;
    port = newPort;
    QUrl url;
    url.setScheme(u"http"_s);
    url.setHost(host);
    url.setPort(port);
    url.setPath(u"/api/v0"_s);
    hostIsValid = !url.host().isEmpty();
    base = hostIsValid ? url.toString() : u"http://%1:%2/api/v0"_s.arg(host, QString::number(port));
}

QNetworkReply* IpfsClient::postRequest(const QString& path, const QUrlQuery& query)
{
    return post(path, query, {}, 0);
}

QNetworkReply* IpfsClient::post(const QString& path, const QUrlQuery& query, const ConnectionGroup& group, int lane)
{
    // A host that can't be one is shown as it was given, and nothing leaves: read as an address the text could name
    // another host.
    QUrl url(hostIsValid ? base + path : u"http:///api/v0"_s + path);
    if (!query.isEmpty())
        url.setQuery(query);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/x-www-form-urlencoded"_L1);
    request.setHeader(QNetworkRequest::UserAgentHeader, userAgent());
    if (const QByteArray origin = originHeader(); !origin.isEmpty())
        request.setRawHeader("Origin", origin);
    useConnectionGroup(request, group, lane);
    emit rpcRequestIssued(u"[%1] POST %2"_s.arg(logTime(), url.toString(QUrl::FullyEncoded)));
    return network->post(request, QByteArray());
}

QNetworkReply* IpfsClient::call(const QString& path, const QUrlQuery& query, ReplyHandler handler)
{
    QNetworkReply* reply = postRequest(path, query);
    handOver(reply, handler);
    return reply;
}

void IpfsClient::handOver(QNetworkReply* reply, ReplyHandler handler)
{
    connect(reply, &QNetworkReply::finished, this, [this, reply, handler] { (this->*handler)(reply); });
}

void IpfsClient::registerLoadReply(QNetworkReply* reply)
{
    if (!reply)
        return;
    activeLoadReplies.insert(reply);
    connect(reply, &QObject::destroyed, this, [this, reply] { activeLoadReplies.remove(reply); });
}

void IpfsClient::cancelActiveLoading()
{
    ++pinsEpoch;
    ++cancelCount;
    resetUnpinnedState();
    compositePins.clear();
    compositePending = 0;
    for (MetadataQueue* queue : {&dagStatRequests, &kindRequests, &refsRequests})
        *queue = {};
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
    call(u"/id"_s, {}, &IpfsClient::onNodeInfoReplyFinished);
}

void IpfsClient::onNodeInfoReplyFinished(QNetworkReply* reply)
{
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        emit errorOccurred(tr("Failed to get node info: %1").arg(reply->errorString()));
        return;
    }
    const QJsonDocument answer = QJsonDocument::fromJson(reply->readAll());
    if (answer.isObject())
        emit nodeInfoReceived(answer["ID"_L1].toString(), answer["AgentVersion"_L1].toString());
}

JsonReply readJsonObjectReply(QNetworkReply* reply, const QString& action)
{
    reply->deleteLater();
    const QByteArray body = reply->readAll();
    return reply->error() == QNetworkReply::NoError ? judgeJsonReply(body, action)
                                                    : failedJsonReply(body, reply->errorString(), action);
}
