// SPDX-License-Identifier: MIT
#include "DialogSizing.h"
#include "ScreenArea.h"
#include "SettingsDialog.h"
#include "WindowTest.h"

#include <QScreen>

using namespace Qt::StringLiterals;

namespace {

const QByteArray path = "/pin/ls";

class HintDialog : public QDialog
{
    Q_OBJECT

public:
    QSize hint {300, 200};
    QSize sizeHint() const override { return hint; }
};

} // namespace

class tst_Settings : public WindowTest
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode("{\"Cid\":\"a\",\"Type\":\"direct\"}\n");
        node->answer("/refs/local", NodeAnswer::json("{\"Ref\":\"bafyb\"}\n"));
        setting("loadMetadata"_L1, false);
    }
    void cleanup() { close(); }

    void fittedSizes_data()
    {
        // size: on an available area of 1000 x 1000
        const auto row
            = addColumns<QSize, QSize, QSize, QSizeF, QSize>("minimum", "preferred", "hint", "ratios", "size");
        const QSize none;
        const QSize min(500, 400);
        const QSize preferred(620, 480);
        const QSizeF whole(1, 1);
        row("preferred is a floor", min, preferred, {300, 200}, {0.75, 0.75}, preferred);
        row("content gets more, up to the bound", min, preferred, {900, 900}, {0.75, 0.75}, {750, 750});
        row("minimum is a floor", min, none, {300, 200}, whole, min);
        row("small ratios act as 0.2", none, none, {900, 900}, {0.1, 0.1}, {200, 200});
        row("large ratios act as 1.0", none, none, {1900, 700}, {1.5, 1.5}, {1000, 700});
        row("no hint takes preferred", none, preferred, none, whole, preferred);
        row("then the minimum", min, none, none, whole, min);
        row("nothing known", none, none, none, whole, {640, 480});
        row("truncated", none, none, {900, 900}, {0.3339, 0.5}, {333, 500});
        // The bound asks for 500 x 300; the widget's own minimum is Qt's to enforce.
        row("the bound wins over the minimum", {400, 400}, none, {900, 900}, {0.5, 0.3}, {500, 400});
    }
    void fittedSizes()
    {
        QFETCH(const QSize, minimum);
        QFETCH(const QSize, preferred);
        QFETCH(const QSize, hint);
        QFETCH(const QSizeF, ratios);
        QCOMPARE(QGuiApplication::primaryScreen()->availableGeometry().size(), QSize(1000, 1000));
        HintDialog dialog;
        dialog.hint = hint;
        DialogSizing::attach(&dialog,
                             {.settingsKey = u"Dialogs/Test"_s,
                              .minimumSize = minimum,
                              .preferredSize = preferred,
                              .maxWidthRatio = ratios.width(),
                              .maxHeightRatio = ratios.height()});
        DialogSizing::attach(&dialog, {.minimumSize = {999, 999}}); // the first one holds
        dialog.show();
        QTEST(dialog.size(), "size");
        QCoreApplication::processEvents(); // the posted refit
        QTEST(dialog.size(), "size");
    }

    void followsItsContentUntilItsUserResizes()
    {
        HintDialog dialog;
        DialogSizing::attach(&dialog, {.maxWidthRatio = 1, .maxHeightRatio = 1});
        DialogSizing::requestRefit(&dialog); // not shown yet: harmless, as no dialog is
        DialogSizing::attach(nullptr, {});
        DialogSizing::requestRefit(nullptr);
        dialog.show();
        QCOMPARE(dialog.size(), QSize(300, 200));
        dialog.hint = {500, 400};
        DialogSizing::requestRefit(&dialog);
        QCOMPARE(dialog.size(), QSize(300, 200)); // not within the call
        QTRY_COMPARE(dialog.size(), QSize(500, 400));
        dialog.hint = {250, 150}; // it may shrink as well
        DialogSizing::requestRefit(&dialog);
        QTRY_COMPARE(dialog.size(), QSize(250, 150));
        dialog.resize(333, 222);
        dialog.hint = {600, 600};
        DialogSizing::requestRefit(&dialog);
        dialog.hide();
        dialog.show();
        QTest::qWait(20);
        QCOMPARE(dialog.size(), QSize(333, 222));
    }

    void geometryIsSavedByACloseOnly()
    {
        const auto key = u"Dialogs/HintDialog/geometry"_s;
        const auto shown = [] {
            auto dialog = std::make_unique<HintDialog>();
            DialogSizing::attach(dialog.get(), {.settingsKey = u" "_s});
            dialog->show();
            return dialog;
        };
        for (const bool closed : {false, true}) {
            const auto dialog = shown();
            dialog->resize(420, 320);
            closed ? static_cast<void>(dialog->close()) : dialog->accept();
            QCOMPARE(openAppSettings().contains(key), closed);
        }
        const auto restored = shown();
        restored->hint = {600, 600};
        DialogSizing::requestRefit(restored.get());
        QTest::qWait(20);
        QCOMPARE(restored->size(), QSize(420, 320)); // no fitting at all
        openAppSettings().setValue(key, QByteArray("no geometry"));
        QCOMPARE(shown()->size(), QSize(300, 200));
    }

    void restoredGeometryIsInsideTheScreen_data()
    {
        QTest::addColumn<QRect>("saved");
        QTest::addColumn<QRect>("restored"); // on an available area of 1000 x 1000
        QTest::newRow("inside stays") << QRect(100, 50, 420, 320) << QRect(100, 50, 420, 320);
        QTest::newRow("beyond the right and the bottom") << QRect(900, 800, 420, 320) << QRect(580, 680, 420, 320);
        QTest::newRow("beyond the left and the top") << QRect(-200, -90, 420, 320) << QRect(0, 0, 420, 320);
        QTest::newRow("of a larger screen") << QRect(300, 0, 1900, 700) << QRect(0, 0, 1000, 700);
    }
    void restoredGeometryIsInsideTheScreen()
    {
        QFETCH(const QRect, saved);
        QFETCH(const QRect, restored);
        QCOMPARE(placedInside(saved, {0, 0, 1000, 1000}), restored);
        QCOMPARE(placedInside(saved, {}), saved);
        for (int round = 0; round < 2; ++round) {
            HintDialog dialog;
            DialogSizing::attach(&dialog, {});
            dialog.show();
            if (round == 0)
                dialog.setGeometry(saved);
            else
                QVERIFY(QRect(0, 0, 1000, 1000).contains(dialog.geometry()));
            dialog.close();
        }
    }

    void theWindowIsMaximisedAtFirstAndReturnsInsideTheScreen()
    {
        open();
        QVERIFY(window->isMaximized());
        window->showNormal();
        window->setGeometry(700, 700, 800, 520);
        window.reset();
        open();
        QVERIFY(!window->isMaximized());
        QCOMPARE(window->size(), QSize(800, 520));
        QVERIFY(QRect(0, 0, 1000, 1000).contains(window->geometry()));
    }

    void everyKeySurvivesARestart()
    {
        const QList<std::pair<QString, QString>> kept {{u"host"_s, u"localhost"_s},
                                                       {u"contentMode"_s, u"unpinned"_s},
                                                       {u"typeFilter"_s, u"indirect"_s},
                                                       {u"autoRefresh"_s, u"true"_s},
                                                       {u"loadMetadata"_s, u"false"_s},
                                                       {u"http/sendOrigin"_s, u"true"_s},
                                                       {u"http/originValue"_s, u"http://a, b"_s},
                                                       {u"refreshInterval"_s, u"77"_s}};
        for (const auto& [key, value] : kept)
            openAppSettings().setValue(key, value);
        open();
        openAppSettings().clear();
        window.reset();
        for (const auto& [key, value] : kept)
            QCOMPARE(openAppSettings().value(key).toString(), value);
        QCOMPARE(openAppSettings().value("port"_L1).toInt(), node->port());
    }

    void nonsenseStartsAUsableProgram_data()
    {
        const auto row = addColumns<QString, QVariant>("key", "value");
        row("unknown content", u"contentMode"_s, QVariant(u"sideways"_s));
        row("unknown filter", u"typeFilter"_s, QVariant(u"odd"_s));
        row("interval of zero", u"refreshInterval"_s, QVariant(0));
        row("interval below zero", u"refreshInterval"_s, QVariant(-5));
        row("interval too long for a timer", u"refreshInterval"_s, QVariant(2'000'000'000));
        row("bad geometry", u"geometry"_s, QVariant(QByteArray("xyz")));
        row("a list for a text", u"http/originValue"_s, QVariant(QStringList({u"a"_s, u"b"_s})));
    }
    void nonsenseStartsAUsableProgram()
    {
        QFETCH(const QString, key);
        QFETCH(const QVariant, value);
        setting("autoRefresh"_L1, true);
        openAppSettings().setValue(key, value);
        open();
        QTRY_VERIFY(node->count(path) > 0);
        QCOMPARE(node->requests(path).constFirst().value(u"type"_s),
                 key == u"typeFilter"_s ? u"odd"_s : u"recursive"_s);
        QTRY_VERIFY(refreshButton()->isEnabled());
        QTest::qWait(100);
        QVERIFY(node->count("/id") <= 2); // and no storm of refreshes
    }

    void aPortBeyondSixteenBitsIsCut()
    {
        setting("port"_L1, 65536 + node->port());
        window = std::make_unique<MainWindow>();
        QTRY_VERIFY(node->count(path) > 0);
    }

    void cancelChangesNothing()
    {
        answerSettings([](SettingsDialog& dialog) {
            withText<QPushButton>(dialog, u"Restore Defaults"_s)->click();
            dialog.setHost(u"elsewhere"_s);
            dialog.setSendOrigin(true);
            withText<QPushButton>(dialog, u"Cancel"_s)->click();
        });
        QTest::qWait(20);
        QCOMPARE(node->count("/id"), 0);
        QCOMPARE(client()->endpointHost(), u"127.0.0.1"_s);
        QVERIFY(!openAppSettings().contains(SettingsKeys::sendOrigin));
    }

    void acceptTakesEffectAtOnce()
    {
        node->allowOrigin("http://mine");
        answerSettings([](SettingsDialog& dialog) {
            dialog.setPinTypeFilter(u"direct"_s);
            dialog.setSendOrigin(true);
            dialog.setOriginValue(u"http://mine"_s);
            dialog.setAutoRefresh(true);
            dialog.setRefreshIntervalSeconds(5);
            withText<QPushButton>(dialog, u"OK"_s)->click();
        });
        QVERIFY(!openAppSettings().value("autoRefresh"_L1).toBool()); // at exit only
        QTRY_COMPARE(node->count("/id"), 1); // the forced refresh of the combo, and no second one
        QCOMPARE(node->requests(path).constLast().value(u"type"_s), u"direct"_s);
        QCOMPARE(node->requests(path).constLast().header("Origin"), "http://mine");
        QTRY_COMPARE_WITH_TIMEOUT(node->count("/id"), 2, 8000); // auto-refresh
    }

    void aNewAddressIsUsedAtOnce()
    {
        FakeNode other;
        other.answer("/id", NodeAnswer::json(R"({"ID":"y"})"));
        other.answer(path, NodeAnswer::hold());
        answerSettings([this, &other](SettingsDialog& dialog) {
            QCOMPARE(rows(), 1);
            node->answer(path, NodeAnswer::hold());
            refreshButton()->click();
            QTRY_VERIFY(node->heldCount(path) == 2);
            dialog.setPort(other.port());
            withText<QPushButton>(dialog, u"OK"_s)->click();
        });
        QCOMPARE(rows(), 0);
        QTRY_COMPARE(other.heldCount(path), 2);
        QTRY_COMPARE(node->openNow(path), 0); // the load that ran is cancelled
        for (int half = 0; half < 2; ++half)
            other.release(path, NodeAnswer::json("{\"Cid\":\"b\",\"Type\":\"direct\"}\n"));
        QVERIFY(waitForRows(1));
        QCOMPARE(cells(0), QStringList(u"b"_s));
    }

    void theUnpinnedViewAndBack()
    {
        openLoaded(1);
        const auto combos = window->findChildren<QComboBox*>();
        combos.at(0)->setCurrentIndex(1);
        QVERIFY(!combos.at(1)->isEnabled());
        const auto* counts = label("countLabel"_L1);
        QTRY_COMPARE(counts->text(), u"Total: 1 (unpinned)  |  Total DAG size of all displayed CIDs: —"_s);
        QVERIFY(status().startsWith(u"Loaded 1 unpinned CID(s) — "_s));
        node->answer("/refs/local", NodeAnswer::error("no"));
        refreshButton()->click();
        QTRY_COMPARE(counts->text(), u"Total: 0 (unpinned)  |  Total DAG size of all displayed CIDs: —"_s);
        QVERIFY(window->statusLog().filter(u"Error: Network error (refs/local): "_s).size() == 1);
        combos.at(0)->setCurrentIndex(0);
        QVERIFY(combos.at(1)->isEnabled());
        QTRY_VERIFY(counts->text().startsWith(u"Total: 1  |  Recursive: 0  |  Direct: 1"_s));
    }

    void shortcutsDoNotClash()
    {
        open();
        QSet<QKeySequence> shortcuts;
        for (const QAction* action : window->findChildren<QAction*>()) {
            const QKeySequence shortcut = action->shortcut();
            QVERIFY2(shortcut.isEmpty() || !shortcuts.contains(shortcut), qPrintable(action->text()));
            shortcuts.insert(shortcut);
        }
        QVERIFY(shortcuts.contains(QKeySequence(u"Ctrl+,"_s)) && shortcuts.contains(QKeySequence(u"Ctrl+G"_s)));
    }

    void boxesSayWhatTheProgramIs()
    {
        open();
        for (const QString& entry : {u"About Norvo"_s, u"Activation..."_s}) {
            QStringList said;
            ModalAnswer<QDialog> answer([&said](QDialog& dialog) {
                for (const auto* shown : dialog.findChildren<QLabel*>())
                    said.append(shown->text());
                dialog.close();
            });
            trigger(entry);
            QCOMPARE(said.filter(u"Norvo 1.1.3"_s).size(), 1);
        }
    }

private:
    /// Opens the window, waits for its list and answers its dialog of settings; then the requests are those after it.
    void answerSettings(const std::function<void(SettingsDialog&)>& answer)
    {
        open();
        QTRY_VERIFY(node->count("/id") == 1 && refreshButton()->isEnabled());
        node->clearRequests();
        const ModalAnswer<SettingsDialog> given(answer);
        trigger(u"Settings..."_s);
        QVERIFY(given.wasGiven());
    }
};

NORVO_TEST_MAIN(QApplication, tst_Settings)
#include "tst_settings.moc"
