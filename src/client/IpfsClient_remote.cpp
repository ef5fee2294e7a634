// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "RemoteParser.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"
#include "ShownAddress.h"

#include <QJsonDocument>
#include <QNetworkReply>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr auto listAction = "list"_L1;
/// Of a pin at a service; a node asked for none of them shows the pinned ones alone.
constexpr std::array pinStates {"queued"_L1, "pinning"_L1, "pinned"_L1, "failed"_L1};

/// Why a call failed; empty if it didn't, which is so unless it says otherwise. A proxy's page may repeat the address.
QString failureOf(QNetworkReply* reply)
{
    const QByteArray body = reply->readAll();
    if (reply->error() == QNetworkReply::NoError)
        return withoutSecrets(QJsonDocument::fromJson(body)["Error"_L1].toString().trimmed(), reply->url());
    const QString words = QString::fromUtf8(body).trimmed();
    return words.isEmpty() ? reply->errorString() : withoutSecrets(words, reply->url());
}

} // namespace

void IpfsClient::fetchRemoteServices(bool stat, const QString& name)
{
    const QString asked = name.trimmed();
    QUrlQuery query = rpcQuery({{u"stat"_s, stat ? u"true"_s : u"false"_s}});
    if (!asked.isEmpty())
        addQueryItem(query, u"name"_s, asked);
    QNetworkReply* reply = ask(u"/pin/remote/service/ls"_s, query, &IpfsClient::onRemoteServicesReplyFinished);
    reply->setProperty(ReplyProperty::remoteServiceAction, QString(listAction));
    reply->setProperty(ReplyProperty::remoteServiceName, asked);
}

/// A listing with a name is a test of that service; there is no other mark.
void IpfsClient::onRemoteServicesReplyFinished(QNetworkReply* reply)
{
    const QString name = reply->property(ReplyProperty::remoteServiceName).toString();
    const bool isTest = reply->property(ReplyProperty::remoteServiceAction).toString() == listAction && !name.isEmpty();
    const QByteArray body = reply->readAll();
    reply->deleteLater();
    if (isOfFormerNode(reply))
        return;
    const ServiceList list = reply->error() == QNetworkReply::NoError
        ? parseServiceList(body)
        : ServiceList {.error = tr("Remote service request failed: %1").arg(reply->errorString())};
    if (isTest)
        reportServiceTest(name, list);
    else if (list.error.isEmpty())
        emit remoteServicesReceived(list.entries());
    else
        emit remoteServicesFailed(list.error);
}

void IpfsClient::reportServiceTest(const QString& name, const ServiceList& list)
{
    const QString unusable = tr("Service '%1' is configured but could not be reached, or refused its access token.");
    const auto found = std::ranges::find(list.services, name, [](const ListedService& s) { return s.entry.name; });
    if (!list.error.isEmpty())
        emit remoteServiceTested(name, false, list.error);
    else if (found == list.services.end())
        emit remoteServiceTested(name, false, tr("Service '%1' was not returned by Kubo.").arg(name));
    else if (!found->status.isEmpty() && found->status != "valid"_L1)
        emit remoteServiceTested(name, false, unusable.arg(name));
    else
        emit remoteServiceTested(name, true, tr("Service '%1' is configured and reachable.").arg(name));
}

void IpfsClient::testRemoteService(const QString& name)
{
    if (name.trimmed().isEmpty())
        emit remoteServiceTested({}, false, tr("Service name is required."));
    else
        fetchRemoteServices(true, name);
}

void IpfsClient::addRemoteService(const QString& name, const QString& address, const QString& token)
{
    const QStringList arguments {name.trimmed(), address.trimmed(), token.trimmed()};
    if (arguments.contains(QString())) {
        emit remoteServiceAddFailed(tr("Service name, endpoint, and access token are required."));
        return;
    }
    QUrlQuery query;
    for (const QString& argument : arguments)
        addQueryItem(query, u"arg"_s, argument);
    call(u"/pin/remote/service/add"_s, query, &IpfsClient::onRemoteServiceAddReplyFinished)
        ->setProperty(ReplyProperty::remoteServiceName, arguments.constFirst());
}

void IpfsClient::onRemoteServiceAddReplyFinished(QNetworkReply* reply)
{
    const QString name = reply->property(ReplyProperty::remoteServiceName).toString();
    reply->deleteLater();
    if (const QString failure = failureOf(reply); !failure.isEmpty())
        emit remoteServiceAddFailed(tr("Failed to add remote service '%1': %2").arg(name, failure));
    else
        emit remoteServiceAdded(name);
}

void IpfsClient::removeRemoteService(const QString& name)
{
    const QString removed = name.trimmed();
    if (removed.isEmpty()) {
        emit remoteServiceRemoveFailed(tr("Service name is required."));
        return;
    }
    call(u"/pin/remote/service/rm"_s, rpcQuery({{u"arg"_s, removed}}), &IpfsClient::onRemoteServiceRmReplyFinished)
        ->setProperty(ReplyProperty::remoteServiceName, removed);
}

void IpfsClient::onRemoteServiceRmReplyFinished(QNetworkReply* reply)
{
    const QString name = reply->property(ReplyProperty::remoteServiceName).toString();
    reply->deleteLater();
    if (const QString failure = failureOf(reply); !failure.isEmpty())
        emit remoteServiceRemoveFailed(tr("Failed to remove remote service '%1': %2").arg(name, failure));
    else
        emit remoteServiceRemoved(name);
}

void IpfsClient::remotePinAdd(const QString& cid, const QString& service, const QString& name, bool background)
{
    const QString pinned = cid.trimmed();
    const QString at = service.trimmed();
    if (pinned.isEmpty() || at.isEmpty()) {
        emit remotePinQueueFailed(pinned, at, tr("Remote pin failed: CID and service are required."));
        return;
    }
    QUrlQuery query = rpcQuery({{u"arg"_s, pinned}, {u"service"_s, at}});
    if (const QString label = name.trimmed(); !label.isEmpty())
        addQueryItem(query, u"name"_s, label);
    if (background)
        addQueryItem(query, u"background"_s, u"true"_s);
    callForRemotePin(u"/pin/remote/add"_s, query, &IpfsClient::onRemotePinAddReplyFinished, pinned, at);
}

void IpfsClient::callForRemotePin(const QString& path, const QUrlQuery& query, ReplyHandler handler, const QString& cid,
                                  const QString& service)
{
    QNetworkReply* reply = ask(path, query, handler);
    reply->setProperty(ReplyProperty::remoteCid, cid);
    reply->setProperty(ReplyProperty::remoteService, service);
}

void IpfsClient::onRemotePinAddReplyFinished(QNetworkReply* reply)
{
    const QString cid = reply->property(ReplyProperty::remoteCid).toString();
    const QString service = reply->property(ReplyProperty::remoteService).toString();
    reply->deleteLater();
    if (isOfFormerNode(reply)) // what it says is not of a flow at this one
        return;
    if (const QString failure = failureOf(reply); !failure.isEmpty())
        emit remotePinQueueFailed(cid, service, tr("Remote pin failed for %1: %2").arg(cid, failure));
    else
        emit remotePinQueued(cid, service);
}

void IpfsClient::fetchRemotePinStatus(const QString& cid, const QString& service)
{
    const QString pinned = cid.trimmed();
    const QString at = service.trimmed();
    if (pinned.isEmpty() || at.isEmpty()) {
        emit remotePinStatusFailed(pinned, at, tr("Remote pin status request failed: CID and service are required."));
        return;
    }
    QUrlQuery query = rpcQuery({{u"arg"_s, pinned}, {u"service"_s, at}, {u"cid"_s, pinned}});
    for (const QLatin1StringView state : pinStates)
        addQueryItem(query, u"status"_s, state);
    callForRemotePin(u"/pin/remote/ls"_s, query, &IpfsClient::onRemotePinLsReplyFinished, pinned, at);
}

void IpfsClient::onRemotePinLsReplyFinished(QNetworkReply* reply)
{
    const QString cid = reply->property(ReplyProperty::remoteCid).toString();
    const QString service = reply->property(ReplyProperty::remoteService).toString();
    const QByteArray body = reply->readAll();
    reply->deleteLater();
    if (isOfFormerNode(reply)) // which may know the same CID and service
        return;
    const RemotePinState state = reply->error() == QNetworkReply::NoError
        ? parseRemotePinState(body, cid)
        : RemotePinState {.error = tr("Remote pin status failed for %1: %2").arg(cid, reply->errorString())};
    if (state.error.isEmpty())
        emit remotePinStatusReceived(cid, service, state.status);
    else
        emit remotePinStatusFailed(cid, service, state.error);
}
