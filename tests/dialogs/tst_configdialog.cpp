// SPDX-License-Identifier: MIT
#include "AppSettings.h"
#include "ConfigDialog.h"
#include "ConfigTree.h"
#include "Detached.h"
#include "FakeNode.h"
#include "IpfsClient.h"
#include "ModalAnswer.h"
#include "StatusLabel.h"
#include "TestFiles.h"
#include "TestMain.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QInputDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QByteArray keyPath = "/config";
const QByteArray showPath = "/config/show";
const QByteArray replacePath = "/config/replace";
const QByteArray sample = R"({"A":{"B":"<b>t</b>","N":9007199254740993,"Z":null,"on":true},"D.x":1,"E":[],)"
                          R"("L":[{"in":1},"two"]})";

QString linesOf(const QTreeWidgetItem* item)
{
    QString lines = item->text(0) + u'=' + item->text(1) + u';';
    for (int i = 0; i < item->childCount(); ++i)
        lines += linesOf(item->child(i));
    return lines;
}

/// The document in the form that replaces the configuration.
QByteArray documentIn(const NodeRequest& request)
{
    const qsizetype start = request.body.indexOf("\r\n\r\n") + 4;
    return request.body.sliced(start, request.body.lastIndexOf("\r\n--") - start);
}

} // namespace

class tst_ConfigDialog : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        failOnWarnings();
        openAppSettings().clear();
        node = std::make_unique<FakeNode>();
        node->answer(showPath, NodeAnswer::json(sample));
        node->answer(replacePath, NodeAnswer::json({}));
        node->route(keyPath, [](const NodeRequest& request) { return stored(request); });
        client = std::make_unique<IpfsClient>();
        client->setEndpoint(u"127.0.0.1"_s, node->port());
        messages.clear();
        open();
        QTRY_COMPARE(messages, QStringList({u"Fetching config…"_s, u"Config loaded (4 keys)"_s}));
    }
    void cleanup()
    {
        dialog.reset();
        QVERIFY(waitForDetached(std::chrono::seconds(10)));
    }

    void theTreeShowsTheConfig()
    {
        QString lines;
        for (int i = 0; i < tree()->topLevelItemCount(); ++i)
            lines += linesOf(tree()->topLevelItem(i));
        QCOMPARE(lines, u"A=;B=<b>t</b>;N=9.0072e+15;Z=;on=true;D.x=1;E []=;L []=;[0]=;in=1;[1]=two;"_s);
        QCOMPARE(status()->text(), u"Loaded 4 top-level keys from /api/v0/config/show"_s);
        QCOMPARE(row({0, 1})->toolTip(1), u"9007199254740993"_s);
        dialog->hide();
        dialog->show(); // it has what it shows
        QCOMPARE(node->count(showPath), 1);
    }

    /// A click puts what can be asked for into the field for the key, and sends nothing.
    void aClickPutsTheKey()
    {
        const auto click = [this](const QList<int>& path) {
            tree()->scrollToItem(row(path));
            QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, tree()->visualItemRect(row(path)).center());
            return field(0)->text();
        };
        QCOMPARE(click({0, 0}), u"A.B"_s);
        QCOMPARE(click({0}), u"A.B"_s); // has others below
        QCOMPARE(click({1}), u"A.B"_s); // "D.x" would be read as two keys
        QCOMPARE(click({2}), u"E"_s);   // an empty list
        QCOMPARE(click({3, 0, 0}), u"L"_s);
        field(0)->clear();
        QCOMPARE(click({3, 1}), u"L"_s);
        QCOMPARE(node->requests().size(), 1);
    }

    void theTreeExpandsAndCollapses()
    {
        QPushButton* toggle = dialog->findChild<QPushButton*>(u"expandCollapseBtn"_s);
        QCOMPARE(toggle->text(), u"Collapse All"_s);
        row({0})->setExpanded(false); // by hand
        QCOMPARE(toggle->text(), u"Expand All"_s);
        toggle->click();
        toggle->click();
        QCOMPARE(toggle->text(), u"Expand All"_s);
        QVERIFY(!row({0})->isExpanded() && !row({3, 0})->isExpanded());
        QCOMPARE(messages.last(2), QStringList({u"Expanded config tree"_s, u"Collapsed config tree"_s}));
        refreshWith(NodeAnswer::json(sample));
        QVERIFY(!row({3})->isExpanded());
        toggle->click();
        QVERIFY(row({3})->isExpanded() && row({3, 0})->isExpanded());
        refreshWith(NodeAnswer::json(R"({"A":1,"B":{"c":1}})")); // with a leaf as its first row
        for (int i = 0; i < 2; ++i)
            toggle->click();
        QCOMPARE(messages.last(2), QStringList({u"Expanded config tree"_s, u"Expanded config tree"_s}));
        QVERIFY(row({1})->isExpanded());
    }

    void whatIsSet_data()
    {
        QTest::addColumn<QStringList>("typed"); // key, value, mode
        QTest::addColumn<QString>("query");     // none if it is refused
        QTest::addColumn<QString>("error");
        const auto row = [](const char* name, const QStringList& typed, const QString& query,
                            const QString& error = {}) { QTest::newRow(name) << typed << query << error; };
        row("text", {u" A.B "_s, u" x "_s, u"String"_s}, u"A.B| x "_s);
        row("boolean", {u"A.on"_s, u" FALSE"_s, u"Bool"_s}, u"A.on|false|bool"_s);
        row("JSON", {u"A.N"_s, u" 9007199254740993 "_s, u"JSON"_s}, u"A.N|9007199254740993|json"_s);
        row("no key", {u" "_s, u"x"_s, u"String"_s}, {}, u"Config key is required."_s);
        row("no value", {u"A"_s, u" "_s, u"String"_s}, {}, u"Config value is required."_s);
        row("no boolean", {u"A"_s, u"yes"_s, u"Bool"_s}, {}, u"Bool mode accepts only true or false."_s);
        row("no JSON", {u"Swarm"_s, u"abc"_s, u"JSON"_s}, {}, u"JSON mode requires a valid JSON value."_s);
    }
    void whatIsSet()
    {
        QFETCH(const QStringList, typed);
        QFETCH(const QString, query);
        fill(typed);
        button("&Set")->click();
        QCOMPARE(button("&Set")->isEnabled(), query.isEmpty());
        if (query.isEmpty()) {
            verifyFailure(error());
            QVERIFY(!button("Restore &Backup")->isEnabled() && node->count(keyPath) == 0);
            return;
        }
        QTRY_COMPARE(node->count(showPath), 2); // what it has become
        QCOMPARE(sent(), query);
        QTRY_VERIFY(button("Restore &Backup")->isEnabled());
        QCOMPARE(button("&Set")->isEnabled(), true);
    }

    /// A number goes through the field without a change.
    void whatIsReadIsWrittenBack()
    {
        for (const auto& [json, text] : {std::pair("1234567", u"1234567"_s),
                                         {"9007199254740993", u"9007199254740993"_s},
                                         {"1e-7", u"1e-07"_s},
                                         {"null", u"null"_s},
                                         {R"("a\nb\u00a0")", u"a\nb\u00a0"_s}}) {
            node->answer(keyPath, NodeAnswer::json(R"({"Key":"Swarm.X","Value":)" + QByteArray(json) + '}'));
            fill({u"k"_s, u"v"_s, json[0] == '"' ? u"String"_s : u"JSON"_s});
            QTest::keyClick(field(0), Qt::Key_Return);
            QTRY_COMPARE(status()->text(), u"Loaded key 'Swarm.X'"_s);
            QCOMPARE(field(0)->text() + u'=' + field(1)->text(), u"Swarm.X="_s + text);
            answerNext(QMessageBox::Yes, [this] { QTest::keyClick(field(1), Qt::Key_Return); });
            QTRY_COMPARE(node->requests(keyPath).constLast().values(u"arg"_s), QStringList({u"Swarm.X"_s, text}));
            QTRY_VERIFY(button("&Set")->isEnabled());
        }
        const QString section = QString(400'000, u'x'); // longer than what a field takes by itself
        node->answer(keyPath, NodeAnswer::json(R"({"Value":")" + section.toUtf8() + R"("})"));
        button("&Get")->click();
        QTRY_COMPARE(field(1)->text().size(), section.size());
        QCOMPARE(field(0)->text(), u"Swarm.X"_s);
    }

    /// The snapshot is what was loaded before the first write that was confirmed, digits and all.
    void theSnapshotIsRestored()
    {
        fill({u" swarm.X<b>"_s, u"x"_s, u"String"_s});
        answerNext(
            QMessageBox::No, [this] { button("&Set")->click(); },
            u"Potentially risky key|You are changing 'swarm.X<b>'.\n\nThis may break RPC connectivity or "
            "networking.\nProceed?"_s);
        QVERIFY(button("&Set")->isEnabled() && !button("Restore &Backup")->isEnabled() && node->count(keyPath) == 0);
        fill({u"A.B"_s, u"x"_s, u"String"_s});
        for (int i = 0; i < 2; ++i) {
            node->answer(showPath, NodeAnswer::json(R"({"later":1})"));
            button("&Set")->click();
            QTRY_COMPARE(messages.value(messages.size() - 1), u"Config loaded (1 keys)"_s);
            messages.clear();
        }
        answerNext(
            QMessageBox::No, [this] { button("Restore &Backup")->click(); },
            u"Restore backup|Restore the previously backed-up config snapshot?"_s);
        answerNext(QMessageBox::Yes, [this] { button("Restore &Backup")->click(); });
        QTRY_COMPARE(node->count(showPath), 4);
        const QByteArray document = documentIn(node->requests(replacePath).value(0));
        QCOMPARE(QJsonDocument::fromJson(document), QJsonDocument::fromJson(sample));
        QVERIFY(document.contains("\n        \"N\": 9007199254740993,\n"));
        QTRY_VERIFY(button("Restore &Backup")->isEnabled());
    }

    /// What is sent is the text of the editor, byte for byte.
    void theEditorReplacesTheConfig()
    {
        const QString text = u"{ \"n\": 1.50, \"é\": [ 1e2 ] }"_s;
        const auto replaceBy = [this](const QString& edited, bool accept) {
            const ModalAnswer<QDialog> editor([&](QDialog& box) {
                QCOMPARE(box.windowTitle(), u"Replace Kubo config"_s);
                auto* edit = box.findChild<QPlainTextEdit*>();
                QCOMPARE(QJsonDocument::fromJson(edit->toPlainText().toUtf8()), QJsonDocument::fromJson(sample));
                edit->setPlainText(edited);
                accept ? box.accept() : box.reject();
            });
            button("Re&place Config…")->click();
            QTRY_VERIFY(editor.wasGiven());
        };
        replaceBy(text, false);
        for (const QString& wrong : {u"{"_s, u"[1]"_s, QString()}) {
            messages.clear();
            replaceBy(wrong, true);
            QTRY_COMPARE(messages, QStringList {u"Config error: Config replace requires valid JSON object."_s});
        }
        const QString question = u"Replace full config|This will replace the entire Kubo config.\n\nContinue?"_s;
        answerNext(
            QMessageBox::No, [&] { replaceBy(text, true); }, question);
        QVERIFY(!button("Restore &Backup")->isEnabled());
        answerNext(
            QMessageBox::Yes, [&] { replaceBy(text, true); }, question);
        QTRY_COMPARE(node->count(showPath), 2);
        QCOMPARE(node->count(replacePath), 1);
        QCOMPARE(documentIn(node->requests(replacePath).value(0)), text.toUtf8());
        refreshWith(NodeAnswer::json("{}"));
        button("Re&place Config…")->click();
        verifyFailure(u"Load config first before replacing."_s);
    }

    /// Whatever becomes of the answer, the dialog stays usable, keeps its tree, and may go meanwhile.
    void nodesThatAnswerBadly_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<NodeAnswer>("answer");
        QTest::addColumn<QString>("error"); // none if there is no answer
        for (const QByteArray& path : {showPath, keyPath, replacePath}) {
            const QString call = path == showPath ? u"get config"_s
                : path == keyPath                 ? u"set config key"_s
                                                  : u"replace config"_s;
            const auto row = [&](const char* name, const NodeAnswer& answer, const QString& error) {
                QTest::addRow("%s %s", path.constData(), name) << path << answer << error;
            };
            row("never", NodeAnswer::hold(), {});
            row("gone", NodeAnswer::dropAt({}, 0), u"Failed to %1: Connection closed"_s.arg(call));
            // What came of a refusal is shown as its reason.
            row("half", NodeAnswer::dropAt(R"({"Key":"k","Value":1})", 9),
                u"Failed to %1: %2"_s.arg(call, path == replacePath ? u"{\"Key\":\"k"_s : u"Connection closed"_s));
            row("words", NodeAnswer::error("<b>no</b>"), u"Failed to %1: "_s.arg(call));
        }
    }
    void nodesThatAnswerBadly()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const NodeAnswer, answer);
        node->answer(path, answer);
        const auto ask = [&] {
            fill({u"A.B"_s, u"v"_s, u"String"_s});
            if (path == replacePath)
                client->replaceConfig("{}");
            else
                button(path == showPath ? "&Refresh" : "&Set")->click();
        };
        const int before = node->headCount(path);
        ask();
        QTRY_COMPARE(node->headCount(path), before + 1);
        if (error().isEmpty()) {
            QVERIFY(path == replacePath || (status()->text() == u"Loading…"_s && !button("&Get")->isEnabled()));
        } else {
            QTRY_VERIFY2(status()->text().startsWith(error()), qPrintable(status()->text()));
            QVERIFY(messages.constLast().startsWith(u"Config error: "_s + error()));
            QVERIFY(button("&Get")->isEnabled() && status()->styleSheet().contains(u"darkred"_s));
        }
        QCOMPARE(tree()->topLevelItemCount(), 4);
        QVERIFY(path == showPath || button("Restore &Backup")->isEnabled() == (path == keyPath && !error().isEmpty()));

        if (!error().isEmpty())
            ask();
        const int asked = before + (error().isEmpty() ? 1 : 2);
        dialog.reset();
        QTRY_COMPARE(node->headCount(path), asked);
        node->answer(showPath, NodeAnswer::json(sample));
        messages.clear();
        open(); // anew, while the former one's call may still be open
        QTRY_COMPARE(tree()->topLevelItemCount(), 4);
        if (node->heldCount(path) > 0)
            node->release(path, NodeAnswer::json("{}"));
        QTRY_VERIFY(button("&Get")->isEnabled());
    }

    /// What was read from one node is never written to another.
    void anotherNodeStartsAnew()
    {
        FakeNode other;
        other.answer(showPath, NodeAnswer::json(R"({"Theirs":1})"));
        const auto change = [&] { client->setEndpoint(u"127.0.0.1"_s, other.port()); };
        fill({u"A.B"_s, u"x"_s, u"String"_s});
        button("&Set")->click();
        QTRY_VERIFY(button("Restore &Backup")->isEnabled());
        button("Re&place Config…")->click();
        node->answer(showPath, NodeAnswer::hold());
        change();
        QVERIFY(field(0)->text().isEmpty() && field(1)->text().isEmpty() && tree()->topLevelItemCount() == 0);
        QTRY_COMPARE(tree()->topLevelItemCount(), 1);
        QTRY_VERIFY(!dialog->findChild<QPlainTextEdit*>());
        QVERIFY(!button("Restore &Backup")->isEnabled() && button("&Set")->isEnabled());

        for (const char* asking : {"&Set", "Re&place Config…"}) {
            client->setEndpoint(u"127.0.0.1"_s, node->port());
            node->answer(showPath, NodeAnswer::json(sample));
            button("&Refresh")->click();
            QTRY_COMPARE(tree()->topLevelItemCount(), 4);
            const qsizetype count = other.requests().size();
            fill({u"Swarm.X"_s, u"x"_s, u"String"_s});
            const ModalAnswer<QMessageBox> answer([&](QMessageBox& box) {
                change(); // while the question is open
                box.button(QMessageBox::Yes)->click();
            });
            button(asking)->click();
            if (auto* edit = dialog->findChild<QPlainTextEdit*>())
                qobject_cast<QDialog*>(edit->window())->accept();
            QTRY_VERIFY(answer.wasGiven());
            QTRY_COMPARE(tree()->topLevelItemCount(), 1);
            QVERIFY(messages.contains(u"Config error: Another node is in use. Nothing was sent."_s));
            QCOMPARE(other.requests().size(), count + 1); // the config alone
            messages.clear();
        }
    }

    void theDialogMayGoWhileQuestionsAreOpen()
    {
        fill({u"Swarm.X"_s, u"x"_s, u"String"_s});
        const ModalAnswer<QMessageBox> risky([this](QMessageBox&) { dialog.reset(); });
        button("&Set")->click();
        QVERIFY(risky.wasGiven() && !dialog);
        open();
        QTRY_COMPARE(tree()->topLevelItemCount(), 4);
        const ModalAnswer<QMessageBox> question([this](QMessageBox&) { dialog.reset(); });
        button("Re&place Config…")->click();
        qobject_cast<QDialog*>(dialog->findChild<QPlainTextEdit*>()->window())->accept();
        QTRY_VERIFY(question.wasGiven() && !dialog);
        QCOMPARE(node->count(keyPath) + node->count(replacePath), 0);
    }

    void presetsAreAppliedThroughSet()
    {
        button("&Apply Preset")->click();
        verifyFailure(u"Select a preset first."_s);
        box()->setCurrentText(u"Bootstrap: empty list []"_s);
        answerNext(QMessageBox::Yes, [this] { button("&Apply Preset")->click(); });
        QTRY_COMPARE(node->count(showPath), 2);
        QCOMPARE(sent(), u"Bootstrap|[]|json"_s);
        QTRY_VERIFY(button("Restore &Backup")->isEnabled());
    }

    void presetsAreSavedAndDeleted()
    {
        button("&Delete Preset")->click();
        verifyFailure(u"Select a custom preset to delete."_s);
        button("Sa&ve Preset")->click();
        verifyFailure(u"Enter key and value before saving a preset."_s);
        fill({u" k "_s, u" v "_s, u"Bool"_s});
        save(u" \t"_s);
        QTRY_COMPARE(status()->text(), u"Preset name is required."_s);
        save(u" <b>mine "_s);
        QTRY_COMPARE(status()->text(), u"Saved preset '<b>mine'."_s);
        QCOMPARE(box()->currentText(), u"Custom: <b>mine"_s);
        QCOMPARE(box()->currentData().toMap(),
                 (QVariantMap {{u"name"_s, u"<b>mine"_s},
                               {u"key"_s, u"k"_s},
                               {u"value"_s, u" v "_s},
                               {u"mode"_s, u"Bool"_s},
                               {u"custom"_s, true}}));
        for (const auto choice : {QMessageBox::No, QMessageBox::Yes}) {
            field(1)->setText(u"new"_s);
            answerNext(
                choice, [this] { save(u"<b>mine"_s); },
                u"Overwrite preset|A preset named '<b>mine' already exists. Overwrite it?"_s);
            QTRY_COMPARE(stored().constFirst().toMap().value(u"value"_s).toString(),
                         choice == QMessageBox::Yes ? u"new"_s : u" v "_s);
        }
        save(u"builtin-api-localhost"_s);
        QTRY_COMPARE(box()->currentText(), u"API: localhost:5001"_s); // the first of that name
        QCOMPARE(stored().size(), 2);
        box()->setCurrentIndex(6);
        for (const auto choice : {QMessageBox::No, QMessageBox::Yes})
            answerNext(
                choice, [this] { button("&Delete Preset")->click(); }, u"Delete preset|Delete preset '<b>mine'?"_s);
        QCOMPARE(status()->text(), u"Deleted preset '<b>mine'."_s);
        QCOMPARE(box()->count(), 7);
        QCOMPARE(box()->currentIndex(), 0);
        QCOMPARE(node->requests().size(), 1); // the node has no part in it
    }

    void presetsTravelAsAFile()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"norvo-config-presets.json"_s);
        button("E&xport Presets")->click();
        verifyFailure(u"No custom presets to export."_s);
        store({7});
        writeTestFile(folder.path(), u"norvo-config-presets.json"_s, "old");
        pick("E&xport Presets", u"Export custom presets"_s, path);
        QTRY_COMPARE(status()->text(), u"No valid custom presets to export."_s);
        QCOMPARE(contentOf(path), "old");
        const QByteArray file
            = R"([{"name":"n","key":"k","value":" v","mode":"JSON"},{"name":"n","key":"k2","mode":"Bool"}])";
        pick("&Import Presets", u"Import custom presets"_s, writeTestFile(folder.path(), u"in.json"_s, file));
        QTRY_COMPARE(status()->text(), u"Imported 2 preset(s)."_s);
        QCOMPARE(box()->itemText(box()->count() - 1), u"Custom: n"_s);
        pick("E&xport Presets", u"Export custom presets"_s, path);
        QTRY_COMPARE(status()->text(), u"Exported 1 preset(s)."_s);
        QCOMPARE(QJsonDocument::fromJson(contentOf(path)).array().toVariantList(), stored());
        const QVariantList before = stored();
        pick("&Import Presets", u"Import custom presets"_s, writeTestFile(folder.path(), u"bad.json"_s, "[7]"));
        QTRY_COMPARE(status()->text(), u"No valid presets found in file."_s);
        QVERIFY(QFile::resize(path, 9 * 1024 * 1024));
        pick("&Import Presets", u"Import custom presets"_s, path);
        QTRY_COMPARE(status()->toolTip(), u"The file has 9.0 MB; at most 8.0 MB are read."_s);
        QCOMPARE(stored(), before);
        // Where nothing can be written; no rights stop the tests that root runs.
        pick("E&xport Presets", u"Export custom presets"_s, u"/proc/self/none.json"_s);
        QTRY_VERIFY(status()->text().startsWith(u"Could not write file: "_s) && status()->toolTip().isEmpty());
    }

    /// Measured: see the log.
    void tenThousandKeys()
    {
        QJsonObject config;
        for (int section = 0; section < 100; ++section) {
            QJsonObject keys {{u"A"_s, QString(section == 0 ? 1'000'000 : 1, u'x')}}; // in view
            for (int key = 0; key < 100; ++key)
                keys.insert(u"Key%1"_s.arg(key), u"a value of some length %1"_s.arg(key));
            config.insert(u"Section%1"_s.arg(section), keys);
        }
        auto* toggle = dialog->findChild<QPushButton*>(u"expandCollapseBtn"_s);
        const auto measure = [this](const char* what, const auto& act) {
            QElapsedTimer timer;
            timer.start();
            act();
            tree()->repaint();
            qInfo("%s: %lld ms", what, static_cast<long long>(timer.elapsed()));
            return timer.elapsed() < 300;
        };
        QVERIFY(measure("fill", [&] { emit client->configReceived(config); }));
        QVERIFY(measure("collapse", [&] { toggle->click(); }));
        QVERIFY(measure("expand", [&] { toggle->click(); }));
        QCOMPARE(linesOf(row({99})).count(u';'), 102);
    }

private:
    /// What a node answers to a read and to a write.
    static NodeAnswer stored(const NodeRequest& request)
    {
        const QStringList arguments = request.values(u"arg"_s);
        return NodeAnswer::json(
            QJsonDocument(QJsonObject {{u"Key"_s, arguments.value(0)}, {u"Value"_s, arguments.value(1)}})
                .toJson(QJsonDocument::Compact));
    }
    static QVariantList stored() { return openAppSettings().value("ConfigDialog/customPresets"_L1).toList(); }
    static void store(const QVariantList& entries)
    {
        QSettings settings = openAppSettings();
        settings.setValue("ConfigDialog/customPresets"_L1, entries);
    }
    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static QString error() { return *static_cast<QString*>(QTest::qData("error", qMetaTypeId<QString>())); }

    void open()
    {
        dialog = std::make_unique<ConfigDialog>(client.get());
        connect(dialog.get(), &ConfigDialog::statusMessageRequested, this,
                [this](const QString& text) { messages.append(text); });
        dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    }
    void refreshWith(const NodeAnswer& answer)
    {
        node->answer(showPath, answer);
        const auto loads = messages.size();
        button("&Refresh")->click();
        QTRY_COMPARE(messages.size(), loads + 2);
    }
    void fill(const QStringList& typed) const
    {
        field(0)->setText(typed.at(0));
        field(1)->setText(typed.at(1));
        dialog->findChildren<QComboBox*>().constFirst()->setCurrentText(typed.at(2));
    }
    void verifyFailure(const QString& problem) const
    {
        QCOMPARE(status()->text(), problem);
        QVERIFY(status()->styleSheet().contains(u"darkred"_s));
        QCOMPARE(messages.constLast(), u"Config error: "_s + problem);
    }
    /// Answers the question that `act` raises, which is `expected`, as its title and its text.
    template <typename Act>
    void answerNext(QMessageBox::StandardButton choice, const Act& act, const QString& expected = {})
    {
        const ModalAnswer<QMessageBox> answer([&](QMessageBox& box) {
            if (!expected.isEmpty())
                QCOMPARE(box.windowTitle() + u'|' + box.text(), expected);
            QVERIFY(box.textFormat() == Qt::PlainText && box.defaultButton() == box.button(QMessageBox::No));
            box.button(choice)->click();
        });
        act();
        QTRY_VERIFY(answer.wasGiven());
    }
    void save(const QString& name)
    {
        const ModalAnswer<QInputDialog> answer([&name](QInputDialog& question) {
            QCOMPARE(question.windowTitle() + question.labelText(), u"Save presetPreset name:"_s);
            question.setTextValue(name);
            question.accept();
        });
        button("Sa&ve Preset")->click();
        QTRY_VERIFY(answer.wasGiven());
    }
    void pick(const char* action, const QString& title, const QString& path)
    {
        const ModalAnswer<QFileDialog> answer([&](QFileDialog& picker) {
            QCOMPARE(picker.windowTitle(), title);
            QCOMPARE(picker.nameFilters(), QStringList({u"JSON files (*.json)"_s, u"All files (*)"_s}));
            emit picker.fileSelected(path);
            picker.reject();
        });
        button(action)->click();
        QTRY_VERIFY(answer.wasGiven());
    }
    /// What the node was asked to set last: its arguments and its flag.
    QString sent() const
    {
        const NodeRequest request = node->requests(keyPath).constLast();
        QStringList parts = request.values(u"arg"_s);
        for (const QString& flag : {u"bool"_s, u"json"_s}) {
            if (request.value(flag) == "true"_L1)
                parts.append(flag);
        }
        return parts.join(u'|');
    }
    ConfigTree* tree() const { return dialog->findChild<ConfigTree*>(); }
    QTreeWidgetItem* row(const QList<int>& path) const
    {
        QTreeWidgetItem* item = tree()->invisibleRootItem();
        for (const int place : path)
            item = item->child(place);
        return item;
    }
    StatusLabel* status() const { return dialog->findChild<StatusLabel*>(); }
    QLineEdit* field(int place) const { return dialog->findChildren<QLineEdit*>().value(place); }
    QComboBox* box() const { return dialog->findChildren<QComboBox*>().value(1); }
    QPushButton* button(const char* text) const
    {
        const auto all = dialog->findChildren<QPushButton*>();
        return *std::ranges::find(all, QString::fromUtf8(text), &QPushButton::text);
    }

    std::unique_ptr<FakeNode> node;
    std::unique_ptr<IpfsClient> client;
    std::unique_ptr<ConfigDialog> dialog;
    QStringList messages; ///< for the main window
};

NORVO_TEST_MAIN(QApplication, tst_ConfigDialog)

#include "tst_configdialog.moc"
