// SPDX-License-Identifier: MIT
#pragma once

#include "NodeService.h"

/// Who the node is: "/id" and "/version".
class IdentityService : public NodeService
{
public:
    QList<NodeCommand> commands() override;
};
