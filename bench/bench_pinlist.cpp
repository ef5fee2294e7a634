// How long a pin list takes from the first request to the painted table, in the real window.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "PinModel.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTableView>

using namespace Qt::StringLiterals;

namespace {

/// Follows the window's first refresh and prints what it took.
class Measurement : public QObject
{
public:
    explicit Measurement(MainWindow& window)
        : table(window.findChild<QTableView*>())
    {
        auto* client = window.findChild<IpfsClient*>();
        auto* model = window.findChild<PinModel*>();
        connect(client, &IpfsClient::rpcRequestIssued, this, [this] { begin(); });
        connect(client, &IpfsClient::connectionStatusChanged, this, [this] { onLastByte(); });
        connect(model, &QAbstractItemModel::modelAboutToBeReset, this, [this] { received = seconds(); });
        connect(client, &IpfsClient::pinsReceived, this, [this] { table->viewport()->installEventFilter(this); });
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, this, &Measurement::finish);
        }
        return false;
    }

private:
    double seconds() const { return static_cast<double>(clock.nsecsElapsed()) / 1e9; }

    void begin()
    {
        if (clock.isValid())
            return;
        clock.start();
        cpuAtStart = threadCpuSeconds();
        processCpuAtStart = processCpuSeconds();
        stalls.takeLongest();
    }

    /// Comes once for each of the two streams; the last one counts.
    void onLastByte()
    {
        lastByte = seconds();
        streamingStall = std::max(streamingStall, stalls.takeLongest());
        streamingCpu = processCpuSeconds() - processCpuAtStart;
    }

    void finish()
    {
        printResult({{u"pins"_s, table->model()->rowCount()},
                     {u"lastByteSeconds"_s, rounded(lastByte)},
                     {u"pinsReceivedSeconds"_s, rounded(received)},
                     {u"tableSeconds"_s, rounded(seconds())},
                     {u"mainThreadCpuSeconds"_s, rounded(threadCpuSeconds() - cpuAtStart)},
                     {u"streamingCpuSeconds"_s, rounded(streamingCpu)},
                     {u"streamingStallMs"_s, rounded(streamingStall)},
                     {u"resetStallMs"_s, rounded(stalls.takeLongest())},
                     {u"peakRssMiB"_s, rounded(peakRssMiB())}});
    }

    QTableView* table;
    StallMeter stalls;
    QElapsedTimer clock;
    double cpuAtStart = 0;
    double processCpuAtStart = 0;
    double lastByte = 0;
    double received = 0;
    double streamingStall = 0;
    double streamingCpu = 0;
};

int measureDemoNode(int pins, const QString& chunkBytes)
{
    const DemoProcess node({u"--pins"_s, QString::number(pins), u"--chunk-bytes"_s, chunkBytes});
    return !node.url().isEmpty() && runInOwnProcess({u"--url"_s, node.url()}) ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions(
        {{u"url"_s, u"Measure this node alone."_s, u"url"_s},
         {u"chunk-bytes"_s, u"Size of the demo node's chunks; 0 sends line by line."_s, u"bytes"_s, u"0"_s}});
    parser.process(app);
    if (parser.isSet(u"url"_s))
        return measureWindow(parser.value(u"url"_s), {},
                             [](MainWindow& window) { return std::make_unique<Measurement>(window); });
    int failures = 0;
    for (const int pins : {10'000, 100'000, 500'000})
        failures += measureDemoNode(pins, parser.value(u"chunk-bytes"_s));
    return failures;
}
