// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "LsParser.h"
#include "MetadataParser.h"
#include "ParseBody.h"
#include "RefsParser.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"

#include <QNetworkReply>

using namespace Qt::StringLiterals;

/// What makes a queue ask for one fact and not for another.
struct IpfsClient::MetadataRequest
{
    QString path {};
    QUrlQuery (*query)(const QString& cid);
    const char* cidProperty = nullptr;
    ReplyHandler handler = nullptr;
    bool failureIsOrdinary = false; ///< another call is made then
};

namespace {

bool isCancelled(const QNetworkReply* reply)
{
    return reply->property(ReplyProperty::cancelledByClient).toBool();
}

/// Whether the reply belongs to a queue, which then waits for its end.
bool isQueued(const QNetworkReply* reply)
{
    return !reply->property(ReplyProperty::outsideQueues).toBool();
}

QUrlQuery argQuery(const QString& cid)
{
    return rpcQuery({{u"arg"_s, cid}});
}

} // namespace

const IpfsClient::MetadataRequest& IpfsClient::refsRequest()
{
    static const MetadataRequest request {.path = u"/refs"_s,
                                          .query =
                                              [](const QString& cid) {
                                                  return rpcQuery({{u"arg"_s, cid}, {u"recursive"_s, u"true"_s}});
                                              },
                                          .cidProperty = ReplyProperty::rootCid,
                                          .handler = &IpfsClient::onRefsReplyFinished};
    return request;
}

const IpfsClient::MetadataRequest& IpfsClient::dagStatRequest()
{
    static const MetadataRequest request {.path = u"/dag/stat"_s,
                                          .query =
                                              [](const QString& cid) {
                                                  return rpcQuery({{u"arg"_s, cid}, {u"progress"_s, u"false"_s}});
                                              },
                                          .cidProperty = ReplyProperty::cid,
                                          .handler = &IpfsClient::onObjectStatReplyFinished};
    return request;
}

const IpfsClient::MetadataRequest& IpfsClient::kindRequest()
{
    static const MetadataRequest request {.path = u"/files/stat"_s,
                                          .query = [](const QString& cid) { return argQuery(u"/ipfs/"_s + cid); },
                                          .cidProperty = ReplyProperty::cid,
                                          .handler = &IpfsClient::onFilesStatReplyFinished,
                                          .failureIsOrdinary = true};
    return request;
}

void IpfsClient::fetchRefs(const QString& cid, Urgency urgency, QObject* owner)
{
    if (urgency == AtOnce)
        askAtOnce(refsRequest(), cid, owner);
    else if (refsRequests.enqueueUnique(cid))
        pumpRefsQueue();
}

void IpfsClient::fetchObjectStat(const QString& cid)
{
    if (dagStatRequests.enqueueUnique(cid))
        pumpDagStatQueue();
}

void IpfsClient::fetchKind(const QString& cid, Urgency urgency, QObject* owner)
{
    if (urgency == AtOnce)
        askAtOnce(kindRequest(), cid, owner);
    else if (kindRequests.enqueueUnique(cid))
        pumpKindQueue();
}

/// No load's: a queue full of silent replies doesn't hold it up, nor does a cancel end it.
void IpfsClient::askAtOnce(const MetadataRequest& request, const QString& cid, QObject* owner)
{
    if (cid.isEmpty())
        return;
    QNetworkReply* reply = request.failureIsOrdinary ? callQuietly(request.path, request.query(cid), request.handler)
                                                     : call(request.path, request.query(cid), request.handler);
    markOutsideQueues(reply, request, cid, owner);
}

void IpfsClient::markOutsideQueues(QNetworkReply* reply, const MetadataRequest& request, const QString& cid,
                                   QObject* owner)
{
    reply->setProperty(request.cidProperty, cid);
    reply->setProperty(ReplyProperty::outsideQueues, true);
    reply->setProperty(ReplyProperty::owner, QVariant::fromValue(owner));
    endWith(owner, reply);
}

void IpfsClient::pumpRefsQueue()
{
    refsRequests.pump();
}

void IpfsClient::pumpDagStatQueue()
{
    dagStatRequests.pump();
}

void IpfsClient::pumpKindQueue()
{
    kindRequests.pump();
}

void IpfsClient::sendQueued(const MetadataRequest& request, const QString& cid)
{
    sendMetadataRequest(request, cid, request.path, request.query(cid), request.handler);
}

void IpfsClient::sendMetadataRequest(const MetadataRequest& request, const QString& cid, const QString& path,
                                     const QUrlQuery& query, ReplyHandler handler)
{
    QNetworkReply* reply = callQuietly(path, query, handler);
    registerLoadReply(reply);
    reply->setProperty(request.cidProperty, cid);
}

void IpfsClient::finishRefsRequest(const QString& cid)
{
    refsRequests.release(cid);
    pumpRefsQueue();
}

void IpfsClient::finishDagStatRequest(const QString& cid)
{
    dagStatRequests.release(cid);
    pumpDagStatQueue();
}

void IpfsClient::finishKindRequest(const QString& cid)
{
    kindRequests.release(cid);
    pumpKindQueue();
}

void IpfsClient::onRefsReplyFinished(QNetworkReply* reply)
{
    const QString cid = reply->property(ReplyProperty::rootCid).toString();
    const bool queued = isQueued(reply);
    reply->deleteLater();
    if (reply->error() == QNetworkReply::NoError) {
        parseBody(this, reply->readAll(), parseRefs,
                  [this, cid, queued, cancels = cancelCount](const QStringList& cids) {
                      if (queued && cancels != cancelCount)
                          return;
                      emit refsReceived(cid, cids);
                      if (queued)
                          finishRefsRequest(cid);
                  });
        return;
    }
    if (!isCancelled(reply))
        reportFailure(tr("Failed to get refs for %1: %2").arg(cid, reply->errorString()), &IpfsClient::refsReceived,
                      cid, QStringList());
    if (queued)
        finishRefsRequest(cid);
}

void IpfsClient::onObjectStatReplyFinished(QNetworkReply* reply)
{
    const QString cid = reply->property(ReplyProperty::cid).toString();
    reply->deleteLater();
    if (reply->error() == QNetworkReply::NoError)
        emit dagStatReceived(cid, parseDagSize(reply->readAll()));
    else if (isCancelled(reply))
        ;                                                           // in silence
    else if (wasBrokenOffBy(reply, "json: unsupported value: NaN")) // the share of a DAG of no bytes
        emit dagStatReceived(cid, 0);
    else
        reportFailure(tr("DAG stat failed for %1: %2").arg(cid, reply->errorString()), &IpfsClient::dagStatReceived,
                      cid, -1);
    finishDagStatRequest(cid);
}

void IpfsClient::onFilesStatReplyFinished(QNetworkReply* reply)
{
    const QString cid = reply->property(ReplyProperty::cid).toString();
    reply->deleteLater();
    if (isCancelled(reply)) {
        if (isQueued(reply))
            finishKindRequest(cid);
        return;
    }
    const QString kind = reply->error() == QNetworkReply::NoError ? parseFileKind(reply->readAll()) : QString();
    if (kind.isEmpty()) {
        askListingForKind(cid, reply);
        return;
    }
    emit kindReceived(cid, kind);
    if (isQueued(reply))
        finishKindRequest(cid);
}

/// A queued CID keeps its place in the queue until the listing has come.
void IpfsClient::askListingForKind(const QString& cid, const QNetworkReply* statReply)
{
    const auto handler = &IpfsClient::onKindLsReplyFinished;
    if (isQueued(statReply))
        sendMetadataRequest(kindRequest(), cid, u"/ls"_s, listingQuery(cid), handler);
    else
        markOutsideQueues(callQuietly(u"/ls"_s, listingQuery(cid), handler), kindRequest(), cid,
                          statReply->property(ReplyProperty::owner).value<QObject*>());
}

void IpfsClient::onKindLsReplyFinished(QNetworkReply* reply)
{
    const QString cid = reply->property(ReplyProperty::cid).toString();
    const bool queued = isQueued(reply);
    reply->deleteLater();
    if (isCancelled(reply)) {
        if (queued)
            finishKindRequest(cid);
        return;
    }
    const bool good = reply->error() == QNetworkReply::NoError;
    parseBody(this, good ? reply->readAll() : QByteArray(), parseLs,
              [this, cid, good, queued, cancels = cancelCount](const Listing& listing) {
                  if (queued && cancels != cancelCount)
                      return;
                  emit kindReceived(cid, good ? kindOfListing(listing.entries) : codecKindFromCid(cid));
                  if (queued)
                      finishKindRequest(cid);
              });
}

/// A CID's prefix and codec say nothing certain about what it holds, so they play no part in deciding a kind.
QString IpfsClient::codecKindFromCid(const QString& /*cid*/) const
{
    return otherKind();
}
