#include "UnpinBatch.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// CIDs that a message names for each of the node's words, and how many different words it tells.
constexpr qsizetype namedCids = 3;
constexpr qsizetype toldWords = 3;

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

    QString told() const
    {
        QStringList parts;
        parts.reserve(toldWords + 1);
        for (const QString& words : order.first(std::min(toldWords, order.size())))
            parts.append(u"%1 (%2)"_s.arg(words, named(groups.value(words))));
        if (order.size() > toldWords)
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

const QString& UnpinBatch::currentText() const
{
    return (refused.asAsked ? unpinRequestedCids : unpinFormattedCids).at(results.size());
}

void UnpinBatch::takeSuccess(const QStringList& pins)
{
    const QString text = currentText();
    Result result = std::exchange(refused, {});
    result.pins = pins.isEmpty() ? QStringList {text} : pins;
    result.failure.clear();
    results.append(result);
}

void UnpinBatch::takeFailure(const QString& words, bool notPinned)
{
    const qsizetype current = results.size();
    if (!refused.asAsked && unpinRequestedCids.at(current) != unpinFormattedCids.at(current)) {
        refused = {.failure = words, .notPinned = notPinned, .asAsked = true};
        return;
    }
    Result result = std::exchange(refused, {});
    if (!result.asAsked)
        result.notPinned = notPinned;
    if (!result.asAsked || result.notPinned) // else what kept the CID as rewritten is what there is to tell
        result.failure = words;
    results.append(result);
}

void UnpinBatch::failTheRest(const QString& words)
{
    while (!isThrough()) {
        Result result = std::exchange(refused, {});
        result.failure = words;
        results.append(result);
    }
}

/// Where the first call stopped, which had removed all before that and does not say how far it came. A CID that it
/// removed and one that never was a pin are told alike afterwards. Certain is that it stopped at the latest at the
/// first CID that was found pinned afterwards, or at the last one, and that it can't have passed one that was known to
/// be no pin; and what stood before and is no pin now, it has most likely removed.
qsizetype UnpinBatch::stopOfFirstCall() const
{
    const auto found = std::ranges::find_if(results, [](const Result& result) { return result.failure.isEmpty(); });
    qsizetype stop = found - results.begin();
    if (found == results.end() || !found->asAsked) // that one itself it had not reached
        --stop;
    for (qsizetype i = 0; i < stop; ++i) {
        if (!results.at(i).notPinned || knownAsNoPins.contains(unpinRequestedCids.at(i)))
            return i;
    }
    return stop;
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
    outcome.failures = failures.told();
    return outcome;
}
