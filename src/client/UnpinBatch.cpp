#include "UnpinBatch.h"

#include <QCoreApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// CIDs that a message names; of the others it tells the number.
constexpr qsizetype namedCids = 3;

} // namespace

const QString& UnpinBatch::currentText() const
{
    return (asAsked ? unpinRequestedCids : unpinFormattedCids).at(results.size());
}

void UnpinBatch::takeSuccess(const QStringList& pins)
{
    results.append({.pins = pins.isEmpty() ? QStringList {currentText()} : pins, .asAsked = asAsked});
    asAsked = false;
}

void UnpinBatch::takeFailure(const QString& words, bool notPinned)
{
    const qsizetype current = results.size();
    if (!asAsked && unpinRequestedCids.at(current) != unpinFormattedCids.at(current)) {
        asAsked = true;
        return;
    }
    results.append({.failure = words, .notPinned = notPinned, .asAsked = asAsked});
    asAsked = false;
}

void UnpinBatch::failTheRest(const QString& words)
{
    while (!isThrough())
        results.append({.failure = words});
    asAsked = false;
}

/// Where the first call stopped, which had removed all before that and does not say how far it came. A CID that it
/// removed and one that never was a pin are told alike afterwards. Certain is that it stopped at the latest at the
/// first CID that was found pinned afterwards, or at the last one, and that it can't have passed one that only a parent
/// pinned; and what stood before and is no pin now, it has most likely removed.
qsizetype UnpinBatch::stopOfFirstCall(const QSet<QString>& indirectCids) const
{
    const auto found = std::ranges::find_if(results, [](const Result& result) { return result.failure.isEmpty(); });
    qsizetype stop = found - results.begin();
    if (found == results.end() || !found->asAsked) // that one itself it had not reached
        --stop;
    for (qsizetype i = 0; i < stop; ++i) {
        if (!results.at(i).notPinned || indirectCids.contains(unpinRequestedCids.at(i)))
            return i;
    }
    return stop;
}

UnpinOutcome UnpinBatch::outcome(const QSet<QString>& indirectCids) const
{
    const qsizetype stop = stopOfFirstCall(indirectCids);
    UnpinOutcome outcome;
    QSet<QString> done;
    QList<std::pair<QString, QStringList>> cidsByWords;
    for (qsizetype i = 0; i < results.size(); ++i) {
        const Result& result = results.at(i);
        const QString& asked = unpinRequestedCids.at(i);
        if (i < stop || result.failure.isEmpty()) {
            outcome.removed += i < stop ? QStringList {unpinFormattedCids.at(i)} : result.pins;
            done.insert(asked);
        } else if (!done.contains(asked)) { // a CID named twice is a pin only once
            auto group = std::ranges::find(cidsByWords, result.failure, &std::pair<QString, QStringList>::first);
            if (group == cidsByWords.end())
                group = cidsByWords.insert(group, {result.failure, {}});
            group->second.append(asked);
        }
    }
    outcome.failures = told(cidsByWords);
    return outcome;
}

QString UnpinBatch::told(const QList<std::pair<QString, QStringList>>& cidsByWords)
{
    QStringList parts;
    for (const auto& [words, cids] : cidsByWords) {
        const QString named = cids.first(std::min(namedCids, cids.size())).join(", "_L1);
        const qsizetype more = cids.size() - namedCids;
        parts.append(more > 0 ? QCoreApplication::translate("UnpinBatch", "%1 (%2 and %3 more)")
                                    .arg(words, named, QString::number(more))
                              : u"%1 (%2)"_s.arg(words, named));
    }
    return parts.join("; "_L1);
}
