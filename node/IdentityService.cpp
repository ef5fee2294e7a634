// SPDX-License-Identifier: MIT
#include "IdentityService.h"

#include "AccessRules.h"
#include "DemoPeers.h"
#include "DemoWire.h"

using namespace Qt::StringLiterals;

QList<NodeCommand> IdentityService::commands()
{
    const QString version = QString::fromLatin1(nodeVersion);
    NodeAnswer id = NodeAnswer::json(jsonLine({{u"ID"_s, selfPeerId}, {u"AgentVersion"_s, u"kubo/"_s + version}}));
    NodeAnswer versions = NodeAnswer::json(jsonLine({{u"Version"_s, version}, {u"Repo"_s, u"18"_s}}));
    return {{.path = "/id", .run = [id](const NodeRequest&) { return id; }},
            {.path = "/version", .run = [versions](const NodeRequest&) { return versions; }}};
}
