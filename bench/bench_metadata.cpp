// SPDX-License-Identifier: MIT
// How fast the metadata of 20,000 pins comes in, in the real window, beside a bare network manager in the same run.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "NodeAccessManager.h"
#include "PinModel.h"

#include <QTableView>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int bareCalls = 20'000;
constexpr int openCalls = 24; // of each of the two facts

/// Follows the first refresh of the window until every pin has its size and kind.
class MetadataBench : public Bench
{
public:
    using Bench::Bench;

private:
    void follow() override
    {
        most = options.value(u"facts"_s).toInt();
        table->sortByColumn(options.value(u"sort"_s).toInt(), Qt::AscendingOrder);
        connect(client, &IpfsClient::pinsReceived, this, &MetadataBench::begin);
        connect(client, &IpfsClient::dagStatReceived, this, [this] { count(sizes, sizeSeconds); });
        connect(client, &IpfsClient::kindReceived, this, [this] { count(kinds, kindSeconds); });
    }

    void begin()
    {
        result[u"resetStallMs"_s] = takeStallMs();
        start();
    }

    void count(int& facts, double& lastSeconds)
    {
        ++facts;
        lastSeconds = seconds();
        if (sizes + kinds == std::min(2 * model->rowCount(), most))
            QTimer::singleShot(0, this, &MetadataBench::finish);
    }

    void finish()
    {
        const int latencyMs = options.value(u"latency"_s).toInt();
        result[u"fillStallMs"_s] = takeStallMs();
        filledAfter = seconds();
        result[u"seconds"_s] = filledAfter;
        result[u"callsPerSecond"_s] = (sizes + kinds) / filledAfter;
        result[u"sizesPerSecond"_s] = sizes / sizeSeconds;
        result[u"kindsPerSecond"_s] = kinds / kindSeconds;
        result[u"pins"_s] = model->rowCount();
        result[u"latencyMs"_s] = latencyMs;
        if (latencyMs > 0)
            result[u"shareOfLimit"_s] = sizes / sizeSeconds / (openCalls * 1000.0 / latencyMs);
        result[u"peakRssMiB"_s] = peakRssMiB();
        if (latencyMs == 0)
            compareWithBareLoops();
        print();
    }

    /// What the window costs beyond its calls.
    void compareWithBareLoops()
    {
        const QString url = options.value(u"url"_s) + u"/api/v0/dag/stat?arg="_s + model->allCids().constFirst()
            + u"&progress=false&call=%1"_s;
        NodeAccessManager manager;
        QNetworkAccessManager plain;
        const CallRate bare = measureCalls(manager, url, bareCalls);
        const CallRate qt = measureCalls(plain, url, bareCalls);
        result[u"bareCallsPerSecond"_s] = bare.callsPerSecond;
        result[u"bareCpuMicroseconds"_s] = bare.cpuMicroseconds;
        result[u"qtBareCallsPerSecond"_s] = qt.callsPerSecond;
        result[u"qtBareCpuMicroseconds"_s] = qt.cpuMicroseconds;
        result[u"microsecondsBeyondBareLoop"_s] = 1e6 * (filledAfter / (sizes + kinds) - 1 / bare.callsPerSecond);
    }

    int most = 0;
    int sizes = 0;
    int kinds = 0;
    double filledAfter = 0; ///< seconds
    double sizeSeconds = 0;
    double kindSeconds = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    MetadataBench bench(argc, argv,
                        {{u"pins"_s, u"Number of pins."_s, u"number"_s, u"20000"_s},
                         {u"latency"_s, u"The node's latencies, one after another."_s, u"ms,ms"_s, u"0,20"_s},
                         {u"facts"_s, u"Stop after so many sizes and kinds."_s, u"number"_s, u"1000000"_s},
                         {u"sort"_s, u"Section that the table is sorted by."_s, u"number"_s, u"1"_s}});
    QList<Demo> demos;
    for (const QString& ms : bench.options.value(u"latency"_s).split(u','))
        demos.append({{u"--pins"_s, bench.options.value(u"pins"_s), u"--latency"_s, ms}, {{u"--latency"_s, ms}}});
    return bench.run(demos);
}
