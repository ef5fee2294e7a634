// SPDX-License-Identifier: MIT
// How the swarm window opens on 5,000 connections and 20,000 known peers, asked for over the wire, how it answers the
// keys of its filter, and what a refresh and a copy of all rows cost.

#include "AddressTable.h"
#include "BenchNode.h"
#include "BenchSupport.h"
#include "IpfsClient.h"
#include "SwarmDialog.h"

#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTabWidget>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int connectionCount = 5'000;
constexpr int knownCount = 20'000;
constexpr int knownTab = 2;

QByteArray peerId(int number)
{
    return "12D3KooWJb7q9GkS3hYx5mQpVd2wTzNcR4eLfUa8iBoH" + QByteArray::number(number).rightJustified(8, 'a');
}

QByteArray address(int number)
{
    return "/ip4/198.18." + QByteArray::number(number / 256 % 256) + '.' + QByteArray::number(number % 256) + "/udp/"
        + QByteArray::number(4001 + number / 65536) + "/quic-v1";
}

QByteArray connections(int removed)
{
    QByteArray body = "{\"Peers\":[";
    for (int i = removed; i < connectionCount; ++i)
        body += (i > removed ? ",{\"Addr\":\"" : "{\"Addr\":\"") + address(i) + R"(","Peer":")" + peerId(i) + "\"}";
    return body + "]}";
}

/// One to five addresses each.
QByteArray knownAddresses(int removed)
{
    QByteArray body = "{\"Addrs\":{";
    for (int i = removed; i < knownCount; ++i) {
        body += (i > removed ? ",\"" : "\"") + peerId(i) + "\":[";
        for (int j = 0; j <= i % 5; ++j)
            body += (j > 0 ? ",\"" : "\"") + address(i * 5 + j) + '"';
        body += ']';
    }
    return body + "}}";
}

/// The first entries are missing from the second answers.
void script(FakeNode& node)
{
    node.answers("/swarm/peers", {NodeAnswer::json(connections(0)), NodeAnswer::json(connections(1))});
    node.answers("/swarm/addrs", {NodeAnswer::json(knownAddresses(0)), NodeAnswer::json(knownAddresses(1))});
    node.answer("/swarm/addrs/listen", NodeAnswer::json(R"({"Strings":["/ip4/127.0.0.1/tcp/4001"]})"));
    node.answer("/bootstrap/list", NodeAnswer::json(R"({"Peers":["auto"]})"));
}

AddressTable* tableOf(const SwarmDialog& dialog, const QString& name)
{
    const auto tables = dialog.findChildren<AddressTable*>();
    return *std::ranges::find(tables, name, &QWidget::accessibleName);
}

AddressTable* knownTable(const SwarmDialog& dialog)
{
    return tableOf(dialog, u"Known addresses"_s);
}

/// Turns the event loop until the dialog has all that it asked for; as milliseconds.
QJsonObject loaded(Bench& bench, const SwarmDialog& dialog, int removed)
{
    const AddressTable* peers = tableOf(dialog, u"Connected peers"_s);
    const AddressTable* known = knownTable(dialog);
    turnUntil(
        [&] { return peers->rowCount() == connectionCount - removed && known->rowCount() == knownCount - removed; });
    QCoreApplication::processEvents();
    return rounded({{u"shownMs"_s, bench.seconds() * 1000}, {u"stallMs"_s, bench.takeStallMs()}});
}

/// The longest that a key takes to be painted while a text is typed and taken back.
double typed(QLineEdit* filter)
{
    qint64 longest = 0;
    const QString keys = u"198.18.7.1"_s;
    for (qsizetype i = 0; i < 2 * keys.size(); ++i) {
        const bool forth = i < keys.size();
        QElapsedTimer clock;
        clock.start();
        QKeyEvent press(QEvent::KeyPress, forth ? Qt::Key_0 : Qt::Key_Backspace, Qt::NoModifier,
                        forth ? QString(keys.at(i)) : QString());
        QCoreApplication::sendEvent(filter, &press);
        QCoreApplication::processEvents();
        longest = std::max(longest, clock.nsecsElapsed());
    }
    return static_cast<double>(longest) / 1e6;
}

/// The known addresses, with all of them selected, as a refresh finds them.
void measureRefresh(Bench& bench, SwarmDialog& dialog)
{
    auto* table = knownTable(dialog);
    table->selectAll();
    table->setCurrentCell(knownCount / 2, 0, QItemSelectionModel::NoUpdate);
    bench.start();
    QMetaObject::invokeMethod(&dialog, "onRefreshClicked");
    bench.result[u"refresh"_s] = loaded(bench, dialog, 1);
    bench.start();
    table->actions().constFirst()->trigger();
    QCoreApplication::processEvents();
    bench.result[u"copyAllMs"_s] = bench.seconds() * 1000;
}

/// Returns whether all came.
bool measure(Bench& bench, quint16 port)
{
    IpfsClient client;
    client.setEndpoint(u"127.0.0.1"_s, port);
    bench.start();
    SwarmDialog dialog(&client);
    dialog.show();
    bench.result[u"open"_s] = loaded(bench, dialog, 0);
    bench.start();
    auto* tabs = dialog.findChild<QTabWidget*>();
    tabs->setCurrentIndex(knownTab);
    QCoreApplication::processEvents();
    bench.result[u"knownTabMs"_s] = bench.seconds() * 1000;
    bench.result[u"filterKeyMs"_s] = typed(dialog.findChild<QLineEdit*>());
    measureRefresh(bench, dialog);
    bench.result[u"peakRssMiB"_s] = peakRssMiB();
    bench.result = rounded(bench.result);
    bench.print();
    return knownTable(dialog)->rowCount() == knownCount - 1;
}

} // namespace

int main(int argc, char* argv[])
{
    Bench bench(argc, argv);
    return measureWithNode(script, [&bench](quint16 port) { return measure(bench, port); }) ? 0 : 1;
}
