// What a log costs: 1,000,000 requests logged while its dialog is closed, the opening, and 10,000 more while it is
// open.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "RpcLogDialog.h"

#include <QApplication>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextEdit>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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

double seconds(const QElapsedTimer& clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
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
QJsonObject opened(RpcLogDialog& dialog, StallMeter& stalls)
{
    QElapsedTimer clock;
    clock.start();
    dialog.show();
    const double shown = seconds(clock);
    dialog.grab();
    const double painted = seconds(clock);
    settle();
    return {{u"showSeconds"_s, rounded(shown)},
            {u"firstPaintSeconds"_s, rounded(painted)},
            {u"stallMs"_s, rounded(stalls.takeLongest())},
            {u"peakRssMiB"_s, rounded(peakRssMiB())}};
}

/// Logs more lines while the dialog is open, with a turn of the event loop after each few.
QJsonObject appended(IpfsClient& client, int linesPerTurn, StallMeter& stalls)
{
    QElapsedTimer clock;
    clock.start();
    const double cpuBefore = threadCpuSeconds();
    for (int i = 0; i < openLines; ++i) {
        emit client.rpcRequestIssued(requestLine(closedLines + i));
        if (i % linesPerTurn == 0)
            QCoreApplication::processEvents();
    }
    return {{u"msPerLine"_s, rounded(seconds(clock) * 1000 / openLines)},
            {u"cpuMsPerLine"_s, rounded((threadCpuSeconds() - cpuBefore) * 1000 / openLines)},
            {u"stallMs"_s, rounded(stalls.takeLongest())}};
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    MainWindow window;
    auto* client = window.findChild<IpfsClient*>();
    StallMeter stalls;
    QElapsedTimer clock;

    clock.start();
    for (int i = 0; i < closedLines; ++i)
        emit client->rpcRequestIssued(requestLine(i));
    QJsonObject result {{u"lines"_s, closedLines},
                        {u"loggedSeconds"_s, rounded(seconds(clock))},
                        {u"closedPeakRssMiB"_s, rounded(peakRssMiB())}};
    stalls.takeLongest();

    RpcLogDialog dialog(&window);
    result.insert(u"open"_s, opened(dialog, stalls));

    for (const int linesPerTurn : {1, 20})
        result.insert(u"append%1PerTurn"_s.arg(linesPerTurn), appended(*client, linesPerTurn, stalls));

    dialog.resize(dialog.width() - 200, dialog.height());
    settle();
    result.insert(u"resizeStallMs"_s, rounded(stalls.takeLongest()));
    const auto* view = dialog.findChild<QTextEdit*>();
    const bool whole = view->document()->blockCount() == window.rpcLog().size()
        && view->verticalScrollBar()->value() == view->verticalScrollBar()->maximum();
    result.insert(u"showsItsEnd"_s, whole);
    result.insert(u"peakRssMiB"_s, rounded(peakRssMiB()));
    printResult(result);
    return whole ? 0 : 1;
}
