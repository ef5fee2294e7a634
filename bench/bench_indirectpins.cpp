// How the list of 200,000 CIDs below one pin opens and scrolls, asked for over the wire.

#include "BenchSupport.h"
#include "FakeNode.h"
#include "IndirectPinsDialog.h"
#include "IpfsClient.h"

#include <QApplication>
#include <QScrollBar>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

constexpr int refCount = 200'000;
constexpr qsizetype chunkBytes = 65'536;

QByteArray refLines()
{
    QByteArray body;
    for (int i = 0; i < refCount; ++i)
        body += "{\"Ref\":\"bafybeigdyrzt5sfp7udm7hu76uh7y26nf3efuylqabf3oclgtq"
            + QByteArray::number(i).rightJustified(7, 'a') + "\",\"Err\":\"\"}\n";
    return body;
}

/// A node on a thread of its own, so that its work is no stall of ours.
class NodeThread
{
public:
    NodeThread()
    {
        worker.moveToThread(&thread);
        thread.start();
        QMetaObject::invokeMethod(
            &worker,
            [this] {
                auto* node = new FakeNode(&worker);
                node->answer("/refs", FakeAnswer::chunked(refLines(), chunkBytes));
                nodePort = node->port();
            },
            Qt::BlockingQueuedConnection);
    }
    ~NodeThread()
    {
        QMetaObject::invokeMethod(
            &worker, [this] { qDeleteAll(worker.children()); }, Qt::BlockingQueuedConnection);
        thread.quit();
        thread.wait();
    }
    quint16 port() const { return nodePort; }

private:
    QThread thread;
    QObject worker;
    quint16 nodePort = 0;
};

double milliseconds(const QElapsedTimer& clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

/// The longest of a thousand steps from the top to the end, each painted.
double scrolled(QTableView* table)
{
    QScrollBar* bar = table->verticalScrollBar();
    double longest = 0;
    for (int step = 0; step <= 1000; ++step) {
        QElapsedTimer clock;
        clock.start();
        bar->setValue(static_cast<int>(static_cast<qint64>(bar->maximum()) * step / 1000));
        QCoreApplication::processEvents();
        longest = std::max(longest, milliseconds(clock));
    }
    return longest;
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    const NodeThread node;
    IpfsClient client;
    client.setEndpoint(u"127.0.0.1"_s, node.port());
    StallMeter stalls;
    QElapsedTimer clock;
    clock.start();

    IndirectPinsDialog dialog(u"root"_s, &client);
    dialog.show();
    auto* table = dialog.findChild<QTableView*>();
    while (table->model()->rowCount() != refCount && milliseconds(clock) < 60'000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    QCoreApplication::processEvents();
    QJsonObject result {{u"refs"_s, table->model()->rowCount()},
                        {u"shownMs"_s, rounded(milliseconds(clock))},
                        {u"stallMs"_s, rounded(stalls.takeLongest())}};
    result.insert(u"scrollStepMs"_s, rounded(scrolled(table)));
    clock.start();
    table->selectAll();
    QMetaObject::invokeMethod(&dialog, "onCopyCid");
    QCoreApplication::processEvents();
    result.insert(u"copyAllMs"_s, rounded(milliseconds(clock)));
    result.insert(u"peakRssMiB"_s, rounded(peakRssMiB()));
    const bool whole = table->model()->rowCount() == refCount;
    printResult(result);
    return whole ? 0 : 1;
}
