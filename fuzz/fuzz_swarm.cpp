// SPDX-License-Identifier: MIT
#include "JsonReply.h"
#include "SwarmParser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void needTexts(const QStringList& texts)
{
    if (!std::ranges::all_of(texts, [](const QString& text) { return !text.isEmpty() && text == text.trimmed(); }))
        std::abort();
}

} // namespace

/// All lists hold trimmed texts, none of them empty, and an address whose peer is known is listed.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QJsonObject answer = judgeJsonReply(body, {}).object;
    const SwarmPeers swarm = swarmPeersOf(answer);
    needTexts(swarm.peers);
    needTexts(swarm.peerOfAddress.values());
    for (const QString& address : swarm.peerOfAddress.keys()) {
        if (!swarm.peers.contains(address))
            std::abort();
    }
    const QHash<QString, QStringList> known = swarmAddrsOf(answer);
    needTexts(known.keys());
    for (const QStringList& addresses : known)
        needTexts(addresses);
    needTexts(stringsOf(answer));
    needTexts(bootstrapPeersOf(answer));
    return 0;
}
