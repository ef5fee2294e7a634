// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "Detached.h"
#include "LineBuffer.h"
#include "PinLists.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"

#include <QNetworkReply>
#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

/// What the way back from the parse has to know of its reply.
struct IpfsClient::PinsReply
{
    QString tag {};
    int count = 0; ///< lines streamed
    bool composite = false;
    bool forUnpinned = false;
    quint64 epoch = 0;
};

namespace {

/// Longest list that is joined from two without a thread.
constexpr qsizetype mergedAtOnce = 20'000;

/// The CIDs of the entries, which are `former` where the list is the same as before.
QStringList cidsOf(const QList<PinEntry>& entries, const QStringList& former)
{
    const auto shares
        = [](const PinEntry& entry, const QString& cid) { return entry.cid.constData() == cid.constData(); };
    if (std::ranges::equal(entries, former, shares))
        return former;
    QStringList cids;
    cids.reserve(entries.size());
    for (const PinEntry& entry : entries)
        cids.append(entry.cid);
    return cids;
}

/// Moves what the reply holds to the end of `body`, with no copy between, and returns it. A node next door hands over
/// tens of megabytes at once.
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

} // namespace

void IpfsClient::fetchPins(const QString& type, const QString& cidBase, bool upgradeCidV0)
{
    const bool composite = type == PinType::recursiveAndDirect;
    load.beginPins(composite);
    knownCids.beginLoad();
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
    reply->setProperty(ReplyProperty::pinsEpoch, load.pinsEpoch);
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { onPinsReplyReadyRead(reply); });
    return reply;
}

bool IpfsClient::isCurrent(const QNetworkReply* reply) const
{
    return reply->property(ReplyProperty::pinsEpoch).toULongLong() == load.pinsEpoch;
}

void IpfsClient::onPinsReplyReadyRead(QNetworkReply* reply)
{
    if (!reply || !reply->isOpen()) // an aborted reply is closed when it reports its end
        return;
    if (!isCurrent(reply)) {
        reply->readAll();
        return;
    }
    QByteArray body = takeBytes(reply, ReplyProperty::rawData);
    const QByteArrayView chunk = takeAvailable(reply, body);
    LineBuffer buffer(takeBytes(reply, ReplyProperty::streamBuffer));
    int lines = 0;
    buffer.take(chunk, [&lines](QByteArrayView line) { lines += line.trimmed().isEmpty() ? 0 : 1; });
    reply->setProperty(ReplyProperty::rawData, body);
    reply->setProperty(ReplyProperty::streamBuffer, buffer.openLine());
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
    body.append(reply->readAll()); // nothing, unless a reply reported fewer bytes than it held
    const PinsReply context {.tag = reply->property(ReplyProperty::streamTag).toString(),
                             .count = reply->property(ReplyProperty::streamCount).toInt(),
                             .composite = reply->property(ReplyProperty::pinsCompositeBatch).toBool(),
                             .forUnpinned = reply->property(ReplyProperty::forUnpinned).toBool(),
                             .epoch = load.pinsEpoch};
    runDetached(
        this,
        [body = std::move(body), context, former = knownCids.ofFormerList()]() mutable {
            ParsedPins pins {.list = parsePinList(std::exchange(body, {}), former)};
            QList<PinEntry>& entries = pins.list.entries;
            if (entries.size() >= KnownCids::fewestWorthSharing && !context.forUnpinned)
                pins.cids = cidsOf(entries, former);
            if (context.composite)
                sortPinsByCid(entries);
            if (context.forUnpinned)
                pins.accountedFor = textsAccountedFor(std::exchange(entries, {}));
            pins.indirectCids = indirectCidsOf(entries);
            return pins;
        },
        [this, context](ParsedPins pins) { deliverPins(std::move(pins), context); });
}

void IpfsClient::deliverPins(ParsedPins pins, const PinsReply& context)
{
    if (context.epoch != load.pinsEpoch)
        return;
    const int streamed = context.count + (pins.list.hasOpenLine ? 1 : 0);
    if (const int total = streamed != 0 ? streamed : pins.list.keyCount; total > 0) {
        emit streamEntriesLoaded(context.tag, total);
        if (context.epoch != load.pinsEpoch) // a listener has begun another load
            return;
    }
    indirectCids = std::move(pins.indirectCids);
    knownCids.note(context.epoch, std::move(pins.cids));
    if (context.forUnpinned) {
        load.takePinnedCids(std::move(pins.accountedFor));
        finishUnpinnedFetch();
    } else if (context.composite) {
        deliverCompositeHalf(std::move(pins.list.entries));
    } else {
        deliverList(std::move(pins.list.entries));
    }
}

void IpfsClient::deliverList(QList<PinEntry> entries)
{
    knownCids.endLoad();
    emit pinsReceived(std::move(entries));
}

/// One of the two streams has delivered or failed; the last one hands out what both gave, long lists by way of a
/// thread.
void IpfsClient::deliverCompositeHalf(QList<PinEntry> entries)
{
    auto halves = load.takeCompositeHalf(std::move(entries));
    if (!halves)
        return;
    auto& [first, second] = *halves;
    if (first.isEmpty() || second.isEmpty() || first.size() + second.size() <= mergedAtOnce) {
        deliverList(mergePinsByCid(std::move(first), std::move(second)));
        return;
    }
    runDetached(
        this,
        [both = std::move(*halves)]() mutable { return mergePinsByCid(std::move(both.first), std::move(both.second)); },
        [this, epoch = load.pinsEpoch](QList<PinEntry> merged) {
            if (epoch == load.pinsEpoch)
                deliverList(std::move(merged));
            else
                discard(std::move(merged));
        });
}

void IpfsClient::onPinsReplyFailed(const QNetworkReply* reply)
{
    if (reply->property(ReplyProperty::cancelledByClient).toBool() || !isCurrent(reply))
        return;
    const QString message = tr("Network error: %1").arg(reply->errorString());
    emit listFailed(message);
    if (reply->property(ReplyProperty::pinsCompositeBatch).toBool())
        deliverCompositeHalf({});
    if (isCurrent(reply) && load.isUnpinnedActive()) // a listener may have begun another load
        load.resetUnpinnedState();
    reportFailure(message, &IpfsClient::connectionStatusChanged, false);
}
