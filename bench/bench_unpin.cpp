// How long one unpin of 5,000 CIDs takes and holds up the real window: at one go, and gone through one CID at a time.
// Removes pins of the node.

#include "BenchSupport.h"
#include "IpfsClient.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype batchSize = 5000;

class UnpinBench : public Bench
{
public:
    using Bench::Bench;

private:
    void follow() override
    {
        connect(client, &IpfsClient::pinsReceived, this, &UnpinBench::choose, Qt::SingleShotConnection);
        connect(client, &IpfsClient::unpinned, this, &UnpinBench::finish);
    }

    void choose(const QList<PinEntry>& pins)
    {
        const bool rawOnly = options.isSet(u"raw-only"_s);
        for (const PinEntry& pin : pins) {
            if (const bool raw = pin.cid.startsWith("bafkrei"_L1); !raw && !rawOnly)
                cids.prepend(pin.cid); // the first call stops here
            else if (raw && cids.size() < batchSize)
                cids.append(pin.cid);
        }
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
        result[u"seconds"_s] = seconds();
        result[u"longestStallMs"_s] = takeStallMs();
        result[u"memoryMiB"_s] = peakRssMiB() - rssBefore;
        print();
    }

    QStringList cids;
    double rssBefore = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    UnpinBench bench(argc, argv, {{u"raw-only"_s, u"Unpin only what has one version."_s}});
    bench.settings = {{u"loadMetadata"_s, false}};
    return bench.run({{{u"--pins"_s, u"12000"_s}, {{u"--raw-only"_s}, {}}}});
}
