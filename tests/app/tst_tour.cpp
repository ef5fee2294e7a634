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
#include "LogDialog.h"
#include "ModalAnswer.h"
#include "NetworkStatsDialog.h"
#include "PinModel.h"
#include "RemotePinFlow.h"
#include "SettingsDialog.h"
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
/// What the logs have in the end, of all that is in them.
const QString callSteps
    = u"/pin/ls /id /pin/remote/service/ls /add /pin/remote/add /pin/remote/ls /key/list /name/publish /name/resolve "
      "/config/show /config /config/show /config/replace /config/show /swarm/peers /stats/dht /bitswap/stat "
      "/swarm/peers /swarm/addrs /bootstrap/list /stats/dht /repo/stat /repo/gc /pin/rm /pin/ls"_s;
const QString statusSteps
    = u"  Ready\n  Fetching pins from\n  Loaded 12 pin(s)\n  Uploading 1 item(s) to IPFS…\n"
      "  Added to IPFS: %1\n  Remote pin queued for %1 via service 'mysrv'.\n"
      "  Remote pin complete on 'mysrv': 1 pinned, 0 failed.\n  Publishing %1 to IPNS key 'website'…\n"
      "  IPNS publish succeeded: %2 -> /ipfs/%1\n  IPNS resolved: /ipns/%2 -> /ipfs/%1\n  Opened config window\n"
      "  Config window closed\n  Network snapshot saved\n  Opened swarm window\n  DHT stats loaded\n"
      "  Running repo garbage collection...\n  Repo GC finished:\n  Unpinned 1 CID(s)"_s;

/// A member of each object.
QStringList textsIn(const QJsonValue& objects, QLatin1StringView key)
{
    QStringList texts;
    const QJsonArray array = objects.toArray();
    for (const auto& object : array)
        texts.append(object[key].toString());
    return texts;
}

/// The first of `steps`, which are whole words, that does not come in `log` after those before it; empty if all do.
QString missingStep(const QStringList& log, const QStringList& steps)
{
    auto from = log.begin();
    for (const QString& step : steps) {
        const auto isStep = [&step](const QString& line) { return (line + u' ').contains(step + u' '); };
        from = std::find_if(from, log.end(), isStep);
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
    void init()
    {
        if (isBroken)
            QSKIP("A step before this one failed.");
        failOnWarnings();
    }
    void cleanup() { isBroken = isBroken || QTest::currentTestFailed(); }
    void cleanupTestCase() { close(); }

    void startsWithAList()
    {
        qputenv("HOME", QFile::encodeName(home.path())); // where the browser of files begins
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
        const QStringList one = rowsShown().last(1);
        QTest::keyClicks(search, one.constFirst().last(12).toUpper());
        QTRY_COMPARE(rowsShown(), one);
        withText<QRadioButton>(*window, u"Name"_s)->click();
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
            withText<QPushButton>(dialog, u"Add selected"_s)->click();
            for (auto* combo : dialog.findChildren<QComboBox*>()) {
                combo->setCurrentIndex(std::max(combo->findData(u"both"_s), 0));
                QTRY_VERIFY(!combo->isEditable() || combo->currentText() == u"mysrv"_s);
            }
            withText<QPushButton>(dialog, u"Add to IPFS"_s)->click();
        });
        QTRY_VERIFY(result.wasGiven());
        const QStringList added = QGuiApplication::clipboard()->text().split(u'\n');
        root = added.constFirst();
        QVERIFY(waitForRows(pinCount + 1));
        QVERIFY(rowsShown() == pinsAtNode() && rowsShown().contains(root));
        QByteArray files;
        for (const QString& cid : added) {
            if (const NodeAnswer file = demo.ask("/cat?arg=" + cid.toLatin1()); file.status == 200)
                files += bodyOf(file);
        }
        QVERIFY(files == "first day" + maps || files == maps + "first day");
    }

    void pinsItRemotely()
    {
        QTRY_VERIFY(isLogged(u"Remote pin complete on 'mysrv': 1 pinned, 0 failed."_s));
        const QJsonObject pin = objectAtNode("/pin/remote/ls?service=mysrv");
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
        QCOMPARE(objectAtNode("/name/resolve?arg=" + name.toLatin1())[u"Path"_s].toString(), u"/ipfs/"_s + root);
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
        const QJsonObject before = objectAtNode("/config/show");
        auto* dialog = openTool<ConfigDialog>(u"Kubo config"_s);
        const auto* set = withText<QPushButton>(*dialog, u"Set"_s);
        QTRY_VERIFY(isLogged(u"Config loaded (%1 keys)"_s.arg(before.size())) && set->isEnabled());
        const auto fields = dialog->findChildren<QLineEdit*>();
        QTest::keyClicks(fields.at(0), u"Datastore.StorageMax"_s);
        QTest::keyClicks(fields.at(1), u"77GB"_s);
        for (const bool back : {false, true}) {
            auto* act = withText<QPushButton>(*dialog, back ? u"Restore Backup"_s : u"Set"_s);
            QTRY_VERIFY(act->isEnabled());
            const ModalAnswer<QMessageBox> agree([](QMessageBox&) { QVERIFY(press(u"Yes"_s)); });
            act->click();
            QVERIFY(agree.wasGiven());
            QTRY_VERIFY((objectAtNode("/config/show") == before) == back);
            QTRY_VERIFY(set->isEnabled());
            const QJsonObject after = objectAtNode("/config/show");
            QCOMPARE(after[u"Datastore"_s][u"StorageMax"_s].toString(), back ? u"10GB"_s : u"77GB"_s);
        }
        closeTool(dialog);
    }

    void savesASnapshot()
    {
        auto* dialog = openTool<NetworkStatsDialog>(u"Network"_s);
        QTRY_VERIFY(isLogged(u"Network diagnostics loaded"_s));
        QFile file(home.path() + u"/snapshot.json"_s);
        withText<QPushButton>(*dialog, u"Save snapshot..."_s)->click();
        auto* picker = dialog->findChild<QFileDialog*>();
        picker->selectFile(file.fileName());
        static_cast<QDialog*>(picker)->accept();
        QTRY_VERIFY(isLogged(u"Network snapshot saved"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject saved = QJsonDocument::fromJson(file.readAll()).object();
        QCOMPARE(textsIn(saved[u"swarm"_s][u"peers"_s], "addr"_L1), peersAtNode());
        QCOMPARE(saved[u"dht"_s][u"summary"_s][u"total_peers"_s].toInt(), dhtPeersAtNode());
        closeTool(dialog);
    }

    void filtersTheSwarm()
    {
        auto* dialog = openTool<SwarmDialog>(u"Swarm"_s);
        QTRY_VERIFY(isLogged(u"Swarm diagnostics loaded"_s));
        const auto tables = dialog->findChildren<AddressTable*>();
        auto* peers = *std::ranges::find(tables, u"Connected peers"_s, &QWidget::accessibleName);
        const QString wanted = u"198.18.0.1"_s; // and .10 to .19
        QTest::keyClicks(dialog->findChildren<QLineEdit*>().constFirst(), wanted);
        QCOMPARE(peers->rowCount(), peersAtNode().size());
        peers->setSelectionMode(AddressTable::ExtendedSelection);
        peers->selectAll();
        QCOMPARE(peers->selectedTexts(), peersAtNode().filter(wanted)); // of the rows that are shown
        QVERIFY(peers->selectedTexts().size() > 1 && peers->selectedTexts().size() < peers->rowCount());
        dialog->resize(swarmSize);
        closeTool(dialog);
    }

    void showsTheDht()
    {
        auto* dialog = openTool<DhtStatsDialog>(u"DHT stats"_s);
        const auto peersShown = [dialog](int sum = 0) {
            for (const auto* bucket : dialog->findChildren<QTableWidget*>())
                sum += bucket->rowCount();
            return sum;
        };
        QTRY_COMPARE(peersShown(), dhtPeersAtNode());
        closeTool(dialog);
    }

    void collectsGarbage()
    {
        const qsizetype before = blocksAtNode();
        const QStringList pinned = pinsAtNode();
        auto* dialog = openTool<GcDialog>(u"Repo stats"_s);
        const auto* view = dialog->findChild<LineView*>();
        QTRY_VERIFY(view->toPlainText().contains(u"\nNumObjects: %1\n"_s.arg(before)));
        withText<QPushButton>(*dialog, u"Run garbage collection"_s)->click();
        QTRY_VERIFY(isLogged(u"Repo GC finished: "_s));
        const auto collected = before - blocksAtNode();
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
        QVERIFY(rowsShown() == pinsAtNode() && !rowsShown().contains(root));
        QVERIFY(demo.ask("/pin/ls?arg=" + root.toLatin1()).status != 200);
    }

    /// Every call is in the log of calls, and both logs have what happened in its order.
    void keepsItAllInItsLogs()
    {
        QTRY_COMPARE(demo.headCount(), window->rpcLog().size());
        const QStringList calls = window->rpcLog().replaceInStrings(QRegularExpression(u"\\?.*"_s), {});
        QCOMPARE(missingStep(calls, callSteps.split(u' ')), QString());
        QCOMPARE(missingStep(window->statusLog(), statusSteps.arg(root, name).split(u'\n')), QString());
        verifyLog(u"RPC log"_s, window->rpcLog());
        verifyLog(u"Status log"_s, window->statusLog());
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
        QTRY_VERIFY(refreshButton()->isEnabled() && rowsShown().contains(blockOfRoot()));
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
        QTRY_VERIFY(refreshButton()->isEnabled() && rowsShown().contains(blockOfRoot()));
        QVERIFY(!window->isMaximized() && window->size() == normalSize);
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
        QStringList cids = cells(PinModel::CidColumn);
        cids.sort();
        return cids;
    }
    /// As a node lists its blocks.
    QString blockOfRoot() const { return encodeCid({.multihash = decodeCid(root).value_or(Cid()).multihash}); }
    void selectRoot() const { table()->selectRow(static_cast<int>(cells(PinModel::CidColumn).indexOf(root))); }
    template <typename Dialog> Dialog* openTool(const QString& caption) const
    {
        withText<QPushButton>(*window, caption)->click();
        return window->findChild<Dialog*>();
    }
    static void closeTool(const QPointer<QDialog>& dialog)
    {
        dialog->close();
        QTRY_VERIFY(!dialog);
    }
    void verifyLog(const QString& caption, const QStringList& lines) const
    {
        auto* dialog = openTool<LogDialog>(caption);
        QCOMPARE(dialog->findChild<LineView*>()->toPlainText().split(u'\n'), lines);
        closeTool(dialog);
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
        QStringList cids;
        for (const DemoPin& pin : demo.allPins())
            cids.append(encodeCid({.version = 1, .codec = pin.cid.codec, .multihash = pin.cid.multihash}));
        cids.sort();
        return cids;
    }
    QJsonObject objectAtNode(const QByteArray& call)
    {
        return QJsonDocument::fromJson(bodyOf(demo.ask(call))).object();
    }
    qsizetype blocksAtNode() { return bodyOf(demo.ask("/refs/local")).count('\n'); }
    QStringList peersAtNode() { return textsIn(objectAtNode("/swarm/peers").value(u"Peers"_s), "Addr"_L1); }
    int dhtPeersAtNode() { return static_cast<int>(bodyOf(demo.ask("/stats/dht")).count("\"ID\"")); }

    QTemporaryDir home;
    OpenNode demo {{.pins = pinCount, .looseBlocks = 5, .remoteServices = {u"mysrv"_s}, .remotePinTime = 200ms}};
    bool isBroken = false;
    QString root; ///< of the folder that was added
    QString name; ///< under which it was published
};

NORVO_TEST_MAIN(QApplication, tst_Tour)

#include "tst_tour.moc"
