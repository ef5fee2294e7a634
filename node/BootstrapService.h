// SPDX-License-Identifier: MIT
#pragma once

#include "DemoConfig.h"
#include "NodeService.h"

/// The peers that the node dials first, as its configuration lists them, "/bootstrap/…".
class BootstrapService : public NodeService
{
public:
    explicit BootstrapService(DemoConfig& newConfig)
        : config(newConfig)
    {
    }
    QList<NodeCommand> commands() override;

private:
    NodeAnswer list(const NodeRequest& request) const;
    NodeAnswer add(const NodeRequest& request);
    NodeAnswer remove(const NodeRequest& request);
    NodeAnswer removeAll();
    QStringList peers() const;
    void setPeers(const QStringList& newPeers);

    DemoConfig& config;
};
