// SPDX-License-Identifier: MIT
#include "BootstrapService.h"

#include "DemoPeers.h"
#include "DemoWire.h"

#include <QJsonArray>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QStringList configKey {u"Bootstrap"_s};

/// The addresses that "auto" means.
QStringList expandedAuto()
{
    constexpr int firstPeer = 2'000'000'000; // far from the peers that are connected
    QStringList addresses;
    for (int i = 0; i < 4; ++i)
        addresses.append(u"/dnsaddr/bootstrap.example/p2p/"_s + demoPeerId(firstPeer + i));
    addresses.append(u"/ip4/198.18.0.9/tcp/4001/p2p/"_s + demoPeerId(firstPeer + 4));
    addresses.append(u"/ip4/198.18.0.9/udp/4001/quic-v1/p2p/"_s + demoPeerId(firstPeer + 4));
    return addresses;
}

/// Why the list does not take the address; empty if it takes it.
QString faultOf(const QString& address)
{
    static const QRegularExpression transport(u"^/(ip4|ip6|dns|dns4|dns6|dnsaddr)/[^/]+"_s);
    if (address == "auto"_L1)
        return {};
    const auto parsed = parsePeerAddress(address);
    if (parsed && parsed->transport.isEmpty())
        return u"bootstrap address without a transport: "_s + address;
    if (!parsed || !transport.match(parsed->transport).hasMatch())
        return u"invalid bootstrap address: "_s + address;
    return {};
}

NodeAnswer peersAnswer(const QByteArray& json)
{
    return NodeAnswer::json("{\"Peers\":" + json + "}\n");
}

/// Each named address once; "default" is an older word for "auto". Or why one of them is refused.
std::optional<NodeAnswer> readAddresses(const NodeRequest& request, QStringList& addresses)
{
    for (const QString& text : request.values(u"arg"_s)) {
        const QString address = text == "default"_L1 ? u"auto"_s : text;
        if (const QString fault = faultOf(address); !fault.isEmpty())
            return errorOf(fault);
        addresses.append(address);
    }
    addresses.removeDuplicates();
    return std::nullopt;
}

} // namespace

QList<NodeCommand> BootstrapService::commands()
{
    const NodeOption expands {u"expand-auto"_s, NodeOption::Bool};
    return {{.path = "/bootstrap", .options = {expands}, .run = [this](const NodeRequest& r) { return list(r); }},
            {.path = "/bootstrap/list", .options = {expands}, .run = [this](const NodeRequest& r) { return list(r); }},
            {.path = "/bootstrap/add",
             .argument = u"peer"_s,
             .run = [this](const NodeRequest& request) { return add(request); }},
            {.path = "/bootstrap/rm",
             .argument = u"peer"_s,
             .run = [this](const NodeRequest& request) { return remove(request); }},
            {.path = "/bootstrap/rm/all", .run = [this](const NodeRequest&) { return removeAll(); }}};
}

QStringList BootstrapService::peers() const
{
    return config.value(configKey).toVariant().toStringList();
}

void BootstrapService::setPeers(const QStringList& newPeers)
{
    config.setValue(configKey, newPeers.isEmpty() ? QJsonValue() : QJsonArray::fromStringList(newPeers));
}

NodeAnswer BootstrapService::list(const NodeRequest& request) const
{
    QStringList shown = peers();
    if (const qsizetype at = shown.indexOf("auto"_L1); at >= 0 && isSet(request, u"expand-auto"_s))
        shown = shown.first(at) + expandedAuto() + shown.sliced(at + 1);
    return peersAnswer(jsonList(shown));
}

/// Answers what was named, also if it was in the list already.
NodeAnswer BootstrapService::add(const NodeRequest& request)
{
    QStringList added;
    if (const auto refusal = readAddresses(request, added))
        return *refusal;
    QStringList rest = peers();
    rest.removeIf([&added](const QString& address) { return added.contains(address); });
    setPeers(added + rest);
    return peersAnswer(jsonList(added));
}

NodeAnswer BootstrapService::remove(const NodeRequest& request)
{
    QStringList named;
    if (const auto refusal = readAddresses(request, named))
        return *refusal;
    QStringList rest = peers();
    if (rest.contains("auto"_L1))
        return NodeAnswer::error("cannot remove individual bootstrap peers when using 'auto' placeholder: remove "
                                 "'auto' first by removing all");
    QStringList removed;
    std::ranges::copy_if(named, std::back_inserter(removed), [&rest](const QString& a) { return rest.contains(a); });
    rest.removeIf([&removed](const QString& address) { return removed.contains(address); });
    setPeers(rest);
    return peersAnswer(removed.isEmpty() ? "[]" : jsonList(removed));
}

NodeAnswer BootstrapService::removeAll()
{
    const QStringList removed = peers();
    setPeers({});
    return peersAnswer(jsonList(removed));
}
