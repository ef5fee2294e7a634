// How fast the metadata of 20,000 pins comes in, in the real window, beside a bare network manager in the same run.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "PinModel.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QHeaderView>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTableView>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace {

constexpr int bareCalls = 5000;
constexpr int bareOpen = 24;

/// Calls "/dag/stat" with a manager and nothing else, `open` at a time as far as it lets; calls a second.
double bareRate(const QString& url, const QStringList& cids, int open)
{
    QNetworkAccessManager manager;
    QEventLoop loop;
    QElapsedTimer clock;
    qsizetype sent = 0;
    qsizetype done = 0;
    std::function<void()> next = [&] {
        if (sent == cids.size())
            return;
        QUrl call(url + u"/api/v0/dag/stat"_s);
        call.setQuery(u"arg=%1&progress=false"_s.arg(cids.at(sent++)));
        QNetworkRequest request(call);
        request.setHeader(QNetworkRequest::UserAgentHeader, u"Norvo-bench"_s);
        request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
        QNetworkReply* reply = manager.post(request, QByteArray());
        QObject::connect(reply, &QNetworkReply::finished, reply, [&, reply] {
            reply->readAll();
            reply->deleteLater();
            if (++done == cids.size())
                loop.quit();
            next();
        });
    };
    clock.start();
    for (int i = 0; i < open; ++i)
        next();
    loop.exec();
    return static_cast<double>(done) * 1000 / static_cast<double>(clock.elapsed());
}

/// Follows the first refresh of the window until every pin has its size and kind.
class Measurement : public QObject
{
public:
    Measurement(MainWindow& window, const QString& newUrl, int newLatency, int newMost)
        : url(newUrl)
        , latency(newLatency)
        , most(newMost)
        , model(window.findChild<PinModel*>())
    {
        auto* client = window.findChild<IpfsClient*>();
        connect(client, &IpfsClient::pinsReceived, this, [this] {
            clock.start();
            resetStall = stalls.takeLongest();
        });
        connect(client, &IpfsClient::dagStatReceived, this, [this] { count(sizes, sizeSeconds); });
        connect(client, &IpfsClient::kindReceived, this, [this] { count(kinds, kindSeconds); });
    }

private:
    double seconds() const { return static_cast<double>(clock.nsecsElapsed()) / 1e9; }

    void count(int& facts, double& lastSeconds)
    {
        ++facts;
        lastSeconds = seconds();
        if (sizes + kinds == std::min(2 * model->rowCount(), most))
            QTimer::singleShot(0, this, &Measurement::finish);
    }

    void finish()
    {
        const double fillStall = stalls.takeLongest();
        const double sizeRate = sizes / sizeSeconds;
        QJsonObject result {
            {u"pins"_s, model->rowCount()},           {u"latencyMs"_s, latency},
            {u"sizesPerSecond"_s, rounded(sizeRate)}, {u"kindsPerSecond"_s, rounded(kinds / kindSeconds)},
            {u"seconds"_s, rounded(seconds())},       {u"resetStallMs"_s, rounded(resetStall)},
            {u"fillStallMs"_s, rounded(fillStall)},   {u"peakRssMiB"_s, rounded(peakRssMiB())}};
        if (latency > 0)
            result.insert(u"shareOfLimit"_s, rounded(sizeRate / (24 * 1000.0 / latency)));
        const double bare = bareRate(url, model->allCids().first(std::min(bareCalls, model->rowCount())), bareOpen);
        result.insert(u"bareCallsPerSecond"_s, rounded(bare));
        result.insert(u"callsPerSecond"_s, rounded((sizes + kinds) / seconds()));
        printResult(result);
    }

    QString url;
    int latency;
    int most;
    PinModel* model;
    StallMeter stalls;
    QElapsedTimer clock;
    int sizes = 0;
    int kinds = 0;
    double sizeSeconds = 0;
    double kindSeconds = 0;
    double resetStall = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{u"url"_s, u"Measure this node alone."_s, u"url"_s},
                       {u"pins"_s, u"Number of pins."_s, u"number"_s, u"20000"_s},
                       {u"latency"_s, u"The node's latency; without it 0 and 20 in turn."_s, u"ms"_s},
                       {u"facts"_s, u"Stop after so many sizes and kinds."_s, u"number"_s, u"1000000"_s},
                       {u"sort"_s, u"Section that the table is sorted by."_s, u"number"_s, u"1"_s}});
    parser.process(app);
    const QString url = parser.value(u"url"_s);
    const QString sort = parser.value(u"sort"_s);
    const auto attach = [&](MainWindow& window) {
        window.findChild<QTableView*>()->sortByColumn(sort.toInt(), Qt::AscendingOrder);
        return std::make_unique<Measurement>(window, url, parser.value(u"latency"_s).toInt(),
                                             parser.value(u"facts"_s).toInt());
    };
    if (!url.isEmpty())
        return measureWindow(url, {}, attach);
    int failures = 0;
    for (const QString& latency :
         parser.isSet(u"latency"_s) ? QStringList {parser.value(u"latency"_s)} : QStringList {u"0"_s, u"20"_s}) {
        const DemoProcess node({u"--pins"_s, parser.value(u"pins"_s), u"--latency"_s, latency});
        const bool good = !node.url().isEmpty()
            && runInOwnProcess({u"--url"_s, node.url(), u"--latency"_s, latency, u"--sort"_s, sort, u"--facts"_s,
                                parser.value(u"facts"_s)});
        failures += good ? 0 : 1;
    }
    return failures;
}
