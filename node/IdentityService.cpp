// SPDX-License-Identifier: MIT
#include "IdentityService.h"

#include "AccessRules.h"
#include "DemoWire.h"

using namespace Qt::StringLiterals;

namespace {

constexpr auto peerId = "12D3KooWAGok5BHR3zQCMcfB5a5ntgco7JCLFwtEFB229Awz5eC3"_L1;

} // namespace

QList<NodeCommand> IdentityService::commands()
{
    const QString version = QString::fromLatin1(nodeVersion);
    NodeAnswer id = NodeAnswer::json(jsonLine({{u"ID"_s, peerId}, {u"AgentVersion"_s, u"kubo/"_s + version}}));
    NodeAnswer versions = NodeAnswer::json(jsonLine({{u"Version"_s, version}, {u"Repo"_s, u"18"_s}}));
    return {{.path = "/id", .run = [id](const NodeRequest&) { return id; }},
            {.path = "/version", .run = [versions](const NodeRequest&) { return versions; }}};
}
