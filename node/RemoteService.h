// SPDX-License-Identifier: MIT
#pragma once

#include "DemoRepo.h"
#include "NodeService.h"
#include "RemotePins.h"

#include <QMap>

/// The remote pinning services that are configured, "/pin/remote/service/…", and their pins, "/pin/remote/{add,ls}".
/// Services with certain names fail, each in its way: see DemoOptions.
class RemoteService : public NodeService
{
public:
    explicit RemoteService(const DemoOptions& options);
    QList<NodeCommand> commands() override;

private:
    NodeAnswer listServices(const NodeRequest& request) const;
    NodeAnswer addService(const NodeRequest& request);
    NodeAnswer removeService(const NodeRequest& request);
    NodeAnswer addPin(const NodeRequest& request);
    NodeAnswer listPins(const NodeRequest& request) const;

    QByteArray statOf(const QString& endpoint) const;

    QMap<QString, QString> endpoints; ///< by the name of the service
    RemotePins pins;
    DemoOptions choices;
};
