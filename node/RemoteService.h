// SPDX-License-Identifier: MIT
#pragma once

#include "DemoRepo.h"
#include "NodeService.h"

/// The remote pinning services that are configured: "/pin/remote/service/ls".
class RemoteService : public NodeService
{
public:
    explicit RemoteService(const DemoOptions& options)
        : isConfigured(options.remoteServices)
    {
    }
    QList<NodeCommand> commands() override;

private:
    NodeAnswer list(const NodeRequest& request) const;

    bool isConfigured;
};
