// SPDX-License-Identifier: MIT
#include "IpfsClient.h"

#include "Detached.h"
#include "PinLists.h"
#include "ReplyProperties.h"
#include "RpcQuery.h"
#include "UnpinBatch.h"
#include "UnpinParser.h"

#include <QNetworkReply>

#include <algorithm>
#include <initializer_list>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Calls of "/cid/format" that one batch has open. With thousands of replies the event loop gets to nothing else.
constexpr qsizetype maxOpenFormats = 200;
/// What one "/pin/rm" names; a node takes no more than a mebibyte.
constexpr qsizetype mostRemovalBytes = 960 * 1024;
constexpr qsizetype removalItemBytes = 5; // "&arg="

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

} // namespace

void IpfsClient::unpin(const QList<QString>& cids, bool normalizeCids)
{
    const auto batch = std::make_shared<UnpinBatch>();
    batch->endpoint = endpoint;
    batch->unpinRequestedCids = trimmedTexts(cids);
    const qsizetype count = batch->size();
    if (count == 0)
        return;
    if (!normalizeCids) {
        batch->unpinFormattedCids = batch->unpinRequestedCids;
        removePins(batch);
        return;
    }
    batch->knownAsNoPins.append(indirectCids);
    openUnpins.append(batch);
    batch->unpinFormattedCids.resize(count);
    batch->unpinFormatPending = static_cast<int>(count);
    while (batch->nextToFormat < std::min(count, maxOpenFormats))
        formatNextCid(batch);
}

/// Each call of a batch goes to the node with which it began, and its reply holds the batch.
QNetworkReply* IpfsClient::callForBatch(const std::shared_ptr<UnpinBatch>& batch, const QString& path,
                                        const QUrlQuery& query, ReplyHandler handler)
{
    QNetworkReply* reply = callQuietly(batch->endpoint, path, query, handler);
    reply->setProperty(ReplyProperty::unpinBatch, QVariant::fromValue(batch));
    return reply;
}

void IpfsClient::formatNextCid(const std::shared_ptr<UnpinBatch>& batch)
{
    const qsizetype index = batch->nextToFormat++;
    const QUrlQuery query
        = rpcQuery({{u"arg"_s, batch->unpinRequestedCids.at(index)}, {u"v"_s, u"0"_s}, {u"b"_s, u"base58btc"_s}});
    QNetworkReply* reply = callForBatch(batch, u"/cid/format"_s, query, &IpfsClient::onCidFormatReplyFinished);
    reply->setProperty(ReplyProperty::unpinIndex, static_cast<int>(index));
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
    if (batch->nextToFormat < batch->size())
        formatNextCid(batch);
    if (--batch->unpinFormatPending == 0)
        removePins(batch);
}

void IpfsClient::removePins(const std::shared_ptr<UnpinBatch>& batch)
{
    QUrlQuery query;
    QStringList requested;
    for (qsizetype length = 0; batch->removalsAsked < batch->size() && length < mostRemovalBytes;) {
        const QString& cid = batch->unpinFormattedCids.at(batch->removalsAsked);
        length += cid.size() + removalItemBytes;
        addQueryItem(query, u"arg"_s, cid);
        requested.append(batch->unpinRequestedCids.at(batch->removalsAsked++));
    }
    QNetworkReply* reply = callForBatch(batch, u"/pin/rm"_s, query, &IpfsClient::onUnpinReplyFinished);
    reply->setProperty(ReplyProperty::cids, requested);
}

void IpfsClient::onUnpinReplyFinished(QNetworkReply* reply)
{
    const auto batch = batchOf(reply);
    const QStringList requested = reply->property(ReplyProperty::cids).toStringList();
    reply->deleteLater();
    const QByteArray body = reply->readAll();
    if (reply->error() != QNetworkReply::NoError) {
        batch->firstRefusal = nodeWords(reply);
        if (batch->unpinFormattedCids != batch->unpinRequestedCids && saysNotPinned(body)) {
            listPinsLeft(batch);
        } else {
            reportRemoved(*batch);
            reportFailedUnpin(reply);
        }
        return;
    }
    const auto removed = parseRemovedPins(body);
    if (!removed) {
        reportRemoved(*batch);
        emit errorOccurred(tr("Unpin: invalid response from node"));
        return;
    }
    batch->removedPins += removed->isEmpty() ? requested : *removed;
    batch->removedCids += requested;
    if (batch->removalsAsked < batch->size())
        removePins(batch);
    else
        reportRemoved(*batch);
}

/// What whole calls have removed.
void IpfsClient::reportRemoved(const UnpinBatch& batch)
{
    if (batch.removedPins.isEmpty())
        return;
    shareRemovals(batch.removedCids);
    emit unpinned(batch.removedPins);
}

void IpfsClient::reportFailedUnpin(const QNetworkReply* reply)
{
    reportNodeWords(reply, u"/pin/rm"_s);
    const bool refused = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() >= 400;
    if (refused && reply->property(ReplyProperty::cids).toStringList().size() > 1)
        emit pinsMayHaveChanged();
    emit errorOccurred(tr("Unpin failed: %1").arg(reply->errorString()));
}

/// What one unpin has removed, another one that is still on its way hasn't.
void IpfsClient::shareRemovals(const QStringList& removed)
{
    const QSet<QString> cids(removed.begin(), removed.end());
    openUnpins.removeIf([](const std::weak_ptr<UnpinBatch>& batch) { return batch.expired(); });
    for (const std::weak_ptr<UnpinBatch>& open : std::as_const(openUnpins)) {
        if (const auto batch = open.lock())
            batch->knownAsNoPins.append(cids);
    }
}

/// The node keeps a pin under its exact CID and stops at the first argument that it has no pin for, so a batch that
/// stopped is gone through one CID at a time. The list of the pins that are left, as they are stored, saves a call for
/// each one that is gone.
void IpfsClient::listPinsLeft(const std::shared_ptr<UnpinBatch>& batch)
{
    const std::initializer_list<QLatin1StringView> types {PinType::recursive, PinType::direct};
    batch->pinListsPending = static_cast<int>(types.size());
    for (const QLatin1StringView type : types)
        callForBatch(batch, u"/pin/ls"_s, rpcQuery({{u"type"_s, type}, {u"stream"_s, u"true"_s}}),
                     &IpfsClient::onPinsLeftReplyFinished);
}

void IpfsClient::onPinsLeftReplyFinished(QNetworkReply* reply)
{
    const auto batch = batchOf(reply);
    reply->deleteLater();
    if (reply->error() == QNetworkReply::NoError)
        batch->pinLists.append(reply->readAll());
    if (--batch->pinListsPending > 0)
        return;
    const QList<QByteArray> lists = std::exchange(batch->pinLists, {});
    if (lists.size() < 2) { // without both, each CID is tried
        removeNextPin(batch);
        return;
    }
    runDetached(
        this,
        [lists, requested = batch->unpinRequestedCids, formatted = batch->unpinFormattedCids] {
            const auto pinned = pinnedTexts(lists);
            return pinned ? storedTexts(*pinned, requested, formatted) : QList<std::optional<QString>>();
        },
        [this, batch](const QList<std::optional<QString>>& stored) {
            batch->stored = stored;
            removeNextPin(batch);
        });
}

/// Under the text that is stored; where that is not known first as rewritten, then as asked for.
void IpfsClient::removeNextPin(const std::shared_ptr<UnpinBatch>& batch)
{
    batch->skipGone();
    if (batch->isDone()) {
        finishUnpin(*batch);
        return;
    }
    emit unpinProgress(static_cast<int>(batch->doneCount()), static_cast<int>(batch->size()));
    callForBatch(batch, u"/pin/rm"_s, rpcQuery({{u"arg"_s, batch->currentText()}}),
                 &IpfsClient::onSingleUnpinReplyFinished);
}

void IpfsClient::onSingleUnpinReplyFinished(QNetworkReply* reply)
{
    const auto batch = batchOf(reply);
    reply->deleteLater();
    const QByteArray body = reply->readAll();
    const bool failed = reply->error() != QNetworkReply::NoError;
    const bool brokenOff = reply->error() == QNetworkReply::RemoteHostClosedError; // the next one may go well
    const QString words = nodeWords(reply);
    if (failed && reply->error() <= QNetworkReply::UnknownNetworkError && !brokenOff)
        batch->failTheRest(reply->errorString()); // nobody is there to ask
    else if (failed)
        batch->takeFailure(words.isEmpty() ? reply->errorString() : words, saysNotPinned(body));
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
        shareRemovals(outcome.gone);
        emit unpinned(outcome.removed);
    } else if (batch.size() > 1) {
        emit pinsMayHaveChanged();
    }
    if (!outcome.failures.isEmpty())
        emit errorOccurred(tr("Unpin failed: %1").arg(outcome.failures));
}
