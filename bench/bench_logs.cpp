// SPDX-License-Identifier: MIT
// What a log costs: 1,000,000 requests logged while its dialog is closed, the opening, and 10,000 more while it is
// open.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "LineView.h"
#include "MainWindow.h"
#include "RpcLogDialog.h"

#include <QScrollBar>
#include <QTextBlock>

using namespace Qt::StringLiterals;

namespace {

constexpr int closedLines = 1'000'000;
constexpr int openLines = 10'000;

/// About 150 characters, none like the last.
QString requestLine(int number)
{
    return u"[2025-03-08 14:05:%1] POST http://127.0.0.1:5001/api/v0/dag/stat"
           "?arg=bafybeigdyrzt5sfp7udm7hu76uh7y26nf3efuylqabf3oclgtq%2&progress=false"_s.arg(
               QString::number(10 + number % 50), QString::number(number).rightJustified(7, u'a'));
}

/// Turns the event loop until nothing is left to do.
void settle()
{
    QElapsedTimer quiet;
    quiet.start();
    while (quiet.elapsed() < 500) {
        QElapsedTimer turn;
        turn.start();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        if (turn.elapsed() > 15)
            quiet.start();
    }
}

/// Shows the dialog and turns the event loop until it has been painted and nothing is left to do.
QJsonObject opened(Bench& bench, RpcLogDialog& dialog)
{
    bench.start();
    dialog.show();
    const double shown = bench.seconds();
    dialog.grab();
    const double painted = bench.seconds();
    const auto* view = dialog.findChild<LineView*>();
    turnUntil([view] { return !view->isFilling(); });
    const double filled = bench.seconds();
    settle();
    return rounded({{u"showSeconds"_s, shown},
                    {u"firstPaintSeconds"_s, painted},
                    {u"fillSeconds"_s, filled},
                    {u"stallMs"_s, bench.takeStallMs()},
                    {u"peakRssMiB"_s, peakRssMiB()}});
}

/// Logs more lines while the dialog is open, with a turn of the event loop after each few.
QJsonObject appended(Bench& bench, IpfsClient* client, int linesPerTurn)
{
    bench.start();
    const double cpuBefore = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
    for (int i = 0; i < openLines; ++i) {
        emit client->rpcRequestIssued(requestLine(closedLines + i));
        if (i % linesPerTurn == 0)
            QCoreApplication::processEvents();
    }
    return rounded({{u"msPerLine"_s, bench.seconds() * 1000 / openLines},
                    {u"cpuMsPerLine"_s, (cpuSeconds(CLOCK_THREAD_CPUTIME_ID) - cpuBefore) * 1000 / openLines},
                    {u"stallMs"_s, bench.takeStallMs()}});
}

} // namespace

int main(int argc, char* argv[])
{
    Bench bench(argc, argv);
    MainWindow window;
    auto* client = window.findChild<IpfsClient*>();
    bench.start();
    for (int i = 0; i < closedLines; ++i)
        emit client->rpcRequestIssued(requestLine(i));
    bench.result
        = {{u"lines"_s, closedLines}, {u"loggedSeconds"_s, bench.seconds()}, {u"closedPeakRssMiB"_s, peakRssMiB()}};

    RpcLogDialog dialog(&window);
    bench.result[u"open"_s] = opened(bench, dialog);
    for (const int linesPerTurn : {1, 20})
        bench.result[u"append%1PerTurn"_s.arg(linesPerTurn)] = appended(bench, client, linesPerTurn);

    dialog.resize(dialog.width() - 200, dialog.height());
    settle();
    bench.result[u"resizeStallMs"_s] = bench.takeStallMs();
    const auto* view = dialog.findChild<LineView*>();
    const bool whole = view->document()->blockCount() == window.rpcLog().size()
        && view->verticalScrollBar()->value() == view->verticalScrollBar()->maximum();
    bench.result[u"showsItsEnd"_s] = whole;
    bench.result[u"peakRssMiB"_s] = peakRssMiB();
    bench.print();
    return whole ? 0 : 1;
}
