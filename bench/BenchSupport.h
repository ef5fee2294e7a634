// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimer>
#include <QVariantHash>

#include <ctime>
#include <functional>
#include <memory>

class IpfsClient;
class QNetworkAccessManager;
class PinModel;
class QTableView;

/// A demo node and the measurements made of it one after another, each given by options of its own.
struct Demo
{
    QStringList nodeArguments {};
    QList<QStringList> runs {QStringList()};
};

/// The frame of a program that measures: an application with settings of its own, never the user's, off screen unless
/// QT_QPA_PLATFORM is "xcb", a clock, and a watch over how long the event loop goes without a turn.
class Bench : public QObject
{
public:
    Bench(int& argc, char** argv, const QList<QCommandLineOption>& newOptions = {});

    /// Measures the node given by "--url". Without one, runs this program anew for each measurement of the demo nodes,
    /// with its options and those of the run, so that the peak memory is that of one measurement. 0 if all went well.
    int run(const QList<Demo>& demos);
    /// Starts the clock, and forgets the stalls until now.
    void start();
    double seconds() const { return static_cast<double>(clock.nsecsElapsed()) / 1e9; }
    /// The longest stall since the last call or start().
    double takeStallMs();
    /// Ends the watch over stalls, which wakes the process each millisecond.
    void stopWatching() { timer.stop(); }
    /// Prints the result as one line of JSON and ends the event loop with success.
    void print() const;

    QCommandLineParser options;
    QJsonObject result;
    QVariantHash settings; ///< the window's

protected:
    /// Shows the window, and lasts until print(), the client's first error or half an hour is over; the exit code.
    virtual int measure();
    /// Called before the first request of the window, whose parts are set.
    virtual void follow() { }

    IpfsClient* client = nullptr;
    PinModel* model = nullptr;
    QTableView* table = nullptr;

private:
    std::unique_ptr<QApplication> app;
    QTemporaryDir folder;
    QTimer timer;
    QElapsedTimer sinceBeat;
    QElapsedTimer clock;
    double longestMs = 0;
};

/// How fast a manager makes calls with nothing else around it.
struct CallRate
{
    double callsPerSecond = 0;  ///< -1 if a call failed
    double cpuMicroseconds = 0; ///< of this process, a call
};

/// Posts `calls` times to `url`, whose last part is "%1" for the call's number, with 24 calls open at a time.
CallRate measureCalls(QNetworkAccessManager& manager, const QString& url, int calls);

/// Runs the event loop as the program does, which deletes what is to be deleted later; false after a minute.
bool turnUntil(const std::function<bool()>& condition);

/// CPU time in seconds, of a thread or the process.
double cpuSeconds(clockid_t clock);
/// The most memory that this process has held, in MiB.
double peakRssMiB();
/// What it holds now, likewise.
double residentMiB();
/// As that, with what it shares with other processes counted in proportion.
double proportionalMiB();
/// The object with its numbers rounded to three places.
QJsonObject rounded(QJsonObject object);
/// Prints the message on standard error and ends the event loop with failure.
void failBench(const QString& message);
