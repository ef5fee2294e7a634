// SPDX-License-Identifier: MIT
#pragma once

#include "DemoRepo.h"
#include "NodeService.h"

#include <QMap>

/// The node's connections and the addresses that it knows, "/swarm/…". An address in 192.0.2.0/24 cannot be dialled,
/// nor can a peer without known addresses.
class SwarmService : public NodeService
{
public:
    explicit SwarmService(const DemoOptions& options);
    QList<NodeCommand> commands() override;

private:
    struct Connection
    {
        QString address {}; ///< without the peer
        QString peer {};
        bool inbound = false;
        int latency = 0; ///< in ms
    };

    NodeAnswer listPeers(const NodeRequest& request) const;
    NodeAnswer listAddresses() const;
    NodeAnswer connectPeers(const NodeRequest& request);
    NodeAnswer disconnectPeers(const NodeRequest& request);
    /// Why it failed; empty if there is a connection now.
    QString dial(const QString& transport, const QString& peer);
    /// Why it failed; empty if what was asked for is closed now.
    QString close(const QString& transport, const QString& peer);
    bool isConnected(const QString& peer) const;

    QList<Connection> connections;    ///< sorted by address
    QMap<QString, QStringList> known; ///< addresses, by peer
    bool isOffline;
};
