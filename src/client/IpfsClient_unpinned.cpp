// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "Detached.h"
#include "LineBuffer.h"
#include "PinLists.h"
#include "RefsParser.h"
#include "ReplyProperties.h"

#include <QNetworkReply>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Bytes taken in one turn of the event loop: some 5,000 lines. A node next door hands over far more at once.
constexpr qint64 pieceSize = 512 * 1024;

} // namespace

void IpfsClient::fetchUnpinned()
{
    load.beginUnpinned();
    startPinsRequest(PinType::all, u"base32"_s, true, false)->setProperty(ReplyProperty::forUnpinned, true);

    QNetworkReply* reply = call(u"/refs/local"_s, {}, &IpfsClient::onRefsLocalReplyFinished);
    registerLoadReply(reply);
    reply->setProperty(ReplyProperty::streamTag, u"refs/local"_s);
    reply->setProperty(ReplyProperty::streamCount, 0);
    reply->setProperty(ReplyProperty::streamBuffer, QByteArray());
    reply->setProperty(ReplyProperty::pinsEpoch, load.pinsEpoch);
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { onRefsLocalReplyReadyRead(reply); });
}

/// Adds the CID of one line; returns how many lines named one.
int IpfsClient::takeLocalRef(QByteArrayView line)
{
    const QByteArray cid = refFromLine(line);
    if (cid.isEmpty())
        return 0;
    load.addLocalRef(cid);
    return 1;
}

void IpfsClient::onRefsLocalReplyReadyRead(QNetworkReply* reply)
{
    if (!reply || !reply->isOpen())
        return;
    if (!isCurrent(reply)) {
        reply->readAll();
        return;
    }
    LineBuffer buffer(takeBytes(reply, ReplyProperty::streamBuffer));
    int lines = 0;
    buffer.take(reply->read(pieceSize), [&](QByteArrayView line) { lines += takeLocalRef(line); });
    reply->setProperty(ReplyProperty::streamBuffer, buffer.openLine());
    takeLocalRefsLater(reply);
    countLocalRefs(reply, lines);
}

/// One turn is posted at a time, however many pieces have come. A finished reply is drained by its end.
void IpfsClient::takeLocalRefsLater(QNetworkReply* reply)
{
    if (reply->bytesAvailable() <= 0 || reply->isFinished() || reply->property(ReplyProperty::turnPosted).toBool())
        return;
    reply->setProperty(ReplyProperty::turnPosted, true);
    const auto turn = [this, reply] {
        reply->setProperty(ReplyProperty::turnPosted, false);
        onRefsLocalReplyReadyRead(reply);
    };
    QMetaObject::invokeMethod(reply, turn, Qt::QueuedConnection);
}

void IpfsClient::countLocalRefs(QNetworkReply* reply, int lines)
{
    if (lines == 0)
        return;
    const int count = reply->property(ReplyProperty::streamCount).toInt() + lines;
    reply->setProperty(ReplyProperty::streamCount, count);
    emit streamEntriesLoaded(reply->property(ReplyProperty::streamTag).toString(), count);
}

void IpfsClient::onRefsLocalReplyFinished(QNetworkReply* reply)
{
    if (!isCurrent(reply)) {
        reply->deleteLater();
        return;
    }
    onRefsLocalReplyReadyRead(reply);
    if (!isCurrent(reply)) { // a listener of the count has begun another load
        reply->deleteLater();
        return;
    }
    if (reply->isOpen() && reply->bytesAvailable() > 0) {
        QMetaObject::invokeMethod(
            reply, [this, reply] { onRefsLocalReplyFinished(reply); }, Qt::QueuedConnection);
        return;
    }
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        onRefsLocalReplyFailed(reply);
        return;
    }
    countLocalRefs(reply, takeLocalRef(takeBytes(reply, ReplyProperty::streamBuffer)));
    if (!isCurrent(reply))
        return;
    load.endLocalRefs();
    finishUnpinnedFetch();
}

void IpfsClient::onRefsLocalReplyFailed(const QNetworkReply* reply)
{
    if (reply->property(ReplyProperty::cancelledByClient).toBool() || !load.isUnpinnedActive())
        return;
    load.resetUnpinnedState();
    const QString message = tr("Network error (refs/local): %1").arg(reply->errorString());
    emit listFailed(message);
    reportFailure(message, &IpfsClient::pinsReceived, QList<PinEntry>());
}

/// Whichever half ends last starts the join. The state is at rest before the signal, whose listener may fetch again.
void IpfsClient::finishUnpinnedFetch()
{
    auto halves = load.takeUnpinnedHalves();
    if (!halves)
        return;
    runDetached(
        this, [both = std::move(*halves)]() mutable { return unpinnedEntries(std::move(both)); },
        [this, epoch = load.pinsEpoch](QList<PinEntry> unpinned) {
            if (epoch == load.pinsEpoch)
                emit pinsReceived(std::move(unpinned));
            else
                discard(std::move(unpinned));
        });
}
