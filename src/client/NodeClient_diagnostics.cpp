// SPDX-License-Identifier: MIT
#include "NodeClient.h"

#include "DiagnosticsParser.h"
#include "RpcQuery.h"

using namespace Qt::StringLiterals;

namespace {

QString boolText(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

} // namespace

void NodeClient::fetchDhtStats(const QString& dhtArg)
{
    ask(u"/stats/dht"_s, dhtArg.isEmpty() ? QUrlQuery() : rpcQuery({{u"arg"_s, dhtArg}}),
        &NodeClient::onDhtStatsReplyFinished);
}

void NodeClient::onDhtStatsReplyFinished(QNetworkReply* reply)
{
    if (isOfFormerNode(reply)) {
        reply->deleteLater();
    } else if (reply->error() != QNetworkReply::NoError) {
        endWithFailure(reply, tr("Failed to get DHT stats: %1").arg(reply->errorString()), &NodeClient::dhtStatsFailed);
    } else {
        readBody(reply, parseDhtStats, [this](const DhtStats& stats) {
            if (stats.data.isUndefined())
                reportFailure(tr("Invalid DHT stats JSON: %1").arg(stats.parserMessage), &NodeClient::dhtStatsFailed);
            else
                emit dhtStatsReceived(stats.data);
        });
    }
}

void NodeClient::fetchBitswapStat(bool verbose, bool human)
{
    ask(u"/bitswap/stat"_s, rpcQuery({{u"verbose"_s, boolText(verbose)}, {u"human"_s, boolText(human)}}),
        &NodeClient::onBitswapStatReplyFinished);
}

void NodeClient::onBitswapStatReplyFinished(QNetworkReply* reply)
{
    if (isOfFormerNode(reply))
        reply->deleteLater();
    else if (const auto stat = goodObject(reply, tr("get bitswap stats"), &NodeClient::bitswapStatFailed))
        emit bitswapStatReceived(*stat);
}

void NodeClient::fetchRepoStat()
{
    ask(u"/repo/stat"_s, {}, &NodeClient::onRepoStatReplyFinished);
}

void NodeClient::onRepoStatReplyFinished(QNetworkReply* reply)
{
    if (isOfFormerNode(reply))
        reply->deleteLater();
    else if (const auto stat = goodObject(reply, tr("get repo stat"), &NodeClient::repoStatFailed))
        emit repoStatReceived(*stat);
}

void NodeClient::runRepoGc()
{
    call(u"/repo/gc"_s, rpcQuery({{u"stream-errors"_s, u"true"_s}}), &NodeClient::onRepoGcReplyFinished);
}

void NodeClient::onRepoGcReplyFinished(QNetworkReply* reply)
{
    if (reply->error() != QNetworkReply::NoError) {
        endWithFailure(reply, tr("Failed to run repo GC: %1").arg(reply->errorString()), &NodeClient::repoGcFailed);
        return;
    }
    readBody(reply, parseGcReport,
             [this](const GcReport& report) { emit repoGcCompleted(report.collectedCids, report.errors); });
}
