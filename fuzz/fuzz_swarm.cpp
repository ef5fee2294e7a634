// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "JsonReply.h"
#include "SwarmParser.h"

#include <algorithm>

namespace {

void needTexts(const QStringList& texts)
{
    abortIf(!std::ranges::all_of(texts, [](const QString& text) { return !text.isEmpty() && text == text.trimmed(); }));
}

} // namespace

/// All lists hold trimmed texts, none of them empty, and an address is listed for each of its peers.
void checkInput(const QByteArray& body)
{
    const QJsonObject answer = judgeJsonReply(body, {}).object;
    const SwarmPeers swarm = swarmPeersOf(answer);
    needTexts(swarm.peers);
    for (auto pair = swarm.peersOfAddress.cbegin(); pair != swarm.peersOfAddress.cend(); ++pair) {
        needTexts(pair.value());
        abortIf(swarm.peers.count(pair.key()) < pair.value().size());
    }
    const QHash<QString, QStringList> known = swarmAddrsOf(answer);
    needTexts(known.keys());
    for (const QStringList& addresses : known)
        needTexts(addresses);
    needTexts(stringsOf(answer));
    needTexts(bootstrapPeersOf(answer));
}
