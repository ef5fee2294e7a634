// SPDX-License-Identifier: MIT
// What a person feels of a long list: refreshes, the search, and late facts while sorted by them, in the real window.

#include "BenchSupport.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "PinModel.h"

#include <QJsonArray>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Longer than the window waits for more keys, or for rows to move.
constexpr auto settle = 1200ms;
constexpr int lateFacts = 4000;
/// What a person types, a key at a time: the third one is in few rows, the last in none.
constexpr std::array searches {"b"_L1, "ba"_L1, "bafyq"_L1, "bafyqz0"_L1, ""_L1};

class TableBench : public Bench
{
public:
    using Bench::Bench;

private:
    void follow() override
    {
        column = options.value(u"sort"_s).toInt();
        table->sortByColumn(column, Qt::AscendingOrder);
        connect(client, &IpfsClient::streamEntriesLoaded, this, [this] { takeStallMs(); });
        connect(model, &PinModel::modelReset, this,
                [this] { QTimer::singleShot(settle, this, &TableBench::onListShown); });
        result[u"sortedBy"_s] = model->headerData(column, Qt::Horizontal).toString();
    }

    void onListShown()
    {
        if (options.isSet(u"facts"_s)) {
            result[u"pins"_s] = model->rowCount();
            sendFacts();
            return;
        }
        refreshStalls.append(takeStallMs());
        refreshRss.append(residentMiB());
        if (refreshStalls.size() <= 2) {
            table->window()->findChild<QPushButton*>(u"refreshBtn"_s)->click();
            return;
        }
        result[u"pins"_s] = model->rowCount();
        result[u"refreshStallsMs"_s] = refreshStalls;
        result[u"refreshRssMiB"_s] = refreshRss;
        search(0);
    }

    void search(size_t step)
    {
        if (step == searches.size()) {
            result[u"searchStallsMs"_s] = searchStalls;
            result[u"peakRssMiB"_s] = peakRssMiB();
            print();
            return;
        }
        takeStallMs();
        table->window()->findChild<QLineEdit*>()->setText(searches.at(step));
        QTimer::singleShot(settle, this, [this, step] {
            searchStalls.append(takeStallMs());
            search(step + 1);
        });
    }

    /// As many as come in some ten seconds, and again with nothing painted.
    void sendFacts()
    {
        table->sortByColumn(PinModel::SizeColumn, Qt::AscendingOrder);
        QTimer::singleShot(settle, this, [this] {
            takeStallMs();
            cpuBefore = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
            sendFact(0);
        });
    }

    void sendFact(int sent)
    {
        if (sent == lateFacts) {
            QTimer::singleShot(settle, this, &TableBench::finish);
            return;
        }
        for (int i = 0; i < 20; ++i)
            model->setDagSize(model->pinAt((sent + i) * 7919 % model->rowCount())->cid, (firstSize + sent + i) * 1024);
        QTimer::singleShot(40ms, this, [this, sent] { sendFact(sent + 20); });
    }

    void finish()
    {
        const bool painted = table->updatesEnabled();
        result[painted ? u"lateFactMs"_s : u"lateFactUnpaintedMs"_s]
            = (cpuSeconds(CLOCK_THREAD_CPUTIME_ID) - cpuBefore) * 1e3 / lateFacts;
        if (!painted) {
            print();
            return;
        }
        result[u"lateFactStallMs"_s] = takeStallMs();
        table->setUpdatesEnabled(false);
        firstSize = lateFacts;
        sendFacts();
    }

    int column = 0;
    QJsonArray refreshStalls;
    QJsonArray refreshRss;
    QJsonArray searchStalls;
    double cpuBefore = 0;
    int firstSize = 0; ///< in KiB, of the facts that are sent
};

} // namespace

int main(int argc, char* argv[])
{
    TableBench bench(argc, argv,
                     {{u"sort"_s, u"Section that the table is sorted by."_s, u"section"_s, u"1"_s},
                      {u"facts"_s, u"Late facts, with none that the window asks for."_s}});
    bench.settings = {{u"loadMetadata"_s, !bench.options.isSet(u"facts"_s)}};
    const QList<QStringList> runs {
        {u"--sort"_s, u"1"_s}, {u"--sort"_s, u"0"_s}, {u"--sort"_s, u"5"_s}, {u"--facts"_s, u"--sort"_s, u"4"_s}};
    QList<Demo> demos;
    for (const auto& pins : {u"100000"_s, u"500000"_s})
        demos.append({.nodeArguments = {u"--pins"_s, pins, u"--chunk-bytes"_s, u"65536"_s}, .runs = runs});
    return bench.run(demos);
}
