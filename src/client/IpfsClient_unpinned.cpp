// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "RefsParser.h"
#include "ReplyProperties.h"

#include <QNetworkReply>

using namespace Qt::StringLiterals;

namespace {

/// Bytes taken in one turn of the event loop: some 5,000 lines. A node next door hands over far more at once.
constexpr qint64 pieceSize = 512 * 1024;

/// A set of half a million that has to grow holds everything up for a tenth of a second. Room for this many costs 5 MB.
constexpr qsizetype expectedRefs = 2'000'000;

} // namespace

void IpfsClient::fetchUnpinned()
{
    ++pinsEpoch;
    resetUnpinnedState();
    unpinnedFetchActive = true;
    unpinnedLocalRefs.reserve(expectedRefs);
    startPinsRequest(PinType::all, u"base32"_s, true, false)->setProperty(ReplyProperty::forUnpinned, true);

    QNetworkReply* reply = call(u"/refs/local"_s, {}, &IpfsClient::onRefsLocalReplyFinished);
    registerLoadReply(reply);
    reply->setProperty(ReplyProperty::streamTag, u"refs/local"_s);
    reply->setProperty(ReplyProperty::streamCount, 0);
    reply->setProperty(ReplyProperty::streamBuffer, QByteArray());
    reply->setProperty(ReplyProperty::pinsEpoch, pinsEpoch);
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { onRefsLocalReplyReadyRead(reply); });
}

void IpfsClient::resetUnpinnedState()
{
    unpinnedFetchActive = false;
    unpinnedPinsDone = false;
    unpinnedRefsDone = false;
    unpinnedPinnedCids.clear();
    unpinnedLocalRefs.clear();
}

/// Adds the CID of one line; tells how many lines named one.
int IpfsClient::takeLocalRef(QByteArrayView line)
{
    const QString cid = refFromLine(line);
    if (cid.isEmpty())
        return 0;
    unpinnedLocalRefs.insert(cid);
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
    QByteArray buffer = takeBytes(reply, ReplyProperty::streamBuffer);
    qsizetype searched = buffer.size(); // what was kept holds no line feed
    buffer.append(reply->read(pieceSize));
    qsizetype start = 0;
    int lines = 0;
    for (qsizetype feed = buffer.indexOf('\n', searched); feed >= 0; feed = buffer.indexOf('\n', searched)) {
        lines += takeLocalRef(QByteArrayView(buffer).sliced(start, feed - start));
        start = searched = feed + 1;
    }
    buffer.remove(0, start);
    reply->setProperty(ReplyProperty::streamBuffer, buffer);
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
    unpinnedRefsDone = true;
    finishUnpinnedFetch();
}

void IpfsClient::onRefsLocalReplyFailed(const QNetworkReply* reply)
{
    if (reply->property(ReplyProperty::cancelledByClient).toBool() || !unpinnedFetchActive)
        return;
    resetUnpinnedState();
    reportFailure(tr("Network error (refs/local): %1").arg(reply->errorString()), &IpfsClient::pinsReceived,
                  QList<PinEntry>());
}

/// Whichever half ends last does the work.
void IpfsClient::finishUnpinnedFetch()
{
    if (!unpinnedFetchActive || !unpinnedPinsDone || !unpinnedRefsDone)
        return;
    QList<PinEntry> unpinned;
    for (const QString& cid : std::as_const(unpinnedLocalRefs)) {
        if (!unpinnedPinnedCids.contains(cid))
            unpinned.append({.cid = cid});
    }
    resetUnpinnedState(); // before the signal, whose listener may fetch again
    emit pinsReceived(unpinned);
}
