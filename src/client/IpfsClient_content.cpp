// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "LsParser.h"
#include "ParseBody.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"

#include <QNetworkReply>

using namespace Qt::StringLiterals;

QUrlQuery IpfsClient::listingQuery(const QString& cid)
{
    return rpcQuery({{u"arg"_s, cid}, {u"cid-base"_s, u"base32"_s}, {u"upgrade-cidv0-in-output"_s, u"true"_s}});
}

void IpfsClient::fetchLs(const QString& cid, QObject* owner)
{
    if (cid.isEmpty())
        return;
    QNetworkReply* reply = call(u"/ls"_s, listingQuery(cid), &IpfsClient::onLsReplyFinished);
    reply->setProperty(ReplyProperty::cid, cid);
    endWith(owner, reply);
}

void IpfsClient::onLsReplyFinished(QNetworkReply* reply)
{
    const QString cid = reply->property(ReplyProperty::cid).toString();
    reply->deleteLater();
    if (reply->property(ReplyProperty::cancelledByClient).toBool())
        return;
    if (reply->error() != QNetworkReply::NoError)
        deliverListing(cid, {.error = reply->errorString()});
    else
        parseBody(this, reply->readAll(), parseLs,
                  [this, cid](const Listing& listing) { deliverListing(cid, listing); });
}

void IpfsClient::deliverListing(const QString& cid, const Listing& listing)
{
    if (listing.error.isEmpty())
        emit lsReceived(cid, listing.entries);
    else
        reportFailure(tr("List failed for %1: %2").arg(cid, listing.error), &IpfsClient::lsReceived, cid,
                      QList<LsEntry>());
}

void IpfsClient::fetchCat(const QString& cid, QObject* owner)
{
    if (cid.isEmpty())
        return;
    QNetworkReply* reply = call(u"/cat"_s, rpcQuery({{u"arg"_s, cid}}), &IpfsClient::onCatReplyFinished);
    reply->setProperty(ReplyProperty::cid, cid);
    endWith(owner, reply);
}

void IpfsClient::onCatReplyFinished(QNetworkReply* reply)
{
    const QString cid = reply->property(ReplyProperty::cid).toString();
    reply->deleteLater();
    if (reply->property(ReplyProperty::cancelledByClient).toBool())
        return;
    const QByteArray data = reply->readAll();
    bool lengthKnown = false;
    const qint64 length = reply->rawHeader("X-Content-Length").toLongLong(&lengthKnown);
    if (lengthKnown && data.size() < length) // a block failed on the way, or the connection
        emit catFailed(cid, tr("%1 of %2 bytes received").arg(QString::number(data.size()), QString::number(length)));
    else if (reply->error() != QNetworkReply::NoError)
        emit catFailed(cid, reply->errorString());
    else
        emit catReceived(cid, data);
}
