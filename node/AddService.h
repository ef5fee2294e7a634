// SPDX-License-Identifier: MIT
#pragma once

#include "DemoRepo.h"
#include "NodeService.h"

/// What comes into the node: "/add".
class AddService : public NodeService
{
public:
    explicit AddService(DemoRepo& newRepo)
        : repo(newRepo)
    {
    }
    QList<NodeCommand> commands() override;

private:
    NodeUpload add(const NodeRequest& head);

    DemoRepo& repo;
};
