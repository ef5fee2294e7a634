// SPDX-License-Identifier: MIT
// How long the view of unpinned blocks takes over 1,000,000 local refs and 300,000 pins, in the real window.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "PinModel.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Until what is left of the load, as the index of its rows, has been done.
constexpr auto settle = 1200ms;

class UnpinnedBench : public Bench
{
public:
    using Bench::Bench;

private:
    void follow() override
    {
        start(); // the window has asked already, and nothing has come yet
        connect(client, &IpfsClient::streamEntriesLoaded, this, &UnpinnedBench::onEntries);
        connect(client, &IpfsClient::pinsReceived, this, [this] { result[u"joinSeconds"_s] = seconds() - lastLine; });
        connect(model, &PinModel::modelReset, this, [this] {
            QTimer::singleShot(0, this, [this] { result[u"tableSeconds"_s] = seconds(); });
            QTimer::singleShot(settle, this, &UnpinnedBench::finish);
        });
    }

    void onEntries(const QString& source, int count)
    {
        if (source == "refs/local"_L1)
            result[u"localRefs"_s] = count;
        result[u"streamingStallMs"_s] = streamingStallMs = std::max(streamingStallMs, takeStallMs());
        lastLine = seconds();
    }

    void finish()
    {
        result[u"unpinned"_s] = model->rowCount();
        result[u"lastLineSeconds"_s] = lastLine;
        result[u"joinAndResetStallMs"_s] = takeStallMs();
        result[u"peakRssMiB"_s] = peakRssMiB();
        print();
    }

    double streamingStallMs = 0;
    double lastLine = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    const QString chunkBytes = u"chunk-bytes"_s;
    UnpinnedBench bench(argc, argv, {{chunkBytes, u"Size of the demo node's chunks."_s, u"bytes"_s, u"65536"_s}});
    bench.settings = {{u"contentMode"_s, u"unpinned"_s}};
    const QString node = u"--pins 300000 --loose-blocks 700000 --chunk-bytes "_s + bench.options.value(chunkBytes);
    return bench.run({{node.split(u' ')}});
}
