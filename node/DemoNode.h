// SPDX-License-Identifier: MIT
#pragma once

#include "DemoConfig.h"
#include "DemoRepo.h"
#include "NodeServer.h"
#include "NodeService.h"

#include <vector>

/// A stateful node in memory, which answers as a Kubo node answers. port() is 0 if the port could not be had.
class DemoNode : public NodeServer
{
    Q_OBJECT

public:
    explicit DemoNode(const DemoOptions& options, QObject* parent = nullptr);

    /// From here on the block is missing, as one that was lost.
    void forget(const Cid& cid) { repo.forget(cid); }
    const QList<DemoPin>& allPins() const { return repo.pins(); }

protected:
    NodeAnswer answerTo(const NodeRequest& request) override;
    std::optional<NodeUpload> uploadOf(const NodeRequest& head) override;

private:
    void mount(std::unique_ptr<NodeService> service);

    DemoRepo repo;
    DemoConfig config;
    std::vector<std::unique_ptr<NodeService>> services;
    QHash<QByteArray, NodeCommand> commands;
};
