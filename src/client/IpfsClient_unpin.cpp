#include "IpfsClient.h"

#include "ReplyProperties.h"
#include "RpcQuery.h"
#include "UnpinBatch.h"
#include "UnpinParser.h"

#include <QNetworkReply>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Calls of "/cid/format" that one batch has open. Six are under way at a time whatever the number, and with thousands
/// of replies the event loop gets to nothing else.
constexpr qsizetype openFormats = 200;

std::shared_ptr<UnpinBatch> batchOf(const QNetworkReply* reply)
{
    return reply->property(ReplyProperty::unpinBatch).value<std::shared_ptr<UnpinBatch>>();
}

QStringList trimmedTexts(const QList<QString>& texts)
{
    QStringList trimmed;
    trimmed.reserve(texts.size());
    for (const QString& text : texts) {
        if (const QString cid = text.trimmed(); !cid.isEmpty())
            trimmed.append(cid);
    }
    return trimmed;
}

/// What a failed removal says of itself: the node's words, or the network's.
QString wordsOf(const QNetworkReply* reply, const QByteArray& body)
{
    const QString words = rpcErrorMessage(body);
    return words.isEmpty() ? reply->errorString() : words;
}

} // namespace

void IpfsClient::unpin(const QList<QString>& cids, bool normalizeCids)
{
    const auto batch = std::make_shared<UnpinBatch>();
    batch->unpinRequestedCids = trimmedTexts(cids);
    const qsizetype count = batch->unpinRequestedCids.size();
    if (count == 0)
        return;
    if (!normalizeCids) {
        batch->unpinFormattedCids = batch->unpinRequestedCids;
        removePins(batch);
        return;
    }
    batch->knownAsNoPins = indirectCids;
    openUnpins.append(batch);
    batch->unpinFormattedCids.resize(count);
    batch->unpinFormatPending = static_cast<int>(count);
    while (batch->nextToFormat < std::min(count, openFormats))
        formatNextCid(batch);
}

void IpfsClient::formatNextCid(const std::shared_ptr<UnpinBatch>& batch)
{
    const qsizetype index = batch->nextToFormat++;
    QNetworkReply* reply
        = callQuietly(u"/cid/format"_s,
               rpcQuery({{u"arg"_s, batch->unpinRequestedCids.at(index)}, {u"v"_s, u"0"_s}, {u"b"_s, u"base58btc"_s}}),
               &IpfsClient::onCidFormatReplyFinished);
    reply->setProperty(ReplyProperty::unpinIndex, static_cast<int>(index));
    reply->setProperty(ReplyProperty::unpinBatch, QVariant::fromValue(batch));
}

void IpfsClient::onCidFormatReplyFinished(QNetworkReply* reply)
{
    const auto batch = batchOf(reply);
    const int index = reply->property(ReplyProperty::unpinIndex).toInt();
    reply->deleteLater();
    const QString formatted
        = reply->error() == QNetworkReply::NoError ? parseFormattedCid(reply->readAll()) : QString();
    // What can't be rewritten, as a raw leaf, goes to "/pin/rm" as it stood.
    batch->unpinFormattedCids[index] = formatted.isEmpty() ? batch->unpinRequestedCids.at(index) : formatted;
    if (batch->nextToFormat < batch->unpinRequestedCids.size())
        formatNextCid(batch);
    if (--batch->unpinFormatPending == 0)
        removePins(batch);
}

void IpfsClient::removePins(const std::shared_ptr<UnpinBatch>& batch)
{
    QUrlQuery query;
    for (const QString& cid : std::as_const(batch->unpinFormattedCids))
        addQueryItem(query, u"arg"_s, cid);
    QNetworkReply* reply = callQuietly(u"/pin/rm"_s, query, &IpfsClient::onUnpinReplyFinished);
    reply->setProperty(ReplyProperty::cids, batch->unpinRequestedCids);
    reply->setProperty(ReplyProperty::unpinBatch, QVariant::fromValue(batch));
}

void IpfsClient::onUnpinReplyFinished(QNetworkReply* reply)
{
    const auto batch = batchOf(reply);
    const QStringList requested = reply->property(ReplyProperty::cids).toStringList();
    reply->deleteLater();
    const QByteArray body = reply->readAll();
    if (reply->error() != QNetworkReply::NoError) {
        if (batch->unpinFormattedCids != requested && tellsNotPinned(body))
            removeNextPin(batch);
        else
            reportFailedUnpin(reply);
        return;
    }
    const auto removed = parseRemovedPins(body);
    if (!removed) {
        emit errorOccurred(tr("Unpin: invalid response from node"));
        return;
    }
    tellOpenUnpins(requested);
    emit unpinned(removed->isEmpty() ? requested : *removed);
}

void IpfsClient::reportFailedUnpin(const QNetworkReply* reply)
{
    reportNodeWords(reply, u"/pin/rm"_s);
    emit errorOccurred(tr("Unpin failed: %1").arg(reply->errorString()));
}

/// What one unpin has removed, another one that is still on its way hasn't.
void IpfsClient::tellOpenUnpins(const QStringList& removed)
{
    openUnpins.removeIf([](const std::weak_ptr<UnpinBatch>& batch) { return batch.expired(); });
    for (const std::weak_ptr<UnpinBatch>& open : std::as_const(openUnpins)) {
        if (const auto batch = open.lock())
            batch->knownAsNoPins.unite(QSet<QString>(removed.begin(), removed.end()));
    }
}

/// The node keeps a pin under its exact CID and stops at the first argument that it has no pin for, so a batch that
/// stopped is gone through one CID at a time, first as rewritten, then as asked for.
void IpfsClient::removeNextPin(const std::shared_ptr<UnpinBatch>& batch)
{
    if (batch->isThrough()) {
        finishUnpin(*batch);
        return;
    }
    QNetworkReply* reply = callQuietly(u"/pin/rm"_s, rpcQuery({{u"arg"_s, batch->currentText()}}),
                                       &IpfsClient::onSingleUnpinReplyFinished);
    reply->setProperty(ReplyProperty::unpinBatch, QVariant::fromValue(batch));
}

void IpfsClient::onSingleUnpinReplyFinished(QNetworkReply* reply)
{
    const auto batch = batchOf(reply);
    reply->deleteLater();
    const QByteArray body = reply->readAll();
    const bool failed = reply->error() != QNetworkReply::NoError;
    const bool brokenOff = reply->error() == QNetworkReply::RemoteHostClosedError; // the next one may go well
    if (failed && reply->error() <= QNetworkReply::UnknownNetworkError && !brokenOff)
        batch->failTheRest(reply->errorString()); // nobody is there to ask
    else if (failed)
        batch->takeFailure(wordsOf(reply, body), tellsNotPinned(body));
    else if (const auto removed = parseRemovedPins(body))
        batch->takeSuccess(*removed);
    else
        batch->takeFailure(tr("invalid response from node"), false);
    removeNextPin(batch);
}

/// `unpinned` comes first, so that what the window shows in the end is what went wrong.
void IpfsClient::finishUnpin(const UnpinBatch& batch)
{
    const UnpinOutcome outcome = batch.outcome();
    if (!outcome.removed.isEmpty()) {
        tellOpenUnpins(outcome.gone);
        emit unpinned(outcome.removed);
    }
    if (!outcome.failures.isEmpty())
        emit errorOccurred(tr("Unpin failed: %1").arg(outcome.failures));
}
