// SPDX-License-Identifier: MIT
#pragma once

#include "DemoRepo.h"
#include "NodeService.h"

/// What a node counts, "/stats/dht", "/bitswap/stat" and "/repo/stat", and its garbage collection, "/repo/gc".
class DiagnosticsService : public NodeService
{
public:
    explicit DiagnosticsService(DemoRepo& newRepo)
        : repo(newRepo)
    {
    }
    QList<NodeCommand> commands() override;

private:
    NodeAnswer dhtStat(const NodeRequest& request) const;
    QByteArray routingTable(const QString& name) const;
    QByteArray bucket(int first, int count) const;
    NodeAnswer bitswapStat() const;
    NodeAnswer repoStat() const;
    NodeAnswer collectGarbage(const NodeRequest& request);

    DemoRepo& repo;
};
