// SPDX-License-Identifier: MIT
// A sitting with the program, from its first start to its second: each step is looked at in the window and at the node.

#include "ActionBox.h"
#include "AddToIpfsDialog.h"
#include "AddressTable.h"
#include "ConfigDialog.h"
#include "DemoCalls.h"
#include "DhtStatsDialog.h"
#include "GcDialog.h"
#include "LineView.h"
#include "ModalAnswer.h"
#include "NetworkStatsDialog.h"
#include "PinModel.h"
#include "RemotePinFlow.h"
#include "RpcLogDialog.h"
#include "SettingsDialog.h"
#include "SplitActionButton.h"
#include "StatusLogDialog.h"
#include "SwarmDialog.h"
#include "TestFiles.h"
#include "WindowTest.h"

#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QInputDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QRadioButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTreeView>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int pinCount = 12;
const QSize normalSize(900, 620);
const QSize swarmSize(740, 480);
const QString service = u"mysrv"_s;
const QString configKey = u"Datastore.StorageMax"_s;

QJsonObject objectIn(const QByteArray& json)
{
    return QJsonDocument::fromJson(json).object();
}

/// The first of `steps` that does not come in `log` after those before it; empty if all are there in this order.
QString missingStep(const QStringList& log, const QStringList& steps)
{
    auto from = log.begin();
    for (const QString& step : steps) {
        from = std::find_if(from, log.end(), [&step](const QString& line) { return line.contains(step); });
        if (from == log.end())
            return step;
        ++from;
    }
    return {};
}

} // namespace

/// The steps run in this order, and each begins where the one before it has ended.
class tst_Tour : public WindowTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("HOME", QFile::encodeName(home.path())); // where the browser of files begins
        openAppSettings().clear();
    }
    void init()
    {
        if (isBroken)
            QSKIP("A step before this one failed.");
        failOnWarnings();
    }
    void cleanup() { isBroken = isBroken || QTest::currentTestFailed(); }
    void cleanupTestCase() { close(); }

    void lists()
    {
        open(demo);
        QVERIFY(waitForRows(pinCount));
        QVERIFY(window->isMaximized());
        QCOMPARE(rowsShown(), pinsAtNode());
        window->findChild<RemotePinFlow*>()->setPace(50ms, RemotePinFlow::mostTicks);
        for (const int column : {PinModel::RefsColumn, PinModel::SizeColumn, PinModel::KindColumn})
            QTRY_VERIFY(!cells(column).contains(u"…"_s));
    }

    void searches()
    {
        const int asked = demo.headCount();
        auto* search = field<QLineEdit>("Search:"_L1);
        const QStringList cids = cells(PinModel::CidColumn);
        const QString last = cids.constLast().last(12);
        QTest::keyClicks(search, last.toUpper());
        QTRY_COMPARE(cells(PinModel::CidColumn), cids.last(1));
        button<QRadioButton>(window.get(), u"Name"_s)->click();
        QTRY_COMPARE(rows(), 0);
        search->clear();
        QTest::keyClicks(search, u"PHOTO"_s);
        QTRY_COMPARE(rows(), 2);
        search->clear();
        QTRY_COMPARE(rows(), pinCount);
        QCOMPARE(demo.headCount(), asked);
    }

    void addsAFolder()
    {
        const QByteArray maps(300'000, '\x7f');
        writeTestFile(home.path(), u"trip/notes.txt"_s, "first day");
        writeTestFile(home.path(), u"trip/maps/a+b 100%.bin"_s, maps);
        const ModalAnswer<ActionBox> result([](ActionBox&) { QVERIFY(press(u"Copy CIDs"_s)); });
        inDialog<AddToIpfsDialog>(u"Add to IPFS…"_s, [this](AddToIpfsDialog& dialog) {
            const auto* files = dialog.findChild<QFileSystemModel*>();
            browser(dialog)->setCurrentIndex(files->index(tripFolder()));
            button(&dialog, u"Add selected"_s)->click();
            for (auto* combo : dialog.findChildren<QComboBox*>()) {
                combo->setCurrentIndex(std::max(combo->findData(u"both"_s), 0));
                QTRY_VERIFY(!combo->isEditable() || combo->currentText() == service);
            }
            button(&dialog, u"Add to IPFS"_s)->click();
        });
        QTRY_VERIFY(result.wasGiven());
        const QStringList added = QGuiApplication::clipboard()->text().split(u'\n');
        root = added.constFirst();
        QVERIFY(waitForRows(pinCount + 1));
        QCOMPARE(rowsShown(), pinsAtNode());
        QVERIFY(cells(PinModel::CidColumn).contains(root));
        QList<QByteArray> files;
        for (const QString& cid : added) {
            if (const NodeAnswer file = demo.ask("/cat?arg=" + cid.toLatin1()); file.status == 200)
                files.append(bodyOf(file));
        }
        QCOMPARE(files.size(), 2);
        QVERIFY(files.contains("first day") && files.contains(maps));
    }

    void pinsItRemotely()
    {
        QTRY_VERIFY(isLogged(u"Remote pin complete on 'mysrv': 1 pinned, 0 failed."_s));
        const QJsonObject pin = objectIn(bodyOf(demo.ask("/pin/remote/ls?service=mysrv")));
        QCOMPARE(pin[u"Status"_s].toString() + u' ' + pin[u"Cid"_s].toString(), u"pinned "_s + root);
        QCOMPARE(rows(), pinCount + 1); // here as well
    }

    void publishesItsName()
    {
        selectRoot();
        trigger(u"Publish to IPNS..."_s);
        answerQuestion(u"website"_s);
        QTRY_VERIFY(modal<ActionBox>());
        name = modal<ActionBox>()->text().section(u"Name: "_s, 1).section(u'\n', 0, 0);
        QVERIFY(press(u"OK"_s));
        QVERIFY(name.startsWith("k51"_L1));
        QCOMPARE(objectIn(bodyOf(demo.ask("/name/resolve?arg=" + name.toLatin1())))[u"Path"_s], u"/ipfs/"_s + root);
    }

    void resolvesTheName()
    {
        trigger(u"Resolve IPNS..."_s);
        answerQuestion(u"/ipns/"_s + name);
        QTRY_VERIFY(modal<ActionBox>());
        QCOMPARE(modal<ActionBox>()->text(), u"/ipns/%1 -> /ipfs/%2"_s.arg(name, root));
        QVERIFY(press(u"Copy resolved path"_s));
        QCOMPARE(QGuiApplication::clipboard()->text(), u"/ipfs/"_s + root);
        QTRY_VERIFY(!QApplication::activeModalWidget());
    }

    void changesTheConfigAndTakesItBack()
    {
        const auto nodeConfig = [this] { return objectIn(bodyOf(demo.ask("/config/show"))); };
        const auto limit = [&] { return nodeConfig()[u"Datastore"_s][u"StorageMax"_s].toString(); };
        const auto sayYes = [](QMessageBox& question) { question.button(QMessageBox::Yes)->click(); };
        const QJsonObject before = nodeConfig();
        auto* dialog = openTool<ConfigDialog>(u"Kubo config"_s);
        auto* set = button(dialog, u"Set"_s);
        QTRY_VERIFY(isLogged(u"Config loaded (%1 keys)"_s.arg(before.size())));
        QTRY_VERIFY(set->isEnabled());
        const auto fields = dialog->findChildren<QLineEdit*>();
        QTest::keyClicks(fields.at(0), configKey);
        QTest::keyClicks(fields.at(1), u"77GB"_s);
        const ModalAnswer<QMessageBox> risk(sayYes);
        set->click();
        QVERIFY(risk.wasGiven());
        QTRY_COMPARE(limit(), u"77GB"_s);
        auto* restore = button(dialog, u"Restore Backup"_s);
        QTRY_VERIFY(restore->isEnabled());
        const ModalAnswer<QMessageBox> back(sayYes);
        restore->click();
        QVERIFY(back.wasGiven());
        QTRY_COMPARE(nodeConfig(), before);
        QTRY_VERIFY(set->isEnabled());
        closeTool(dialog);
    }

    void savesASnapshot()
    {
        auto* dialog = openTool<NetworkStatsDialog>(u"Network"_s);
        QTRY_VERIFY(isLogged(u"Network diagnostics loaded"_s));
        const QString path = home.path() + u"/snapshot.json"_s;
        button(dialog, u"Save snapshot..."_s)->click();
        auto* picker = dialog->findChild<QFileDialog*>();
        picker->selectFile(path);
        static_cast<QDialog*>(picker)->accept();
        QTRY_VERIFY(isLogged(u"Network snapshot saved"_s));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject saved = objectIn(file.readAll());
        QStringList addresses;
        for (const auto& peer : saved[u"swarm"_s][u"peers"_s].toArray())
            addresses.append(peer[u"addr"_s].toString());
        QCOMPARE(addresses, peersAtNode());
        QCOMPARE(saved[u"dht"_s][u"summary"_s][u"total_peers"_s].toInt(), dhtPeersAtNode());
        closeTool(dialog);
    }

    void filtersTheSwarm()
    {
        auto* dialog = openTool<SwarmDialog>(u"Swarm"_s);
        QTRY_VERIFY(isLogged(u"Swarm diagnostics loaded"_s));
        const auto tables = dialog->findChildren<AddressTable*>();
        const auto* peers = *std::ranges::find(tables, u"Connected peers"_s, &QWidget::accessibleName);
        const QString wanted = u"198.18.0.1"_s; // and .10 to .19
        QTest::keyClicks(dialog->findChildren<QLineEdit*>().constFirst(), wanted);
        QStringList shown;
        for (int row = 0; row < peers->rowCount(); ++row) {
            if (!peers->isRowHidden(row))
                shown.append(peers->item(row, 0)->text());
        }
        QCOMPARE(peers->rowCount(), peersAtNode().size());
        QCOMPARE(shown, peersAtNode().filter(wanted));
        QVERIFY(!shown.isEmpty() && shown.size() < peers->rowCount());
        dialog->resize(swarmSize);
        closeTool(dialog);
    }

    void showsTheDht()
    {
        auto* dialog = openTool<DhtStatsDialog>(u"DHT stats"_s);
        const auto peersShown = [dialog] {
            int count = 0;
            for (const auto* group : dialog->findChildren<QTableWidget*>())
                count += group->rowCount();
            return count;
        };
        QTRY_COMPARE(peersShown(), dhtPeersAtNode());
        closeTool(dialog);
    }

    void collectsGarbage()
    {
        const QStringList before = blocksAtNode();
        const QStringList pinned = pinsAtNode();
        auto* dialog = openTool<GcDialog>(u"Repo stats"_s);
        const auto* view = dialog->findChild<LineView*>();
        QTRY_VERIFY(view->toPlainText().contains(u"\nNumObjects: %1\n"_s.arg(before.size())));
        button(dialog, u"Run garbage collection"_s)->click();
        QTRY_VERIFY(isLogged(u"Repo GC finished: "_s));
        const auto collected = before.size() - blocksAtNode().size();
        QVERIFY(collected > 0);
        QVERIFY(isLogged(u"Repo GC finished: %1 collected, 0 errors"_s.arg(collected)));
        QVERIFY(view->toPlainText().contains(u"\nCollected entries: %1\n"_s.arg(collected)));
        QCOMPARE(pinsAtNode(), pinned);
        QCOMPARE(demo.ask("/ls?arg=" + root.toLatin1()).status, 200);
        closeTool(dialog);
    }

    void unpins()
    {
        selectRoot();
        trigger(u"Unpin selected"_s);
        QVERIFY(!QApplication::activeModalWidget()); // the entry is the warning
        QTRY_VERIFY(isLogged(u"Unpinned 1 CID(s)"_s));
        QVERIFY(waitForRows(pinCount));
        QVERIFY(!cells(PinModel::CidColumn).contains(root));
        QCOMPARE(rowsShown(), pinsAtNode());
        QVERIFY(demo.ask("/pin/ls?arg=" + root.toLatin1()).status != 200);
    }

    /// Every call is in the log of calls, and both logs have what happened in its order.
    void keepsItAllInItsLogs()
    {
        QTRY_COMPARE(demo.headCount(), window->rpcLog().size());
        QStringList calls;
        for (const QString& line : window->rpcLog())
            calls.append(line.section(u"/api/v0"_s, 1).section(u'?', 0, 0) + u';');
        const QStringList callSteps
            = u"/pin/ls /id /pin/remote/service/ls /add /pin/remote/add /pin/remote/ls /key/list /name/publish "
              "/name/resolve /config/show /config /config/show /config/replace /config/show /swarm/peers /stats/dht "
              "/bitswap/stat /swarm/peers /swarm/addrs /bootstrap/list /stats/dht /repo/stat /repo/gc /pin/rm /pin/ls"_s
                  .split(u' ');
        QCOMPARE(missingStep(calls, QStringList(callSteps).replaceInStrings(QRegularExpression(u"$"_s), u";"_s)),
                 QString());
        QCOMPARE(missingStep(window->statusLog(),
                             {u"  Ready"_s, u"  Fetching pins from http://127.0.0.1:"_s, u"  Loaded 12 pin(s) — "_s,
                              u"  Uploading 1 item(s) to IPFS…"_s, u"  Added to IPFS: "_s + root,
                              u"  Remote pin queued for %1 via service 'mysrv'."_s.arg(root),
                              u"  Remote pin complete on 'mysrv': 1 pinned, 0 failed."_s,
                              u"  Publishing %1 to IPNS key 'website'…"_s.arg(root), u"  IPNS publish succeeded: "_s,
                              u"  IPNS resolved: /ipns/%1 -> /ipfs/%2"_s.arg(name, root), u"  Opened config window"_s,
                              u"  Config window closed"_s, u"  Network snapshot saved"_s, u"  Opened swarm window"_s,
                              u"  DHT stats loaded"_s, u"  Running repo garbage collection..."_s,
                              u"  Repo GC finished: "_s, u"  Unpinned 1 CID(s)"_s}),
                 QString());
        verifyLogWindow<RpcLogDialog>(u"RPC log"_s, &StatusWindow::rpcLog);
        verifyLogWindow<StatusLogDialog>(u"Status log"_s, &StatusWindow::statusLog);
    }

    /// The folder is one of the blocks without a pin now.
    void quits()
    {
        inDialog<SettingsDialog>(u"Settings..."_s, [](SettingsDialog& dialog) {
            dialog.setPinTypeFilter(u"recursive"_s);
            dialog.setRefreshIntervalSeconds(777);
            dialog.setAutoRefresh(true);
            dialog.setLoadMetadata(false);
            dialog.accept();
        });
        field<QComboBox>("Content:"_L1)->setCurrentText(u"Not pinned"_s);
        QTRY_VERIFY(refreshButton()->isEnabled() && cells(PinModel::CidColumn).contains(blockOfRoot()));
        window->showNormal();
        window->resize(normalSize);
        QTRY_COMPARE(window->size(), normalSize);
        trigger(u"Quit"_s);
        QTRY_VERIFY(!window->isVisible());
        close();
        QTRY_COMPARE(demo.openNow(), 0);
    }

    void startsAgainAsItWas()
    {
        reopen();
        QTRY_VERIFY(refreshButton()->isEnabled() && cells(PinModel::CidColumn).contains(blockOfRoot()));
        QCOMPARE(window->size(), normalSize);
        QVERIFY(!window->isMaximized());
        QCOMPARE(field<QComboBox>("Content:"_L1)->currentText() + field<QComboBox>("Filter:"_L1)->currentText(),
                 u"Not pinnedRecursive"_s);
        QVERIFY(field<QLineEdit>("Search:"_L1)->text().isEmpty()); // a search is for one sitting
        inDialog<SettingsDialog>(u"Settings..."_s, [](const SettingsDialog& dialog) {
            QCOMPARE(dialog.refreshIntervalSeconds(), 777);
            QVERIFY(dialog.autoRefresh() && !dialog.loadMetadata());
        });
        inDialog<AddToIpfsDialog>(u"Add to IPFS…"_s, [this](const AddToIpfsDialog& dialog) {
            const auto* files = dialog.findChild<QFileSystemModel*>();
            QCOMPARE(files->filePath(browser(dialog)->currentIndex()), tripFolder());
        });
        QCOMPARE(openTool<SwarmDialog>(u"Swarm"_s)->size(), swarmSize);
    }

private:
    // What the window shows.
    QStringList rowsShown() const
    {
        QStringList texts;
        const QStringList types = cells(PinModel::TypeColumn);
        const QStringList names = cells(PinModel::NameColumn);
        const QStringList cids = cells(PinModel::CidColumn);
        for (qsizetype row = 0; row < cids.size(); ++row)
            texts.append(cids.at(row) + u' ' + types.at(row) + u' ' + names.at(row));
        texts.sort();
        return texts;
    }
    template <typename Button = QPushButton> static Button* button(const QWidget* parent, const QString& text)
    {
        for (auto* candidate : parent->findChildren<Button*>()) {
            if (candidate->text().remove(u'&') == text)
                return candidate;
        }
        return nullptr;
    }
    /// As a node lists its blocks.
    QString blockOfRoot() const
    {
        Cid cid = decodeCid(root).value_or(Cid());
        cid.codec = Cid::rawCodec;
        return encodeCid(cid);
    }
    void selectRoot() const { table()->selectRow(static_cast<int>(cells(PinModel::CidColumn).indexOf(root))); }
    template <typename Dialog> Dialog* openTool(const QString& caption) const
    {
        button(window.get(), caption)->click();
        return window->findChild<Dialog*>();
    }
    static void closeTool(QPointer<QDialog> dialog)
    {
        dialog->close();
        QTRY_VERIFY(!dialog);
    }
    template <typename Dialog> void verifyLogWindow(const QString& caption, QStringList (StatusWindow::*lines)() const)
    {
        auto* dialog = openTool<Dialog>(caption);
        QTRY_COMPARE(dialog->template findChild<LineView*>()->toPlainText().split(u'\n'), (window.get()->*lines)());
        closeTool(dialog);
    }
    /// Opens a dialog by its entry in the menus. One that `act` leaves open is cancelled.
    template <typename Dialog, typename Act> void inDialog(const QString& entry, const Act& act) const
    {
        const ModalAnswer<Dialog> answer([&act](Dialog& dialog) {
            act(dialog);
            if (dialog.isVisible())
                dialog.reject();
        });
        trigger(entry);
        QVERIFY(answer.wasGiven());
    }
    template <typename Dialog> static Dialog* modal()
    {
        return qobject_cast<Dialog*>(QApplication::activeModalWidget());
    }
    static void answerQuestion(const QString& text)
    {
        QTRY_VERIFY(modal<QInputDialog>());
        modal<QInputDialog>()->setTextValue(text);
        modal<QInputDialog>()->accept();
    }
    static QTreeView* browser(const QDialog& dialog) { return dialog.findChild<QTreeView*>(u"browserTree"_s); }
    QString tripFolder() const { return home.path() + u"/trip"_s; }

    // What the node has.
    QStringList pinsAtNode() const
    {
        QStringList texts;
        for (const DemoPin& pin : demo.allPins()) {
            Cid shown = pin.cid;
            shown.version = 1; // as the node is asked to list it
            texts.append(encodeCid(shown) + (pin.recursive ? u" recursive "_s : u" direct "_s) + pin.name);
        }
        texts.sort();
        return texts;
    }
    QStringList blocksAtNode()
    {
        return QString::fromLatin1(bodyOf(demo.ask("/refs/local"))).split(u'\n', Qt::SkipEmptyParts);
    }
    QStringList peersAtNode()
    {
        QStringList addresses;
        const QJsonArray peers = objectIn(bodyOf(demo.ask("/swarm/peers")))[u"Peers"_s].toArray();
        for (const auto& peer : peers)
            addresses.append(peer[u"Addr"_s].toString());
        return addresses;
    }
    int dhtPeersAtNode() { return static_cast<int>(bodyOf(demo.ask("/stats/dht")).count("\"ID\"")); }

    QTemporaryDir home;
    OpenNode demo {{.pins = pinCount, .looseBlocks = 5, .remoteServices = {service}, .remotePinTime = 200ms}};
    bool isBroken = false;
    QString root; ///< of the folder that was added
    QString name; ///< under which it was published
};

NORVO_TEST_MAIN(QApplication, tst_Tour)

#include "tst_tour.moc"
