// SPDX-License-Identifier: MIT
#pragma once

#include "NodeMessages.h"

/// An option that a command knows. Every command knows the global ones as well.
struct NodeOption
{
    enum Type { Text, Bool, Int, List }; ///< only a List may be given more than once

    QString name {};
    Type type = Text;
};

/// One command of a node's RPC.
struct NodeCommand
{
    QByteArray path {};  ///< as "/pin/ls"
    QString argument {}; ///< the name of the argument that it can't do without; empty if there is none
    QList<NodeOption> options {};
    std::function<NodeAnswer(const NodeRequest&)> run {}; ///< called if the request suits the command
    /// In place of `run`, for a command that reads its body as it comes.
    std::function<NodeUpload(const NodeRequest& head)> upload {};
};

/// A family of commands, to be mounted in a DemoNode.
class NodeService
{
public:
    NodeService() = default;
    virtual ~NodeService() = default;
    Q_DISABLE_COPY_MOVE(NodeService)

    virtual QList<NodeCommand> commands() = 0;
};

/// What a node says of a request that it cannot read.
NodeAnswer badRequest(const QString& line);

/// What a node says of a request that does not suit the command, before it runs; nothing of one that does.
std::optional<NodeAnswer> refusalByCommand(const NodeRequest& request, const NodeCommand& command);
