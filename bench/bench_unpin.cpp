// SPDX-License-Identifier: MIT
// How long one unpin of 5,000 CIDs takes and holds up the real window: at one go, gone through one CID at a time, and
// of 16,000 of which the first call leaves seven. Removes pins of the node.

#include "BenchSupport.h"
#include "IpfsClient.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype usualBatch = 5000;
constexpr qsizetype largeBatch = 16'000; // as many as one request holds

class UnpinBench : public Bench
{
public:
    using Bench::Bench;

private:
    void follow() override
    {
        connect(client, &IpfsClient::pinsReceived, this, &UnpinBench::choose, Qt::SingleShotConnection);
        connect(client, &IpfsClient::unpinned, this, &UnpinBench::finish);
        connect(client, &IpfsClient::unpinProgress, this, [this] { ++singleCalls; });
    }

    void choose(const QList<PinEntry>& pins)
    {
        const bool rawOnly = options.isSet(u"raw-only"_s);
        const qsizetype last = options.value(u"last"_s).toInt();
        const qsizetype most = last > 0 ? largeBatch : usualBatch;
        QStringList exact; // the first call stops at one of these
        for (const PinEntry& pin : pins) {
            if (const bool raw = pin.cid.startsWith("bafkrei"_L1); !raw && !rawOnly)
                exact.append(pin.cid);
            else if (raw && cids.size() < most)
                cids.append(pin.cid);
        }
        if (last > 0)
            cids = cids.first(std::min(most - last, cids.size())) + exact.last(std::min(last, exact.size()));
        else
            cids = exact + cids;
        result = {{u"asked"_s, cids.size()}, {u"oneByOne"_s, !rawOnly}};
        QTimer::singleShot(0, this, &UnpinBench::unpin);
    }

    void unpin()
    {
        rssBefore = peakRssMiB();
        start();
        client->unpin(cids, true);
        result[u"callMs"_s] = seconds() * 1000;
    }

    void finish(const QStringList& removed)
    {
        result[u"removed"_s] = removed.size();
        result[u"singleCalls"_s] = singleCalls;
        result[u"seconds"_s] = seconds();
        result[u"longestStallMs"_s] = takeStallMs();
        result[u"memoryMiB"_s] = peakRssMiB() - rssBefore;
        print();
    }

    QStringList cids;
    int singleCalls = 0;
    double rssBefore = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    UnpinBench bench(argc, argv,
                     {{u"raw-only"_s, u"Unpin only what has one version."_s},
                      {u"last"_s, u"Unpin <count> pins of another version after all others."_s, u"count"_s}});
    bench.settings = {{u"loadMetadata"_s, false}};
    return bench.run(
        {{{u"--pins"_s, u"12000"_s}, {{u"--raw-only"_s}, {}}}, {{u"--pins"_s, u"50000"_s}, {{u"--last"_s, u"7"_s}}}});
}
