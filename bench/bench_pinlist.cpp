// SPDX-License-Identifier: MIT
// How long a pin list takes from the first request to the painted table, in the real window.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "PinModel.h"

#include <QTableView>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Follows the window's first refresh.
class PinListBench : public Bench
{
public:
    using Bench::Bench;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, this, &PinListBench::finish);
        }
        return false;
    }

private:
    void follow() override
    {
        connect(client, &IpfsClient::rpcRequestIssued, this, &PinListBench::begin, Qt::SingleShotConnection);
        connect(client, &IpfsClient::connectionStatusChanged, this, &PinListBench::onLastByte);
        connect(model, &PinModel::modelAboutToBeReset, this, [this] { result[u"pinsReceivedSeconds"_s] = seconds(); });
        connect(client, &IpfsClient::pinsReceived, this, [this] { table->viewport()->installEventFilter(this); });
    }

    void begin()
    {
        start();
        threadCpu = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
        processCpu = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID);
    }

    /// Comes once for each of the two streams; the last one counts.
    void onLastByte()
    {
        result[u"lastByteSeconds"_s] = seconds();
        result[u"streamingStallMs"_s] = streamingStallMs = std::max(streamingStallMs, takeStallMs());
        result[u"streamingCpuSeconds"_s] = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID) - processCpu;
    }

    void finish()
    {
        result[u"pins"_s] = table->model()->rowCount();
        result[u"tableSeconds"_s] = seconds();
        result[u"mainThreadCpuSeconds"_s] = cpuSeconds(CLOCK_THREAD_CPUTIME_ID) - threadCpu;
        result[u"resetStallMs"_s] = takeStallMs();
        result[u"peakRssMiB"_s] = peakRssMiB();
        print();
    }

    double threadCpu = 0;
    double processCpu = 0;
    double streamingStallMs = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    const QString chunkBytes = u"chunk-bytes"_s;
    PinListBench bench(argc, argv,
                       {{chunkBytes, u"Size of the demo node's chunks; 0 sends line by line."_s, u"bytes"_s, u"0"_s}});
    QList<Demo> demos;
    for (const auto& pins : {u"10000"_s, u"100000"_s, u"500000"_s})
        demos.append({{u"--pins"_s, pins, u"--chunk-bytes"_s, bench.options.value(chunkBytes)}});
    return bench.run(demos);
}
