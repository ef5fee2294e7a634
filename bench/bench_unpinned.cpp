// How long the view of unpinned blocks takes over 1,000,000 local refs and 300,000 pins, in the real window.

#include "AppSettings.h"
#include "BenchSupport.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "PinModel.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTableView>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto giveUpAfter = 10min;

double rounded(double value)
{
    return std::round(value * 1000) / 1000;
}

class Measurement : public QObject
{
public:
    explicit Measurement(MainWindow& window)
        : model(window.findChild<PinModel*>())
    {
        auto* client = window.findChild<IpfsClient*>();
        connect(client, &IpfsClient::rpcRequestIssued, this, [this] {
            if (!clock.isValid()) {
                clock.start();
                stalls.takeLongest();
            }
        });
        connect(client, &IpfsClient::streamEntriesLoaded, this, [this](const QString& source, int count) {
            if (source == "refs/local"_L1)
                refs = count;
            streamingStall = std::max(streamingStall, stalls.takeLongest());
            lastLine = seconds();
        });
        connect(client, &IpfsClient::errorOccurred, this, [](const QString& message) {
            std::fprintf(stderr, "%s\n", qPrintable(message));
            QCoreApplication::exit(1);
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
        QCoreApplication::exit(0);
    }

    PinModel* model;
    StallMeter stalls;
    QElapsedTimer clock;
    int refs = 0;
    double streamingStall = 0;
    double lastLine = 0;
    double joined = 0;
};

int measure(const QString& url)
{
    useOwnSettings(url);
    openAppSettings().setValue(u"contentMode"_s, u"unpinned"_s);
    MainWindow window;
    const Measurement measurement(window);
    window.show();
    window.findChild<IpfsClient*>()->cancelActiveLoading(); // the load that began before anybody watched
    QMetaObject::invokeMethod(&window, "onErrorOccurred", Q_ARG(QString, QString()));
    QMetaObject::invokeMethod(&window, "onRefreshClicked");
    QTimer::singleShot(giveUpAfter, qApp, [] { QCoreApplication::exit(1); });
    return QApplication::exec();
}

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
        return measure(parser.value(u"url"_s));
    const DemoProcess node({u"--pins"_s, u"300000"_s, u"--loose-blocks"_s, u"700000"_s, u"--chunk-bytes"_s,
                            parser.value(u"chunk-bytes"_s)});
    return !node.url().isEmpty() && runInOwnProcess({u"--url"_s, node.url()}) ? 0 : 1;
}
