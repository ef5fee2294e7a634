// SPDX-License-Identifier: MIT
#include "UnpinBatch.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// CIDs that a message names for each of the node's words, and how many different words it shows.
constexpr qsizetype namedCids = 3;
constexpr qsizetype shownWords = 3;

/// What the node said, and of which CIDs.
class Failures
{
public:
    void add(const QString& words, const QString& cid)
    {
        const auto group = groups.constFind(words);
        if (group == groups.constEnd())
            order.append(words);
        groups[words].append(cid);
    }

    QString text() const
    {
        QStringList parts;
        parts.reserve(shownWords + 1);
        for (const QString& words : order.first(std::min(shownWords, order.size())))
            parts.append(u"%1 (%2)"_s.arg(words, named(groups.value(words))));
        if (order.size() > shownWords)
            parts.append(u"…"_s);
        return parts.join("; "_L1);
    }

private:
    static QString named(const QStringList& cids)
    {
        const QString list = cids.first(std::min(namedCids, cids.size())).join(", "_L1);
        const qsizetype more = cids.size() - namedCids;
        return more > 0 ? QCoreApplication::translate("UnpinBatch", "%1 and %2 more").arg(list, QString::number(more))
                        : list;
    }

    QHash<QString, QStringList> groups;
    QStringList order;
};

} // namespace

const QString* UnpinBatch::storedText() const
{
    if (stored.isEmpty())
        return nullptr;
    const std::optional<QString>& text = stored.at(doneCount());
    return text ? &*text : nullptr;
}

void UnpinBatch::skipGone()
{
    while (!isDone()) {
        const QString* text = storedText();
        if (!text || (!text->isEmpty() && !removedTexts.contains(*text)))
            return;
        results.append({.failure = firstRefusal, .firstCall = FirstCall::MayHaveRemoved});
    }
}

const QString& UnpinBatch::currentText() const
{
    if (const QString* text = storedText())
        return *text;
    return (refused ? unpinRequestedCids : unpinFormattedCids).at(doneCount());
}

/// What the first call can have done if the current text was pinned after it.
UnpinBatch::FirstCall UnpinBatch::firstCallBeforePinned() const
{
    const bool wasNamed = !refused && currentText() == unpinFormattedCids.at(doneCount());
    return wasNamed ? FirstCall::StoppedBefore : FirstCall::StoppedByThen;
}

void UnpinBatch::takeSuccess(const QStringList& pins)
{
    const QString& text = currentText();
    removedTexts.insert(text);
    results.append({.pins = pins.isEmpty() ? QStringList {text} : pins, .firstCall = firstCallBeforePinned()});
    refused.reset();
}

void UnpinBatch::takeFailure(const QString& words, bool notPinned)
{
    const qsizetype current = doneCount();
    Result result {.failure = words};
    if (notPinned)
        result.firstCall = FirstCall::MayHaveRemoved;
    if (storedText()) {
        results.append({.failure = words, .firstCall = firstCallBeforePinned()});
    } else if (refused) {
        if (refused->firstCall == FirstCall::MayHaveRemoved) // else the first refusal is the one to report
            refused->failure = words;
        results.append(*std::exchange(refused, std::nullopt));
    } else if (unpinRequestedCids.at(current) != unpinFormattedCids.at(current)) {
        refused = result;
    } else {
        results.append(result);
    }
}

void UnpinBatch::failTheRest(const QString& words)
{
    while (!isDone()) {
        Result result = std::exchange(refused, std::nullopt).value_or(Result());
        result.failure = words;
        results.append(result);
    }
}

bool UnpinBatch::isNoPin(const QString& cid) const
{
    return std::ranges::any_of(knownAsNoPins, [&cid](const QSet<QString>& cids) { return cids.contains(cid); });
}

/// The latest CID at which the first call can have stopped. It removed all before the one where it did, which it does
/// not name. What was a pin and is none now, it has most likely removed.
qsizetype UnpinBatch::stopOfFirstCall() const
{
    for (qsizetype i = 0; i < results.size(); ++i) {
        if (results.at(i).firstCall == FirstCall::StoppedBefore)
            return i - 1;
        if (results.at(i).firstCall == FirstCall::StoppedByThen || isNoPin(unpinRequestedCids.at(i)))
            return i;
    }
    return results.size() - 1;
}

UnpinOutcome UnpinBatch::outcome() const
{
    const qsizetype stop = stopOfFirstCall();
    UnpinOutcome outcome;
    QSet<QString> done; // a CID named twice is a pin only once
    Failures failures;
    for (qsizetype i = 0; i < results.size(); ++i) {
        const Result& result = results.at(i);
        const QString& asked = unpinRequestedCids.at(i);
        const bool removed = result.failure.isEmpty();
        if (!removed && done.contains(asked))
            continue;
        if (removed || i < stop) {
            outcome.removed += removed ? result.pins : QStringList {unpinFormattedCids.at(i)};
            outcome.gone.append(asked);
            done.insert(asked);
        } else {
            failures.add(result.failure, asked);
        }
    }
    outcome.failures = failures.text();
    return outcome;
}
