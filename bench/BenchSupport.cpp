#include "BenchSupport.h"

#include "AppSettings.h"
#include "IpfsClient.h"
#include "MainWindow.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int demoStartMs = 60'000;
constexpr auto giveUpAfter = 30min;

double clockSeconds(clockid_t clock)
{
    timespec now {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

} // namespace

StallMeter::StallMeter()
{
    timer.setTimerType(Qt::PreciseTimer);
    timer.setInterval(1ms);
    connect(&timer, &QTimer::timeout, this, &StallMeter::beat);
    timer.start();
    sinceBeat.start();
}

void StallMeter::beat()
{
    longest = std::max(longest, static_cast<double>(sinceBeat.nsecsElapsed()) / 1e6);
    sinceBeat.start();
}

double StallMeter::takeLongest()
{
    beat();
    return std::exchange(longest, 0);
}

DemoProcess::DemoProcess(const QStringList& arguments)
{
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(DEMO_NODE), QStringList {u"--port"_s, u"0"_s} + arguments);
    if (process.waitForReadyRead(demoStartMs))
        address = QString::fromLatin1(process.readLine()).trimmed();
}

DemoProcess::~DemoProcess()
{
    process.kill();
    process.waitForFinished();
}

double threadCpuSeconds()
{
    return clockSeconds(CLOCK_THREAD_CPUTIME_ID);
}

double processCpuSeconds()
{
    return clockSeconds(CLOCK_PROCESS_CPUTIME_ID);
}

double peakRssMiB()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.simplified().split(' ').value(1).toDouble() / 1024;
    }
    return -1;
}

double rounded(double value)
{
    return std::round(value * 1000) / 1000;
}

void printResult(const QJsonObject& result)
{
    std::printf("%s\n", QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
    QCoreApplication::exit(0);
}

bool runInOwnProcess(const QStringList& arguments)
{
    return QProcess::execute(QCoreApplication::applicationFilePath(), arguments) == 0;
}

int measureWindow(const QString& url, const QVariantHash& settings,
                  const std::function<std::unique_ptr<QObject>(MainWindow&)>& attach)
{
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    const QUrl endpoint(url);
    QSettings store = openAppSettings();
    store.setValue(u"host"_s, endpoint.host());
    store.setValue(u"port"_s, endpoint.port(5001));
    for (auto setting = settings.begin(); setting != settings.end(); ++setting)
        store.setValue(setting.key(), setting.value());

    MainWindow window;
    const auto measurement = attach(window);
    const auto* client = window.findChild<IpfsClient*>();
    QObject::connect(client, &IpfsClient::errorOccurred, qApp, [](const QString& message) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        QCoreApplication::exit(1);
    });
    window.show();
    QTimer::singleShot(giveUpAfter, qApp, [] { QCoreApplication::exit(1); });
    return QCoreApplication::exec();
}
