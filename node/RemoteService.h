// SPDX-License-Identifier: MIT
#pragma once

#include "DemoConfig.h"
#include "DemoRepo.h"
#include "NodeService.h"
#include "RemotePins.h"

#include <QMap>

/// The remote pinning services that are configured, "/pin/remote/service/…", and their pins, "/pin/remote/{add,ls}".
/// Services with certain names fail, each in its way: see DemoOptions.
class RemoteService : public NodeService
{
public:
    RemoteService(const DemoOptions& options, DemoConfig& newConfig);
    /// The endpoints of the services that are configured at the start, by name.
    static QMap<QString, QString> initialServices(const DemoOptions& options);
    QList<NodeCommand> commands() override;

private:
    NodeAnswer listServices(const NodeRequest& request) const;
    NodeAnswer addService(const NodeRequest& request);
    NodeAnswer removeService(const NodeRequest& request);
    NodeAnswer addPin(const NodeRequest& request);
    NodeAnswer listPins(const NodeRequest& request) const;

    void readConfig();
    QByteArray statOf(const QString& endpoint) const;

    DemoConfig& config;
    int readReloads = -1;             ///< of the configuration
    QMap<QString, QString> endpoints; ///< by the name of the service
    RemotePins pins;
    DemoOptions choices;
};
