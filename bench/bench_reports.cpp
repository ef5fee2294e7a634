// SPDX-License-Identifier: MIT
// What long answers cost in the windows that show them: a garbage collection of 1,000,000 blocks, two views of a DHT
// with 256 buckets of 20 peers each, one bucket of 100,000 peers, and a network snapshot of that DHT and of 10,000
// connections.

#include "BenchSupport.h"
#include "DhtGroups.h"
#include "DhtStatsDialog.h"
#include "GcDialog.h"
#include "IpfsClient.h"
#include "LineView.h"
#include "NetworkStatsDialog.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QJsonArray>
#include <QPushButton>
#include <QTableWidget>
#include <QTextBlock>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int blockCount = 1'000'000;
constexpr int connectionCount = 10'000;

QString numbered(const QString& head, int number, int width)
{
    return head + QString::number(number).rightJustified(width, u'a');
}

QStringList manyCids()
{
    QStringList cids;
    cids.reserve(blockCount);
    for (int i = 0; i < blockCount; ++i)
        cids.append(numbered(u"bafkreidhkumeonuwkebh2i4fc7o7lguehauradvlk57gzake6g"_s, i, 8));
    return cids;
}

struct DhtSize
{
    QString name {};
    int views = 0;
    int buckets = 0; ///< of each view
    int peers = 0;   ///< of each bucket
};

QJsonArray manyBuckets(int view, const DhtSize& size)
{
    QJsonArray buckets;
    for (int bucket = 0; bucket < size.buckets; ++bucket) {
        QJsonArray peers;
        for (int peer = 0; peer < size.peers; ++peer) {
            const int number = (view * size.buckets + bucket) * size.peers + peer;
            peers.append(QJsonObject {{u"ID"_s, numbered(u"12D3KooWJb7Q3yVQfKpP5tYx8mWcZrTnLsDgHkEuBv"_s, number, 10)},
                                      {u"AgentVersion"_s, u"kubo/0.%1.0/desktop"_s.arg(number % 43)},
                                      {u"Connected"_s, number % 3 == 0},
                                      {u"LastQueriedAt"_s, numbered(u"2026-07-24T09:59:0"_s, number, 6)},
                                      {u"LastUsefulAt"_s, numbered(u"2026-07-24T10:00:0"_s, number, 6)}});
        }
        buckets.append(QJsonObject {{u"LastRefresh"_s, u"2026-07-24T10:00:00Z"_s}, {u"Peers"_s, peers}});
    }
    return buckets;
}

QJsonValue manyPeers(const DhtSize& size)
{
    QJsonArray views;
    for (int view = 0; view < size.views; ++view)
        views.append(QJsonObject {{u"Name"_s, numbered(u"wan"_s, view, 1)}, {u"Buckets"_s, manyBuckets(view, size)}});
    return views;
}

/// Shows the dialog and waits until the call that it makes by itself has failed: there is no node.
template <typename Dialog> std::unique_ptr<Dialog> shownDialog(IpfsClient& client)
{
    auto dialog = std::make_unique<Dialog>(&client);
    dialog->show();
    const auto* button = dialog->template findChild<QPushButton*>();
    turnUntil([button] { return button->isEnabled(); });
    return dialog;
}

/// Closes and deletes the dialog, as its window does.
template <typename Dialog> double closeStallMs(Bench& bench, std::unique_ptr<Dialog>& dialog)
{
    bench.start();
    dialog->close();
    dialog.reset();
    return bench.takeStallMs();
}

bool measureGc(Bench& bench, IpfsClient& client)
{
    auto dialog = shownDialog<GcDialog>(client);
    auto* view = dialog->findChild<LineView*>();
    QStringList cids = manyCids();
    const double rssBefore = peakRssMiB();
    bench.start();
    emit client.repoGcCompleted(cids, {});
    const bool firstLines = view->document()->blockCount() > 1000;
    dialog->grab();
    QJsonObject figures {{u"firstPaintSeconds"_s, bench.seconds()}, {u"rssBeforeMiB"_s, rssBefore}};
    cids.clear();
    turnUntil([view] { return !view->isFilling(); });
    figures[u"fillSeconds"_s] = bench.seconds();
    figures[u"stallMs"_s] = bench.takeStallMs();
    figures[u"peakRssMiB"_s] = peakRssMiB();
    view->selectAll();
    bench.start();
    view->copy();
    figures[u"copyAllMs"_s] = bench.takeStallMs();
    const bool whole = QGuiApplication::clipboard()->text().count(u'\n') == blockCount + 4;
    figures[u"closeStallMs"_s] = closeStallMs(bench, dialog);
    bench.result[u"gc"_s] = rounded(figures);
    return firstLines && whole;
}

bool areInLine(const QList<QTableWidget*>& tables)
{
    return std::ranges::all_of(tables, [&tables](const QTableWidget* table) {
        for (int column = 0; column < table->columnCount(); ++column) {
            if (table->columnWidth(column) != tables.first()->columnWidth(column))
                return false;
        }
        return true;
    });
}

bool measureDht(Bench& bench, IpfsClient& client, const DhtSize& size)
{
    auto dialog = shownDialog<DhtStatsDialog>(client);
    const QJsonValue views = manyPeers(size);
    QJsonObject figures;
    for (const auto& name : {u"first"_s, u"again"_s}) { // the second replaces the first
        bench.start();
        emit client.dhtStatsReceived(views);
        dialog->grab();
        const double firstPaint = bench.seconds();
        turnUntil([&dialog] { return !dialog->findChild<DhtGroups*>(); });
        figures[name] = rounded({{u"firstPaintSeconds"_s, firstPaint},
                                 {u"fillSeconds"_s, bench.seconds()},
                                 {u"stallMs"_s, bench.takeStallMs()},
                                 {u"peakRssMiB"_s, peakRssMiB()}});
    }
    const auto tables = dialog->findChildren<QTableWidget*>();
    const bool whole = tables.size() == size.views * size.buckets && areInLine(tables)
        && tables.last()->rowCount() == size.peers && tables.last()->item(size.peers - 1, 0);
    figures[u"closeStallMs"_s] = closeStallMs(bench, dialog);
    bench.result[size.name] = rounded(figures);
    return whole;
}

/// From an answer to the first screen of its snapshot, and to the last line. Returns whether all of it came.
bool measureAnswer(Bench& bench, const NetworkStatsDialog& dialog, const QString& name,
                   const std::function<void()>& arrive)
{
    const auto* view = dialog.findChild<LineView*>();
    const auto letters = [view] { return view->document()->characterCount(); };
    const int before = letters();
    bench.start();
    arrive();
    const bool isShown = turnUntil([&] { return letters() != before; });
    const double shownSeconds = bench.seconds();
    const bool isWhole = turnUntil([view] { return !view->isFilling(); });
    bench.result[name] = rounded({{u"characters"_s, letters()},
                                  {u"shownSeconds"_s, shownSeconds},
                                  {u"fillSeconds"_s, bench.seconds()},
                                  {u"stallMs"_s, bench.takeStallMs()},
                                  {u"peakRssMiB"_s, peakRssMiB()}});
    return isShown && isWhole;
}

bool measureNetwork(Bench& bench, IpfsClient& client)
{
    QStringList addresses;
    addresses.reserve(connectionCount);
    for (int i = 0; i < connectionCount; ++i)
        addresses.append(u"/ip4/203.0.113.7/udp/%1/quic-v1"_s.arg(i));
    const QJsonValue views = manyPeers({.name = {}, .views = 2, .buckets = 256, .peers = 20});
    NetworkStatsDialog dialog(&client);
    dialog.show();
    return measureAnswer(bench, dialog, u"failures"_s, [] {})
        && measureAnswer(bench, dialog, u"connections"_s, [&] { emit client.swarmPeersReceived(addresses); })
        && measureAnswer(bench, dialog, u"networkOfDht"_s, [&] { emit client.dhtStatsReceived(views); });
}

} // namespace

int main(int argc, char* argv[])
{
    Bench bench(argc, argv);
    IpfsClient client;
    client.setEndpoint(u"127.0.0.1"_s, 1);
    const bool isWhole = measureDht(bench, client, {.name = u"dht"_s, .views = 2, .buckets = 256, .peers = 20})
        && measureDht(bench, client, {.name = u"bucket"_s, .views = 1, .buckets = 1, .peers = 100'000})
        && measureGc(bench, client) && measureNetwork(bench, client);
    bench.result[u"showsAll"_s] = isWhole;
    bench.print();
    return isWhole ? 0 : 1;
}
