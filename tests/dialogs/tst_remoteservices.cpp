// SPDX-License-Identifier: MIT
#include "DialogTest.h"
#include "RemoteServicesDialog.h"

#include <QListWidget>

using namespace Qt::StringLiterals;

namespace {

const QByteArray listPath = "/pin/remote/service/ls";
const QByteArray addPath = "/pin/remote/service/add";
const QString loading = u"Loading remote services from Kubo..."_s;

} // namespace

class tst_RemoteServices : public DialogTest<RemoteServicesDialog>
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode();
        node->answer(listPath,
                     NodeAnswer::json(R"({"RemoteServices":[{"Service":"<b>a","ApiEndpoint":"http://a"},)"
                                      R"({"Service":"bare"}]})"));
        connect(client.get(), &IpfsClient::rpcRequestIssued, this, [this](const QString& line) { rpcLog += line; });
        rpcLog.clear();
        open();
    }
    void cleanup() { dialog.reset(); }

    void whatAnAnswerDoes_data()
    {
        // status: one of a failure begins with '!'
        addColumns<QString, QString, int>("status", "message", "icon");
        const auto row = [](const char* signal, const QString& status, const QString& message, int icon = 0) {
            QTest::newRow(signal) << status << message << icon;
        };
        row("remoteServicesFailed", u"!<b>x"_s, u"<b>x"_s);
        row("remoteServiceAdded", loading, u"Saved remote service '<b>x'"_s);
        row("remoteServiceAddFailed", u"!<b>x"_s, u"<b>x"_s, QMessageBox::Warning);
        row("remoteServiceRemoved", loading, u"Removed remote service '<b>x'"_s);
        row("remoteServiceRemoveFailed", u"!<b>x"_s, u"<b>x"_s, QMessageBox::Warning);
        row("passed", u"<b>x"_s, u"Remote service 's' test passed"_s, QMessageBox::Information);
        row("failed", u"!<b>x"_s, u"Remote service 's' test failed"_s, QMessageBox::Warning);
    }
    void whatAnAnswerDoes()
    {
        QFETCH(const QString, status);
        QFETCH(const int, icon);
        refreshHeld();
        fill({u"s"_s, u"http://e"_s, u"secret"_s});
        messages.clear();
        const bool listsAnew = status == loading;
        const auto verify = [&] {
            QCOMPARE(this->status()->text(), status.startsWith(u'!') ? status.sliced(1) : status);
            QCOMPARE(isRed(), status.startsWith(u'!'));
            QTEST(messages.value(0), "message");
            QCOMPARE(field(0)->isEnabled(), !listsAnew);
            QCOMPARE(field(2)->text(), listsAnew ? QString() : u"secret"_s);
        };
        const ModalAnswer<QMessageBox> answer([&](QMessageBox& box) {
            verify(); // before the box is answered
            QCOMPARE(int(box.icon()), icon);
            QCOMPARE(box.windowTitle() + box.text(), u"Remote services<b>x"_s);
            QCOMPARE(box.textFormat(), Qt::PlainText);
            box.accept();
        });
        const QByteArray signal = QTest::currentDataTag();
        if (signal.startsWith("remote"))
            QVERIFY(QMetaObject::invokeMethod(client.get(), signal.constData(), Q_ARG(QString, u"<b>x"_s)));
        else
            emit client->remoteServiceTested(u"s"_s, signal == "passed", u"<b>x"_s);
        QCOMPARE(answer.wasGiven(), icon != 0);
        verify();
        QTRY_COMPARE(node->heldCount(listPath), listsAnew ? 2 : 1);
    }

    void servicesFillTheListAndTheForm()
    {
        QCOMPARE(messages, QStringList({u"Loaded 2 remote service(s)"_s}));
        QCOMPARE(list()->item(0)->text() + list()->item(1)->text(), u"<b>a  (http://a)bare"_s);
        QCOMPARE(texts(), QStringList({u"<b>a"_s, u"http://a"_s, QString()}));
        QCOMPARE(dialog->focusWidget(), list());
        field(2)->setText(u"secret"_s);
        QTest::keyClick(list(), Qt::Key_Down);
        QCOMPARE(texts(), QStringList({u"bare"_s, QString(), QString()}));

        refreshHeld();
        client->fetchRemoteServices(false, {}); // another dialog asks
        QTRY_COMPARE(node->heldCount(listPath), 2);
        node->release(listPath, NodeAnswer::json(R"({"RemoteServices":[]})"), 1);
        QTRY_COMPARE(status()->text(), u"Loaded 0 remote service(s)."_s);
        QVERIFY(list()->isEnabled() && list()->count() == 0);
        QCOMPARE(texts().constFirst(), u"bare"_s);
    }

    void whatCanBePressed()
    {
        const auto verify = [this](const QStringList& newTexts, const QString& enabled) {
            fill(newTexts);
            QString all;
            for (auto* any : dialog->findChildren<QPushButton*>())
                all += any->isEnabled() ? any->text().remove(u'&') + u' ' : QString();
            QCOMPARE(all, enabled);
        };
        verify({u" "_s, u"e"_s, u"t"_s}, u"Refresh Close "_s);
        verify({u"n"_s, u"e"_s, u" "_s}, u"Refresh Test Remove Close "_s);
        verify({u"n"_s, u" "_s, u"t"_s}, u"Refresh Test Remove Close "_s);
        verify({u"n"_s, u"e"_s, u"t"_s}, u"Refresh Save to Kubo Test Remove Close "_s);
        refreshHeld();
        verify({u"n"_s, u"e"_s, u"t"_s}, u"Close "_s);
        QVERIFY(!list()->isEnabled() && !field(0)->isEnabled() && !field(1)->isEnabled() && !field(2)->isEnabled());
    }

    /// Return in a field saves. A second one, pressed too soon, must not come to another button.
    void theTokenGoesToTheNodeAlone()
    {
        node->answers(addPath, {NodeAnswer::error("service already present"), {}});
        fill({u" mine "_s, u"https://p/psa"_s, u"s3cret+/="_s});
        field(2)->setFocus();
        const ModalAnswer<QMessageBox> refused([](QMessageBox& box) {
            QVERIFY(box.text().startsWith(u"Failed to add remote service 'mine': "_s));
            box.accept();
        });
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(refused.wasGiven() && dialog->focusWidget() == field(2));
        QCOMPARE(texts().at(2), u"s3cret+/="_s);
        QTest::keyClick(field(2), Qt::Key_Return);
        QTRY_COMPARE(texts(), QStringList({u"<b>a"_s, u"http://a"_s, QString()}));
        QCOMPARE(node->count(addPath), 2);
        QCOMPARE(node->requests(addPath).constLast().values(u"arg"_s),
                 QStringList({u"mine"_s, u"https://p/psa"_s, u"s3cret+/="_s}));
        const QString seen = rpcLog + messages.join(u'\n');
        QVERIFY(seen.contains(u"psa&arg=…"_s) && !seen.contains(u"s3cret"_s));
    }

    void removingAsks()
    {
        for (const auto choice : {QMessageBox::No, QMessageBox::Yes}) {
            const ModalAnswer<QMessageBox> answer([choice](QMessageBox& box) {
                QCOMPARE(box.text(), u"Remove service '<b>a' from Kubo configuration?"_s);
                box.button(choice)->click();
            });
            button("Remove")->click();
            QVERIFY(answer.wasGiven());
            QCOMPARE(messages.contains(u"Removing remote service '<b>a'..."_s), choice == QMessageBox::Yes);
        }
    }

    /// What is listed and typed is for one node: at another one it could remove a service of the same name.
    void anotherNodeStartsAnew()
    {
        FakeNode other;
        other.answer(listPath, NodeAnswer::json(R"({"RemoteServices":[{"Service":"theirs"}]})"));
        refreshHeld();
        fill({u"s"_s, u"e"_s, u"t"_s});
        client->setEndpoint(u"127.0.0.1"_s, other.port());
        QCOMPARE(texts(), QStringList({QString(), QString(), QString()}));
        QTRY_COMPARE(texts(), QStringList({u"theirs"_s, QString(), QString()}));
        node->release(listPath, NodeAnswer::json(R"({"RemoteServices":[{"Service":"late"}]})"));
        QTRY_COMPARE(node->openNow(listPath), 0);
        QTest::qWait(50);
        QCOMPARE(list()->count(), 1);
        QCOMPARE(texts().at(0), u"theirs"_s);
    }

    void theDialogMayGoWhileBoxesAreOpen()
    {
        for (const bool asks : {false, true}) {
            const ModalAnswer<QMessageBox> outer([&](QMessageBox&) {
                const ModalAnswer<QMessageBox> inner([&](QMessageBox&) { dialog.reset(); });
                emit client->remoteServiceTested(u"s"_s, false, u"another answer"_s);
                QVERIFY(inner.wasGiven());
            });
            asks ? button("Remove")->click() : emit client->remoteServiceAddFailed(u"x"_s);
            QVERIFY(outer.wasGiven() && !dialog);
            open();
        }
        QVERIFY(!rpcLog.contains(u"service/rm"_s));
    }

private:
    void open()
    {
        make(client.get());
        showActive();
        QTRY_VERIFY(list()->isEnabled());
    }
    void refreshHeld() const
    {
        node->answer(listPath, NodeAnswer::hold());
        button("Refresh")->click();
        QTRY_COMPARE(node->heldCount(listPath), 1);
    }
    QListWidget* list() const { return dialog->findChild<QListWidget*>(); }
    QLineEdit* field(int position) const { return dialog->findChildren<QLineEdit*>().value(position); }
    QStringList texts() const { return {field(0)->text(), field(1)->text(), field(2)->text()}; }
    void fill(const QStringList& newTexts) const
    {
        for (int i = 0; i < newTexts.size(); ++i)
            field(i)->setText(newTexts.at(i));
    }

    QString rpcLog;
};

NORVO_TEST_MAIN(QApplication, tst_RemoteServices)
#include "tst_remoteservices.moc"
