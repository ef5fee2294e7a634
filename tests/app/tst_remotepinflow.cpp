// SPDX-License-Identifier: MIT
#include "RemotePinFlow.h"
#include "TestMain.h"

#include <QCoreApplication>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class tst_RemotePinFlow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        failOnWarnings();
        lines.clear();
        asked = 0;
        flow = std::make_unique<RemotePinFlow>();
        flow->setPace(20ms, RemotePinFlow::mostTicks);
        connect(flow.get(), &RemotePinFlow::pinWanted, this,
                [this](const QString& cid, const QString& service, const QString& name) {
                    lines.append(u"pin %1 %2 %3"_s.arg(cid, service, name));
                });
        connect(flow.get(), &RemotePinFlow::statusWanted, this, [this] { ++asked; });
        connect(flow.get(), &RemotePinFlow::unpinWanted, this, [this](QStringList cids) {
            cids.sort();
            lines.append(u"unpin "_s + cids.join(u' '));
        });
        connect(flow.get(), &RemotePinFlow::statusMessageRequested, this,
                [this](const QString& text) { lines.append(text); });
        connect(flow.get(), &RemotePinFlow::notificationRequested, this,
                [this](const QString& text, bool warning) { lines.append((warning ? u"! "_s : u"* "_s) + text); });
    }

    void nothingToDo()
    {
        flow->start({.remoteServiceNickname = u" "_s}, u"Qa"_s, {});
        flow->start({.remoteServiceNickname = u"s"_s}, {}, {{.cid = u" "_s}});
        QVERIFY(!flow->isActive());
        QCOMPARE(lines,
                 QStringList({u"! Remote pin skipped: no remote service was provided."_s,
                              u"! Remote pin skipped: no CID returned from add."_s}));
    }

    /// Answers in order, each "<cid> <word>"; "?" is a failed check and "!" a pin that could not be queued.
    void endings_data()
    {
        // cids: 0: the root alone
        const auto row = addColumns<int, QStringList, QStringList>("cids", "answers", "end");
        const QString well = u"* Remote pin flow finished: 1 pinned, 0 failed."_s;
        row("pinned at the first answer", 0, QStringList(u"R PINNED"_s),
            QStringList({u"unpin R"_s, well, u"Remote pin complete on 's': 1 pinned, 0 failed."_s}));
        row("later", 0, QStringList({u"R queued"_s, u"R not-found"_s, u"R ?"_s, u"R unknown"_s, u"R pinned"_s}),
            QStringList({u"unpin R"_s, well, u"Remote pin complete on 's': 1 pinned, 0 failed."_s}));
        row("one of three fails", 3, QStringList({u"c1 pinned"_s, u"c2 failed"_s, u"c0 pinned"_s}),
            QStringList({u"unpin c0 c1"_s, u"! Remote pin flow finished: 2 pinned, 1 failed."_s,
                         u"Remote pin complete on 's': 2 pinned, 1 failed."_s}));
        row("none is queued", 2, QStringList({u"c0 !"_s, u"c1 !"_s}),
            QStringList({u"! Remote pin flow finished: 0 pinned, 2 failed."_s,
                         u"Remote pin complete on 's': 0 pinned, 2 failed."_s}));
        row("the time is over", 1, QStringList(),
            QStringList({u"! Remote pin flow finished: 0 pinned, 1 failed."_s,
                         u"Remote pin complete on 's': 0 pinned, 1 failed."_s}));
    }
    void endings()
    {
        QFETCH(const int, cids);
        QFETCH(const QStringList, answers);
        QFETCH(const QStringList, end);
        if (answers.isEmpty())
            flow->setPace(1ms, 5);
        QList<AddEntry> entries;
        for (int i = 0; i < cids; ++i)
            entries.append({.cid = u"c%1 "_s.arg(i)});
        flow->start(options(), cids == 0 ? u"R"_s : QString(), entries);
        QCOMPARE(lines.filter(u"pin "_s).size(), std::max(cids, 1));
        QCOMPARE(asked, std::max(cids, 1));
        for (const QString& answer : answers) {
            QVERIFY(flow->isActive());
            const QString cid = answer.section(u' ', 0, 0);
            const QString word = answer.section(u' ', 1);
            if (word == "?"_L1)
                flow->onRemotePinStatusFailed(cid, u"s"_s, u"no"_s);
            else if (word == "!"_L1)
                flow->onRemotePinQueueFailed(cid, u"s"_s, u"no"_s);
            else
                flow->onRemotePinStatusReceived(cid, u"s"_s, word);
        }
        QTRY_VERIFY(!flow->isActive());
        QCOMPARE(lines.last(2 + (end.size() > 2 ? 1 : 0)), end);
        const qsizetype after = lines.size();
        const int askedAtEnd = asked;
        QTest::qWait(60);
        QCOMPARE(asked, askedAtEnd);
        flow->onRemotePinStatusReceived(u"R"_s, u"s"_s, u"pinned"_s); // too late: only a line
        QCOMPARE(lines.size(), after + 1);
    }

    /// A service that hangs has one question open for each CID; ticks go on.
    void questionsDoNotPileUp()
    {
        flow->setPace(1ms, 30);
        flow->start(options(), {}, {{.cid = u"a"_s}, {.cid = u"b"_s}});
        QTRY_VERIFY(!flow->isActive());
        QCOMPARE(asked, 2);
        QCOMPARE(lines.filter(u"unpin"_s), QStringList());
    }

    void answersOfOthersDoNotCount()
    {
        flow->start({.remoteServiceNickname = u"old"_s}, u"X"_s, {});
        flow->start(options(), u"Y"_s, {});
        flow->onRemotePinStatusReceived(u"X"_s, u"s"_s, u"pinned"_s);
        flow->onRemotePinStatusReceived(u"Y"_s, u"old"_s, u"pinned"_s);
        flow->onRemotePinQueueFailed(u"X"_s, u"old"_s, u"no"_s);
        QVERIFY(flow->isActive());
        flow->onRemotePinStatusReceived(u"Y"_s, u"s"_s, u"pinned"_s);
        QVERIFY(!flow->isActive());
        QCOMPARE(lines.filter(u"unpin"_s), QStringList(u"unpin Y"_s));
    }

    void leavingTheNodeUnpinsNothing()
    {
        flow->start(options(), {}, {{.cid = u"a"_s}, {.cid = u"b"_s}});
        flow->onRemotePinStatusReceived(u"a"_s, u"s"_s, u"pinned"_s);
        flow->leaveNode();
        QVERIFY(!flow->isActive());
        QCOMPARE(lines.last(2),
                 QStringList({u"! Remote pin flow finished: 1 pinned, 1 failed."_s,
                              u"Remote pin complete on 's': 1 pinned, 1 failed."_s}));
        QCOMPARE(lines.filter(u"unpin"_s), QStringList());
    }

private:
    static AddOptions options()
    {
        return {.remoteServiceNickname = u" s "_s, .remotePinLabel = u" l "_s, .unpinLocalAfterRemote = true};
    }

    std::unique_ptr<RemotePinFlow> flow;
    QStringList lines;
    int asked = 0;
};

NORVO_TEST_MAIN(QCoreApplication, tst_RemotePinFlow)

#include "tst_remotepinflow.moc"
