// SPDX-License-Identifier: MIT
#include "AccessRules.h"

#include <algorithm>
#include <array>

namespace {

bool isOwnOrigin(QByteArrayView origin, quint16 port)
{
    constexpr std::array schemes {"http://", "https://"};
    constexpr std::array hosts {"127.0.0.1:", "[::1]:", "localhost:"};
    const QByteArray number = QByteArray::number(port);
    return std::ranges::any_of(schemes, [&](const char* scheme) {
        return std::ranges::any_of(hosts, [&](const char* host) { return origin == scheme + (host + number); });
    });
}

bool isAllowed(const QByteArray& origin, quint16 port, const QList<QByteArray>& allowed)
{
    return isOwnOrigin(origin, port) || allowed.contains(origin) || allowed.contains("*");
}

/// Scheme and host of an address.
QByteArray originOf(const QByteArray& address)
{
    const qsizetype scheme = address.indexOf("://");
    const qsizetype path = scheme < 0 ? -1 : address.indexOf('/', scheme + 3);
    return path < 0 ? address : address.first(path);
}

bool mayCall(const NodeRequest& request, quint16 port, const QList<QByteArray>& allowed)
{
    const QByteArray origin = request.header("Origin");
    const QByteArray referer = request.header("Referer");
    if (!origin.isEmpty() && !isAllowed(origin, port, allowed))
        return false;
    if (!referer.isEmpty() && !isAllowed(originOf(referer), port, allowed))
        return false;
    const QByteArray agent = request.header("User-Agent");
    return !origin.isEmpty() || !referer.isEmpty() || !agent.startsWith("Mozilla") || agent.contains("Electron");
}

NodeAnswer wrongMethod(const NodeRequest& request)
{
    const bool isHead = request.method == "HEAD"; // its answer has no body
    NodeAnswer refusal = NodeAnswer::text(405, isHead ? "" : "405 - Method Not Allowed\n");
    refusal.headers.emplaceBack("Allow", "OPTIONS, POST");
    refusal.framing = NodeAnswer::ContentLength;
    return refusal;
}

} // namespace

std::optional<NodeAnswer> refusalByRules(const NodeRequest& request, quint16 port,
                                         const QList<QByteArray>& allowedOrigins)
{
    if (request.method == "OPTIONS")
        return NodeAnswer {.status = 204, .framing = NodeAnswer::ContentLength};
    if (request.method != "POST")
        return wrongMethod(request);
    if (!mayCall(request, port, allowedOrigins))
        return NodeAnswer::text(403, "403 - Forbidden\n");
    const QByteArray agent = request.header("User-Agent");
    const bool isNode = agent.contains("/kubo/") || agent.contains("/go-ipfs/");
    const QByteArray own = QByteArray("/kubo/") + nodeVersion + '/';
    if (isNode && agent != own && request.path != "/version")
        return NodeAnswer::text(400, "api version mismatch (" + own + " != " + agent + ")\n");
    return std::nullopt;
}
