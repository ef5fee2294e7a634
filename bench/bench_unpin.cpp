// How long one unpin of 5,000 CIDs takes and holds up the real window: at one go, and gone through one CID at a time.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "MainWindow.h"

#include <QApplication>
#include <QCommandLineParser>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype batchSize = 5000;

class Measurement : public QObject
{
public:
    Measurement(MainWindow& window, bool newRawOnly)
        : client(window.findChild<IpfsClient*>())
        , rawOnly(newRawOnly)
    {
        connect(client, &IpfsClient::pinsReceived, this, &Measurement::begin, Qt::SingleShotConnection);
        connect(client, &IpfsClient::unpinned, this, &Measurement::finish);
    }

private:
    void begin(const QList<PinEntry>& pins)
    {
        for (const PinEntry& pin : pins) {
            if (const bool raw = pin.cid.startsWith("bafkrei"_L1); !raw && !rawOnly)
                cids.prepend(pin.cid); // the first call stops here
            else if (raw && cids.size() < batchSize)
                cids.append(pin.cid);
        }
        QTimer::singleShot(0, this, [this] {
            stalls.takeLongest();
            rssBefore = peakRssMiB();
            clock.start();
            client->unpin(cids, true);
            callMs = static_cast<double>(clock.nsecsElapsed()) / 1e6;
        });
    }

    void finish(const QStringList& removed)
    {
        printResult({{u"asked"_s, cids.size()},
                     {u"removed"_s, removed.size()},
                     {u"oneByOne"_s, !rawOnly},
                     {u"callMs"_s, rounded(callMs)},
                     {u"seconds"_s, rounded(static_cast<double>(clock.nsecsElapsed()) / 1e9)},
                     {u"longestStallMs"_s, rounded(stalls.takeLongest())},
                     {u"memoryMiB"_s, rounded(peakRssMiB() - rssBefore)}});
    }

    IpfsClient* client;
    bool rawOnly;
    QStringList cids;
    StallMeter stalls;
    QElapsedTimer clock;
    double callMs = 0;
    double rssBefore = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{u"url"_s, u"Measure this node alone; removes pins of it."_s, u"url"_s},
                       {u"raw-only"_s, u"Unpin only what has one version."_s}});
    parser.process(app);
    const bool rawOnly = parser.isSet(u"raw-only"_s);
    if (parser.isSet(u"url"_s))
        return measureWindow(parser.value(u"url"_s), {{u"loadMetadata"_s, false}},
                             [rawOnly](MainWindow& window) { return std::make_unique<Measurement>(window, rawOnly); });
    const DemoProcess node({u"--pins"_s, u"12000"_s});
    return !node.url().isEmpty() && runInOwnProcess({u"--url"_s, node.url(), u"--raw-only"_s})
            && runInOwnProcess({u"--url"_s, node.url()})
        ? 0
        : 1;
}
