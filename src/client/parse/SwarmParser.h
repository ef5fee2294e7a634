// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QStringList>

/// The connections of a node.
struct SwarmPeers
{
    QStringList peers {};                          ///< the address of each, or the peer where there is none
    QHash<QString, QStringList> peersOfAddress {}; ///< for those that have both; peers share the address of a relay
};

/// Of an answer of "/swarm/peers".
SwarmPeers swarmPeersOf(const QJsonObject& answer);
/// Of an answer of "/swarm/addrs", by peer. A peer whose addresses are no list is left out.
QHash<QString, QStringList> swarmAddrsOf(const QJsonObject& answer);
/// The lines under "Strings", trimmed, without empty ones.
QStringList stringsOf(const QJsonObject& answer);
/// Of an answer of "/bootstrap/…".
QStringList bootstrapPeersOf(const QJsonObject& answer);
