// How long the view of unpinned blocks takes over 1,000,000 local refs and 300,000 pins, in the real window.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "PinModel.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTableView>

using namespace Qt::StringLiterals;

namespace {

class Measurement : public QObject
{
public:
    explicit Measurement(MainWindow& window)
        : model(window.findChild<PinModel*>())
    {
        auto* client = window.findChild<IpfsClient*>();
        clock.start(); // the window has asked already, and nothing has come yet
        connect(client, &IpfsClient::streamEntriesLoaded, this, [this](const QString& source, int count) {
            if (source == "refs/local"_L1)
                refs = count;
            streamingStall = std::max(streamingStall, stalls.takeLongest());
            lastLine = seconds();
        });
        connect(model, &QAbstractItemModel::modelAboutToBeReset, this, [this] { joined = seconds(); });
        connect(client, &IpfsClient::pinsReceived, this, [this] { QTimer::singleShot(0, this, &Measurement::finish); });
    }

private:
    double seconds() const { return static_cast<double>(clock.nsecsElapsed()) / 1e9; }

    void finish()
    {
        printResult({{u"localRefs"_s, refs},
                     {u"unpinned"_s, model->rowCount()},
                     {u"lastLineSeconds"_s, rounded(lastLine)},
                     {u"joinSeconds"_s, rounded(joined - lastLine)},
                     {u"tableSeconds"_s, rounded(seconds())},
                     {u"streamingStallMs"_s, rounded(streamingStall)},
                     {u"joinAndResetStallMs"_s, rounded(stalls.takeLongest())},
                     {u"peakRssMiB"_s, rounded(peakRssMiB())}});
    }

    PinModel* model;
    StallMeter stalls;
    QElapsedTimer clock;
    int refs = 0;
    double streamingStall = 0;
    double lastLine = 0;
    double joined = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{u"url"_s, u"Measure this node alone."_s, u"url"_s},
                       {u"chunk-bytes"_s, u"Size of the demo node's chunks."_s, u"bytes"_s, u"65536"_s}});
    parser.process(app);
    if (parser.isSet(u"url"_s))
        return measureWindow(parser.value(u"url"_s), {{u"contentMode"_s, u"unpinned"_s}},
                             [](MainWindow& window) { return std::make_unique<Measurement>(window); });
    const DemoProcess node({u"--pins"_s, u"300000"_s, u"--loose-blocks"_s, u"700000"_s, u"--chunk-bytes"_s,
                            parser.value(u"chunk-bytes"_s)});
    return !node.url().isEmpty() && runInOwnProcess({u"--url"_s, node.url()}) ? 0 : 1;
}
