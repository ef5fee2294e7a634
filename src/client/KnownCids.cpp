// SPDX-License-Identifier: MIT
#include "KnownCids.h"

#include "Detached.h"

#include <utility>

namespace {

void discardCids(QStringList cids)
{
    if (cids.size() >= KnownCids::fewestWorthSharing)
        discard(std::move(cids));
}

} // namespace

void KnownCids::note(quint64 epoch, QStringList cids)
{
    if (epoch == latestEpoch && cids.size() <= latest.size())
        return;
    latestEpoch = epoch;
    discardCids(std::exchange(latest, std::move(cids)));
}

void KnownCids::endLoad()
{
    discardCids(std::exchange(former, {}));
}
