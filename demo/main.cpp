// SPDX-License-Identifier: MIT
#include "DemoNode.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

/// The option's number, or nothing and a word about it.
std::optional<int> numberOf(const QCommandLineParser& parser, const QString& name, int highest)
{
    bool ok = false;
    const int number = parser.value(name).toInt(&ok);
    if (ok && number >= 0 && number <= highest)
        return number;
    std::fprintf(stderr, "--%s takes a whole number from 0 to %d\n", qPrintable(name), highest);
    return std::nullopt;
}

std::optional<DemoOptions> readOptions(const QCommandLineParser& parser)
{
    const auto port = numberOf(parser, u"port"_s, 65535);
    const auto pins = numberOf(parser, u"pins"_s, 10'000'000);
    const auto loose = numberOf(parser, u"loose-blocks"_s, 10'000'000);
    const auto tree = numberOf(parser, u"tree"_s, 10'000'000);
    const auto chunk = numberOf(parser, u"chunk-bytes"_s, 64 * 1024 * 1024);
    const auto pause = numberOf(parser, u"pause"_s, 600'000);
    const auto latency = numberOf(parser, u"latency"_s, 600'000);
    const auto remotePin = numberOf(parser, u"remote-pin-ms"_s, 600'000);
    const auto publish = numberOf(parser, u"publish-ms"_s, 600'000);
    const auto swarm = numberOf(parser, u"swarm-peers"_s, 1'000'000);
    const auto dht = numberOf(parser, u"dht-peers"_s, 1'000'000);
    const auto collected = numberOf(parser, u"gc-cids"_s, 100'000'000);
    if (!publish || !swarm || !dht || !collected)
        return std::nullopt;
    if (!port || !pins || !loose || !tree || !chunk || !pause || !latency || !remotePin)
        return std::nullopt;
    return DemoOptions {.port = static_cast<quint16>(*port),
                        .pins = *pins,
                        .looseBlocks = *loose,
                        .treeEntries = *tree,
                        .chunkBytes = *chunk,
                        .chunkPause = std::chrono::milliseconds(*pause),
                        .latency = std::chrono::milliseconds(*latency),
                        .remoteServices = parser.values(u"remote-service"_s),
                        .remotePinTime = std::chrono::milliseconds(*remotePin),
                        .isOffline = parser.isSet(u"offline"_s),
                        .publishTime = std::chrono::milliseconds(*publish),
                        .swarmPeers = *swarm,
                        .dhtPeers = *dht,
                        .hasStorageMax = !parser.isSet(u"no-storage-max"_s),
                        .collectedCids = *collected,
                        .failsCollecting = parser.isSet(u"gc-errors"_s)};
}

void addOptions(QCommandLineParser& parser)
{
    parser.addOptions(
        {{u"port"_s, u"Port on 127.0.0.1; 0 takes a free one."_s, u"number"_s, u"5001"_s},
         {u"pins"_s, u"Number of pins."_s, u"number"_s, u"10"_s},
         {u"loose-blocks"_s, u"Number of blocks without a pin."_s, u"number"_s, u"0"_s},
         {u"tree"_s, u"Number of files under one more pin."_s, u"number"_s, u"0"_s},
         {u"chunk-bytes"_s, u"Size of a list's chunks; 0 sends line by line."_s, u"bytes"_s, u"0"_s},
         {u"pause"_s, u"Pause before each chunk."_s, u"ms"_s, u"0"_s},
         {u"latency"_s, u"Wait before each answer."_s, u"ms"_s, u"0"_s},
         {u"remote-service"_s,
          u"A remote pinning service that is configured; may be repeated. Services with these names misbehave, also "
          "those that are added later: pins at \"failing\" fail, \"invalid\" refuses its key, "
          "\"unreachable\" is not there, and \"hanging\" never answers."_s,
          u"name"_s},
         {u"remote-pin-ms"_s, u"Time that a remote pin takes from queued to pinned or failed."_s, u"ms"_s, u"4000"_s},
         {u"publish-ms"_s, u"Time that publishing or resolving a name takes."_s, u"ms"_s, u"0"_s},
         {u"offline"_s, u"Have no network: what needs one fails."_s},
         {u"swarm-peers"_s, u"Number of connections; about four times as many addresses are known."_s, u"number"_s,
          u"60"_s},
         {u"dht-peers"_s, u"Number of peers in the WAN's routing table; the LAN's has a twentieth."_s, u"number"_s,
          u"300"_s},
         {u"no-storage-max"_s, u"Have no limit of storage."_s},
         {u"gc-cids"_s, u"Number of made-up CIDs that a garbage collection reports besides its own."_s, u"number"_s,
          u"0"_s},
         {u"gc-errors"_s, u"End a garbage collection with an error."_s}});
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"A stand-in for a Kubo node, in memory, for trying Norvo and for measuring it."_s);
    parser.addHelpOption();
    addOptions(parser);
    parser.process(app);
    const auto options = readOptions(parser);
    if (!options)
        return 2;
    const DemoNode node(*options);
    if (node.port() == 0) {
        std::fprintf(stderr, "cannot listen on port %d: %s\n", options->port, qPrintable(node.lastError()));
        return 1;
    }
    std::printf("http://127.0.0.1:%d\n", node.port());
    std::fflush(stdout);
    return QCoreApplication::exec();
}
