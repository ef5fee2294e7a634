// SPDX-License-Identifier: MIT
#include "RemoteService.h"

#include "DemoWire.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

QJsonObject serviceEntry(const QString& name, const QString& endpoint, const QJsonObject& stat, bool withStat)
{
    QJsonObject entry {{u"Service"_s, name}, {u"ApiEndpoint"_s, endpoint}};
    if (withStat)
        entry.insert(u"Stat"_s, stat);
    return entry;
}

} // namespace

QList<NodeCommand> RemoteService::commands()
{
    return {{.path = "/pin/remote/service/ls",
             .options = {{u"stat"_s, NodeOption::Bool}},
             .run = [this](const NodeRequest& request) { return list(request); }}};
}

NodeAnswer RemoteService::list(const NodeRequest& request) const
{
    QJsonArray services;
    if (isConfigured) {
        const bool withStat = isSet(request, u"stat"_s);
        const QJsonObject counts {{u"Queued"_s, 1}, {u"Pinning"_s, 0}, {u"Pinned"_s, 12}, {u"Failed"_s, 0}};
        services.append(serviceEntry(u"harbour"_s, u"https://pins.harbour.example/psa"_s,
                                     {{u"Status"_s, u"valid"_s}, {u"PinCount"_s, counts}}, withStat));
        services.append(
            serviceEntry(u"orchard"_s, u"https://api.orchard.example/psa"_s, {{u"Status"_s, u"invalid"_s}}, withStat));
    }
    return NodeAnswer::json(jsonLine({{u"RemoteServices"_s, services}}));
}
