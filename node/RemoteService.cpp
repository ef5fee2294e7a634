// SPDX-License-Identifier: MIT
#include "RemoteService.h"

#include "DemoWire.h"

#include <QUrl>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestName = 255; // bytes

/// What a call to the service ends with if it is named for failing so; nothing for any other service.
std::optional<NodeAnswer> refusalBy(const QString& service, const QString& endpoint)
{
    if (service == "hanging"_L1)
        return NodeAnswer::hold();
    if (service == "invalid"_L1)
        return errorOf(u"reason: \"UNAUTHORIZED\", details: \"access token is missing or wrong\": 401 Unauthorized"_s);
    if (service == "unreachable"_L1)
        return errorOf(u"empty response from remote pinning service: \"%1/pins\": connection refused"_s.arg(endpoint));
    return std::nullopt;
}

/// Why a node does not take the endpoint, whose path has no slash at its end; empty if it takes it.
QString faultOf(const QUrl& endpoint)
{
    if ((endpoint.scheme() != "http"_L1 && endpoint.scheme() != "https"_L1) || endpoint.host().isEmpty())
        return u"service endpoint must be a valid HTTP URL"_s;
    if (endpoint.hasQuery())
        return u"service endpoint should be provided without any query parameters"_s;
    if (endpoint.path().endsWith("/pins"_L1))
        return u"service endpoint should be provided without the /pins suffix"_s;
    return {};
}

/// The CID in the default base, in the version in which it was asked for.
QByteArray lineOf(const RemotePin& pin, const QString& status)
{
    return "{\"Status\":\"" + status.toLatin1() + "\",\"Cid\":\"" + encodeCid(pin.cid).toLatin1()
        + "\",\"Name\":" + jsonText(pin.name) + "}\n";
}

NodeAnswer emptyAnswer()
{
    return NodeAnswer::json({});
}

/// The first text that is no CID, or no status; nothing if all are.
std::optional<NodeAnswer> faultOfFilters(const QStringList& cids, const QStringList& statuses)
{
    for (const QString& text : cids) {
        if (!decodeCid(text))
            return errorOf(u"CID \"%1\" cannot be parsed"_s.arg(text));
    }
    for (const QString& text : statuses) {
        if (!RemotePins::statuses().contains(text))
            return errorOf(u"status \"%1\" is not valid"_s.arg(text));
    }
    return std::nullopt;
}

} // namespace

RemoteService::RemoteService(const DemoOptions& options, DemoConfig& newConfig)
    : config(newConfig)
    , pins(options.remotePinTime)
    , choices(options)
{
}

QMap<QString, QString> RemoteService::initialServices(const DemoOptions& options)
{
    QMap<QString, QString> services;
    for (const QString& name : options.remoteServices)
        services.insert(name, u"https://pins.example/"_s + QString::fromLatin1(QUrl::toPercentEncoding(name)));
    return services;
}

QList<NodeCommand> RemoteService::commands()
{
    const auto called = [this](auto method) {
        return [this, method](const NodeRequest& request) {
            readConfig();
            return (this->*method)(request);
        };
    };
    return {{.path = "/pin/remote/service/ls",
             .options = {{u"stat"_s, NodeOption::Bool}},
             .run = called(&RemoteService::listServices)},
            {.path = "/pin/remote/service/add", .argument = u"service"_s, .run = called(&RemoteService::addService)},
            {.path = "/pin/remote/service/rm", .argument = u"service"_s, .run = called(&RemoteService::removeService)},
            {.path = "/pin/remote/add",
             .argument = u"ipfs-path"_s,
             .options = {{u"service"_s}, {u"name"_s}, {u"background"_s, NodeOption::Bool}},
             .run = called(&RemoteService::addPin)},
            {.path = "/pin/remote/ls",
             .options = {{u"service"_s}, {u"name"_s}, {u"cid"_s, NodeOption::List}, {u"status"_s, NodeOption::List}},
             .run = called(&RemoteService::listPins)}};
}

/// A service that was removed is still in the file, and back with the next reading of it.
void RemoteService::readConfig()
{
    if (std::exchange(readReloads, config.reloads()) != config.reloads())
        endpoints = config.remoteServices();
}

/// With `stat` every service is asked, so that one which never answers holds the whole list.
NodeAnswer RemoteService::listServices(const NodeRequest& request) const
{
    const bool withStat = isSet(request, u"stat"_s);
    QByteArray services;
    for (auto service = endpoints.cbegin(); service != endpoints.cend(); ++service) {
        const auto refusal = refusalBy(service.key(), service.value());
        if (withStat && refusal && refusal->held)
            return *refusal;
        services += services.isEmpty() ? "{\"Service\":" : ",{\"Service\":";
        services += jsonText(service.key()) + ",\"ApiEndpoint\":" + jsonText(service.value());
        if (withStat)
            services += ",\"Stat\":" + (refusal ? "{\"Status\":\"invalid\"}" : statOf(service.value()));
        services += '}';
    }
    return NodeAnswer::json("{\"RemoteServices\":[" + services + "]}\n");
}

QByteArray RemoteService::statOf(const QString& endpoint) const
{
    const auto now = RemotePins::Clock::now();
    QStringList found;
    for (const RemotePin& pin : pins.pinsAt(endpoint))
        found.append(pins.statusOf(pin, now));
    QByteArray counts;
    for (const QString& status : RemotePins::statuses()) {
        const QString key = status.first(1).toUpper() + status.sliced(1);
        counts += (counts.isEmpty() ? "\"" : ",\"") + key.toLatin1() + "\":" + QByteArray::number(found.count(status));
    }
    return "{\"Status\":\"valid\",\"PinCount\":{" + counts + "}}";
}

NodeAnswer RemoteService::addService(const NodeRequest& request)
{
    const QStringList arguments = request.values(u"arg"_s);
    if (arguments.size() < 3)
        return badRequest(u"argument \"%1\" is required"_s.arg(arguments.size() < 2 ? u"endpoint"_s : u"key"_s));
    QString endpoint = arguments.at(1);
    while (endpoint.endsWith(u'/'))
        endpoint.chop(1);
    if (const QString fault = faultOf(QUrl(endpoint, QUrl::StrictMode)); !fault.isEmpty())
        return errorOf(fault);
    if (endpoints.contains(arguments.constFirst()))
        return errorOf(u"service already present"_s);
    endpoints.insert(arguments.constFirst(), endpoint);
    config.addRemoteService(arguments.constFirst(), endpoint, arguments.at(2));
    return emptyAnswer();
}

/// The pins stay with the service, and are back with its endpoint.
NodeAnswer RemoteService::removeService(const NodeRequest& request)
{
    endpoints.remove(request.value(u"arg"_s));
    return emptyAnswer();
}

NodeAnswer RemoteService::addPin(const NodeRequest& request)
{
    const QString service = request.value(u"service"_s);
    const auto endpoint = endpoints.constFind(service);
    if (endpoint == endpoints.constEnd())
        return errorOf(u"service not known"_s);
    const QString path = request.value(u"arg"_s);
    const auto cid = cidOfPath(path);
    if (!cid)
        return invalidPath(path);
    const QString name = request.value(u"name"_s);
    if (const qsizetype size = name.toUtf8().size(); size > longestName)
        return errorOf(u"pin name is %1 bytes (max 255 bytes)"_s.arg(size));
    if (const auto refusal = refusalBy(service, *endpoint))
        return *refusal;

    const auto now = RemotePins::Clock::now();
    const RemotePin pin {
        .endpoint = *endpoint, .cid = *cid, .name = name, .fails = service == "failing"_L1, .added = now};
    pins.add(pin);
    if (isSet(request, u"background"_s))
        return NodeAnswer::json(lineOf(pin, pins.statusOf(pin, now)));
    NodeAnswer answer = pin.fails ? errorOf(u"remote service failed to pin"_s)
                                  : NodeAnswer::json(lineOf(pin, pins.statusOf(pin, now + pins.pinTime())));
    answer.latency = pins.pinTime();
    return answer;
}

NodeAnswer RemoteService::listPins(const NodeRequest& request) const
{
    const QString service = request.value(u"service"_s);
    const auto endpoint = endpoints.constFind(service);
    if (endpoint == endpoints.constEnd())
        return errorOf(u"service not known"_s);
    const QStringList cids = request.values(u"cid"_s);
    QStringList statuses = request.values(u"status"_s);
    if (const auto fault = faultOfFilters(cids, statuses))
        return *fault;
    if (const auto refusal = refusalBy(service, *endpoint))
        return *refusal;

    if (statuses.isEmpty())
        statuses.append(u"pinned"_s);
    const QString name = request.value(u"name"_s);
    const auto now = RemotePins::Clock::now();
    QByteArray lines;
    for (const RemotePin& pin : pins.pinsAt(*endpoint)) {
        const QString status = pins.statusOf(pin, now);
        const auto isPins = [&pin](const QString& text) { return decodeCid(text) == pin.cid; };
        if (statuses.contains(status) && (name.isEmpty() || name == pin.name)
            && (cids.isEmpty() || std::ranges::any_of(cids, isPins)))
            lines += lineOf(pin, status);
    }
    return streamOf(lines, choices);
}
