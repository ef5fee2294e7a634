#include "AppSettings.h"
#include "Detached.h"
#include "DialogSizing.h"
#include "FakeNode.h"
#include "IpfsClient.h"
#include "MainWindow.h"
#include "ModalAnswer.h"
#include "SettingsDialog.h"
#include "TestMain.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray path = "/pin/ls";

/// A dialog that wants a size, as if its content did.
class HintDialog : public QDialog
{
    Q_OBJECT

public:
    QSize hint {300, 200};
    QSize sizeHint() const override { return hint; }
};

} // namespace

class tst_Settings : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        failOnWarnings();
        node = std::make_unique<FakeNode>();
        node->answer("/id", FakeAnswer::json(R"({"ID":"x"})"));
        node->answer(path, FakeAnswer::json("{\"Cid\":\"a\",\"Type\":\"direct\"}\n"));
        node->answer("/refs/local", FakeAnswer::json("{\"Ref\":\"bafyb\"}\n"));
        QSettings settings = openAppSettings();
        settings.clear();
        settings.setValue("port"_L1, node->port());
        settings.setValue("loadMetadata"_L1, false);
    }
    void cleanup()
    {
        window.reset();
        QVERIFY(waitForDetached(10s));
    }

    // --- sizing

    void fittedSizes_data()
    {
        QTest::addColumn<QSize>("minimum");
        QTest::addColumn<QSize>("preferred");
        QTest::addColumn<QSize>("hint");
        QTest::addColumn<QSizeF>("ratios");
        QTest::addColumn<QSize>("size"); // on an available area of 1000 x 1000
        const QSize none;
        const QSize min(500, 400);
        const QSize preferred(620, 480);
        const QSizeF whole(1, 1);
        QTest::newRow("preferred is a floor") << min << preferred << QSize(300, 200) << QSizeF(0.75, 0.75) << preferred;
        QTest::newRow("content gets more, up to the bound")
            << min << preferred << QSize(900, 900) << QSizeF(0.75, 0.75) << QSize(750, 750);
        QTest::newRow("minimum is a floor") << min << none << QSize(300, 200) << whole << min;
        QTest::newRow("small ratios act as 0.2")
            << none << none << QSize(900, 900) << QSizeF(0.1, 0.1) << QSize(200, 200);
        QTest::newRow("large ratios act as 1.0")
            << none << none << QSize(1900, 700) << QSizeF(1.5, 1.5) << QSize(1000, 700);
        QTest::newRow("no hint takes preferred") << none << preferred << QSize() << whole << preferred;
        QTest::newRow("then the minimum") << min << none << QSize() << whole << min;
        QTest::newRow("nothing known") << none << none << QSize() << whole << QSize(640, 480);
        QTest::newRow("truncated") << none << none << QSize(900, 900) << QSizeF(0.3339, 0.5) << QSize(333, 500);
        // The bound asks for 500 x 300; the widget's own minimum is Qt's to enforce.
        QTest::newRow("the bound stands above the minimum")
            << QSize(400, 400) << none << QSize(900, 900) << QSizeF(0.5, 0.3) << QSize(500, 400);
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
        dialog.show();
        QTEST(dialog.size(), "size");
        QCoreApplication::processEvents(); // the posted refit
        QTEST(dialog.size(), "size");
    }

    void theFirstAttachStands()
    {
        HintDialog dialog;
        DialogSizing::attach(&dialog, {.minimumSize = {350, 250}});
        DialogSizing::attach(&dialog, {.minimumSize = {700, 700}});
        DialogSizing::attach(nullptr, {});
        DialogSizing::requestRefit(nullptr);
        QCOMPARE(dialog.minimumSize(), QSize(350, 250));
    }

    void followsItsContentUntilItsUserResizes()
    {
        HintDialog dialog;
        DialogSizing::attach(&dialog, {.maxWidthRatio = 1, .maxHeightRatio = 1});
        DialogSizing::requestRefit(&dialog); // not shown yet: harmless
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
        const auto open = [](HintDialog& dialog) {
            DialogSizing::attach(&dialog, {.settingsKey = u" "_s});
            dialog.show();
        };
        {
            HintDialog dialog;
            open(dialog);
            dialog.resize(410, 310);
            dialog.accept();
            QVERIFY(!openAppSettings().contains(key));
        }
        {
            HintDialog dialog;
            open(dialog);
            dialog.resize(420, 320);
            dialog.close();
            QVERIFY(openAppSettings().contains(key));
        }
        {
            HintDialog dialog;
            open(dialog);
            QCOMPARE(dialog.size(), QSize(420, 320));
            dialog.hint = {600, 600};
            DialogSizing::requestRefit(&dialog);
            QTest::qWait(20);
            QCOMPARE(dialog.size(), QSize(420, 320)); // restored: no fitting at all
        }
        openAppSettings().setValue(key, QByteArray("no geometry"));
        HintDialog dialog;
        open(dialog);
        QCOMPARE(dialog.size(), QSize(300, 200));
    }

    // --- the dialog

    void fieldsGiveUsableValues()
    {
        SettingsDialog dialog;
        dialog.setHost(u"  "_s);
        QCOMPARE(dialog.host(), u"127.0.0.1"_s);
        dialog.setPinTypeFilter(u"direct"_s);
        dialog.setPinTypeFilter(u"odd"_s);
        QCOMPARE(dialog.pinTypeFilter(), u"direct"_s);
        dialog.setRefreshIntervalSeconds(-7);
        QCOMPARE(dialog.refreshIntervalSeconds(), 5);
        dialog.setOriginValue(u" "_s);
        QCOMPARE(dialog.originValue(), u"Norvo 1.1.3"_s);
        auto* origin = edits(dialog).constLast();
        auto* send = check(dialog, u"Send Origin header"_s);
        origin->clear();
        QVERIFY(!origin->isEnabled());
        send->click();
        QVERIFY(origin->isEnabled());
        QCOMPARE(origin->text(), u"Norvo 1.1.3"_s);
        check(dialog, u"Enable auto-refresh"_s)->click();
        dialog.restoreDefaults();
        QVERIFY(!dialog.autoRefresh() && dialog.loadMetadata() && !dialog.sendOrigin() && !origin->isEnabled());
        QCOMPARE(dialog.pinTypeFilter(), u"recursive+direct"_s);
        QCOMPARE(dialog.refreshIntervalSeconds(), 30);
        dialog.setTrialMode(true);
        dialog.setAutoRefresh(true);
        QVERIFY(!dialog.autoRefresh() && !check(dialog, u"Enable auto-refresh"_s)->isEnabled());
    }

    void nothingIsCutOffAtTheSmallestSize()
    {
        SettingsDialog dialog;
        dialog.show();
        dialog.resize(1, 1);
        QVERIFY(dialog.width() >= 380 && dialog.height() >= 320);
        for (const auto* field : dialog.findChildren<QWidget*>()) {
            const bool inSpinBox = field->parentWidget()->inherits("QAbstractSpinBox");
            if (!inSpinBox
                && (field->inherits("QCheckBox") || field->inherits("QLineEdit") || field->inherits("QSpinBox")))
                QVERIFY2(field->height() >= field->minimumSizeHint().height(), field->metaObject()->className());
        }
    }

    // --- the window

    void everyKeySurvivesARestart()
    {
        const QHash<QString, QVariant> values {{u"host"_s, u"localhost"_s},
                                               {u"contentMode"_s, u"unpinned"_s},
                                               {u"typeFilter"_s, u"indirect"_s},
                                               {u"autoRefresh"_s, true},
                                               {u"loadMetadata"_s, false},
                                               {u"http/sendOrigin"_s, true},
                                               {u"http/originValue"_s, u"http://a, b"_s},
                                               {u"refreshInterval"_s, 77}};
        for (auto value = values.begin(); value != values.end(); ++value)
            openAppSettings().setValue(value.key(), value.value());
        open();
        window.reset();
        for (auto value = values.begin(); value != values.end(); ++value)
            QCOMPARE(openAppSettings().value(value.key()).toString(), value.value().toString());
        QCOMPARE(openAppSettings().value("port"_L1).toInt(), node->port());
        QVERIFY(openAppSettings().contains("geometry"_L1));
    }

    void theFirstRunIsMaximised()
    {
        open();
        QVERIFY(window->isMaximized());
        window->showNormal();
        window->resize(900, 600);
        window.reset();
        open();
        QVERIFY(!window->isMaximized());
    }

    void nonsenseStartsAUsableProgram_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("type"); // what the node is then asked for
        QTest::newRow("unknown content") << u"contentMode"_s << QVariant(u"sideways"_s) << u"recursive"_s;
        QTest::newRow("unknown filter") << u"typeFilter"_s << QVariant(u"odd"_s) << u"odd"_s;
        QTest::newRow("interval of zero") << u"refreshInterval"_s << QVariant(0) << u"recursive"_s;
        QTest::newRow("interval below zero") << u"refreshInterval"_s << QVariant(-5) << u"recursive"_s;
        QTest::newRow("interval too long for a timer")
            << u"refreshInterval"_s << QVariant(2'000'000'000) << u"recursive"_s;
        QTest::newRow("bad geometry") << u"geometry"_s << QVariant(QByteArray("xyz")) << u"recursive"_s;
        QTest::newRow("a list for a text")
            << u"http/originValue"_s << QVariant(QStringList({u"a"_s, u"b"_s})) << u"recursive"_s;
    }
    void nonsenseStartsAUsableProgram()
    {
        QFETCH(const QString, key);
        QFETCH(const QVariant, value);
        QFETCH(const QString, type);
        openAppSettings().setValue("autoRefresh"_L1, true);
        openAppSettings().setValue(key, value);
        open();
        QTRY_VERIFY(node->count(path) > 0);
        QCOMPARE(node->requests(path).constFirst().value(u"type"_s), type);
        QTRY_VERIFY(refreshButton()->isEnabled());
        QTest::qWait(100);
        QVERIFY(node->count("/id") <= 2); // and no storm of refreshes
    }

    void aPortBeyondSixteenBitsIsCut()
    {
        openAppSettings().setValue("port"_L1, 65536 + node->port());
        open();
        QTRY_VERIFY(node->count(path) > 0);
    }

    void cancelChangesNothing()
    {
        open();
        QTRY_VERIFY(node->count("/id") == 1 && refreshButton()->isEnabled());
        ModalAnswer<SettingsDialog> answer([](SettingsDialog& dialog) {
            dialog.setHost(u"elsewhere"_s);
            dialog.setSendOrigin(true);
            button(dialog, u"Restore Defaults"_s)->click();
            button(dialog, u"Cancel"_s)->click();
        });
        settingsAction()->trigger();
        QVERIFY(answer.wasGiven());
        QTest::qWait(20);
        QCOMPARE(node->count("/id"), 1);
        QCOMPARE(window->findChild<IpfsClient*>()->endpointHost(), u"127.0.0.1"_s);
        QVERIFY(!openAppSettings().contains(SettingsKeys::sendOrigin));
    }

    void acceptTakesEffectAtOnce()
    {
        node->allowOrigin("http://mine");
        open();
        QTRY_VERIFY(node->count("/id") == 1 && refreshButton()->isEnabled());
        node->clearRequests();
        ModalAnswer<SettingsDialog> answer([](SettingsDialog& dialog) {
            dialog.setPinTypeFilter(u"direct"_s);
            dialog.setSendOrigin(true);
            dialog.setOriginValue(u"http://mine"_s);
            dialog.setAutoRefresh(true);
            dialog.setRefreshIntervalSeconds(5);
            button(dialog, u"OK"_s)->click();
        });
        settingsAction()->trigger();
        QVERIFY(answer.wasGiven());
        QSettings store = openAppSettings();
        QCOMPARE(store.value(SettingsKeys::originValue).toString(), u"http://mine"_s);
        QVERIFY(store.value(SettingsKeys::sendOrigin).toBool());
        QVERIFY(!store.value("autoRefresh"_L1).toBool()); // at exit only
        QTRY_COMPARE(node->count("/id"), 1);              // the forced refresh of the combo, and no second one
        QCOMPARE(node->requests(path).constLast().value(u"type"_s), u"direct"_s);
        QCOMPARE(node->requests(path).constLast().header("Origin"), "http://mine");
        QTRY_COMPARE_WITH_TIMEOUT(node->count("/id"), 2, 8000); // auto-refresh
    }

    void theUnpinnedViewAndBack()
    {
        open();
        QTRY_VERIFY(node->count("/id") == 1 && refreshButton()->isEnabled());
        const auto combos = window->findChildren<QComboBox*>();
        combos.at(0)->setCurrentIndex(1);
        QVERIFY(!combos.at(1)->isEnabled());
        auto* counts = window->findChild<QLabel*>(u"countLabel"_s);
        QTRY_COMPARE(counts->text(), u"Total: 1 (unpinned)  |  Total DAG size of all displayed CIDs: —"_s);
        QVERIFY(window->findChild<QLabel*>(u"statusLabel"_s)->text().startsWith(u"Loaded 1 unpinned CID(s) — "_s));
        node->answer("/refs/local", FakeAnswer::error("no"));
        refreshButton()->click();
        QTRY_COMPARE(counts->text(), u"Total: 0 (unpinned)  |  Total DAG size of all displayed CIDs: —"_s);
        QVERIFY(window->statusLog().filter(u"Error: Network error (refs/local): "_s).size() == 1);
        combos.at(0)->setCurrentIndex(0);
        QVERIFY(combos.at(1)->isEnabled());
        QTRY_VERIFY(counts->text().startsWith(u"Total: 1  |  Recursive: 0  |  Direct: 1"_s));
    }

    // --- menus

    void shortcutsDoNotClash()
    {
        open();
        QSet<QKeySequence> shortcuts;
        for (const QAction* action : window->findChildren<QAction*>()) {
            if (action->shortcut().isEmpty())
                continue;
            QVERIFY2(!shortcuts.contains(action->shortcut()), qPrintable(action->text()));
            shortcuts.insert(action->shortcut());
        }
        QVERIFY(shortcuts.contains(QKeySequence(u"Ctrl+,"_s)) && shortcuts.contains(QKeySequence(u"Ctrl+G"_s)));
    }

    void boxesSayWhatTheProgramIs()
    {
        open();
        ModalAnswer<QMessageBox> about([](QMessageBox& box) {
            QCOMPARE(box.windowTitle(), u"About Norvo"_s);
            QVERIFY(box.text().startsWith(u"<h3>Norvo 1.1.3</h3><p>A Qt-based desktop application"_s));
            box.button(QMessageBox::Close)->click();
        });
        action(u"About Norvo"_s)->trigger();
        QVERIFY(about.wasGiven());
        ModalAnswer<QDialog> activation([](QDialog& dialog) {
            QCOMPARE(dialog.findChild<QLabel*>()->text(), u"Norvo 1.1.3 runs in full. It needs no activation."_s);
            dialog.close();
        });
        action(u"&Activation..."_s)->trigger();
        QVERIFY(activation.wasGiven());
        QVERIFY(!window->isTrial());
    }

private:
    void open()
    {
        window = std::make_unique<MainWindow>();
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }
    QPushButton* refreshButton() const { return window->findChild<QPushButton*>(u"refreshBtn"_s); }
    QAction* action(const QString& text) const
    {
        for (QAction* candidate : window->findChildren<QAction*>()) {
            if (candidate->text() == text)
                return candidate;
        }
        return nullptr;
    }
    QAction* settingsAction() const { return action(u"&Settings..."_s); }
    static QList<QLineEdit*> edits(const QDialog& dialog)
    {
        auto list = dialog.findChildren<QLineEdit*>();
        list.removeIf([](const QLineEdit* edit) { return edit->parentWidget()->inherits("QAbstractSpinBox"); });
        return list;
    }
    template <typename Button> static Button* withText(const QWidget& parent, const QString& text)
    {
        for (auto* candidate : parent.findChildren<Button*>()) {
            if (candidate->text().remove(u'&') == text)
                return candidate;
        }
        return nullptr;
    }
    static QCheckBox* check(const QDialog& dialog, const QString& text) { return withText<QCheckBox>(dialog, text); }
    static QPushButton* button(const QDialog& dialog, const QString& text)
    {
        return withText<QPushButton>(dialog, text);
    }

    std::unique_ptr<FakeNode> node;
    std::unique_ptr<MainWindow> window;
};

NORVO_TEST_MAIN(QApplication, tst_Settings)
#include "tst_settings.moc"
