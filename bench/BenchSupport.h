#pragma once

#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QProcess>
#include <QTimer>
#include <QVariantHash>

#include <functional>
#include <memory>

class MainWindow;

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
/// Rounded to three places.
double rounded(double value);
/// One line of JSON on standard output; ends the event loop with success.
void printResult(const QJsonObject& result);
/// Runs this program anew with `arguments`, so that its peak memory is its own; tells whether it succeeded.
bool runInOwnProcess(const QStringList& arguments);

/// Runs the real window against the node at `url` with settings of its own, never the user's, and `attach` called
/// before the first request. Ends with printResult, with the client's first error or when half an hour is over.
int measureWindow(const QString& url, const QVariantHash& settings,
                  const std::function<std::unique_ptr<QObject>(MainWindow&)>& attach);
