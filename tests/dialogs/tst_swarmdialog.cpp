// SPDX-License-Identifier: MIT
#include "AddressTable.h"
#include "CellCopy.h"
#include "DemoNode.h"
#include "DialogTest.h"
#include "SwarmDialog.h"

#include <QElapsedTimer>
#include <QHeaderView>
#include <QScrollBar>
#include <QTabWidget>
#include <QTreeWidget>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

const QByteArray peersPath = "/swarm/peers";
const QList<QByteArray> listPaths {peersPath, "/swarm/addrs", "/swarm/addrs/listen", "/bootstrap/list"};
const QList<QByteArray> lists {R"({"Peers":[{"Addr":"/ip4/B","Peer":"p1"},{"Addr":"/ip4/c"}]})",
                               R"({"Addrs":{"z":[],"<b>a":["/ip4/1","/ip4/2\t","/ip6/Third"]}})",
                               R"({"Strings":["/ip4/l"]})", R"({"Peers":["auto","/dns/x"]})"};

} // namespace

class tst_SwarmDialog : public DialogTest<SwarmDialog>
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode();
        for (const QByteArray& path : listPaths)
            node->answer(path, NodeAnswer::hold());
        make(client.get());
        dialog->show();
        for (const QByteArray& path : listPaths)
            QTRY_COMPARE(node->heldCount(path), 1);
    }
    void cleanup() { dialog.reset(); }

    /// The four answers in another order each time, of which `failing` is a failure.
    void aRefreshEndsWithItsLastAnswer_data()
    {
        QTest::addColumn<int>("failing");
        for (int i = -1; i < 4; ++i)
            QTest::addRow("%d", i) << i;
    }
    void aRefreshEndsWithItsLastAnswer()
    {
        QFETCH(const int, failing);
        client->fetchSwarmListenAddrs(); // another dialog's, which counts; and one of its four is never answered
        QTRY_COMPARE(node->heldCount(listPaths.at(2)), 2);
        for (int step = 0; step < 4; ++step) {
            QVERIFY(!button("Refresh")->isEnabled() && !button("Refresh bootstrap")->isEnabled());
            const int i = (step + failing + 2) % 4;
            node->release(listPaths.at(i),
                          i == failing ? NodeAnswer::error("<i>offline") : NodeAnswer::json(lists.at(i)), 0);
            QTRY_COMPARE(node->heldCount(listPaths.at(i)), i == 2 ? 1 : 0);
        }
        QTRY_VERIFY(button("Refresh")->isEnabled() && button("Refresh bootstrap")->isEnabled());
        QCOMPARE(messages.constLast(), u"Swarm diagnostics loaded"_s);
        QCOMPARE(status()->text().startsWith(u"Swarm diagnostics loaded at "_s), failing < 0);
        QCOMPARE(isRed(), failing >= 0);
        QCOMPARE(words()->isVisible(), failing >= 0);
        if (failing >= 0)
            QCOMPARE(words()->text(), u"The node says: <i>offline"_s);
        const QStringList all {u"/ip4/B;/ip4/c"_s, u"<b>a|/ip4/1\n/ip4/2\n/ip6/Third;z|"_s, u"/ip4/l"_s,
                               u"auto;/dns/x"_s};
        for (int i = 0; i < 4; ++i)
            QCOMPARE(shown(i), i == failing ? QString() : all.at(i));
        QCOMPARE(button("Remove all")->isEnabled(), failing != 3);
    }

    void whatAnAnswerDoes_data()
    {
        // status: empty if it stays as it was
        const auto row = addColumns<bool, QString, QString>("ok", "status", "message");
        const QString stays = u"Swarm connect error: <b>no"_s;
        row("swarmConnectResult", true, u"Connect: a | b"_s, u"Swarm connect success: t"_s);
        row("swarmConnectResult failed", false, u"Connect: Connected."_s, u"Swarm connect success: t"_s);
        row("swarmDisconnectResult failed", false, u"Disconnect: Disconnected."_s, u"Swarm disconnect success: t"_s);
        row("bootstrapAddResult", true, u"Added bootstrap peer: t"_s, u"Bootstrap peer added: t"_s);
        row("bootstrapAddResult failed", false, QString(), stays);
    }
    /// Each after a failure, which is red; what is no refused change of the list covers it.
    void whatAnAnswerDoes()
    {
        QFETCH(const bool, ok);
        QFETCH(const QString, status);
        const QByteArray signal = QByteArray(QTest::currentDataTag()).split(' ').constFirst();
        answerAll();
        const auto said = [this](const QString& path) { emit client->nodeSaid(path, u"<i>why"_s); };
        said(u"/swarm/connect"_s);
        emit client->swarmRequestFailed(u"connect"_s, u"yes"_s);
        QVERIFY(words()->isVisible());
        said(u"/add"_s);
        emit client->bootstrapRequestFailed(u"bootstrap-add"_s, u"<b>no"_s);
        QVERIFY(!words()->isVisible()); // they were another call's
        QCOMPARE(messages.constLast(), u"Bootstrap error: <b>no"_s);
        said(u"/swarm/connect"_s);
        emit client->swarmRequestFailed(u"connect"_s, u"<b>no"_s);
        const QStringList lines = ok ? QStringList {u"a"_s, u"b"_s} : QStringList();
        QMetaObject::invokeMethod(client.get(), signal.constData(), Q_ARG(QString, u"t"_s), Q_ARG(bool, ok),
                                  Q_ARG(QStringList, lines));
        QCOMPARE(words()->isVisible(), !ok);
        QCOMPARE(isRed(), status.isEmpty());
        QCOMPARE(this->status()->text(), status.isEmpty() ? u"<b>no"_s : status);
        QTEST(messages.constLast(), "message");
        QCOMPARE(shown(3), signal.startsWith("bootstrap") && ok ? u"a;b"_s : u"auto;/dns/x"_s);
        QTRY_COMPARE(node->heldCount(peersPath), signal.startsWith("swarm") ? 1 : 0);
    }

    void whatIsFilteredOutIsNeitherCopiedNorRemoved()
    {
        answerAll();
        filter()->setText(u"  THIRD "_s); // in a later line
        QCOMPARE(shown(0) + shown(2) + shown(3), QString());
        QCOMPARE(copied(1), u"<b>a\t\"/ip4/1\n/ip4/2\n/ip6/Third\""_s);
        filter()->setText(u"<B>A"_s);
        QVERIFY(shown(1).startsWith(u"<b>a|"_s));
        filter()->setText(u" "_s);
        QCOMPARE(copied(3), u"auto\n/dns/x"_s);
        filter()->setText(u"dns"_s); // both stay selected
        node->answer("/bootstrap/rm", NodeAnswer::json(R"({"Peers":["/dns/x"]})"));
        button("Remove selected")->click();
        QTRY_COMPARE(status()->text(), u"Removed 1 bootstrap peer(s)."_s);
        QCOMPARE(node->requests("/bootstrap/rm").constLast().values(u"arg"_s), QStringList({u"/dns/x"_s}));
        filter()->clear();
        QCOMPARE(shown(3), u"/dns/x"_s); // no more than the node has named
        table(1)->clearSelection();
        table(1)->setCurrentCell(0, 1);
        table(1)->actions().constFirst()->trigger();
        QCOMPARE(clipboard(), u"/ip4/1\n/ip4/2\n/ip6/Third"_s);
    }

    void whatIsFoldedAwayIsNotCopied()
    {
        QTreeWidget tree;
        auto* group = new QTreeWidgetItem(&tree, {u"group"_s});
        group->addChild(new QTreeWidgetItem({u"member"_s}));
        tree.expandAll();
        tree.setSelectionMode(QAbstractItemView::ExtendedSelection);
        tree.selectAll();
        QCOMPARE(selectedCells(tree), u"group\nmember"_s);
        group->setExpanded(false);
        QCOMPARE(selectedCells(tree), u"group"_s);
    }

    /// Peers are disconnected one after the other, and the list is read anew after each.
    void aRefreshKeepsThePlace()
    {
        QStringList peers = numbered(u"/ip4/%1"_s, 300);
        filter()->setText(u"ip4"_s);
        emit client->swarmPeersReceived(peers);
        auto* list = table(0);
        list->selectRow(120);
        list->verticalScrollBar()->setValue(list->verticalHeader()->sectionPosition(110) + 3);
        peers.remove(105, 10); // with the row at the top
        peers.prepend(u"/dns/new"_s);
        emit client->swarmPeersReceived(peers);
        QCOMPARE(list->selectedTexts(), QStringList({u"/ip4/120"_s}));
        QCOMPARE(list->currentItem()->text(), u"/ip4/120"_s);
        QCOMPARE(list->item(list->rowAt(0), 0)->text(), u"/ip4/115"_s);
        QVERIFY(list->isRowHidden(0));
        peers.removeOne(u"/ip4/120"_s);
        emit client->swarmPeersReceived(peers);
        QVERIFY(list->selectedTexts().isEmpty() && !list->currentItem());
    }

    void oneConnectionIsClosedAtATime()
    {
        const DemoNode demo({.port = 0, .swarmPeers = 3});
        client->setEndpoint(u"127.0.0.1"_s, demo.port());
        QTRY_VERIFY(button("Refresh")->isEnabled());
        target()->setText(u"not this"_s);
        for (int left = 2; left >= 0; --left) {
            const QString address = table(0)->item(0, 0)->text();
            QVERIFY(!address.contains(u"/p2p/12"_s));
            table(0)->selectRow(0);
            button("Disconnect selected")->click();
            QTRY_COMPARE(table(0)->rowCount(), left);
            QVERIFY(status()->text().endsWith(u" success"_s));
            QVERIFY(!shown(0).contains(address));
        }
        button("Disconnect selected")->click();
        QTRY_COMPARE(words()->text(), u"The node says: failed to parse multiaddr \"not this\": must begin with /"_s);
        QCOMPARE(messages.filter(u"Swarm disconnect error: "_s).size(), 1);
    }

    void aNodeWithoutNetworkSaysSo()
    {
        const DemoNode demo({.port = 0, .isOffline = true});
        client->setEndpoint(u"127.0.0.1"_s, demo.port());
        QTRY_VERIFY(button("Refresh")->isEnabled());
        QVERIFY(isRed() && words()->text().contains(u"online mode"_s));
        target()->setText(u"/ip4/198.18.0.1/tcp/1/p2p/"_s + u"12D3KooWAGok5BHR3zQCMcfB5a5ntgco7JCLFwtEFB229Awz5eC4"_s);
        QTest::keyClick(target(), Qt::Key_Return);
        QVERIFY(!words()->isVisible());
        QTRY_VERIFY(messages.contains(u"Swarm connect success: "_s + target()->text()));
        QVERIFY(words()->isVisible() && words()->text().contains(u"online mode"_s));
    }

    /// What the former node was asked to do is reported, and is not taken for the new node's list.
    void anotherNodeStartsAnew()
    {
        answerAll();
        node->answer("/bootstrap/add", NodeAnswer::hold());
        field("Bootstrap peer")->setText(u" /dns/y "_s);
        button("Add peer")->click();
        QTRY_COMPARE(node->heldCount("/bootstrap/add"), 1);
        button("Refresh")->click();
        QTRY_COMPARE(node->heldCount(peersPath), 1);
        FakeNode other;
        for (int i = 0; i < 4; ++i)
            other.answer(listPaths.at(i), i == 0 ? NodeAnswer::hold() : NodeAnswer::json(lists.at(i)));
        client->setEndpoint(u"127.0.0.1"_s, other.port());
        QCOMPARE(shown(0) + shown(1) + shown(2) + shown(3), QString());
        QTRY_COMPARE(shown(3), u"auto;/dns/x"_s);
        node->release(peersPath, NodeAnswer::json(lists.at(0)));
        node->release("/bootstrap/add", NodeAnswer::json(R"({"Peers":["/dns/y"]})"));
        QTRY_COMPARE(messages.constLast(), u"Bootstrap peer added: /dns/y"_s);
        QCOMPARE(shown(0) + shown(3), u"auto;/dns/x"_s);
        QVERIFY(!button("Refresh")->isEnabled());

        dialog->hide();
        client->setEndpoint(u"127.0.0.1"_s, node->port());
        QCOMPARE(shown(3), QString());
        QVERIFY(button("Refresh")->isEnabled() && !button("Remove all")->isEnabled());
        QCOMPARE(node->heldCount(peersPath), 0);
        dialog->show();
        QTRY_COMPARE(node->heldCount(peersPath), 1);
    }

    void whatLacksATargetIsRefused()
    {
        answerAll();
        const QList<std::array<const char*, 3>> refusals {
            {"Connect", "Peer multiaddr is required.", "Swarm connect failed: peer multiaddr is required"},
            {"Disconnect selected", "Select a connected peer row or enter a multiaddr.",
             "Swarm disconnect failed: no target selected"},
            {"Add peer", "Bootstrap peer address is required.", "Bootstrap add failed: peer address is required"},
            {"Remove selected", "Select bootstrap peers to remove or enter one in the field.",
             "Bootstrap remove failed: no peer selected"}};
        target()->setText(u" "_s);
        for (const auto& [name, text, message] : refusals) {
            status()->showProgress({});
            button(name)->click();
            QVERIFY(isRed());
            QCOMPARE(QStringList({status()->text(), messages.constLast()}),
                     QStringList({QLatin1StringView(text), QLatin1StringView(message)}));
        }
        QCOMPARE(node->requests().size(), 4);
    }

    void removingAllAsks()
    {
        answerAll();
        node->answer("/bootstrap/rm/all", NodeAnswer::json(R"({"Peers":["auto"]})"));
        for (const auto choice : {QMessageBox::No, QMessageBox::Yes}) {
            const ModalAnswer<QMessageBox> answer([choice](QMessageBox& box) {
                QCOMPARE(box.defaultButton(), box.button(QMessageBox::No));
                box.button(choice)->click();
            });
            button("Remove all")->click();
            QVERIFY(answer.wasGiven());
            QCOMPARE(messages.contains(u"Removing all bootstrap peers"_s), choice == QMessageBox::Yes);
        }
        QTRY_COMPARE(status()->text(), u"Removed 0 bootstrap peer(s)."_s);
        QCOMPARE(shown(3), u"auto"_s);
        const ModalAnswer<QMessageBox> elsewhere([this](QMessageBox& box) {
            client->setEndpoint(u"localhost"_s, node->port());
            box.button(QMessageBox::Yes)->click();
        });
        button("Remove all")->click();
        QVERIFY(elsewhere.wasGiven());
        QCOMPARE(messages.constLast(), u"Bootstrap error: Another node is in use. Nothing was sent."_s);
        emit client->bootstrapPeersReceived({u"auto"_s});
        const ModalAnswer<QMessageBox> late([this](QMessageBox&) { dialog.reset(); });
        button("Remove all")->click();
        QVERIFY(late.wasGiven() && !dialog);
        QCOMPARE(node->count("/bootstrap/rm/all"), 1);
    }

    /// Far above what it takes, so that a slow machine passes and a cost that grows with the square does not.
    void manyRowsTakeNoTime()
    {
        QHash<QString, QStringList> known;
        for (const QString& peer : numbered(u"12D3KooW%1"_s, 20'000))
            known.insert(peer, {u"/ip4/a"_s, u"/ip4/b"_s, peer});
        QElapsedTimer clock;
        clock.start();
        emit client->swarmAddrsReceived(known);
        table(1)->selectAll();
        for (const QString& text : {u"1"_s, u"199"_s, QString()})
            filter()->setText(text);
        known.remove(u"12D3KooW100"_s);
        emit client->swarmAddrsReceived(known);
        QCOMPARE(copied(1).count(u'\n'), 3 * 19'999 - 1);
        QVERIFY2(clock.elapsed() < 10'000, qPrintable(QString::number(clock.elapsed())));
    }

private:
    void answerAll() const
    {
        for (int i = 0; i < 4; ++i)
            node->release(listPaths.at(i), NodeAnswer::json(lists.at(i)));
        QTRY_VERIFY(button("Refresh")->isEnabled());
    }
    static QStringList numbered(const QString& form, int count)
    {
        QStringList texts;
        for (int i = 0; i < count; ++i)
            texts.append(form.arg(i));
        return texts;
    }
    /// In the order of the calls.
    AddressTable* table(int list) const
    {
        QWidget* page = dialog->findChild<QTabWidget*>()->widget(QList<int> {0, 2, 1, 3}.at(list));
        auto* table = qobject_cast<AddressTable*>(page);
        return table ? table : page->findChild<AddressTable*>();
    }
    /// The rows that are not hidden, as "cell|cell;cell|cell".
    QString shown(int list) const
    {
        QStringList rows;
        for (int row = 0; row < table(list)->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < table(list)->columnCount(); ++column)
                cells.append(table(list)->item(row, column)->text());
            if (!table(list)->isRowHidden(row))
                rows.append(cells.join(u'|'));
        }
        return rows.join(u';');
    }
    QString copied(int list) const
    {
        table(list)->selectAll();
        table(list)->actions().constFirst()->trigger();
        return clipboard();
    }
    StatusLabel* words() const { return dialog->findChild<StatusLabel*>(u"nodeWordsLabel"_s); }
    QLineEdit* field(const char* name) const
    {
        const auto all = dialog->findChildren<QLineEdit*>();
        return *std::ranges::find(all, QLatin1StringView(name), &QWidget::accessibleName);
    }
    QLineEdit* filter() const { return field("Filter"); }
    QLineEdit* target() const { return field("Peer"); }
};

NORVO_TEST_MAIN(QApplication, tst_SwarmDialog)
#include "tst_swarmdialog.moc"
