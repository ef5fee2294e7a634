// How fast the metadata of 20,000 pins comes in, in the real window, beside a bare network manager in the same run.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "PinModel.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTableView>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

constexpr int bareCalls = 5000;
constexpr int bareOpen = 24; // as many as the program has open

/// Calls "/dag/stat" with a manager and nothing else, as many at a time as it lets; calls a second.
double bareRate(const QString& url, const QStringList& cids)
{
    QNetworkAccessManager manager;
    QEventLoop loop;
    QElapsedTimer clock;
    qsizetype sent = 0;
    qsizetype done = 0;
    const std::function<void()> next = [&] {
        if (sent == cids.size())
            return;
        QNetworkRequest request(QUrl(url + u"/api/v0/dag/stat?arg=%1&progress=false"_s.arg(cids.at(sent++))));
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
    for (int i = 0; i < bareOpen; ++i)
        next();
    loop.exec();
    return static_cast<double>(done) * 1e9 / static_cast<double>(clock.nsecsElapsed());
}

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
        result[u"seconds"_s] = seconds();
        result[u"callsPerSecond"_s] = (sizes + kinds) / seconds();
        result[u"sizesPerSecond"_s] = sizes / sizeSeconds;
        result[u"kindsPerSecond"_s] = kinds / kindSeconds;
        result[u"pins"_s] = model->rowCount();
        result[u"latencyMs"_s] = latencyMs;
        if (latencyMs > 0)
            result[u"shareOfLimit"_s] = sizes / sizeSeconds / (bareOpen * 1000.0 / latencyMs);
        result[u"peakRssMiB"_s] = peakRssMiB();
        const QStringList cids = model->allCids().first(std::min(bareCalls, model->rowCount()));
        result[u"bareCallsPerSecond"_s] = bareRate(options.value(u"url"_s), cids);
        print();
    }

    int most = 0;
    int sizes = 0;
    int kinds = 0;
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
