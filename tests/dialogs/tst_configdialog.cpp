// SPDX-License-Identifier: MIT
#include "ConfigDialogTest.h"

#include <QPlainTextEdit>

#include <ctime>

using namespace Qt::StringLiterals;

namespace {

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

class tst_ConfigDialog : public ConfigDialogTest
{
    Q_OBJECT

private slots:
    void init()
    {
        start(sample);
        QCOMPARE(messages, QStringList({u"Fetching config…"_s, u"Config loaded (4 keys)"_s}));
    }
    void cleanup() { close(); }

    void theTreeShowsTheConfig()
    {
        QCOMPARE(linesOf(tree()->invisibleRootItem()),
                 u"=;A=;B=<b>t</b>;N=9.0072e+15;Z=;on=true;D.x=1;E []=;L []=;[0]=;in=1;[1]=two;"_s);
        QCOMPARE(status()->text(), u"Loaded 4 top-level keys from /api/v0/config/show"_s);
        QCOMPARE(row({0, 1})->toolTip(1), u"9007199254740993"_s);
        dialog->hide();
        dialog->show(); // it has what it shows
        QCOMPARE(messages.size(), 2);
        const int rowHeight = tree()->visualItemRect(row({0})).height();
        refreshWith(R"({"A":"1\n2\n3"})");
        QCOMPARE(tree()->visualItemRect(row({0})).height(), rowHeight);
    }

    /// A click or Return puts what can be asked for into the field for the key, and sends nothing.
    void aRowPutsItsKey()
    {
        refreshWith(R"({"A":{"B":1,"[0]":2},"D.x":1,"E":[],"L":[{"in":1},[["two"]]]})");
        const auto choose = [this](const QList<int>& path) {
            field(0)->clear();
            tree()->scrollToItem(row(path));
            QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, tree()->visualItemRect(row(path)).center());
            const QString clicked = field(0)->text();
            field(0)->clear();
            QTest::keyClick(tree(), Qt::Key_Return);
            return clicked == field(0)->text() ? clicked : u"?"_s;
        };
        QCOMPARE(choose({0, 0}), u"A.B"_s);
        QCOMPARE(choose({0, 1}), u"A.[0]"_s);
        QCOMPARE(choose({0}), QString()); // has others below
        QCOMPARE(choose({1}), QString()); // "D.x" would be read as two keys
        QCOMPARE(choose({2}), u"E"_s);    // an empty list
        QCOMPARE(choose({3, 0, 0}), u"L"_s);
        QCOMPARE(choose({3, 1, 0, 0}), u"L"_s);
        QVERIFY(isIdle());
    }

    void theTreeExpandsAndCollapses()
    {
        auto* toggle = dialog->findChild<QPushButton*>(u"expandCollapseBtn"_s);
        QCOMPARE(toggle->text(), u"Collapse All"_s);
        row({0})->setExpanded(false); // by hand
        QCOMPARE(toggle->text(), u"Expand All"_s);
        toggle->click();
        toggle->click();
        QCOMPARE(toggle->text(), u"Expand All"_s);
        QVERIFY(!row({0})->isExpanded() && !row({3, 0})->isExpanded());
        QCOMPARE(messages.last(2), QStringList({u"Expanded config tree"_s, u"Collapsed config tree"_s}));
        refreshWith(sample);
        QVERIFY(!row({3})->isExpanded());
        toggle->click();
        QVERIFY(row({3, 0})->isExpanded());
        refreshWith(R"({"A":1,"B":{"c":1}})"); // with a leaf as its first row
        for (int i = 0; i < 2; ++i)
            toggle->click();
        QCOMPARE(messages.last(2), QStringList({u"Expanded config tree"_s, u"Expanded config tree"_s}));
        QVERIFY(row({1})->isExpanded());
    }

    void nothingIsCutOff()
    {
        for (const QSize& size : {QSize(1200, 700), dialog->minimumSize()}) {
            dialog->resize(size);
            QTRY_COMPARE(field(0)->y() == button("Get")->y(), size.width() == 1200);
            QTRY_VERIFY(field(0)->width() > 150);
            for (const auto* button : dialog->findChildren<QPushButton*>())
                QTRY_VERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->text()));
        }
    }

    void whatIsSet_data()
    {
        // query: none if it is refused
        addColumns<QString, QString, QString, QString, QString>("key", "value", "mode", "query", "error");
        const auto row = [](const char* name, const QString& key, const QString& value, const char* mode,
                            const QString& query, const QString& error = {}) {
            QTest::newRow(name) << key << value << QString::fromLatin1(mode) << query << error;
        };
        row("text", u" A.B "_s, u" x "_s, "String", u"A.B| x "_s);
        row("boolean", u"A.on"_s, u" FALSE"_s, "Bool", u"A.on|false|bool"_s);
        row("JSON", u"A.N"_s, u" 9007199254740993 "_s, "JSON", u"A.N|9007199254740993|json"_s);
        row("no key", u" "_s, u"x"_s, "String", {}, u"Config key is required."_s);
        row("no value", u"A"_s, u" "_s, "String", {}, u"Config value is required."_s);
        row("no boolean", u"A"_s, u"yes"_s, "Bool", {}, u"Bool mode accepts only true or false."_s);
        row("no JSON", u"Swarm"_s, u"abc"_s, "JSON", {}, u"JSON mode requires a valid JSON value."_s);
    }
    void whatIsSet()
    {
        QFETCH(const QString, key);
        QFETCH(const QString, value);
        QFETCH(const QString, mode);
        QFETCH(const QString, query);
        fill(key, value, mode);
        button("Set")->click();
        QCOMPARE(isIdle(), query.isEmpty());
        if (query.isEmpty()) {
            QFETCH(const QString, error);
            verifyFailure(error);
        } else {
            QTRY_COMPARE(node->count(showPath), 2); // what it has become
            QCOMPARE(sent(), query);
            QTRY_VERIFY(isIdle());
        }
        QCOMPARE(restore()->isEnabled(), !query.isEmpty());
    }

    /// A number goes through the field without a change, and the focus stays in it.
    void whatIsReadIsWrittenBack()
    {
        for (const auto& [json, text] : {std::pair("1234567", u"1234567"_s),
                                         {"9007199254740993", u"9007199254740993"_s},
                                         {"1e-7", u"1e-07"_s},
                                         {"null", u"null"_s},
                                         {R"("a\nb\u00a0")", u"a\nb\u00a0"_s}}) {
            node->answer(keyPath, NodeAnswer::json(R"({"Key":"Swarm.X","Value":)" + QByteArray(json) + '}'));
            fill(u"k"_s, u"v"_s, json[0] == '"' ? u"String"_s : u"JSON"_s);
            field(0)->setFocus();
            QTest::keyClick(field(0), Qt::Key_Return);
            QVERIFY(status()->text() == u"Loading…"_s && dialog->focusWidget() == dialog.get());
            QTRY_COMPARE(status()->text(), u"Loaded key 'Swarm.X'"_s);
            QCOMPARE(field(0)->text() + u'=' + field(1)->text(), u"Swarm.X="_s + text);
            QCOMPARE(dialog->focusWidget(), field(0));
            answerNext(QMessageBox::Yes, [this] { QTest::keyClick(field(1), Qt::Key_Return); });
            QTRY_COMPARE(node->requests(keyPath).constLast().values(u"arg"_s), QStringList({u"Swarm.X"_s, text}));
            QTRY_VERIFY(isIdle());
        }
        const QString section = QString(400'000, u'x'); // longer than what a field takes by itself
        node->answer(keyPath, NodeAnswer::json(R"({"Value":")" + section.toUtf8() + R"("})"));
        button("Get")->click();
        QTRY_COMPARE(field(1)->text().size(), section.size());
        QCOMPARE(field(0)->text(), u"Swarm.X"_s);
        QCOMPARE(status()->text(), u"Loaded key ''"_s);
    }

    /// The snapshot is what was loaded before the first write that was confirmed, digits and all.
    void theSnapshotIsRestored()
    {
        fill(u" swarm.X<b>"_s, u"x"_s);
        answerNext(
            QMessageBox::No, [this] { button("Set")->click(); },
            u"Potentially risky key|You are changing 'swarm.X<b>'.\n\nThis may break RPC connectivity or "
            "networking.\nProceed?"_s);
        QVERIFY(isIdle() && !restore()->isEnabled());
        fill(u"A.B"_s, u"x"_s);
        node->answer(showPath, NodeAnswer::json(R"({"later":1})"));
        for (int i = 0; i < 2; ++i) {
            button("Set")->click();
            QTRY_VERIFY(isIdle());
        }
        answerNext(
            QMessageBox::No, [this] { restore()->click(); },
            u"Restore backup|Restore the previously backed-up config snapshot?"_s);
        answerNext(QMessageBox::Yes, [this] { restore()->click(); });
        QTRY_COMPARE(node->count(showPath), 4);
        QTRY_VERIFY(restore()->isEnabled());
        const ModalAnswer<QMessageBox> answer([&](QMessageBox& question) {
            client->setEndpoint(u"127.0.0.1"_s, 1); // to another node and back
            client->setEndpoint(u"127.0.0.1"_s, node->port());
            question.button(QMessageBox::Yes)->click();
        });
        restore()->click();
        QTRY_COMPARE(node->count(replacePath), 2);
        for (const NodeRequest& request : node->requests(replacePath)) {
            QCOMPARE(QJsonDocument::fromJson(documentIn(request)), QJsonDocument::fromJson(sample));
            QVERIFY(request.body.contains("\n        \"N\": 9007199254740993,\n"));
        }
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
                accept ? button("Replace")->click() : box.reject();
            });
            button("Replace Config…")->click();
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
        QVERIFY(isIdle() && !restore()->isEnabled());
        answerNext(
            QMessageBox::Yes, [&] { replaceBy(text, true); }, question);
        QTRY_COMPARE(node->count(showPath), 2);
        QCOMPARE(node->count(replacePath), 1);
        QCOMPARE(documentIn(node->requests(replacePath).value(0)), text.toUtf8());
        QTRY_VERIFY(isIdle());
        refreshWith("{}");
        button("Replace Config…")->click();
        verifyFailure(u"Load config first before replacing."_s);
    }

    /// Whatever becomes of the answer, the dialog stays usable, keeps its tree, and may go meanwhile.
    void nodesThatAnswerBadly_data()
    {
        // error: none if there is no answer
        addColumns<QByteArray, NodeAnswer, QString>("path", "answer", "error");
        for (const auto& [path, call] : {std::pair(showPath, u"get config"_s),
                                         {keyPath, u"set config key"_s},
                                         {replacePath, u"replace config"_s}}) {
            const auto row = [path = path](const char* name, const NodeAnswer& answer, const QString& error) {
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
        QFETCH(const QString, error);
        node->answer(path, answer);
        const auto ask = [&] {
            fill(u"A.B"_s, u"v"_s);
            if (path == replacePath)
                client->replaceConfig("{}");
            else
                button(path == showPath ? "Refresh" : "Set")->click();
        };
        int asked = node->headCount(path) + 1;
        ask();
        QTRY_COMPARE(node->headCount(path), asked);
        if (error.isEmpty()) {
            QVERIFY(path == replacePath || (status()->text() == u"Loading…"_s && !isIdle()));
        } else {
            QTRY_VERIFY2(status()->text().startsWith(error), qPrintable(status()->text()));
            verifyFailure(status()->text());
            QVERIFY(isIdle());
        }
        QCOMPARE(tree()->topLevelItemCount(), 4);
        QCOMPARE(restore()->isEnabled(), path == keyPath && !error.isEmpty());

        if (!error.isEmpty()) {
            ask();
            ++asked;
        }
        dialog.reset(); // while it waits
        QTRY_COMPARE(node->headCount(path), asked);
        node->answer(showPath, NodeAnswer::json(sample));
        open();
        QTRY_COMPARE(tree()->topLevelItemCount(), 4);
        if (node->heldCount(path) > 0)
            node->release(path, NodeAnswer::json("{}"));
        QTRY_VERIFY(isIdle());
    }

    /// What was read from one node is never written to another.
    void anotherNodeStartsAnew()
    {
        FakeNode other;
        other.answer(showPath, NodeAnswer::json(R"({"Theirs":1})"));
        const auto change = [&] { client->setEndpoint(u"127.0.0.1"_s, other.port()); };
        fill(u"A.B"_s, u"x"_s);
        button("Set")->click();
        QTRY_VERIFY(restore()->isEnabled());
        button("Replace Config…")->click();
        change();
        QVERIFY(field(0)->text().isEmpty() && field(1)->text().isEmpty() && tree()->topLevelItemCount() == 0);
        QTRY_COMPARE(tree()->topLevelItemCount(), 1);
        QTRY_VERIFY(!dialog->findChild<QPlainTextEdit*>() && isIdle() && !restore()->isEnabled());

        for (const char* asking : {"Set", "Replace Config…"}) {
            client->setEndpoint(u"127.0.0.1"_s, node->port());
            QTRY_COMPARE(tree()->topLevelItemCount(), 4);
            const qsizetype count = other.requests().size();
            fill(u"Swarm.X"_s, u"x"_s);
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
        fill(u"Swarm.X"_s, u"x"_s);
        const ModalAnswer<QMessageBox> risky([this](QMessageBox&) { dialog.reset(); });
        button("Set")->click();
        QVERIFY(risky.wasGiven() && !dialog);
        open();
        QTRY_COMPARE(tree()->topLevelItemCount(), 4);
        const ModalAnswer<QMessageBox> question([this](QMessageBox&) { dialog.reset(); });
        button("Replace Config…")->click();
        qobject_cast<QDialog*>(dialog->findChild<QPlainTextEdit*>()->window())->accept();
        QTRY_VERIFY(question.wasGiven() && !dialog);
        client->fetchConfig(); // what was sent before has come once this has
        QTRY_COMPARE(node->count(showPath), 3);
        QCOMPARE(node->count(keyPath) + node->count(replacePath), 0);
    }

    /// In processor time, so that it holds beside other programs.
    void tenThousandKeys()
    {
        QJsonObject config;
        for (int section = 0; section < 100; ++section) {
            QJsonObject keys {{u"A"_s, QString(section == 0 ? 1'000'000 : 1, u'x')}}; // in view
            for (int key = 0; key < 100; ++key)
                keys.insert(u"Key%1"_s.arg(key), u"a value of some length %1"_s.arg(key));
            config.insert(u"Section%1"_s.arg(section), keys);
        }
        const auto measure = [this](const char* what, const auto& act) {
            const std::clock_t start = std::clock();
            act();
            tree()->repaint();
            const auto taken = (std::clock() - start) * 1000 / CLOCKS_PER_SEC;
            qInfo("%s: %ld ms", what, taken);
            return taken < 200;
        };
        QVERIFY(measure("fill", [&] { emit client->configReceived(config); }));
        auto* toggle = dialog->findChild<QPushButton*>(u"expandCollapseBtn"_s);
        for (const char* what : {"collapse", "expand"})
            QVERIFY(measure(what, [&] { toggle->click(); }));
        QCOMPARE(linesOf(row({99})).count(u';'), 102);
    }

private:
    QTreeWidgetItem* row(const QList<int>& path) const
    {
        QTreeWidgetItem* item = tree()->invisibleRootItem();
        for (const int place : path)
            item = item->child(place);
        return item;
    }
};

NORVO_TEST_MAIN(QApplication, tst_ConfigDialog)

#include "tst_configdialog.moc"
