// SPDX-License-Identifier: MIT
#pragma once

#include "DemoRepo.h"
#include "NodeService.h"

/// What lies under a CID: "/refs", "/dag/stat", "/files/stat", "/ls" and "/cat"; and "/refs/local", all that is stored.
class ContentService : public NodeService
{
public:
    explicit ContentService(DemoRepo& newRepo);
    QList<NodeCommand> commands() override;

private:
    using Reader = NodeAnswer (ContentService::*)(const Cid& cid, const NodeRequest& request) const;

    NodeAnswer refs(const Cid& cid, const NodeRequest& request) const;
    NodeAnswer dagStat(const Cid& cid, const NodeRequest& request) const;
    NodeAnswer filesStat(const Cid& cid, const NodeRequest& request) const;
    NodeAnswer ls(const Cid& cid, const NodeRequest& request) const;
    NodeAnswer cat(const Cid& cid, const NodeRequest& request) const;
    NodeAnswer refsLocal();
    bool appendRefs(const DemoObject& object, bool recursive, bool lifted, QByteArray& body) const;

    DemoRepo& repo;
    std::optional<NodeAnswer> localRefs; ///< kept until the repository changes
    int localRefsRevision = 0;
};
