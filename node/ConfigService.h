// SPDX-License-Identifier: MIT
#pragma once

#include "DemoConfig.h"
#include "NodeService.h"

/// The node's configuration file: a member of it, "/config", or the whole, "/config/{show,replace}".
class ConfigService : public NodeService
{
public:
    explicit ConfigService(DemoConfig& newConfig)
        : config(newConfig)
    {
    }
    QList<NodeCommand> commands() override;

private:
    NodeAnswer readOrWrite(const NodeRequest& request);
    NodeAnswer write(const NodeRequest& request, const QStringList& path);
    NodeAnswer replace(const NodeRequest& request);
    /// Why the remote services in `document` don't suit those of the file; empty if they do.
    QString faultOfServices(const QJsonObject& document) const;

    DemoConfig& config;
};
