// SPDX-License-Identifier: MIT
#include "CountText.h"
#include "MetadataPlan.h"
#include "TestMain.h"

#include <QCoreApplication>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

using Wanted = MetadataPlan::Wanted;

QList<PinEntry> recursivePins(int count)
{
    QList<PinEntry> list;
    for (int i = 0; i < count; ++i)
        list.append({.cid = u"r%1"_s.arg(i), .type = PinType::recursive});
    return list;
}

} // namespace

class tst_MetadataPlan : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    void refsOfTheFirstFiveHundredRecursivePins()
    {
        QList<PinEntry> list = recursivePins(502);
        list.prepend({.cid = u"d"_s, .type = PinType::direct});
        list.prepend({.type = PinType::recursive}); // without a CID
        MetadataPlan plan;
        const QStringList asked = plan.takeRefs(list);
        QCOMPARE(asked.size(), 500);
        QCOMPARE(asked.constFirst(), u"r0"_s);
        QCOMPARE(asked.constLast(), u"r499"_s);
        QVERIFY(plan.refsReceived(u"r0"_s));
        QVERIFY(!plan.refsReceived(u"r0"_s));   // once
        QVERIFY(!plan.refsReceived(u"r500"_s)); // another listener's
        plan.startList();
        QVERIFY(!plan.refsReceived(u"r1"_s));
    }

    void aNewListAsksOnlyForWhatIsNotKnown()
    {
        MetadataPlan plan;
        for (const QString& cid : {u"a"_s, u"b"_s, u"c"_s})
            QCOMPARE(plan.addTarget(cid), (Wanted {.size = true, .kind = true}));
        plan.sizeReceived(u"a"_s, 0);
        plan.kindReceived(u"a"_s, u"File"_s);
        plan.kindReceived(u"b"_s, {}); // both failed: done, and not known
        plan.sizeReceived(u"b"_s, -1);
        plan.sizeReceived(u"c"_s, 7);
        plan.sizeReceived(u"stranger"_s, 9); // known, and no target
        plan.kindReceived(u"stranger"_s, u"Other"_s);
        QCOMPARE(plan.doneCount(), 2);
        QCOMPARE(plan.targetCount(), 3);

        QList<PinEntry> list {{.cid = u"a"_s}, {.cid = u"b"_s}, {.cid = u"c"_s}};
        plan.knownFacts().fillIn(list);
        QCOMPARE(list,
                 (QList<PinEntry> {{.cid = u"a"_s, .kind = u"File"_s, .dagSize = 0},
                                   {.cid = u"b"_s},
                                   {.cid = u"c"_s, .dagSize = 7}}));
        plan.startList();
        QCOMPARE(plan.targetCount() + plan.doneCount(), 0);
        QCOMPARE(plan.addTarget(u"a"_s), Wanted());
        QCOMPARE(plan.addTarget(u"b"_s), (Wanted {.size = true, .kind = true}));
        QCOMPARE(plan.addTarget(u"c"_s), (Wanted {.size = false, .kind = true}));
        QCOMPARE(plan.addTarget(u"stranger"_s), Wanted());
        QCOMPARE(plan.doneCount(), 2);
    }

    void countLines_data()
    {
        const auto row = addColumns<CountText::Counts, QString, QString>("counts", "first", "second");
        const CountText::Counts pins {.total = 6, .shown = 2, .types = {.recursive = 3, .direct = 2, .indirect = 1}};
        const QString listed = u"Total: 6  |  Recursive: 3  |  Direct: 2  |  Indirect: 1"_s;
        const QString noSize = u"Total DAG size of all displayed CIDs: —"_s;
        row("nothing", CountText::Counts(), QString(),
            u"Total: 0  |  Recursive: 0  |  Direct: 0  |  Indirect: 0  |  "_s + noSize);
        row("pins", pins, QString(), listed + u"  |  "_s + noSize);
        CountText::Counts counts = pins;
        counts.dagSize = 2048;
        counts.metadataDone = 1;
        counts.metadataTargets = 6;
        const QString sized = u"Total DAG size of all displayed CIDs: 2.0 KB  |  Metadata loaded: 1/6 CIDs"_s;
        row("metadata", counts, QString(), listed + u"  |  "_s + sized);
        counts.searching = true;
        row("search", counts, u"2 / 6 shown  |  R:3  D:2  I:1"_s, sized);
        row("unpinned has no size", CountText::Counts {.unpinned = true, .total = 6, .shown = 6, .dagSize = 5},
            QString(), u"Total: 6 (unpinned)  |  "_s + noSize);
        row("search in unpinned", CountText::Counts {.unpinned = true, .searching = true, .total = 6, .shown = 2},
            u"2 / 6 shown (unpinned)"_s, noSize);
    }
    void countLines()
    {
        QFETCH(const CountText::Counts, counts);
        const CountText::Lines lines = CountText::lines(counts);
        QTEST(lines.first, "first");
        QTEST(lines.second, "second");
    }

    void longListsAreCountedLessOften()
    {
        for (const auto& [rows, interval] : {std::pair(0, 100), std::pair(1999, 100), std::pair(2000, 350),
                                             std::pair(5000, 600), std::pair(9999, 600), std::pair(10'000, 900)})
            QCOMPARE(CountText::countUpdateIntervalMs(rows), interval);
    }

    void aSumOfSizesDoesNotOverflow()
    {
        constexpr long long most = std::numeric_limits<long long>::max();
        QCOMPARE(CountText::addBytes(5, -1), 5);
        QCOMPARE(CountText::addBytes(most - 1, 1), most);
        QCOMPARE(CountText::addBytes(most - 1, most), most);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_MetadataPlan)
#include "tst_metadataplan.moc"
