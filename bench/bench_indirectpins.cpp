// SPDX-License-Identifier: MIT
// How the list of 200,000 CIDs below one pin opens and scrolls, asked for over the wire.

#include "BenchNode.h"
#include "BenchSupport.h"
#include "IndirectPinsDialog.h"
#include "IpfsClient.h"

#include <QScrollBar>
#include <QTableView>

#include <algorithm>

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

void script(FakeNode& node)
{
    node.answer("/refs", NodeAnswer::chunked(refLines(), chunkBytes));
}

/// The longest of a thousand steps from the top to the end, each painted; in milliseconds.
double scrolled(QScrollBar* bar)
{
    qint64 longest = 0;
    for (int step = 0; step <= 1000; ++step) {
        QElapsedTimer clock;
        clock.start();
        bar->setValue(static_cast<int>(static_cast<qint64>(bar->maximum()) * step / 1000));
        QCoreApplication::processEvents();
        longest = std::max(longest, clock.nsecsElapsed());
    }
    return static_cast<double>(longest) / 1e6;
}

/// Returns whether all refs came.
bool measure(Bench& bench, quint16 port)
{
    IpfsClient client;
    client.setEndpoint(u"127.0.0.1"_s, port);
    bench.start();
    IndirectPinsDialog dialog(u"root"_s, &client);
    dialog.show();
    auto* table = dialog.findChild<QTableView*>();
    const bool whole = turnUntil([table] { return table->model()->rowCount() == refCount; });
    QCoreApplication::processEvents();
    bench.result = {{u"refs"_s, table->model()->rowCount()},
                    {u"shownMs"_s, bench.seconds() * 1000},
                    {u"stallMs"_s, bench.takeStallMs()},
                    {u"scrollStepMs"_s, scrolled(table->verticalScrollBar())}};
    bench.start();
    table->selectAll();
    QMetaObject::invokeMethod(&dialog, "onCopyCid");
    QCoreApplication::processEvents();
    bench.result[u"copyAllMs"_s] = bench.seconds() * 1000;
    bench.result[u"peakRssMiB"_s] = peakRssMiB();
    bench.print();
    return whole;
}

} // namespace

int main(int argc, char* argv[])
{
    Bench bench(argc, argv);
    return measureWithNode(script, [&bench](quint16 port) { return measure(bench, port); }) ? 0 : 1;
}
