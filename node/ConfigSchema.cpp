// SPDX-License-Identifier: MIT
#include "ConfigSchema.h"

#include <QJsonArray>
#include <QRegularExpression>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

enum class Type {
    Text,
    Flag,
    Number, ///< of 64 bits, without a fraction
    Texts,
    OneOrMoreTexts,
    Duration,
    List,
    Map,       ///< of anything
    MapOfTexts ///< of lists of texts
};

struct Member
{
    QLatin1StringView key; ///< from the top, with dots
    Type type;
    bool optional = true; ///< so that it may be left out or be null
};

constexpr std::array members {
    Member {"API.HTTPHeaders"_L1, Type::MapOfTexts},
    Member {"API.Authorizations"_L1, Type::Map},
    Member {"Addresses.API"_L1, Type::OneOrMoreTexts, false},
    Member {"Addresses.Announce"_L1, Type::Texts, false},
    Member {"Addresses.AppendAnnounce"_L1, Type::Texts, false},
    Member {"Addresses.Gateway"_L1, Type::OneOrMoreTexts, false},
    Member {"Addresses.NoAnnounce"_L1, Type::Texts, false},
    Member {"Addresses.Swarm"_L1, Type::Texts, false},
    Member {"AutoConf.Enabled"_L1, Type::Flag},
    Member {"AutoConf.RefreshInterval"_L1, Type::Duration},
    Member {"AutoConf.URL"_L1, Type::Text},
    Member {"AutoNAT.ServiceMode"_L1, Type::Text},
    Member {"AutoNAT.Throttle"_L1, Type::Map},
    Member {"AutoTLS.Enabled"_L1, Type::Flag},
    Member {"AutoTLS.DomainSuffix"_L1, Type::Text},
    Member {"Bitswap.Libp2pEnabled"_L1, Type::Flag},
    Member {"Bitswap.ServerEnabled"_L1, Type::Flag},
    Member {"Bootstrap"_L1, Type::Texts, false},
    Member {"DNS.MaxCacheTTL"_L1, Type::Duration},
    Member {"DNS.Resolvers"_L1, Type::Map},
    Member {"Datastore.BlockKeyCacheSize"_L1, Type::Number},
    Member {"Datastore.BloomFilterSize"_L1, Type::Number, false},
    Member {"Datastore.GCPeriod"_L1, Type::Text},
    Member {"Datastore.HashOnRead"_L1, Type::Flag, false},
    Member {"Datastore.Spec"_L1, Type::Map},
    Member {"Datastore.StorageGCWatermark"_L1, Type::Number, false},
    Member {"Datastore.StorageMax"_L1, Type::Text, false},
    Member {"Datastore.WriteThrough"_L1, Type::Flag},
    Member {"Discovery.MDNS.Enabled"_L1, Type::Flag, false},
    Member {"Experimental.FilestoreEnabled"_L1, Type::Flag, false},
    Member {"Experimental.Libp2pStreamMounting"_L1, Type::Flag, false},
    Member {"Experimental.OptimisticProvide"_L1, Type::Flag, false},
    Member {"Experimental.OptimisticProvideJobsPoolSize"_L1, Type::Number, false},
    Member {"Experimental.P2pHttpProxy"_L1, Type::Flag, false},
    Member {"Experimental.UrlstoreEnabled"_L1, Type::Flag, false},
    Member {"Gateway.DeserializedResponses"_L1, Type::Flag},
    Member {"Gateway.DisableHTMLErrors"_L1, Type::Flag},
    Member {"Gateway.ExposeRoutingAPI"_L1, Type::Flag},
    Member {"Gateway.HTTPHeaders"_L1, Type::MapOfTexts},
    Member {"Gateway.MaxConcurrentRequests"_L1, Type::Number},
    Member {"Gateway.NoDNSLink"_L1, Type::Flag, false},
    Member {"Gateway.NoFetch"_L1, Type::Flag, false},
    Member {"Gateway.PublicGateways"_L1, Type::Map},
    Member {"Gateway.RetrievalTimeout"_L1, Type::Duration},
    Member {"Gateway.RootRedirect"_L1, Type::Text, false},
    Member {"HTTPRetrieval.Allowlist"_L1, Type::Texts},
    Member {"HTTPRetrieval.Denylist"_L1, Type::Texts},
    Member {"HTTPRetrieval.Enabled"_L1, Type::Flag},
    Member {"HTTPRetrieval.NumWorkers"_L1, Type::Number},
    Member {"Identity.PeerID"_L1, Type::Text, false},
    Member {"Identity.PrivKey"_L1, Type::Text},
    Member {"Import.BatchMaxNodes"_L1, Type::Number},
    Member {"Import.BatchMaxSize"_L1, Type::Number},
    Member {"Import.CidVersion"_L1, Type::Number},
    Member {"Import.HashFunction"_L1, Type::Text},
    Member {"Import.UnixFSChunker"_L1, Type::Text},
    Member {"Import.UnixFSDirectoryMaxLinks"_L1, Type::Number},
    Member {"Import.UnixFSFileMaxLinks"_L1, Type::Number},
    Member {"Import.UnixFSHAMTDirectoryMaxFanout"_L1, Type::Number},
    Member {"Import.UnixFSHAMTDirectorySizeThreshold"_L1, Type::Text},
    Member {"Import.UnixFSRawLeaves"_L1, Type::Flag},
    Member {"Internal.BackupBootstrapInterval"_L1, Type::Duration},
    Member {"Internal.Bitswap"_L1, Type::Map},
    Member {"Internal.Libp2pForceReachability"_L1, Type::Text},
    Member {"Internal.MFSAutoflushThreshold"_L1, Type::Number},
    Member {"Ipns.DelegatedPublishers"_L1, Type::Texts},
    Member {"Ipns.MaxCacheTTL"_L1, Type::Duration},
    Member {"Ipns.RecordLifetime"_L1, Type::Text, false},
    Member {"Ipns.RepublishPeriod"_L1, Type::Text, false},
    Member {"Ipns.ResolveCacheSize"_L1, Type::Number, false},
    Member {"Ipns.UsePubsub"_L1, Type::Flag},
    Member {"Migration.DownloadSources"_L1, Type::Texts},
    Member {"Migration.Keep"_L1, Type::Text},
    Member {"Mounts.FuseAllowOther"_L1, Type::Flag, false},
    Member {"Mounts.IPFS"_L1, Type::Text, false},
    Member {"Mounts.IPNS"_L1, Type::Text, false},
    Member {"Mounts.MFS"_L1, Type::Text, false},
    Member {"Peering.Peers"_L1, Type::List, false},
    Member {"Pinning.RemoteServices"_L1, Type::Map},
    Member {"Plugins.Plugins"_L1, Type::Map},
    Member {"Provide.DHT.Interval"_L1, Type::Duration},
    Member {"Provide.DHT.MaxWorkers"_L1, Type::Number},
    Member {"Provide.DHT.SweepEnabled"_L1, Type::Flag},
    Member {"Provide.Enabled"_L1, Type::Flag},
    Member {"Provide.Strategy"_L1, Type::Text},
    Member {"Pubsub.DisableSigning"_L1, Type::Flag, false},
    Member {"Pubsub.Enabled"_L1, Type::Flag},
    Member {"Pubsub.Router"_L1, Type::Text, false},
    Member {"Pubsub.SeenMessagesTTL"_L1, Type::Duration},
    Member {"Routing.AcceleratedDHTClient"_L1, Type::Flag},
    Member {"Routing.DelegatedRouters"_L1, Type::Texts},
    Member {"Routing.LoopbackAddressesOnLanDHT"_L1, Type::Flag},
    Member {"Routing.Methods"_L1, Type::Map},
    Member {"Routing.Routers"_L1, Type::Map},
    Member {"Routing.Type"_L1, Type::Text},
    Member {"Swarm.AddrFilters"_L1, Type::Texts, false},
    Member {"Swarm.ConnMgr.GracePeriod"_L1, Type::Duration},
    Member {"Swarm.ConnMgr.HighWater"_L1, Type::Number},
    Member {"Swarm.ConnMgr.LowWater"_L1, Type::Number},
    Member {"Swarm.ConnMgr.SilencePeriod"_L1, Type::Duration},
    Member {"Swarm.ConnMgr.Type"_L1, Type::Text},
    Member {"Swarm.DisableBandwidthMetrics"_L1, Type::Flag, false},
    Member {"Swarm.DisableNatPortMap"_L1, Type::Flag, false},
    Member {"Swarm.EnableHolePunching"_L1, Type::Flag},
    Member {"Swarm.RelayClient.Enabled"_L1, Type::Flag},
    Member {"Swarm.RelayClient.StaticRelays"_L1, Type::Texts},
    Member {"Swarm.RelayService.ConnectionDurationLimit"_L1, Type::Duration},
    Member {"Swarm.RelayService.Enabled"_L1, Type::Flag},
    Member {"Swarm.RelayService.MaxReservations"_L1, Type::Number},
    Member {"Swarm.ResourceMgr.Allowlist"_L1, Type::Texts},
    Member {"Swarm.ResourceMgr.Enabled"_L1, Type::Flag},
    Member {"Swarm.ResourceMgr.MaxFileDescriptors"_L1, Type::Number},
    Member {"Swarm.ResourceMgr.MaxMemory"_L1, Type::Text},
    Member {"Swarm.Transports.Multiplexers"_L1, Type::Map},
    Member {"Swarm.Transports.Network"_L1, Type::Map},
    Member {"Swarm.Transports.Security"_L1, Type::Map},
    Member {"Version.AgentSuffix"_L1, Type::Text},
    Member {"Version.SwarmCheckEnabled"_L1, Type::Flag},
    Member {"Version.SwarmCheckPercentThreshold"_L1, Type::Number},
};

bool isMap(Type type)
{
    return type == Type::Map || type == Type::MapOfTexts;
}

bool isListOfTexts(const QJsonValue& value)
{
    const QJsonArray list = value.toArray();
    return value.isArray() && std::ranges::all_of(list, [](const auto& item) { return QJsonValue(item).isString(); });
}

bool isDuration(const QJsonValue& value)
{
    static const QRegularExpression form(uR"(^(0|default|-?(\d+(\.\d*)?(ns|us|µs|ms|s|m|h))+)$)"_s);
    return form.match(value.toString()).hasMatch();
}

bool suits(Type type, const QJsonValue& value)
{
    switch (type) {
    case Type::Text:
        return value.isString();
    case Type::Duration:
        return isDuration(value);
    case Type::Flag:
        return value.isBool();
    case Type::Number:
        return value.isDouble() && value.toInteger(0) == value.toInteger(1);
    case Type::Texts:
        return isListOfTexts(value);
    case Type::OneOrMoreTexts:
        return value.isString() || isListOfTexts(value);
    case Type::List:
        return value.isArray();
    case Type::MapOfTexts: {
        const QJsonObject map = value.toObject();
        return value.isObject() && std::ranges::all_of(map, [](const auto& item) { return isListOfTexts(item); });
    }
    default:
        return value.isObject();
    }
}

QJsonValue zeroOf(Type type)
{
    switch (type) {
    case Type::Text:
    case Type::Duration:
        return QString();
    case Type::Flag:
        return false;
    case Type::Number:
        return 0;
    default:
        return {};
    }
}

QLatin1StringView wordFor(Type type)
{
    switch (type) {
    case Type::Text:
    case Type::Duration:
        return "string"_L1;
    case Type::Flag:
        return "bool"_L1;
    case Type::Number:
        return "int64"_L1;
    case Type::Texts:
    case Type::OneOrMoreTexts:
        return "[]string"_L1;
    case Type::List:
        return "[]peer.AddrInfo"_L1;
    default:
        return "map[string]interface {}"_L1;
    }
}

QLatin1StringView wordFor(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return "bool"_L1;
    case QJsonValue::Double:
        return "number"_L1;
    case QJsonValue::String:
        return "string"_L1;
    case QJsonValue::Array:
        return "array"_L1;
    default:
        return "object"_L1;
    }
}

QString mismatch(const QJsonValue& value, const QString& key, QLatin1StringView wanted)
{
    return u"json: cannot unmarshal %1 into Go struct field Config.%2 of type %3"_s.arg(wordFor(value), key, wanted);
}

/// A null is the zero value of a plain member.
CheckedConfig checkedMember(Type type, bool optional, const QString& key, const QJsonValue& value)
{
    if (value.isNull() || value.isUndefined())
        return {.value = optional ? QJsonValue() : zeroOf(type)};
    if (suits(type, value))
        return {.value = value};
    if (type == Type::Duration && value.isString())
        return {.fault = u"time: invalid duration \"%1\""_s.arg(value.toString())};
    return {.fault = mismatch(value, key, wordFor(type))};
}

/// The names of what is in the structure right below `prefix`, which is empty or ends in a dot.
QStringList namesBelow(const QString& prefix)
{
    QStringList names;
    for (const Member& member : members) {
        if (member.key.startsWith(prefix))
            names.append(QString(member.key.sliced(prefix.size())).section(u'.', 0, 0));
    }
    names.removeDuplicates();
    return names;
}

const Member* memberAt(const QString& key)
{
    const auto* const member = std::ranges::find(members, key, &Member::key);
    return member == members.end() ? nullptr : member;
}

/// The map that the key is in, if it is in one.
const Member* mapAround(const QString& key)
{
    const auto* const map = std::ranges::find_if(
        members, [&key](const Member& m) { return isMap(m.type) && key.startsWith(m.key + "."_L1); });
    return map == members.end() ? nullptr : map;
}

CheckedConfig checkedStruct(const QStringList& path, const QJsonValue& value)
{
    const QString key = path.join(u'.');
    if (!value.isObject() && !value.isNull() && !value.isUndefined())
        return {.fault = mismatch(value, key, "config"_L1)};
    const QJsonObject given = value.toObject();
    QJsonObject result;
    for (const QString& name : namesBelow(key.isEmpty() ? key : key + u'.')) {
        const QStringList inner = path + QStringList {name};
        const Member* const member = memberAt(inner.join(u'.'));
        if (member && member->optional && !given.contains(name))
            continue;
        const CheckedConfig checked = checkedConfig(inner, given.value(name));
        if (!checked.fault.isEmpty())
            return {.fault = checked.fault};
        result.insert(name, checked.value);
    }
    return {.value = result};
}

} // namespace

bool isConfigPath(const QStringList& path)
{
    const QString key = path.join(u'.');
    return memberAt(key) || mapAround(key) || !namesBelow(key + u'.').isEmpty();
}

CheckedConfig checkedConfig(const QStringList& path, const QJsonValue& value)
{
    const QString key = path.join(u'.');
    if (const Member* const member = memberAt(key))
        return checkedMember(member->type, member->optional, key, value);
    if (const Member* const map = mapAround(key)) {
        const bool isEntry = key.count(u'.') == QString(map->key).count(u'.') + 1;
        return map->type == Type::MapOfTexts && isEntry ? checkedMember(Type::Texts, true, key, value)
                                                        : CheckedConfig {.value = value};
    }
    return checkedStruct(path, value);
}

QJsonObject overlaid(QJsonObject below, const QJsonObject& above)
{
    for (const QString& name : above.keys()) {
        const QJsonValue old = below.value(name);
        const QJsonValue over = above.value(name);
        const bool areObjects = old.isObject() && over.isObject();
        below.insert(name, areObjects ? overlaid(old.toObject(), over.toObject()) : over);
    }
    return below;
}

QJsonObject withoutSecrets(QJsonObject document)
{
    const auto without = [](const QJsonValue& object, const QString& name) {
        QJsonObject rest = object.toObject();
        rest.remove(name);
        return rest;
    };
    document.insert("Identity"_L1, without(document.value("Identity"_L1), u"PrivKey"_s));
    document.insert("API"_L1, without(document.value("API"_L1), u"Authorizations"_s));
    QJsonObject pinning = document.value("Pinning"_L1).toObject();
    QJsonObject services = pinning.value("RemoteServices"_L1).toObject();
    for (const QString& name : services.keys()) {
        QJsonObject service = services.value(name).toObject();
        service.insert("API"_L1, without(service.value("API"_L1), u"Key"_s));
        services.insert(name, service);
    }
    pinning.insert("RemoteServices"_L1, services);
    document.insert("Pinning"_L1, pinning);
    return document;
}
