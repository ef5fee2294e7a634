// SPDX-License-Identifier: MIT
#pragma once

#include "DemoRepo.h"
#include "NodeService.h"

#include <QHash>

/// The node's keys, "/key/list", and what is published under them, "/name/{publish,resolve}".
class KeyService : public NodeService
{
public:
    explicit KeyService(const DemoRepo& newRepo)
        : repo(newRepo)
    {
    }
    QList<NodeCommand> commands() override;

private:
    NodeAnswer publish(const NodeRequest& request);
    NodeAnswer resolve(const NodeRequest& request) const;

    const DemoRepo& repo;
    QHash<QString, QString> published; ///< paths, by the ID of the key
};
