// SPDX-License-Identifier: MIT
#include "DemoConfig.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

QJsonObject withValue(QJsonObject object, const QStringList& path, const QJsonValue& value)
{
    const QString& name = path.constFirst();
    object.insert(name, path.size() == 1 ? value : withValue(object.value(name).toObject(), path.sliced(1), value));
    return object;
}

constexpr QByteArrayView initialFile {R"({
"API":{"HTTPHeaders":{}},
"Addresses":{"API":"/ip4/127.0.0.1/tcp/5001","Announce":[],"AppendAnnounce":[],"Gateway":"/ip4/127.0.0.1/tcp/8080",
 "NoAnnounce":[],"Swarm":["/ip4/0.0.0.0/tcp/4001","/ip6/::/tcp/4001","/ip4/0.0.0.0/udp/4001/webrtc-direct",
 "/ip4/0.0.0.0/udp/4001/quic-v1","/ip4/0.0.0.0/udp/4001/quic-v1/webtransport","/ip6/::/udp/4001/webrtc-direct",
 "/ip6/::/udp/4001/quic-v1","/ip6/::/udp/4001/quic-v1/webtransport"]},
"AutoConf":{},"AutoNAT":{},"AutoTLS":{},"Bitswap":{},"Bootstrap":["auto"],
"DNS":{"Resolvers":{".":"auto"}},
"Datastore":{"BlockKeyCacheSize":null,"BloomFilterSize":0,"GCPeriod":"1h","HashOnRead":false,
 "Spec":{"mounts":[{"mountpoint":"/blocks","path":"blocks","prefix":"flatfs.datastore",
 "shardFunc":"/repo/flatfs/shard/v1/next-to-last/2","sync":false,"type":"flatfs"},
 {"compression":"none","mountpoint":"/","path":"datastore","prefix":"leveldb.datastore","type":"levelds"}],
 "type":"mount"},"StorageGCWatermark":90,"StorageMax":"10GB"},
"Discovery":{"MDNS":{"Enabled":true}},
"Experimental":{"FilestoreEnabled":false,"Libp2pStreamMounting":false,"OptimisticProvide":false,
 "OptimisticProvideJobsPoolSize":0,"P2pHttpProxy":false,"UrlstoreEnabled":false},
"Gateway":{"DeserializedResponses":null,"DisableHTMLErrors":null,"ExposeRoutingAPI":null,"HTTPHeaders":{},
 "NoDNSLink":false,"NoFetch":false,"PublicGateways":null,"RootRedirect":""},
"HTTPRetrieval":{},
"Identity":{"PeerID":"12D3KooWAGok5BHR3zQCMcfB5a5ntgco7JCLFwtEFB229Awz5eC3","PrivKey":"a demo node has no private key"},
"Import":{},"Internal":{},
"Ipns":{"DelegatedPublishers":["auto"],"RecordLifetime":"","RepublishPeriod":"","ResolveCacheSize":128},
"Migration":{},
"Mounts":{"FuseAllowOther":false,"IPFS":"/ipfs","IPNS":"/ipns","MFS":"/mfs"},
"Peering":{"Peers":null},"Pinning":{"RemoteServices":{}},"Plugins":{"Plugins":null},
"Provide":{"DHT":{}},"Pubsub":{"DisableSigning":false,"Router":""},
"Routing":{"DelegatedRouters":["auto"]},
"Swarm":{"AddrFilters":null,"ConnMgr":{},"DisableBandwidthMetrics":false,"DisableNatPortMap":false,
 "RelayClient":{},"RelayService":{},"ResourceMgr":{},"Transports":{"Multiplexers":{},"Network":{},"Security":{}}},
"Version":{}})"};

} // namespace

DemoConfig::DemoConfig(const QMap<QString, QString>& remoteServices)
    : file(QJsonDocument::fromJson(initialFile.toByteArray()).object())
{
    for (auto service = remoteServices.cbegin(); service != remoteServices.cend(); ++service)
        addRemoteService(service.key(), service.value(), u"secret"_s);
}

const QStringList& DemoConfig::servicesPath()
{
    static const QStringList path {u"Pinning"_s, u"RemoteServices"_s};
    return path;
}

QMap<QString, QString> DemoConfig::remoteServices() const
{
    const QJsonObject services = value(servicesPath()).toObject();
    QMap<QString, QString> endpoints;
    for (auto service = services.begin(); service != services.end(); ++service)
        endpoints.insert(service.key(), service.value()["API"_L1]["Endpoint"_L1].toString());
    return endpoints;
}

void DemoConfig::addRemoteService(const QString& name, const QString& endpoint, const QString& key)
{
    const QJsonObject mfs {{u"Enable"_s, false}, {u"PinName"_s, QString()}, {u"RepinInterval"_s, QString()}};
    setValue(servicesPath() + QStringList {name},
             QJsonObject {{u"API"_s, QJsonObject {{u"Endpoint"_s, endpoint}, {u"Key"_s, key}}},
                          {u"Policies"_s, QJsonObject {{u"MFS"_s, mfs}}}});
}

QJsonValue DemoConfig::value(const QStringList& path) const
{
    QJsonValue found = file;
    for (const QString& name : path)
        found = found.isObject() ? found.toObject().value(name) : QJsonValue(QJsonValue::Undefined);
    return found;
}

void DemoConfig::setValue(const QStringList& path, const QJsonValue& newValue)
{
    file = withValue(file, path, newValue);
}
