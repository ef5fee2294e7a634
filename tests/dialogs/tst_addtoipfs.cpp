// SPDX-License-Identifier: MIT
#include "AddSelection.h"
#include "AddToIpfsDialog.h"
#include "DialogTest.h"
#include "FileDrop.h"
#include "FileTypeProvider.h"
#include "TestFiles.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QTreeView>
#include <QTreeWidget>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr auto nicknameKey = "addToIpfs/lastRemoteServiceNickname"_L1;
constexpr auto lastFolderKey = "addToIpfs/lastFolder"_L1;
const QByteArray servicesPath = "/pin/remote/service/ls";

} // namespace

class tst_AddToIpfs : public DialogTest<AddToIpfsDialog>
{
    Q_OBJECT

private slots:
    void init()
    {
        startNode();
        node->answer(servicesPath, NodeAnswer::hold());
        home = std::make_unique<QTemporaryDir>();
        qputenv("HOME", home->path().toLocal8Bit());
        makeFiles(u"a.txt a/b/c ab B 1/a.txt 1/a.txt-2 2/a.txt 3/a.txt 3/a.txt-2"_s.split(u' ')
                  + QStringList(u" ab "_s));
    }
    void cleanup() { dialog.reset(); }

    void pathsAreNormalized_data()
    {
        const auto row = addColumns<QString, QString>("chosen", "kept");
        row("what is in a folder; a.txt sorts between", u"a/b/c a.txt a a/b"_s, u"a a.txt"_s);
        row("the folder comes first", u"a a/b"_s, u"a"_s);
        row("a sibling's name begins like it", u"ab a"_s, u"a ab"_s);
        row("one path in several forms", u"a/ ./a a//b/.. a"_s, u"a"_s);
        row("upper case first", u"a B"_s, u"B a"_s);
        row("gone", u"a/gone gone"_s, QString());
    }
    void pathsAreNormalized()
    {
        QFETCH(const QString, chosen);
        QFETCH(const QString, kept);
        QCOMPARE(normalizedPaths(inHome(chosen)), inHome(kept));
        QCOMPARE(normalizedPaths({home->path(), u"/"_s, QString()}), QStringList {u"/"_s});
    }

    void namesAreUnique_data()
    {
        const auto row = addColumns<QString, QString>("paths", "names");
        row("counted", u"1/a.txt 2/a.txt gone 3/a.txt ab"_s, u"a.txt a.txt-2 a.txt-3 ab"_s);
        row("one is really called so, and comes before", u"1/a.txt 1/a.txt-2 2/a.txt 3/a.txt"_s,
            u"a.txt a.txt-2 a.txt-3 a.txt-4"_s);
        row("or after", u"1/a.txt 2/a.txt 3/a.txt-2 1/a.txt-2"_s, u"a.txt a.txt-2 a.txt-2-2 a.txt-2-3"_s);
    }
    void namesAreUnique()
    {
        QFETCH(const QString, paths);
        QStringList names;
        for (const LocalPathSelection& selection : uploadSelections(inHome(paths)))
            names.append(selection.name);
        QTEST(names.join(u' '), "names");
        const QList<LocalPathSelection> odd {{u"/"_s, u"item"_s, true}, {home->filePath(u" ab "_s), u"ab"_s, false}};
        QCOMPARE(uploadSelections({u"/"_s, home->filePath(u" ab "_s)}), odd);
    }

    void typesComeFromSuffixes()
    {
        makeFiles({u"none"_s}, "%PDF-1.4");
        makeFiles({u"x.pdf"_s, u"x.of-no-type"_s}, "text");
        const FileTypeProvider provider;
        QStringList types;
        for (const QString& path : inHome(u"none x.pdf x.of-no-type a"_s))
            types.append(provider.type(QFileInfo(path)));
        QCOMPARE(types, QStringList({u"File"_s, u"PDF document"_s, u"File"_s, u"Folder"_s}));
    }

    /// Each step starts from the boxes that the one before has left.
    void destinationsSetTheBoxes()
    {
        open();
        remoteService()->setEditText(u" svc "_s);
        findEdit()->setText(u" label "_s);
        AddOptions expected {.remoteServiceNickname = u"svc"_s, .remotePinLabel = u"label"_s};
        QCOMPARE(dialog->options(), expected);
        const auto verify = [&](const QString& destination, bool remote, bool pin, bool unpin) {
            choose(destination);
            expected.pinDestination = destination;
            expected.pin = pin;
            expected.unpinLocalAfterRemote = unpin;
            QCOMPARE(dialog->options(), expected);
            QCOMPARE(control("Pin"_L1)->isEnabled(), !remote);
            for (const QWidget* field : {static_cast<QWidget*>(remoteService()), static_cast<QWidget*>(findEdit()),
                                         static_cast<QWidget*>(control("Unpin"_L1))})
                QCOMPARE(field->isEnabled(), remote);
        };
        control("Pin"_L1)->setChecked(false);
        verify(u"local"_s, false, false, false);
        verify(u"both"_s, true, true, false);
        verify(u"local"_s, false, true, false);
        verify(u"remote"_s, true, true, true);
        verify(u"both"_s, true, true, true);
        control("Wrap"_L1)->setChecked(false);
        control("Only"_L1)->setChecked(true);
        auto* version = dialog->findChildren<QComboBox*>().constFirst();
        version->setCurrentIndex(version->findData(0));
        expected.wrapWithDirectory = false;
        expected.onlyHash = true;
        expected.cidVersion = 0;
        verify(u"local"_s, false, true, true);
    }

    void refusals()
    {
        open();
        QCOMPARE(refusal(), u"Select at least one file or folder first."_s);
        dialog->addPaths(inHome(u"a"_s));
        choose(u"both"_s);
        control("Only"_L1)->setChecked(true);
        remoteService()->setEditText(u"  "_s);
        QCOMPARE(refusal(), u"Remote service is required for remote pinning."_s);
        remoteService()->setEditText(u" svc "_s);
        QCOMPARE(refusal(),
                 u"Remote pinning requires data blocks to be available. Disable 'Only hash' for remote pinning."_s);
        QVERIFY(!openAppSettings().contains(nicknameKey));
        choose(u"local"_s); // keeps the nickname all the same
        QTest::keyClick(dialog.get(), Qt::Key_Return);
        QCOMPARE(dialog->result(), QDialog::Accepted);
        QCOMPARE(openAppSettings().value(nicknameKey).toString(), u"svc"_s);
        QVERIFY(!openAppSettings().contains(lastFolderKey)); // nobody has been in the browser
    }

    void services()
    {
        struct Case
        {
            QString stored, typed;
            QByteArray body;
            QStringList items;
            QString nickname, status;
        };
        const QByteArray two = R"({"RemoteServices":[{"Service":" b "},{"Service":"a","ApiEndpoint":"x"}]})";
        const QByteArray none = R"({"RemoteServices":[]})";
        const QStringList items {u"b"_s, u"a"_s};
        const QString loading = u"Loading configured remote services..."_s;
        const QString loaded = u"Loaded 2 configured service(s)."_s;
        const QString empty = u"No configured services found. Configure one in File -> Remote Services."_s;
        const QList<Case> cases {{{}, {}, two, items, u"b"_s, loaded},
                                 {{}, u"c "_s, two, items, u"c"_s, loaded},
                                 {u" a "_s, u"c"_s, two, items, u"a"_s, loaded},
                                 {u"no longer known"_s, {}, two, items, u"no longer known"_s, loaded},
                                 {{}, {}, none, {}, {}, empty},
                                 {u"a"_s, u"c"_s, "<b>", {}, u"c"_s, u"Could not load services: "_s}};
        for (const Case& is : cases) {
            openAppSettings().setValue(nicknameKey, is.stored);
            open();
            QCOMPARE(statusText(), loading);
            remoteService()->setEditText(is.typed);
            QTRY_COMPARE(node->heldCount(servicesPath), 1);
            node->release(servicesPath, NodeAnswer::json(is.body));
            QTRY_VERIFY(statusText() != loading);
            QVERIFY2(statusText().startsWith(is.status), qPrintable(statusText()));
            QStringList listed;
            for (int item = 0; item < remoteService()->count(); ++item)
                listed.append(remoteService()->itemText(item));
            QCOMPARE(listed, is.items);
            QCOMPARE(dialog->options().remoteServiceNickname, is.nickname);
        }
        make(nullptr, true);
        QCOMPARE(statusText(), u"Remote service list unavailable."_s);
    }

    void listFollowsWhatIsChosen()
    {
        open();
        dialog->addPaths(inHome(u"a/b/c ab a.txt"_s));
        dialog->addPaths(inHome(u"a"_s));
        QCOMPARE(rows(), inHome(u"a a.txt ab"_s));
        QCOMPARE(list()->topLevelItem(0)->text(1) + list()->topLevelItem(1)->text(1), u"DirectoryFile"_s);
        list()->setFocus();
        list()->setCurrentItem(list()->topLevelItem(1));
        QTest::keyClick(list(), Qt::Key_Delete);
        QCOMPARE(rows(), inHome(u"a ab"_s));
        QTest::keyClick(list(), Qt::Key_Delete); // the one that has taken its place
        QTest::keyClick(list(), Qt::Key_Delete);
        QTest::keyClick(list(), Qt::Key_Delete);
        QCOMPARE(rows(), QStringList());
        dialog->addPaths(inHome(u"ab a.txt"_s));
        QVERIFY(QFile::remove(home->filePath(u"ab"_s)));
        QCOMPARE(dialog->selections(), QList<LocalPathSelection>({{home->filePath(u"a.txt"_s), u"a.txt"_s, false}}));
        control("Clear"_L1)->click();
        QVERIFY(dialog->selections().isEmpty());
    }

    void filesAndFoldersArePicked()
    {
        open();
        pick("Add files"_L1, inHome(u"ab a.txt"_s));
        QCOMPARE(rows(), inHome(u"a.txt ab"_s));
        pick("Add folder"_L1, inHome(u"a"_s));
        pick("Add folder"_L1, {});
        QCOMPARE(rows(), inHome(u"a a.txt ab"_s));
    }

    void returnAddsFromTheBrowser()
    {
        open();
        browser()->setFocus();
        const ModalAnswer<QMessageBox> refused([](QMessageBox& box) { box.accept(); });
        QTest::keyClick(browser(), Qt::Key_Return); // nothing is selected
        select(u"a"_s);
        QTest::keyClick(browser(), Qt::Key_Enter, Qt::KeypadModifier);
        QCOMPARE(rows(), inHome(u"a"_s));
        select(u"ab"_s);
        control("Add selected"_L1)->click();
        QCOMPARE(rows(), inHome(u"a ab"_s));
        QVERIFY(dialog->isVisible() && !refused.wasGiven());
    }

    void theTabKeyGoesAsItIsRead()
    {
        open();
        choose(u"both"_s);
        control("Wrap"_L1)->setFocus();
        QStringList order;
        for (int i = 0; i < 9; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            order.append(QString::fromLatin1(QApplication::focusWidget()->metaObject()->className()));
        }
        QCOMPARE(order.join(u' '),
                 u"QCheckBox QComboBox QComboBox QComboBox QLineEdit QCheckBox QPushButton QPushButton QTreeView"_s);
        QStringList keys;
        for (const QLabel* label : dialog->findChildren<QLabel*>()) {
            if (label->buddy())
                keys.append(QKeySequence::mnemonic(label->text()).toString());
        }
        for (const QAbstractButton* any : dialog->findChildren<QAbstractButton*>())
            keys.append(QKeySequence::mnemonic(any->text()).toString());
        keys.removeAll(QString());
        QVERIFY(keys.size() >= 15);
        QCOMPARE(keys.removeDuplicates(), 0);
    }

    /// On a field that takes text as well as elsewhere.
    void filesAreDropped()
    {
        open();
        choose(u"both"_s);
        QVERIFY(!dropFiles(list()->viewport(), {QUrl(u"https://example.org/a"_s), QUrl(u"file://elsewhere/tmp"_s)}));
        for (QWidget* target : {browser()->viewport(), list()->viewport(), static_cast<QWidget*>(findEdit()),
                                static_cast<QWidget*>(remoteService()->lineEdit())}) {
            const QUrl here(u"file://localhost"_s + home->filePath(u"ab"_s));
            QVERIFY(dropFiles(target,
                              {QUrl(u"https://example.org/a"_s), QUrl::fromLocalFile(home->filePath(u"a"_s) + u'/'),
                               here, QUrl(u"file://elsewhere/tmp"_s)}));
            QCOMPARE(rows(), inHome(u"a ab"_s));
            QCOMPARE(dialog->options().remotePinLabel + dialog->options().remoteServiceNickname, QString());
            control("Clear"_L1)->click();
        }
    }

    void theLastFolderIsOpenedAgain_data()
    {
        addColumns<QString, QString>("row", "folder");
        QTest::newRow("a file's folder") << u"a/b/c"_s << u"a/b"_s;
        QTest::newRow("a folder itself") << u"a/b"_s << u"a/b"_s;
        QTest::newRow("the home folder") << u"ab"_s << QString();
    }
    void theLastFolderIsOpenedAgain()
    {
        QFETCH(const QString, row);
        QFETCH(const QString, folder);
        open();
        select(row);
        dialog->addPaths(inHome(u"a.txt"_s));
        control("Add to IPFS"_L1)->click();
        QCOMPARE(openAppSettings().value(lastFolderKey).toString(), QDir::cleanPath(home->filePath(folder)));
        open();
        QCOMPARE(model()->filePath(browser()->rootIndex()), home->path());
        QTRY_COMPARE(model()->rowCount(browser()->rootIndex()), 8);
        if (folder.isEmpty())
            return;
        QCOMPARE(model()->filePath(browser()->currentIndex()), home->filePath(folder));
        QVERIFY(browser()->isExpanded(browser()->currentIndex()) && browser()->isExpanded(indexOf(u"a"_s)));
        QVERIFY(!browser()->selectionModel()->hasSelection());
        dialog->addPaths(inHome(u"a.txt"_s)); // accepted as it is, it stays the last one
        control("Add to IPFS"_L1)->click();
        QCOMPARE(openAppSettings().value(lastFolderKey).toString(), home->filePath(folder));
    }

    void theLastFolderIsScrolledTo()
    {
        constexpr int above = 300;
        for (int i = 0; i < above; ++i)
            QVERIFY(QDir().mkdir(home->filePath(u"00%1"_s.arg(i))));
        openAppSettings().setValue(lastFolderKey, home->filePath(u"a/b"_s));
        open();
        QTRY_VERIFY(indexOf(u"a"_s).row() >= above);
        QTRY_VERIFY(browser()->viewport()->rect().contains(browser()->visualRect(indexOf(u"a/b"_s)).center()));
    }

private:
    void makeFiles(const QStringList& names, const QByteArray& content = {}) const
    {
        for (const QString& name : names)
            writeTestFile(home->path(), name, content);
    }
    QStringList inHome(const QString& names) const
    {
        QStringList paths;
        for (const QString& name : names.split(u' ', Qt::SkipEmptyParts))
            paths.append(home->filePath(name));
        return paths;
    }
    void open()
    {
        make(client.get(), false);
        showActive();
    }
    QAbstractButton* control(QLatin1StringView start) const
    {
        for (auto* any : dialog->findChildren<QAbstractButton*>()) {
            if (any->text().remove(u'&').startsWith(start))
                return any;
        }
        return nullptr;
    }
    QComboBox* remoteService() const
    {
        const auto combos = dialog->findChildren<QComboBox*>();
        return *std::ranges::find_if(combos, &QComboBox::isEditable);
    }
    QLineEdit* findEdit() const { return dialog->findChild<QLineEdit*>({}, Qt::FindDirectChildrenOnly); }
    void choose(const QString& destination) const
    {
        for (auto* combo : dialog->findChildren<QComboBox*>()) {
            if (const int item = combo->findData(destination); item >= 0)
                combo->setCurrentIndex(item);
        }
    }
    QString statusText() const { return dialog->findChild<QLabel*>(u"remoteServicesStatusLabel"_s)->text(); }
    QTreeWidget* list() const { return dialog->findChild<QTreeWidget*>(); }
    QTreeView* browser() const { return dialog->findChild<QTreeView*>(u"browserTree"_s); }
    QFileSystemModel* model() const { return dialog->findChild<QFileSystemModel*>(); }
    QModelIndex indexOf(const QString& name) const { return model()->index(home->filePath(name)); }
    void select(const QString& name) const
    {
        browser()->selectionModel()->setCurrentIndex(indexOf(name),
                                                     QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    QStringList rows() const
    {
        QStringList paths;
        for (int row = 0; row < list()->topLevelItemCount(); ++row)
            paths.append(list()->topLevelItem(row)->text(0));
        return paths;
    }
    /// What "Add to IPFS" says; the dialog has to stay open.
    QString refusal() const
    {
        QString text;
        const ModalAnswer<QMessageBox> answer([&](QMessageBox& box) {
            text = box.windowTitle() == "Add to IPFS"_L1 ? box.text() : u"another title"_s;
            box.accept();
        });
        control("Add to IPFS"_L1)->click();
        return dialog->isVisible() ? text : u"closed"_s;
    }
    void pick(QLatin1StringView opener, const QStringList& paths) const
    {
        const ModalAnswer<QFileDialog> answer([&](QFileDialog& picker) {
            auto* name = picker.findChild<QLineEdit*>(u"fileNameEdit"_s);
            name->setText(paths.size() == 1 ? paths.constFirst() : u"\"%1\""_s.arg(paths.join(u"\" \""_s)));
            paths.isEmpty() ? picker.reject() : static_cast<QDialog&>(picker).accept();
        });
        control(opener)->click();
        QVERIFY(answer.wasGiven());
    }

    std::unique_ptr<QTemporaryDir> home;
};

NORVO_TEST_MAIN(QApplication, tst_AddToIpfs)
#include "tst_addtoipfs.moc"
