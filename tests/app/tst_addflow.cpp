// SPDX-License-Identifier: MIT
#include "ActionBox.h"
#include "AddToIpfsDialog.h"
#include "DemoNode.h"
#include "FileDrop.h"
#include "PinContentsDialog.h"
#include "PinModel.h"
#include "RemotePinFlow.h"
#include "TestFiles.h"
#include "WindowTest.h"

#include <QDirIterator>
#include <QFileDialog>
#include <QProgressDialog>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray path = "/add";

/// "path=size and sum of bytes" of all that is in a folder.
QStringList contentsOf(const QString& folder)
{
    QStringList list;
    QDirIterator walk(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        QFile file(walk.next());
        const bool isFile = walk.fileInfo().isFile() && file.open(QIODevice::ReadOnly);
        list.append(QDir(folder).relativeFilePath(file.fileName())
                    + (isFile ? u'=' + QString::fromLatin1(file.readAll().toHex()) : u"/"_s));
    }
    list.sort();
    return list;
}

} // namespace

class tst_AddFlow : public WindowTest
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode({});
        node->answer("/pin/remote/service/ls", NodeAnswer::json(R"({"RemoteServices":[]})"));
        folder = std::make_unique<QTemporaryDir>();
    }
    void cleanup() { close(); }

    void roundTrip()
    {
        DemoNode demo({.port = 0, .pins = 5});
        newFile(u"docs/a+b 100%.txt"_s, "hello");
        newFile(u"docs/.hidden/ünï \"q\".bin"_s, QByteArray(700'000, '\x7f'));
        newFile(u"docs/empty"_s, {});
        newFile(u"docs/"_s + QString(u"d/"_s).repeated(200) + u"deep"_s, "deep");
        newFile(u"docs/"_s + QString(127, u'é') + u'x', "a name of 255 bytes");
        open(demo);
        QVERIFY(waitForRows(5));
        add({folder->path() + u"/docs"_s});
        QTRY_VERIFY(result);
        QCOMPARE(boxText.section(u'\n', 0, 0), u"Add operation completed successfully."_s);
        const QStringList cids = clipboard().split(u'\n');
        QCOMPARE(cids.size(), 5 + 202 + 1); // files, folders and what is around them
        QCOMPARE(boxText.section(u'\n', -1), cids.constFirst());
        QVERIFY(waitForRows(6));
        const auto cell = [&](int section) { return cells(section).value(cells(0).indexOf(cids.constFirst())); };
        QTRY_COMPARE(cell(PinModel::KindColumn), u"Directory"_s);
        QTRY_COMPARE(cell(PinModel::SizeColumn), u"438.2 KB"_s); // two of its three chunks are the same

        const QTemporaryDir target;
        PinContentsDialog dialog(cids.constFirst(), client(), nullptr, {});
        auto* saveAll = dialog.findChild<QPushButton*>();
        QTRY_VERIFY(saveAll->isEnabled());
        saveAll->click();
        emit dialog.findChild<QFileDialog*>()->fileSelected(target.path());
        QTRY_VERIFY(!dialog.isSaving());
        // A name that other systems can't have is saved under one that they can.
        QCOMPARE(contentsOf(target.path()).join(u'\n').replace(u"_q_"_s, u"\"q\""_s),
                 contentsOf(folder->path()).filter(u"docs/"_s).join(u'\n'));
    }

    /// The local pin goes once the service has the content.
    void remoteOnly()
    {
        DemoNode demo({.port = 0, .pins = 2, .remoteServices = {u"mysrv"_s}, .remotePinTime = 200ms});
        open(demo);
        QVERIFY(waitForRows(2));
        window->findChild<RemotePinFlow*>()->setPace(50ms, RemotePinFlow::mostTicks);
        add({newFile(u"a"_s, "a")}, u"Ok"_s, [](AddToIpfsDialog& dialog) {
            for (QComboBox* combo : dialog.findChildren<QComboBox*>()) {
                if (const int remote = combo->findData(u"remote"_s); remote >= 0)
                    combo->setCurrentIndex(remote);
                else if (combo->isEditable())
                    combo->setEditText(u"mysrv"_s);
            }
        });
        QTRY_VERIFY(result);
        QCOMPARE(demo.allPins().size(), 3);
        QTRY_COMPARE(demo.allPins().size(), 2);
        QVERIFY(waitForRows(2));
        const QStringList log = window->statusLog();
        for (const QString& step :
             {u"  Remote pin queued for bafy"_s, u"  Remote pin status (mysrv): 0 pinned, 1 pending, 0 failed."_s,
              u"  Remote pin complete on 'mysrv': 1 pinned, 0 failed."_s, u"  Unpinned 1 CID(s)"_s})
            QVERIFY2(!log.filter(step).isEmpty(), qPrintable(step));
    }

    /// One question is open, however often the time comes, and none once the window is gone.
    void aServiceThatHangs()
    {
        DemoNode demo({.port = 0, .pins = 2, .remoteServices = {u"hanging"_s}});
        open(demo);
        QVERIFY(waitForRows(2));
        auto* flow = window->findChild<RemotePinFlow*>();
        flow->setPace(10ms, RemotePinFlow::mostTicks);
        flow->start({.remoteServiceNickname = u"hanging"_s},
                    u"bafkreihdwdcefgh4dqkjv67uzcmw7ojee6xedzdetojuzjevtenxquvyku"_s, {});
        QTRY_COMPARE(demo.openNow("/pin/remote/ls"), 1);
        QTest::qWait(100);
        QCOMPARE(demo.headCount("/pin/remote/ls"), 1);
        window.reset();
        QTRY_COMPARE(demo.openNow(), 0);
    }

    void endings_data()
    {
        const auto row = addColumns<NodeAnswer, QString, QString, QString>("answer", "notice", "text", "informative");
        const QByteArray a = R"({"Name":"a","Hash":"Qa","Size":"1"})"
                             "\n";
        const QByteArray root = R"({"Name":"","Hash":"Qr","Size":"9"})"
                                "\n";
        const QString well = u"Add operation completed successfully.\n\n"_s;
        row("well", NodeAnswer::json(a + root), u"Added to IPFS successfully. Root CID: Qr"_s,
            well + u"Root CID:\nQr"_s, QString());
        row("cut short", NodeAnswer::json({}), u"⚠  Added 0 object(s) to IPFS."_s, well + u"Returned objects: 0"_s,
            u"The node reported 0 of the 1 files that were sent.\nThe node did not report the directory "
            "around it all: the add may have been cut short."_s);
        row("refused", NodeAnswer::text(403, "403 - Forbidden\n"),
            u"⚠  Add failed: Error transferring %1 - server replied: Forbidden"_s,
            u"Add failed: Error transferring %1 - server replied: Forbidden"_s, QString());
        row("dropped", NodeAnswer::dropAt(a, 3), u"⚠  Add failed: Connection closed"_s,
            u"Add failed: Connection closed"_s, QString());
    }
    void endings()
    {
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QString, notice);
        QFETCH(const QString, text);
        QFETCH(const QString, informative);
        node->answer(path, answer);
        open();
        QTRY_VERIFY(refreshButton()->isEnabled() && node->count("/pin/ls") == 2);
        add({newFile(u"a"_s, "a")}, u"Ok"_s);
        QTRY_VERIFY(result);
        const QString address = u"http://127.0.0.1:%1/api/v0/add?"_s.arg(node->port())
            + QString::fromLatin1(node->requests(path).constFirst().rawQuery);
        const auto filled = [&](QString expected) { return expected.replace(u"%1"_s, address); };
        QCOMPARE(boxText, filled(text));
        QCOMPARE(boxInformative, informative);
        QTRY_COMPARE(label("notification"_L1)->text(), filled(notice));
        QVERIFY(addButton()->isEnabled());
        QVERIFY(!progress()->isVisible());
        const int lists = text.startsWith("Add failed"_L1) ? 2 : 4; // a composite load each
        QTRY_COMPARE(node->count("/pin/ls"), lists);
    }

    void oneAddAtATime()
    {
        node->answer(path, NodeAnswer::hold());
        open();
        add({newFile(u"a"_s, "a")}, u"Ok"_s);
        QTRY_COMPARE(node->heldCount(path), 1);
        QVERIFY(progress()->isVisible() && !addButton()->isEnabled());
        QTest::keyClick(progress(), Qt::Key_Escape);
        QVERIFY(!progress()->isVisible());
        QMetaObject::invokeMethod(window.get(), "onAddToIpfsClicked");
        QCOMPARE(status(), u"Add is already in progress…"_s);
        for (int i = 1; i < 4; ++i) { // none of it brings the window back
            QMetaObject::invokeMethod(window.get(), "onAddProgress", Q_ARG(QString, u"a"_s), Q_ARG(int, i),
                                      Q_ARG(int, 2));
            QCOMPARE(status(), u"Adding to IPFS: %1/2 — a"_s.arg(i));
        }
        QVERIFY(!progress()->isVisible());
        const ModalAnswer<QMessageBox> quit([](QMessageBox& box) {
            QCOMPARE(box.text(), u"An add is still running. Quit anyway?"_s);
            QVERIFY(box.defaultButton() == box.button(QMessageBox::No));
            box.button(QMessageBox::No)->click();
        });
        window->close();
        QVERIFY(quit.wasGiven() && window->isVisible());
        node->release(path, NodeAnswer::json(R"({"Name":"","Hash":"Qr"})"));
        QTRY_VERIFY(result);
        QVERIFY(window->statusLog().filter(u"  Added to IPFS: Qr"_s).size() == 1);
        QVERIFY(addButton()->isEnabled());
    }

    void progressIsShown()
    {
        node->answer(path, NodeAnswer::hold());
        open();
        add({newFile(u"a"_s, "a")}, u"Ok"_s);
        QTRY_COMPARE(node->heldCount(path), 1);
        const auto step = [this](const QString& name, int done, int total) {
            QMetaObject::invokeMethod(window.get(), "onAddProgress", Q_ARG(QString, name), Q_ARG(int, done),
                                      Q_ARG(int, total));
            return u"%1 %2/%3"_s.arg(progress()->labelText(), QString::number(progress()->value()),
                                     QString::number(progress()->maximum()));
        };
        QCOMPARE(step(u"<b>a"_s, 1, 2), u"Uploading 1 of 2\n<b>a 1/2"_s);
        QCOMPARE(step(u" "_s, 3, 2), u"Uploading 2 of 2\n(wrapped root) 2/2"_s);
        QCOMPARE(status(), u"Adding to IPFS: 3/2 — (wrapped root)"_s);
        emit client()->addBytesSent(1536, 3072);
        QCOMPARE(progress()->labelText(), u"Uploading 2 of 2\n(wrapped root)\n1.5 KB of 3.0 KB sent"_s);
        node->release(path, NodeAnswer::error("no"));
        QTRY_VERIFY(result);
        QVERIFY(!progress()->isVisible());
        QTRY_COMPARE(label("nodeWordsLabel"_L1)->text(), u"The node says: no"_s);
    }

    void exportedCids()
    {
        QByteArray answer;
        for (int i = 0; i < 10'000; ++i)
            answer += "{\"Name\":\"f\",\"Hash\":\"Q" + QByteArray::number(i) + "\"}\n";
        node->answer(path, NodeAnswer::json(answer + answer));
        open();
        for (const bool vanishes : {false, true}) {
            const QString file = folder->path() + (vanishes ? u"/gone/cids.txt"_s : u"/list/cids.txt"_s);
            QDir().mkpath(QFileInfo(file).path());
            const ModalAnswer<QFileDialog> chosen([&](QFileDialog& dialog) {
                dialog.selectFile(file);
                static_cast<QDialog&>(dialog).accept();
                if (vanishes)
                    QDir(QFileInfo(file).path()).removeRecursively();
            });
            add({newFile(u"a"_s, "a")}, u"Export CIDs"_s);
            QTRY_VERIFY_WITH_TIMEOUT(chosen.wasGiven(), 20'000);
            if (vanishes) {
                QTRY_COMPARE(label("notification"_L1)->text(), u"⚠  Failed to write file: No such file or directory"_s);
                break;
            }
            const QString exported = u"Exported 10000 CID(s) to %1"_s.arg(file); // a refresh follows the add
            QTRY_COMPARE(window->statusLog().filter(exported).size(), 1);
            QFile list(file);
            QVERIFY(list.open(QIODevice::ReadOnly));
            const QByteArray text = list.readAll();
            QCOMPARE(text.count('\n'), 10'000);
            QVERIFY(text.startsWith("Q0\nQ1\n") && text.endsWith("Q9999\n"));
        }
    }

    void droppedOnTheWindow()
    {
        open();
        const QString file = newFile(u"a"_s, "a");
        QStringList chosen;
        const ModalAnswer<AddToIpfsDialog> looked([&](AddToIpfsDialog& dialog) {
            for (const LocalPathSelection& selection : dialog.selections())
                chosen.append(selection.path);
            dialog.reject();
        });
        QVERIFY(dropFiles(window.get(), {QUrl::fromLocalFile(file)}));
        QTRY_VERIFY(looked.wasGiven());
        QCOMPARE(chosen, QStringList(file));
        QCOMPARE(node->count(path), 0);
    }

private:
    QString newFile(const QString& name, const QByteArray& content) const
    {
        return writeTestFile(folder->path(), name, content);
    }

    /// Goes through the dialog, and through the box at the end by the button `choice`.
    void add(
        const QStringList& paths, const QString& choice = u"Copy CIDs"_s,
        const std::function<void(AddToIpfsDialog&)>& choose = [](AddToIpfsDialog&) {})
    {
        result = false;
        boxAnswer = std::make_unique<ModalAnswer<ActionBox>>([this, choice](ActionBox& box) {
            boxText = box.text();
            boxInformative = box.informativeText();
            result = true;
            for (QAbstractButton* button : box.buttons()) {
                if (button->text().remove(u'&') == choice.toUpper() || button->text().remove(u'&') == choice)
                    button->click();
            }
        });
        const ModalAnswer<AddToIpfsDialog> dialogAnswer([&](AddToIpfsDialog& dialog) {
            dialog.addPaths(paths);
            choose(dialog);
            dialog.accept();
        });
        addButton()->click();
        QVERIFY(dialogAnswer.wasGiven());
    }
    QPushButton* addButton() const { return window->findChild<QPushButton*>(u"actionBtn"_s); }
    QProgressDialog* progress() const { return window->findChild<QProgressDialog*>(); }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<ModalAnswer<ActionBox>> boxAnswer;
    bool result = false;
    QString boxText;
    QString boxInformative;
};

NORVO_TEST_MAIN(QApplication, tst_AddFlow)

#include "tst_addflow.moc"
