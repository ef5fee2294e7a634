// SPDX-License-Identifier: MIT
#include "BenchSupport.h"

#include "AppSettings.h"
#include "Detached.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "NodeAccessManager.h"
#include "PinModel.h"

#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QProcess>
#include <QTableView>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int demoStartMs = 60'000;
constexpr auto giveUpAfter = 30min;
constexpr auto longestTurns = 1min;

bool measureDemo(const Demo& demo)
{
    QProcess node;
    node.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    node.start(QStringLiteral(DEMO_NODE), QStringList {u"--port"_s, u"0"_s} + demo.nodeArguments);
    bool good = node.waitForReadyRead(demoStartMs);
    const QString url = QString::fromLatin1(node.readLine()).trimmed();
    const QStringList arguments = QCoreApplication::arguments().mid(1) + QStringList {u"--url"_s, url};
    for (const QStringList& run : demo.runs)
        good = good && QProcess::execute(QCoreApplication::applicationFilePath(), arguments + run) == 0;
    node.kill();
    node.waitForFinished();
    return good;
}

/// A line of a file about this process's memory; -1 if it can't be had.
double memoryMiB(const char* name, const QString& path = u"/proc/self/status"_s)
{
    QFile status(path);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = status.readAll().simplified();
    return text.mid(text.indexOf(name)).split(' ').value(1).toDouble() / 1024;
}

/// Posts as the program does, for a call that only reads.
QNetworkReply* postReading(QNetworkAccessManager& manager, const QString& url)
{
    QNetworkRequest request {QUrl(url)};
    request.setHeader(QNetworkRequest::UserAgentHeader, u"Norvo-bench"_s);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
    request.setAttribute(static_cast<QNetworkRequest::Attribute>(NodeAccessManager::MayRepeat), true);
    return manager.post(request, QByteArray());
}

} // namespace

Bench::Bench(int& argc, char** argv, const QList<QCommandLineOption>& newOptions)
{
    returnLargeBlocks(); // as the program does
    if (qgetenv("QT_QPA_PLATFORM") != "xcb")
        qputenv("QT_QPA_PLATFORM", "offscreen");
    app = std::make_unique<QApplication>(argc, argv);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    options.addHelpOption();
    options.addOption({u"url"_s, u"Measure this node alone."_s, u"url"_s});
    options.addOptions(newOptions);
    options.process(*app);
    timer.setTimerType(Qt::PreciseTimer);
    timer.callOnTimeout([this] { longestMs = takeStallMs(); });
    timer.start(1ms);
    start();
}

int Bench::run(const QList<Demo>& demos)
{
    if (options.isSet(u"url"_s))
        return measure();
    return static_cast<int>(demos.size() - std::ranges::count_if(demos, measureDemo));
}

int Bench::measure()
{
    const QUrl url(options.value(u"url"_s));
    settings.insert({{u"host"_s, url.host()}, {u"port"_s, url.port(5001)}});
    QSettings store = openAppSettings();
    for (auto setting = settings.cbegin(); setting != settings.cend(); ++setting)
        store.setValue(setting.key(), setting.value());

    MainWindow window;
    client = window.findChild<IpfsClient*>();
    model = window.findChild<PinModel*>();
    table = window.findChild<QTableView*>();
    follow();
    connect(client, &IpfsClient::errorOccurred, this, failBench);
    window.show();
    QTimer::singleShot(giveUpAfter, this, [] { QCoreApplication::exit(1); });
    return QCoreApplication::exec();
}

void Bench::start()
{
    longestMs = 0;
    sinceBeat.start();
    clock.start();
}

double Bench::takeStallMs()
{
    const double lastMs = static_cast<double>(sinceBeat.nsecsElapsed()) / 1e6;
    sinceBeat.start();
    return std::max(lastMs, std::exchange(longestMs, 0));
}

void Bench::print() const
{
    std::printf("%s\n", QJsonDocument(rounded(result)).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
    QCoreApplication::exit(0);
}

CallRate measureCalls(QNetworkAccessManager& manager, const QString& url, int calls)
{
    constexpr int openCalls = 24; // as many as the program has open for a fact
    QEventLoop loop;
    int sent = 0;
    int done = 0;
    int failed = 0;
    const std::function<void()> next = [&] {
        if (sent == calls)
            return;
        QNetworkReply* reply = postReading(manager, url.arg(++sent));
        QObject::connect(reply, &QNetworkReply::finished, reply, [&, reply] {
            failed += reply->error() != QNetworkReply::NoError || reply->readAll().isEmpty() ? 1 : 0;
            reply->deleteLater();
            if (++done == calls)
                loop.quit();
            next();
        });
    };
    const double cpu = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < openCalls; ++i)
        next();
    loop.exec();
    return {.callsPerSecond = failed == 0 ? calls * 1e9 / static_cast<double>(clock.nsecsElapsed()) : -1,
            .cpuMicroseconds = (cpuSeconds(CLOCK_PROCESS_CPUTIME_ID) - cpu) * 1e6 / calls};
}

bool turnUntil(const std::function<bool()>& condition)
{
    QEventLoop loop;
    QTimer timer;
    timer.callOnTimeout(&loop, [&loop, &condition] {
        if (condition())
            loop.quit();
    });
    timer.start(1ms);
    QTimer::singleShot(longestTurns, &loop, &QEventLoop::quit);
    loop.exec();
    return condition();
}

double cpuSeconds(clockid_t clock)
{
    timespec now {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double peakRssMiB()
{
    return memoryMiB("VmHWM: ");
}

double residentMiB()
{
    return memoryMiB("VmRSS: ");
}

double proportionalMiB()
{
    return memoryMiB("Pss: ", u"/proc/self/smaps_rollup"_s);
}

QJsonObject rounded(QJsonObject object)
{
    for (QJsonValueRef value : object) {
        if (value.isDouble())
            value = std::round(value.toDouble() * 1000) / 1000;
    }
    return object;
}

void failBench(const QString& message)
{
    std::fprintf(stderr, "%s\n", qPrintable(message));
    QCoreApplication::exit(1);
}
