// SPDX-License-Identifier: MIT
// What the program takes while nobody uses it: the time to its first picture, wake-ups and memory, fresh and after each
// tool window was open. Beside it the same of a table of Qt's own, which is the least that can be had.

#include "Appearance.h"
#include "BenchSupport.h"
#include "IpfsClient.h"
#include "PinModel.h"
#include "PinTable.h"
#include "ToolWindows.h"

#include <QDialog>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QHash>
#include <QStandardItemModel>
#include <QTableView>

#include <functional>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// No message of the status line lasts longer, and Qt empties its cache of pixmaps by a timer of 30 seconds.
constexpr auto settle = 35s;
constexpr auto rest = 10s;
constexpr auto toolShown = 1s;
constexpr int pins = 200;
constexpr int bareColumns = 5;
constexpr int startTimeField = 19; // of /proc/self/stat, after the name

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// How often each thread of this process has begun to wait.
QHash<QString, int> waits()
{
    QHash<QString, int> counts;
    const QDir tasks(u"/proc/self/task"_s);
    const QStringList threads = tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& thread : threads) {
        const QByteArray status = contentsOf(tasks.filePath(thread + u"/status"_s)).simplified();
        counts[thread] = status.mid(status.indexOf(" voluntary_ctxt_switches: ")).split(' ').value(2).toInt();
    }
    return counts;
}

/// How often threads have waited since `before`; one that has ended meanwhile has woken up for that.
int waitsSince(QHash<QString, int> before)
{
    int sum = 0;
    const QHash<QString, int> now = waits();
    for (auto thread = now.cbegin(); thread != now.cend(); ++thread)
        sum += thread.value() - before.take(thread.key());
    return sum + static_cast<int>(before.size());
}

/// Since the process began, in steps of the system's clock, which are 10 ms.
double msSinceExec()
{
    const QByteArray stat = contentsOf(u"/proc/self/stat"_s);
    const double ticks = stat.mid(stat.lastIndexOf(") ") + 2).split(' ').value(startTimeField).toDouble();
    const double now = contentsOf(u"/proc/uptime"_s).split(' ').constFirst().toDouble();
    return (now - ticks / static_cast<double>(sysconf(_SC_CLK_TCK))) * 1e3;
}

class IdleBench : public Bench
{
public:
    using Bench::Bench;

    QElapsedTimer sinceMain;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == table->viewport() && event->type() == QEvent::Paint) {
            table->viewport()->removeEventFilter(this);
            QTimer::singleShot(0ms, this, [this] { // the rest of the window is painted in this turn
                result[u"firstPaintMs"_s] = static_cast<double>(sinceMain.nsecsElapsed()) / 1e6;
                result[u"firstPaintFromExecMs"_s] = msSinceExec();
            });
        }
        return Bench::eventFilter(watched, event);
    }

private:
    int measure() override
    {
        stopWatching();
        return options.isSet(u"bare"_s) ? measureBare() : Bench::measure();
    }

    void follow() override
    {
        result[u"of"_s] = u"program"_s;
        table->viewport()->installEventFilter(this);
        connect(client, &IpfsClient::pinsReceived, this, [this] {
            watchRest(u"fresh"_s, [this] {
                listTools();
                showNextTool();
            });
        });
    }

    int measureBare()
    {
        QStandardItemModel items(pins, bareColumns);
        QTableView bare;
        bare.setModel(&items);
        table = &bare;
        result[u"of"_s] = u"a table alone"_s;
        bare.viewport()->installEventFilter(this);
        bare.resize(1060, 640);
        bare.show();
        watchRest(u"fresh"_s, [this] { print(); });
        return QCoreApplication::exec();
    }

    /// Notes the wake-ups of a rest and the memory at its end, as `name`.
    template <typename Next> void watchRest(const QString& name, const Next& next)
    {
        QTimer::singleShot(settle, this, [this, name, next] {
            QTimer::singleShot(rest, Qt::PreciseTimer, this, [this, name, next, before = waits()] {
                const int own = 1; // this rest's timer
                result[name + u"WakeupsPerSecond"_s] = static_cast<double>(waitsSince(before) - own) / rest.count();
                result[name + u"RssMiB"_s] = residentMiB();
                result[name + u"PssMiB"_s] = proportionalMiB();
                next();
            });
        });
    }

    /// Those of the tool bar, what adds, the settings, and those of a pin.
    void listTools()
    {
        auto* window = table->window();
        for (int id = 0; id < ToolWindows::count; ++id) {
            tools.append([window, id] {
                window->findChild<ToolWindows*>()->show(static_cast<ToolWindows::Id>(id), ToolWindows::AuxChildWindow);
            });
        }
        for (const char* entry : {"onAddToIpfsClicked", "onSettingsClicked"})
            tools.append([window, entry] { QMetaObject::invokeMethod(window, entry); });
        const QString cid = model->pinAt(0)->cid;
        tools.append([this, cid] { emit static_cast<PinTable*>(table)->indirectPinsRequested(cid); });
        tools.append([this, cid] { emit static_cast<PinTable*>(table)->contentsRequested(cid, {}); });
    }

    void showNextTool()
    {
        if (tools.isEmpty()) {
            watchRest(u"afterTools"_s, [this] {
                result[u"toolsClosed"_s] = toolsClosed;
                print();
            });
            return;
        }
        QTimer::singleShot(toolShown, this, [this] {
            for (auto* dialog : table->window()->findChildren<QDialog*>())
                toolsClosed += dialog->isVisible() && dialog->close() ? 1 : 0;
            QTimer::singleShot(toolShown, this, &IdleBench::showNextTool); // once it is gone
        });
        tools.takeFirst()(); // which returns when a modal dialog is closed
    }

    QList<std::function<void()>> tools; ///< that are still to be opened
    int toolsClosed = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    QElapsedTimer sinceMain;
    sinceMain.start();
    IdleBench bench(argc, argv, {{u"bare"_s, u"A table of Qt's own instead."_s}});
    bench.sinceMain = sinceMain;
    applyFusionLook();
    return bench.run({{.nodeArguments = {u"--pins"_s, QString::number(pins)}, .runs = {{}, {u"--bare"_s}}}});
}
