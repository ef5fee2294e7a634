#pragma once

#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QProcess>
#include <QTimer>

/// Watches how long the event loop of its thread goes without a turn.
class StallMeter : public QObject
{
public:
    StallMeter();
    /// The longest stall since the last call, in milliseconds.
    double takeLongest();

private:
    void beat();

    QTimer timer;
    QElapsedTimer sinceBeat;
    double longest = 0;
};

/// A demo node in a process of its own; ends with this object.
class DemoProcess
{
public:
    explicit DemoProcess(const QStringList& arguments);
    ~DemoProcess();
    /// Empty if the node did not start.
    const QString& url() const { return address; }

private:
    QProcess process;
    QString address;
};

/// CPU time of the calling thread in seconds.
double threadCpuSeconds();
/// CPU time of the whole process in seconds.
double processCpuSeconds();
/// The most memory that this process has held, in MiB.
double peakRssMiB();
/// One line of JSON on standard output.
void printResult(const QJsonObject& result);
/// Runs this program anew with `arguments`, so that its peak memory is its own; tells whether it succeeded.
bool runInOwnProcess(const QStringList& arguments);

/// A settings folder for this run with the endpoint of `url` in it, never the user's. Call it before a window is made.
void useOwnSettings(const QString& url);
