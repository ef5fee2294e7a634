// SPDX-License-Identifier: MIT
#include "ActionBox.h"
#include "IpnsReport.h"
#include "SettingsDialog.h"
#include "WindowTest.h"

#include <QDesktopServices>
#include <QInputDialog>
#include <QScreen>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QByteArray keyList = "/key/list";
const QByteArray publishPath = "/name/publish";
const QByteArray resolvePath = "/name/resolve";
const QString gateway = u"https://ipfs.io"_s;

} // namespace

/// Rows: "r1" recursive, "d" direct.
class tst_IpnsFlow : public WindowTest
{
    Q_OBJECT

public slots:
    void catchUrl(const QUrl& url) { opened.append(url.toString(QUrl::FullyEncoded)); }

private slots:
    void init()
    {
        startNode("{\"Cid\":\"r1\",\"Type\":\"recursive\"}\n{\"Cid\":\"d\",\"Type\":\"direct\"}\n");
        setting("loadMetadata"_L1, false);
        node->answer(keyList,
                     NodeAnswer::json(R"({"Keys":[{"Name":"blog"},{"Name":"self"},{"Name":"a"},{"Name":"blog"}]})"));
        node->answer(publishPath, NodeAnswer::json(R"({"Name":"k51","Value":"/ipfs/r1"})"));
        node->answer(resolvePath, NodeAnswer::json(R"({"Path":"/ipfs/Qa/b c"})"));
        QDesktopServices::setUrlHandler(u"https"_s, this, "catchUrl");
        opened.clear();
    }
    void cleanup()
    {
        close();
        QDesktopServices::unsetUrlHandler(u"https"_s);
    }

    void reports_data()
    {
        // buttons: "caption: what is copied or opened"
        const auto row = addColumns<IpnsReport, QString, QString, QStringList>("report", "message", "text", "buttons");
        row("published", reportOf(IpnsPublishResult {u"%2"_s, u"/ipns/ k51"_s, u"/ipfs/Qa"_s}),
            u"IPNS publish succeeded: /ipns/ k51 -> /ipfs/Qa"_s, u"Key: %2\nName: /ipns/ k51\nValue: /ipfs/Qa"_s,
            {u"Copy /ipns/...: /ipns/ k51"_s, u"Open /ipns/...: https://ipfs.io/ipns/k51"_s,
             u"Open published value: https://ipfs.io/ipfs/Qa"_s});
        row("published, no name", reportOf(IpnsPublishResult {{}, {}, u"/ipns/x"_s}),
            u"IPNS publish succeeded: (unknown) -> /ipns/x"_s, u"Key: self\nName: (unknown)\nValue: /ipns/x"_s, {});
        row("resolved", reportOf(IpnsResolveResult {u"/ipns/a#b?c%41 d"_s, u"/ipfs/Qa"_s}),
            u"IPNS resolved: /ipns/a#b?c%41 d -> /ipfs/Qa"_s, u"/ipns/a#b?c%41 d -> /ipfs/Qa"_s,
            {u"Copy IPNS name: /ipns/a#b?c%41 d"_s, u"Copy resolved path: /ipfs/Qa"_s,
             u"Open resolved target: https://ipfs.io/ipfs/Qa"_s,
             u"Open IPNS name: https://ipfs.io/ipns/a%23b%3Fc%2541%20d"_s});
        row("resolved to nothing", reportOf(IpnsResolveResult {}), u"IPNS resolved: (unknown) -> (empty)"_s,
            u"(unknown) -> (empty)"_s, {});
        row("resolved to a name", reportOf(IpnsResolveResult {u"k"_s, u"/ipns/x"_s}), u"IPNS resolved: k -> /ipns/x"_s,
            u"k -> /ipns/x"_s, {u"Copy resolved path: /ipns/x"_s});
    }
    void reports()
    {
        QFETCH(const IpnsReport, report);
        QTEST(report.message, "message");
        QTEST(report.text, "text");
        QStringList buttons;
        for (const IpnsAction& action : report.actions)
            buttons.append(action.caption + u": "_s + action.copied + action.url.toString(QUrl::FullyEncoded));
        QTEST(buttons, "buttons");
    }

    void openingAName()
    {
        openLoaded(2);
        const auto logged = window->statusLog().size();
        for (const QString& typed : {u" a#b?c%41 d "_s, u"/ipns/ a.net"_s, u"/ipns/  "_s, QString()}) {
            trigger(u"Open via IPNS..."_s);
            QCOMPARE(answer(typed), u"Open via IPNS|IPNS name (k51..., peer id, or /ipns/...):|self"_s);
        }
        QCOMPARE(opened, QStringList({gateway + u"/ipns/a%23b%3Fc%2541%20d"_s, gateway + u"/ipns/a.net"_s}));
        QCOMPARE(window->statusLog().size() - logged, 2);
        QCOMPARE(status(), u"Opening /ipns/a.net in browser…"_s);
        QVERIFY(node->requests(resolvePath).isEmpty());
    }

    void publishing()
    {
        openLoaded(2);
        QVERIFY(!action(u"Publish to IPNS..."_s)->isEnabled());
        table()->selectRow(rowOf(u"r1"_s));
        QVERIFY(action(u"Publish to IPNS..."_s)->isEnabled());
        const MenuAnswer menu(u"Publish to IPNS..."_s);
        emit table()->customContextMenuRequested(
            table()->visualRect(table()->model()->index(rowOf(u"d"_s), 0)).center());
        QVERIFY(isLogged(u"Fetching IPNS keys for publish (d)…"_s));
        QTRY_VERIFY(dialog());
        const auto* choices = dialog()->findChild<QComboBox*>();
        QCOMPARE(choices->count(), 3); // each name once
        QCOMPARE(choices->itemText(0) + choices->itemText(1), u"selfblog"_s);
        QTest::keyClicks(dialog()->findChild<QLineEdit*>(), u"bl"_s); // a key of its own, not the start of one
        QCOMPARE(answer(u"bl"_s), u"Publish to IPNS|Publish CID\nd\n\nSelect key:|bl"_s);
        QVERIFY(isLogged(u"Publishing d to IPNS key 'bl'…"_s));
        QTRY_VERIFY(box());
        QCOMPARE(node->requests(publishPath).constFirst().items(),
                 (QList<std::pair<QString, QString>> {{u"arg"_s, u"/ipfs/d"_s}, {u"key"_s, u"bl"_s}}));
        QCOMPARE(label("notification"_L1)->text(), u"IPNS publish succeeded: k51 -> /ipfs/r1"_s);
        QCOMPARE(box()->text(), u"Key: bl\nName: k51\nValue: /ipfs/r1"_s);
        QCOMPARE(box()->defaultButton(), box()->button(QMessageBox::Ok));
        QVERIFY(press(u"Copy /ipns/..."_s));
        QCOMPARE(clipboard(), u"k51"_s);
        QCOMPARE(status(), u"Copied IPNS name: k51"_s);
        QTRY_VERIFY(!box());
    }

    void resolving()
    {
        openLoaded(2);
        trigger(u"Resolve IPNS..."_s);
        QCOMPARE(answer(u" k51"_s), u"Resolve IPNS|IPNS name (k51..., peer id, or /ipns/...):|"_s);
        QVERIFY(isLogged(u"Resolving k51…"_s));
        QTRY_VERIFY(box());
        QVERIFY(press(u"Open resolved target"_s));
        QCOMPARE(opened, QStringList(gateway + u"/ipfs/Qa/b%20c"_s));
        trigger(u"Resolve IPNS..."_s);
        answer(u" "_s);
        node->answer(resolvePath, NodeAnswer::error("could not resolve name"));
        trigger(u"Resolve IPNS..."_s);
        answer(u"k"_s);
        QTRY_VERIFY(label("nodeWordsLabel"_L1)->isVisible());
        QCOMPARE(label("nodeWordsLabel"_L1)->text(), u"The node says: could not resolve name"_s);
        QVERIFY(status().startsWith(u"Error: Failed to resolve IPNS name: "_s));
        QCOMPARE(node->count(resolvePath), 2);
    }

    /// The list of keys fails, and then the key that was typed: both with the node's words.
    void whatTheNodeRefuses()
    {
        node->answer(keyList, NodeAnswer::error("<b>locked"));
        node->answer(publishPath, NodeAnswer::error("no key by the given name was found"));
        openLoaded(2);
        askKeys(u"r1"_s);
        QTRY_VERIFY(dialog());
        QCOMPARE(label("nodeWordsLabel"_L1)->text(), u"The node says: <b>locked"_s);
        QCOMPARE(dialog()->findChild<QLabel*>()->textFormat(), Qt::PlainText);
        const QString asked = answer(u" nokey "_s);
        QVERIFY(
            asked.startsWith(u"Publish to IPNS|Could not load keys automatically.\n\nFailed to list IPNS keys: "_s));
        QVERIFY(asked.endsWith(u"\n\nEnter key name:|self"_s));
        QTRY_COMPARE(label("nodeWordsLabel"_L1)->text(), u"The node says: no key by the given name was found"_s);
        QVERIFY(label("nodeWordsLabel"_L1)->isVisible() && !box());
        QCOMPARE(node->requests(publishPath).constFirst().value(u"key"_s), u"nokey"_s);
    }

    /// A publish that takes the place of another closes its question; one that is cancelled asks no more.
    void cancelled()
    {
        const NodeAnswer keys = NodeAnswer::json("{}");
        node->answer(keyList, NodeAnswer::hold());
        openLoaded(2);
        askKeys(u"r1"_s);
        for (const QString& cid : {u"d"_s, u"r1"_s}) {
            askKeys(cid);
            QTRY_COMPARE(node->heldCount(keyList), 2);
            node->release(keyList, keys);
            QTRY_VERIFY(dialog() && dialog()->labelText().contains(u"CID\n"_s + cid));
            QCOMPARE(questions(), 1);
        }
        answer({});
        QCOMPARE(status(), u"IPNS publish cancelled"_s);
        node->release(keyList, NodeAnswer::dropAt({}, 0));
        QTRY_COMPARE(node->openNow(keyList), 0);
        trigger(u"Resolve IPNS..."_s); // its answer comes after the late one
        answer(u"k"_s);
        QTRY_VERIFY(box());
        QCOMPARE(questions(), 0);
        QCOMPARE(node->count(publishPath), 0);
    }

    /// A publish takes its time; neither the window nor a second publish waits for it.
    void twoAtATime()
    {
        const QString running = u"Publishing r1 to IPNS key 'blog'…"_s;
        node->answer(publishPath, NodeAnswer::hold());
        openLoaded(2);
        askKeys(u"r1"_s);
        QTRY_VERIFY(dialog());
        answer(u"blog"_s);
        QTRY_COMPARE(node->heldCount(publishPath), 1);
        trigger(u"Copy CID"_s);
        QVERIFY(status() != running);
        QTRY_COMPARE_WITH_TIMEOUT(status(), running, 20'000);
        node->answer(keyList, NodeAnswer::hold());
        askKeys(u"d"_s);
        QTRY_COMPARE(node->heldCount(keyList), 1);
        node->release(publishPath, NodeAnswer::json(R"({"Name":"k51","Value":"/ipfs/r1"})"));
        QTRY_VERIFY(box());
        QVERIFY(press(u"OK"_s));
        QTRY_VERIFY(!box());
        node->release(keyList, NodeAnswer::json("{}"));
        QTRY_VERIFY(dialog());
        QVERIFY(answer(u"self"_s).contains(u"Publish CID\nd\n"_s));
        QTRY_COMPARE(node->heldCount(publishPath), 1);
    }

    /// The address changes while the keys are asked for, or while they are offered.
    void aNodeThatIsLeft_data()
    {
        QTest::addColumn<bool>("offered");
        QTest::newRow("asked") << false;
        QTest::newRow("offered") << true;
    }
    void aNodeThatIsLeft()
    {
        QFETCH(const bool, offered);
        FakeNode other;
        node->answer(keyList, NodeAnswer::hold());
        openLoaded(2);
        askKeys(u"r1"_s);
        QTRY_COMPARE(node->heldCount(keyList), 1);
        const ModalAnswer<SettingsDialog> settings([&](SettingsDialog& settingsDialog) {
            if (offered)
                node->release(keyList, NodeAnswer::json("{}"));
            QTRY_COMPARE(questions(), offered ? 1 : 0);
            settingsDialog.setPort(other.port());
            settingsDialog.accept();
        });
        trigger(u"Settings..."_s);
        QVERIFY(settings.wasGiven() && isLogged(u"IPNS publish cancelled"_s));
        if (!offered)
            node->release(keyList, NodeAnswer::json("{}"));
        QTRY_COMPARE(node->openNow(keyList), 0);
        QTRY_COMPARE(other.count("/id"), 1);
        QTRY_COMPARE(questions(), 0);
    }

    void longTextsStayOnTheScreen()
    {
        const QString longest(10'000, u'k');
        node->answer(keyList, NodeAnswer::json("{\"Keys\":[{\"Name\":\"" + longest.toUtf8() + "\"}]}"));
        node->answer(publishPath,
                     NodeAnswer::json("{\"Name\":\"" + longest.toUtf8() + "\",\"Value\":\"/ipfs/"
                                      + QByteArray("a\\u2028").repeated(3000) + "\"}"));
        openLoaded(2);
        askKeys(u"r1"_s);
        QTRY_VERIFY(dialog());
        QVERIFY2(isOnScreen(dialog()), qPrintable(QString::number(dialog()->width())));
        dialog()->findChild<QComboBox*>()->setCurrentIndex(1);
        dialog()->accept();
        QTRY_VERIFY(box());
        QCOMPARE(node->requests(publishPath).constFirst().value(u"key"_s), longest);
        QVERIFY2(isOnScreen(box()), qPrintable(QString::number(box()->height())));
        QVERIFY(press(u"Copy /ipns/..."_s));
        QCOMPARE(clipboard(), longest);

        node->answer(keyList, NodeAnswer::text(500, longest.toUtf8()));
        trigger(u"Publish to IPNS..."_s);
        QTRY_VERIFY(dialog());
        QVERIFY2(isOnScreen(dialog()), qPrintable(QString::number(dialog()->width())));
    }

    /// With each of the dialogs open, the window goes.
    void windowsThatGo()
    {
        for (const bool inBox : {false, true}) {
            openLoaded(2);
            askKeys(u"r1"_s);
            QTRY_VERIFY(dialog());
            if (inBox) {
                answer(u"self"_s);
                QTRY_VERIFY(box());
            }
            close();
            QVERIFY(!QApplication::activeModalWidget());
        }
    }

private:
    int rowOf(const QString& cid) const { return static_cast<int>(cells(0).indexOf(cid)); }
    void askKeys(const QString& cid) const
    {
        table()->selectRow(rowOf(cid));
        trigger(u"Publish to IPNS..."_s);
    }
    static QInputDialog* dialog() { return modal<QInputDialog>(); }
    static ActionBox* box() { return modal<ActionBox>(); }
    /// Answers the open dialog, or cancels it; "title|label|text at first".
    static QString answer(const QString& text)
    {
        QInputDialog* asking = dialog();
        const QStringList seen {asking->windowTitle(), asking->labelText(), asking->textValue()};
        if (text.isNull()) {
            asking->reject();
        } else {
            asking->setTextValue(text);
            asking->accept();
        }
        return seen.join(u'|');
    }
    /// How many dialogs ask for a text.
    int questions() const
    {
        const auto dialogs = window->findChildren<QInputDialog*>();
        return static_cast<int>(std::ranges::count_if(dialogs, &QWidget::isVisible));
    }
    static bool isOnScreen(const QWidget* shown)
    {
        const QRect screen = shown->screen()->availableGeometry();
        return shown->width() <= screen.width() && shown->height() <= screen.height();
    }

    QStringList opened;
};

NORVO_TEST_MAIN(QApplication, tst_IpnsFlow)

#include "tst_ipnsflow.moc"
