// SPDX-License-Identifier: MIT
#pragma once

#include "IpnsRecords.h"
#include "RpcClient.h"

#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QStringList>

struct JsonBody;

/// What the node is and does itself: who it is, its names, its configuration, its network and its repository.
///
/// One block for each family: its operations, its signals, its reply handlers, and what only they need.
class NodeClient : public RpcClient
{
    Q_OBJECT

    using ReplyHandler = void (NodeClient::*)(QNetworkReply*);

    // The node: NodeClient.cpp. A failure is errorOccurred, after connectionStatusChanged(false) if ping.
public:
    /// "/version". Emits connectionStatusChanged(true), or connectionStatusChanged(false) and then errorOccurred.
    void ping();
    /// "/id". Emits nodeInfoReceived, or errorOccurred; an answer that is no object is ignored.
    void fetchNodeInfo();

signals:
    /// Only from ping and from pin lists of the current load.
    void connectionStatusChanged(bool connected);
    void nodeInfoReceived(QString nodeId, QString agentVersion);

private slots:
    void onPingReplyFinished(QNetworkReply* reply);
    void onNodeInfoReplyFinished(QNetworkReply* reply);

    // Names: NodeClient_ipns.cpp. A failure is errorOccurred, then the call's own signal; an argument that is missing
    // is reported by the latter alone, before the call returns.
public:
    /// "/key/list".
    void fetchIpnsKeys();
    /// "/name/publish" of a CID or path under `key`, else under "self". Takes as long as the node needs: minutes.
    void publishIpns(const QString& target, const QString& key);
    /// "/name/resolve" of a name with or without "/ipns/".
    void resolveIpns(const QString& name);

signals:
    /// In the node's order; keys without a name are left out.
    void ipnsKeysReceived(QList<IpnsKeyEntry> keys);
    void ipnsKeysFailed(QString message);
    void ipnsPublished(IpnsPublishResult result);
    void ipnsPublishFailed(QString message);
    void ipnsResolved(IpnsResolveResult result);
    void ipnsResolveFailed(QString message);

private slots:
    void onIpnsKeysReplyFinished(QNetworkReply* reply);
    void onIpnsPublishReplyFinished(QNetworkReply* reply);
    void onIpnsResolveReplyFinished(QNetworkReply* reply);

    // Configuration: NodeClient_config.cpp. A failure is errorOccurred, then the call's own signal; an argument that
    // makes no sense is reported by the latter alone, before the call returns.
public:
    /// "/config/show".
    void fetchConfig();
    /// "/config" of a dotted key, in which `expandAuto` puts real values in place of "auto".
    void fetchConfigKey(const QString& key, bool expandAuto);
    /// "/config" with a value, as a text or, with one of the two flags, as a boolean or as JSON.
    void setConfigKey(const QString& key, const QString& value, bool isBool, bool isJson);
    /// "/config/replace" with a whole document, which the node lays over its own.
    void replaceConfig(const QByteArray& jsonPayload);

signals:
    void configReceived(QJsonObject config);
    void configFailed(QString message);
    /// Key and value as the node answered.
    void configKeyReceived(QString key, QJsonValue value);
    void configKeyRequestFailed(QString message);
    void configKeySet(QString key, QJsonValue value);
    void configKeySetFailed(QString message);
    void configReplaceSucceeded();
    void configReplaceFailed(QString message);

private slots:
    void onConfigReplyFinished(QNetworkReply* reply);
    void onConfigKeyGetReplyFinished(QNetworkReply* reply);
    void onConfigKeySetReplyFinished(QNetworkReply* reply);
    void onConfigReplaceReplyFinished(QNetworkReply* reply);

private:
    void deliverConfig(const JsonBody& answer);

    // Diagnostics: NodeClient_diagnostics.cpp. A failure is errorOccurred, then the call's own signal.
public:
    /// "/stats/dht" of one view, "wan" or "lan" or their servers; of the first two if `dhtArg` is empty.
    void fetchDhtStats(const QString& dhtArg);
    /// "/bitswap/stat".
    void fetchBitswapStat(bool verbose, bool human);
    /// "/repo/stat".
    void fetchRepoStat();
    /// "/repo/gc". Answers once all of the collection is over.
    void runRepoGc();

signals:
    /// The object of one view, or an array of several.
    void dhtStatsReceived(QJsonValue data);
    void dhtStatsFailed(QString message);
    void bitswapStatReceived(QJsonObject stat);
    void bitswapStatFailed(QString message);
    void repoStatReceived(QJsonObject stat);
    void repoStatFailed(QString message);
    /// The CIDs that are gone, and what the node reported for those that could not be removed.
    void repoGcCompleted(QStringList collectedCids, QStringList errors);
    void repoGcFailed(QString message);

private slots:
    void onDhtStatsReplyFinished(QNetworkReply* reply);
    void onBitswapStatReplyFinished(QNetworkReply* reply);
    void onRepoStatReplyFinished(QNetworkReply* reply);
    void onRepoGcReplyFinished(QNetworkReply* reply);

    // Swarm and bootstrap list: NodeClient_swarm.cpp. A failure is swarmRequestFailed or bootstrapRequestFailed, then
    // the result of a call that acts; never errorOccurred. A target that is missing is reported by the former alone,
    // before the call returns.
public:
    /// "/swarm/peers".
    void fetchSwarmPeers();
    /// "/swarm/addrs".
    void fetchSwarmAddrs();
    /// "/swarm/addrs/listen".
    void fetchSwarmListenAddrs();
    /// "/swarm/connect".
    void swarmConnect(const QString& multiaddr);
    /// "/swarm/disconnect". An address of the last list of peers is completed by its peer, as the node wants it; of
    /// peers behind one relay, who have the same address, each call takes the next.
    void swarmDisconnect(const QString& multiaddr);
    /// "/bootstrap/list", in which `expandAuto` puts real addresses in place of "auto".
    void fetchBootstrapPeers(bool expandAuto);
    /// "/bootstrap/add".
    void bootstrapAddPeer(const QString& peer);
    /// "/bootstrap/rm".
    void bootstrapRemovePeers(const QStringList& peers);
    /// "/bootstrap/rm/all".
    void bootstrapRemoveAllPeers();

signals:
    /// The address of each connection, or the peer where the node gives none.
    void swarmPeersReceived(QStringList peers);
    void swarmAddrsReceived(QHash<QString, QStringList> peerAddrs);
    void swarmListenAddrsReceived(QStringList listenAddrs);
    /// `target` as it was asked for.
    void swarmConnectResult(QString target, bool ok, QStringList messages);
    void swarmDisconnectResult(QString target, bool ok, QStringList messages);
    /// `operation` is "peers", "addrs", "listen", "connect" or "disconnect".
    void swarmRequestFailed(QString operation, QString message);
    void bootstrapPeersReceived(QStringList peers);
    /// The peers that the node names: those of the call, not its list.
    void bootstrapAddResult(QString peer, bool ok, QStringList peers);
    void bootstrapRemoveResult(QStringList removed, bool ok, QStringList peers);
    /// `operation` is "bootstrap-list", "bootstrap-add", "bootstrap-rm" or "bootstrap-rm-all".
    void bootstrapRequestFailed(QString operation, QString message);

private slots:
    void onSwarmPeersReplyFinished(QNetworkReply* reply);
    void onSwarmAddrsReplyFinished(QNetworkReply* reply);
    void onSwarmListenAddrsReplyFinished(QNetworkReply* reply);
    void onSwarmConnectReplyFinished(QNetworkReply* reply);
    void onSwarmDisconnectReplyFinished(QNetworkReply* reply);
    void onBootstrapListReplyFinished(QNetworkReply* reply);
    void onBootstrapAddReplyFinished(QNetworkReply* reply);
    void onBootstrapRmReplyFinished(QNetworkReply* reply);
    void onBootstrapRmAllReplyFinished(QNetworkReply* reply);

protected:
    explicit NodeClient(QObject* parent);

private:
    using FailureSignal = void (NodeClient::*)(QString operation, QString message);
    template <typename Records, typename Deliver>
    void readList(QNetworkReply* reply, const QString& action, FailureSignal failed, const QString& operation,
                  Records (*read)(const QJsonObject&), Deliver deliver);
    using TargetSignal = void (NodeClient::*)(QString target, bool ok, QStringList messages);
    void callSwarm(const QString& path, const QString& arg, const QString& target, ReplyHandler handler);
    void reportSwarmResult(const QNetworkReply* reply, const JsonReply& answer, const QString& operation,
                           TargetSignal result);
    void reportBootstrapRemoval(QNetworkReply* reply, const QString& action, const QString& operation);
    QString withItsPeer(const QString& target);

    QHash<QString, QStringList> peersOfAddress; ///< of the last list of connections; the next to be closed first
};
