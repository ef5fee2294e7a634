// SPDX-License-Identifier: MIT
#include "NodeClient.h"

#include "ReplyProperties.h"
#include "RpcQuery.h"
#include "SwarmParser.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

template <typename Records> struct ListAnswer
{
    Records records {};
    QString error {};
};

} // namespace

/// Hands what `read` makes of an answer to `deliver`; reports a failure under the name of its operation.
template <typename Records, typename Deliver>
void NodeClient::readList(QNetworkReply* reply, const QString& action, FailureSignal failed, const QString& operation,
                          Records (*read)(const QJsonObject&), Deliver deliver)
{
    if (isOfFormerNode(reply)) {
        reply->deleteLater();
        return;
    }
    if (reply->error() != QNetworkReply::NoError) {
        emit(this->*failed)(operation, readJsonObjectReply(reply, action).errorMessage);
        return;
    }
    const auto parse = [read, action](const QByteArray& body) {
        const JsonReply answer = judgeJsonReply(body, action);
        return ListAnswer<Records> {.records = answer.ok ? read(answer.object) : Records(),
                                    .error = answer.errorMessage};
    };
    readBody(reply, parse, [this, failed, operation, deliver](const ListAnswer<Records>& answer) {
        if (answer.error.isEmpty())
            deliver(answer.records);
        else
            emit(this->*failed)(operation, answer.error);
    });
}

void NodeClient::fetchSwarmPeers()
{
    ask(u"/swarm/peers"_s, {}, &NodeClient::onSwarmPeersReplyFinished);
}

void NodeClient::onSwarmPeersReplyFinished(QNetworkReply* reply)
{
    readList(reply, tr("fetch swarm peers"), &NodeClient::swarmRequestFailed, u"peers"_s, swarmPeersOf,
             [this](const SwarmPeers& swarm) {
                 peersOfAddress = swarm.peersOfAddress;
                 emit swarmPeersReceived(swarm.peers);
             });
}

void NodeClient::fetchSwarmAddrs()
{
    ask(u"/swarm/addrs"_s, {}, &NodeClient::onSwarmAddrsReplyFinished);
}

void NodeClient::onSwarmAddrsReplyFinished(QNetworkReply* reply)
{
    readList(reply, tr("fetch swarm addresses"), &NodeClient::swarmRequestFailed, u"addrs"_s, swarmAddrsOf,
             [this](const QHash<QString, QStringList>& addresses) { emit swarmAddrsReceived(addresses); });
}

void NodeClient::fetchSwarmListenAddrs()
{
    ask(u"/swarm/addrs/listen"_s, {}, &NodeClient::onSwarmListenAddrsReplyFinished);
}

void NodeClient::onSwarmListenAddrsReplyFinished(QNetworkReply* reply)
{
    readList(reply, tr("fetch listen addresses"), &NodeClient::swarmRequestFailed, u"listen"_s, stringsOf,
             [this](const QStringList& addresses) { emit swarmListenAddrsReceived(addresses); });
}

void NodeClient::swarmConnect(const QString& multiaddr)
{
    const QString target = multiaddr.trimmed();
    if (target.isEmpty())
        emit swarmRequestFailed(u"connect"_s, tr("Peer multiaddr is required."));
    else
        callSwarm(u"/swarm/connect"_s, target, target, &NodeClient::onSwarmConnectReplyFinished);
}

void NodeClient::swarmDisconnect(const QString& multiaddr)
{
    const QString target = multiaddr.trimmed();
    if (target.isEmpty())
        emit swarmRequestFailed(u"disconnect"_s, tr("Peer multiaddr is required."));
    else
        callSwarm(u"/swarm/disconnect"_s, withItsPeer(target), target, &NodeClient::onSwarmDisconnectReplyFinished);
}

void NodeClient::callSwarm(const QString& path, const QString& arg, const QString& target, ReplyHandler handler)
{
    call(path, rpcQuery({{u"arg"_s, arg}}), handler)->setProperty(ReplyProperty::swarmTarget, target);
}

/// A node lists the address of a connection without the peer, and closes only a connection whose peer is named. The
/// address of a relayed one holds another peer, the relay, and is the same for all peers behind it.
QString NodeClient::withItsPeer(const QString& target)
{
    const auto found = peersOfAddress.find(target);
    if (found == peersOfAddress.end())
        return target;
    const auto endingOf = [](const QString& peer) { return "/p2p/"_L1 + peer; };
    if (std::ranges::any_of(*found, [&](const QString& peer) { return target.endsWith(endingOf(peer)); }))
        return target;
    const QString peer = found->takeFirst();
    found->append(peer);
    return target + endingOf(peer);
}

void NodeClient::onSwarmConnectReplyFinished(QNetworkReply* reply)
{
    const QString target = reply->property(ReplyProperty::swarmTarget).toString();
    reportSwarmResult(reply, readJsonObjectReply(reply, tr("connect to %1").arg(target)), u"connect"_s,
                      &NodeClient::swarmConnectResult);
}

void NodeClient::onSwarmDisconnectReplyFinished(QNetworkReply* reply)
{
    const QString target = reply->property(ReplyProperty::swarmTarget).toString();
    reportSwarmResult(reply, readJsonObjectReply(reply, tr("disconnect from %1").arg(target)), u"disconnect"_s,
                      &NodeClient::swarmDisconnectResult);
}

void NodeClient::reportSwarmResult(const QNetworkReply* reply, const JsonReply& answer, const QString& operation,
                                   TargetSignal result)
{
    const QString target = reply->property(ReplyProperty::swarmTarget).toString();
    if (!answer.ok)
        emit swarmRequestFailed(operation, answer.errorMessage);
    emit(this->*result)(target, answer.ok, answer.ok ? stringsOf(answer.object) : QStringList());
}

void NodeClient::fetchBootstrapPeers(bool expandAuto)
{
    ask(u"/bootstrap/list"_s, expandAuto ? rpcQuery({{u"expand-auto"_s, u"true"_s}}) : QUrlQuery(),
        &NodeClient::onBootstrapListReplyFinished);
}

void NodeClient::onBootstrapListReplyFinished(QNetworkReply* reply)
{
    readList(reply, tr("fetch bootstrap peers"), &NodeClient::bootstrapRequestFailed, u"bootstrap-list"_s,
             bootstrapPeersOf, [this](const QStringList& peers) { emit bootstrapPeersReceived(peers); });
}

void NodeClient::bootstrapAddPeer(const QString& peer)
{
    const QString target = peer.trimmed();
    if (target.isEmpty()) {
        emit bootstrapRequestFailed(u"bootstrap-add"_s, tr("Bootstrap peer address is required."));
        return;
    }
    call(u"/bootstrap/add"_s, rpcQuery({{u"arg"_s, target}}), &NodeClient::onBootstrapAddReplyFinished)
        ->setProperty(ReplyProperty::bootstrapTarget, target);
}

void NodeClient::onBootstrapAddReplyFinished(QNetworkReply* reply)
{
    const QString target = reply->property(ReplyProperty::bootstrapTarget).toString();
    const JsonReply answer = readJsonObjectReply(reply, tr("add bootstrap peer %1").arg(target));
    if (!answer.ok)
        emit bootstrapRequestFailed(u"bootstrap-add"_s, answer.errorMessage);
    emit bootstrapAddResult(target, answer.ok, answer.ok ? bootstrapPeersOf(answer.object) : QStringList());
}

void NodeClient::bootstrapRemovePeers(const QStringList& peers)
{
    QStringList targets;
    QUrlQuery query;
    for (const QString& peer : peers) {
        if (const QString target = peer.trimmed(); !target.isEmpty()) {
            targets.append(target);
            addQueryItem(query, u"arg"_s, target);
        }
    }
    if (targets.isEmpty())
        emit bootstrapRequestFailed(u"bootstrap-rm"_s, tr("At least one bootstrap peer is required."));
    else
        call(u"/bootstrap/rm"_s, query, &NodeClient::onBootstrapRmReplyFinished)
            ->setProperty(ReplyProperty::bootstrapTargets, targets);
}

void NodeClient::onBootstrapRmReplyFinished(QNetworkReply* reply)
{
    reportBootstrapRemoval(reply, tr("remove bootstrap peers"), u"bootstrap-rm"_s);
}

void NodeClient::bootstrapRemoveAllPeers()
{
    call(u"/bootstrap/rm/all"_s, {}, &NodeClient::onBootstrapRmAllReplyFinished);
}

void NodeClient::onBootstrapRmAllReplyFinished(QNetworkReply* reply)
{
    reportBootstrapRemoval(reply, tr("remove all bootstrap peers"), u"bootstrap-rm-all"_s);
}

void NodeClient::reportBootstrapRemoval(QNetworkReply* reply, const QString& action, const QString& operation)
{
    const QStringList removed = reply->property(ReplyProperty::bootstrapTargets).toStringList();
    const JsonReply answer = readJsonObjectReply(reply, action);
    if (!answer.ok)
        emit bootstrapRequestFailed(operation, answer.errorMessage);
    emit bootstrapRemoveResult(removed, answer.ok, answer.ok ? bootstrapPeersOf(answer.object) : QStringList());
}
