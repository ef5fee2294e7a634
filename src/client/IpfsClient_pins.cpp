// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "Detached.h"
#include "PinLists.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"

#include <QNetworkReply>
#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

/// What the way back from the parse has to know of its reply.
struct IpfsClient::PinsLoad
{
    QString tag {};
    int count = 0; ///< lines streamed
    bool composite = false;
    bool forUnpinned = false;
    quint64 epoch = 0;
};

namespace {

/// Moves what the reply holds behind `body`, with no copy between, and returns it. A node next door hands over tens of
/// megabytes at once.
QByteArrayView takeAvailable(QNetworkReply* reply, QByteArray& body)
{
    const qsizetype start = body.size();
    const qsizetype available = reply->bytesAvailable();
    if (start + available > body.capacity())
        body.reserve(std::max(start + available, 2 * body.capacity()));
    body.resize(start + available);
    const qsizetype taken = reply->read(body.data() + start, available);
    body.resize(start + std::max<qsizetype>(taken, 0));
    return QByteArrayView(body).sliced(start);
}

/// Appends `chunk` to the open line in `buffer`, counts the lines that it completes, empty ones left out, and leaves
/// the new open line. Costs the chunk, whatever `buffer` holds.
int takeLines(QByteArray& buffer, QByteArrayView chunk)
{
    int count = 0;
    qsizetype start = 0;
    for (qsizetype feed = chunk.indexOf('\n'); feed >= 0; feed = chunk.indexOf('\n', start)) {
        const QByteArrayView line = chunk.sliced(start, feed - start);
        const bool blank = line.trimmed().isEmpty() && (start > 0 || QByteArrayView(buffer).trimmed().isEmpty());
        count += blank ? 0 : 1;
        start = feed + 1;
    }
    if (start > 0)
        buffer.clear();
    buffer.append(chunk.sliced(start));
    return count;
}

} // namespace

void IpfsClient::fetchPins(const QString& type, const QString& cidBase, bool upgradeCidV0)
{
    ++pinsEpoch;
    compositePins.clear();
    const bool composite = type == PinType::recursiveAndDirect;
    compositePending = composite ? 2 : 0;
    if (composite) {
        startPinsRequest(PinType::recursive, cidBase, upgradeCidV0, true);
        startPinsRequest(PinType::direct, cidBase, upgradeCidV0, true);
    } else {
        startPinsRequest(type, cidBase, upgradeCidV0, false);
    }
}

QNetworkReply* IpfsClient::startPinsRequest(const QString& type, const QString& cidBase, bool upgradeCidV0,
                                            bool compositeBatch)
{
    QNetworkReply* reply = call(u"/pin/ls"_s,
                                rpcQuery({{u"type"_s, type.isEmpty() ? QString(PinType::all) : type},
                                          {u"names"_s, u"true"_s},
                                          {u"stream"_s, u"true"_s},
                                          {u"cid-base"_s, cidBase},
                                          {u"upgrade-cidv0-in-output"_s, upgradeCidV0 ? u"true"_s : u"false"_s}}),
                                &IpfsClient::onPinsReplyFinished);
    registerLoadReply(reply);
    reply->setProperty(ReplyProperty::streamTag, u"pin/ls"_s);
    reply->setProperty(ReplyProperty::streamCount, 0);
    reply->setProperty(ReplyProperty::streamBuffer, QByteArray());
    reply->setProperty(ReplyProperty::rawData, QByteArray());
    reply->setProperty(ReplyProperty::pinsCompositeBatch, compositeBatch);
    reply->setProperty(ReplyProperty::forUnpinned, false);
    reply->setProperty(ReplyProperty::pinsEpoch, pinsEpoch);
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { onPinsReplyReadyRead(reply); });
    return reply;
}

bool IpfsClient::isCurrent(const QNetworkReply* reply) const
{
    return reply->property(ReplyProperty::pinsEpoch).toULongLong() == pinsEpoch;
}

void IpfsClient::onPinsReplyReadyRead(QNetworkReply* reply)
{
    if (!reply || !reply->isOpen()) // an aborted reply is closed when it tells of its end
        return;
    if (!isCurrent(reply)) {
        reply->readAll();
        return;
    }
    QByteArray body = takeBytes(reply, ReplyProperty::rawData);
    const QByteArrayView chunk = takeAvailable(reply, body);
    QByteArray buffer = takeBytes(reply, ReplyProperty::streamBuffer);
    const int lines = takeLines(buffer, chunk);
    reply->setProperty(ReplyProperty::rawData, body);
    reply->setProperty(ReplyProperty::streamBuffer, buffer);
    if (lines == 0)
        return;
    const int count = reply->property(ReplyProperty::streamCount).toInt() + lines;
    reply->setProperty(ReplyProperty::streamCount, count);
    emit streamEntriesLoaded(reply->property(ReplyProperty::streamTag).toString(), count);
}

void IpfsClient::onPinsReplyFinished(QNetworkReply* reply)
{
    onPinsReplyReadyRead(reply);
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        onPinsReplyFailed(reply);
        return;
    }
    if (!isCurrent(reply))
        return;
    const QPointer<IpfsClient> self = this;
    emit connectionStatusChanged(true);
    if (self && isCurrent(reply))
        startPinsParse(reply);
}

void IpfsClient::startPinsParse(QNetworkReply* reply)
{
    QByteArray body = takeBytes(reply, ReplyProperty::rawData);
    body.append(reply->readAll()); // nothing, unless a reply told of fewer bytes than it held
    const PinsLoad load {.tag = reply->property(ReplyProperty::streamTag).toString(),
                         .count = reply->property(ReplyProperty::streamCount).toInt(),
                         .composite = reply->property(ReplyProperty::pinsCompositeBatch).toBool(),
                         .forUnpinned = reply->property(ReplyProperty::forUnpinned).toBool(),
                         .epoch = pinsEpoch};
    runDetached(
        this,
        [body, load] {
            ParsedPins pins {.list = parsePinList(body)};
            QList<PinEntry>& entries = pins.list.entries;
            if (load.composite)
                sortPinsByCid(entries);
            if (load.forUnpinned)
                pins.accountedFor = textsAccountedFor(std::exchange(entries, {}));
            pins.indirectCids = indirectCidsOf(entries);
            return pins;
        },
        [this, load](ParsedPins pins) { deliverPins(std::move(pins), load); });
}

void IpfsClient::deliverPins(ParsedPins pins, const PinsLoad& load)
{
    if (load.epoch != pinsEpoch)
        return;
    const int streamed = load.count + (pins.list.hasOpenLine ? 1 : 0);
    if (const int total = streamed != 0 ? streamed : pins.list.keyCount; total > 0) {
        emit streamEntriesLoaded(load.tag, total);
        if (load.epoch != pinsEpoch) // a listener has begun another load
            return;
    }
    indirectCids = std::move(pins.indirectCids);
    if (load.forUnpinned) {
        unpinnedPinnedCids = std::move(pins.accountedFor);
        unpinnedPinsDone = true;
        finishUnpinnedFetch();
    } else if (load.composite) {
        compositePins = mergePinsByCid(std::move(compositePins), std::move(pins.list.entries));
        deliverCompositeStream();
    } else {
        emit pinsReceived(pins.list.entries);
    }
}

/// One of the two streams has delivered or failed; the last one hands out what both gave.
void IpfsClient::deliverCompositeStream()
{
    if (compositePending > 0)
        --compositePending;
    if (compositePending == 0)
        emit pinsReceived(std::exchange(compositePins, {}));
}

void IpfsClient::onPinsReplyFailed(const QNetworkReply* reply)
{
    if (reply->property(ReplyProperty::cancelledByClient).toBool() || !isCurrent(reply))
        return;
    if (reply->property(ReplyProperty::pinsCompositeBatch).toBool())
        deliverCompositeStream();
    if (unpinnedFetchActive)
        resetUnpinnedState();
    reportFailure(tr("Network error: %1").arg(reply->errorString()), &IpfsClient::connectionStatusChanged, false);
}
