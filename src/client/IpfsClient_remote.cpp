// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "RemoteParser.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"

#include <QNetworkReply>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr auto listAction = "list"_L1;

} // namespace

void IpfsClient::fetchRemoteServices(bool stat, const QString& name)
{
    const QString asked = name.trimmed();
    QUrlQuery query = rpcQuery({{u"stat"_s, stat ? u"true"_s : u"false"_s}});
    if (!asked.isEmpty())
        addQueryItem(query, u"name"_s, asked);
    QNetworkReply* reply = call(u"/pin/remote/service/ls"_s, query, &IpfsClient::onRemoteServicesReplyFinished);
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
    const auto found = std::ranges::find(list.services, name, [](const ListedService& s) { return s.entry.name; });
    if (!list.error.isEmpty())
        emit remoteServiceTested(name, false, list.error);
    else if (found == list.services.end())
        emit remoteServiceTested(name, false, tr("Service '%1' was not returned by Kubo.").arg(name));
    else if (!found->status.isEmpty() && found->status != "valid"_L1)
        emit remoteServiceTested(
            name, false,
            tr("Service '%1' is configured but could not be reached, or refused its access token.").arg(name));
    else
        emit remoteServiceTested(name, true, tr("Service '%1' is configured and reachable.").arg(name));
}
