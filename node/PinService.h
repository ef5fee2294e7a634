// SPDX-License-Identifier: MIT
#pragma once

#include "DemoRepo.h"
#include "NodeService.h"

#include <QHash>

/// What a node keeps: "/pin/ls" and "/pin/rm", and "/cid/format", which works on the text alone.
class PinService : public NodeService
{
public:
    explicit PinService(DemoRepo& newRepo);
    QList<NodeCommand> commands() override;

private:
    NodeAnswer list(const NodeRequest& request);
    NodeAnswer listAll(const NodeRequest& request, const QString& type);
    NodeAnswer listNamed(const NodeRequest& request, const QString& type) const;
    NodeAnswer remove(const NodeRequest& request);

    DemoRepo& repo;
    QHash<QString, NodeAnswer> listings; ///< whole ones, by what was asked; kept until the repository changes
    int listingsRevision = 0;
};
