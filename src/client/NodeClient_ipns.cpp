// SPDX-License-Identifier: MIT
#include "NodeClient.h"

#include "IpnsParser.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"

using namespace Qt::StringLiterals;

namespace {

constexpr auto contentPrefix = "/ipfs/"_L1;
constexpr auto namePrefix = "/ipns/"_L1;

} // namespace

void NodeClient::fetchIpnsKeys()
{
    ask(u"/key/list"_s, {}, &NodeClient::onIpnsKeysReplyFinished);
}

void NodeClient::onIpnsKeysReplyFinished(QNetworkReply* reply)
{
    if (isOfFormerNode(reply)) // its keys are not this one's
        reply->deleteLater();
    else if (const auto answer = goodObject(reply, tr("list IPNS keys"), &NodeClient::ipnsKeysFailed))
        emit ipnsKeysReceived(ipnsKeysOf(*answer));
}

void NodeClient::publishIpns(const QString& target, const QString& key)
{
    const QString given = target.trimmed();
    if (given.isEmpty()) {
        emit ipnsPublishFailed(tr("IPNS publish failed: content path/CID is required."));
        return;
    }
    const bool isPath = given.startsWith(contentPrefix) || given.startsWith(namePrefix);
    const QString path = isPath ? given : contentPrefix + given;
    const QString named = key.trimmed();
    const QString usedKey = named.isEmpty() ? u"self"_s : named;
    call(u"/name/publish"_s, rpcQuery({{u"arg"_s, path}, {u"key"_s, usedKey}}), &NodeClient::onIpnsPublishReplyFinished)
        ->setProperty(ReplyProperty::ipnsPublishKey, usedKey);
}

void NodeClient::onIpnsPublishReplyFinished(QNetworkReply* reply)
{
    if (const auto answer = goodObject(reply, tr("publish to IPNS"), &NodeClient::ipnsPublishFailed)) {
        emit ipnsPublished({.key = reply->property(ReplyProperty::ipnsPublishKey).toString(),
                            .name = answer->value("Name"_L1).toString().trimmed(),
                            .value = answer->value("Value"_L1).toString().trimmed()});
    }
}

void NodeClient::resolveIpns(const QString& name)
{
    const QString given = name.trimmed();
    if (given.isEmpty()) {
        emit ipnsResolveFailed(tr("IPNS resolve failed: name is required."));
        return;
    }
    const QString path = given.startsWith(namePrefix) ? given : namePrefix + given;
    call(u"/name/resolve"_s, rpcQuery({{u"arg"_s, path}}), &NodeClient::onIpnsResolveReplyFinished)
        ->setProperty(ReplyProperty::ipnsResolveArg, path);
}

void NodeClient::onIpnsResolveReplyFinished(QNetworkReply* reply)
{
    if (const auto answer = goodObject(reply, tr("resolve IPNS name"), &NodeClient::ipnsResolveFailed))
        emit ipnsResolved({.input = reply->property(ReplyProperty::ipnsResolveArg).toString(),
                           .path = answer->value("Path"_L1).toString().trimmed()});
}
