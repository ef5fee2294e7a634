// SPDX-License-Identifier: MIT
#include "ContentsItem.h"
#include "DialogTest.h"
#include "PinContentsDialog.h"

#include <QDirIterator>
#include <QFileDialog>
#include <QProgressBar>
#include <QTemporaryDir>
#include <QTreeWidget>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString root = u"root"_s;

/// A listing of "name=cid/" for a folder, "name=cid" or "name=cid=size=name of the listed object" for a file.
NodeAnswer listing(const QString& text)
{
    QStringList links;
    QString objectName;
    for (const QString& entry : text.split(u',', Qt::SkipEmptyParts)) {
        const QStringList parts = entry.split(u'=');
        const bool folder = parts.at(1).endsWith(u'/');
        links.append(uR"({"Name":"%1","Hash":"%2","Size":%3,"Type":%4})"_s.arg(
            parts.at(0), folder ? parts.at(1).chopped(1) : parts.at(1), parts.value(2, folder ? u"0"_s : u"1"_s),
            folder ? u"1"_s : u"2"_s));
        objectName += parts.value(3);
    }
    const QString body = uR"({"Objects":[{"Name":"%1","Links":[%2]}]})"_s;
    return NodeAnswer::json(body.arg(objectName, links.join(u',')).toUtf8());
}

} // namespace

class tst_PinContents : public DialogTest<PinContentsDialog>
{
    Q_OBJECT

private slots:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void init()
    {
        startNode();
        folder = std::make_unique<QTemporaryDir>();
        setKind("directory");
        node->route("/cat", cat);
        haveListings(u"root>docs=docs/,a.txt=a;docs>b.txt=b,deep=deep/;deep>c.txt=c=2048"_s);
    }
    void cleanup() { close(); }

    void trees_data()
    {
        addColumns<QString, QByteArray, QString, QString, QString>("listings", "kind", "rootName", "lines", "outcome");
        const auto row = [](const char* name, const QString& listings, const QByteArray& kind, const QString& rootName,
                            const QString& lines, int files, int folders) {
            const QString outcome = u"%1 file(s), %2 folder(s)"_s.arg(files).arg(folders);
            QTest::newRow(name) << listings << kind << rootName << lines << outcome;
        };
        const QByteArray unasked;
        row("chunks without names are one file", u"root>=k=1500,=k=-900, =k=1500"_s, "file", u" film "_s,
            u"film|2.9 KB|root"_s, 1, 0);
        row("the object's name comes first", u"root>=k=10= talk.ogg "_s, "file", u"film"_s, u"talk.ogg|10|root"_s, 1,
            0);
        row("numbered files in a folder", u"root>1=F, ٣ =G"_s, "directory", {}, u"1|1|F ٣|1|G"_s, 2, 0);
        row("a numbered folder is no chunk", u"root>1=F,2=D/;D>"_s, unasked, {}, u"1|1|F 2||D"_s, 1, 1);
        row("small file", u"root>"_s, "file", u" "_s, u"root-file-root||root"_s, 1, 0);
        row("nothing, and no file", u"root>"_s, "symlink", u"x"_s, {}, 0, 0);
        row("one folder at two places", u"root>x=D/,y=D/;D>1=F=1024"_s, unasked, {},
            u"x||D x/1|1.0 KB|F y||D y/1|1.0 KB|F"_s, 2, 2);
        row("names that lead elsewhere", u"root>..=D/,<b>/a:b. =F,  =bafyabcdefghijk,lost=/;D>../../x=G"_s, unasked, {},
            u"file||D file/.._.._x|1|G _b__a_b|1|F bafyabcdefgh|1|bafyabcdefghijk lost||"_s, 3, 2);
        row("a folder that can't be listed stays empty", u"root>d=gone/,f=F"_s, unasked, {}, u"d||gone f|1|F"_s, 1, 1);
        row("a root that can't be listed", {}, "nonsense", {}, {}, 0, 0);
    }
    void trees()
    {
        QFETCH(const QString, listings);
        QFETCH(const QByteArray, kind);
        QFETCH(const QString, rootName);
        haveListings(listings);
        setKind(kind);
        open(rootName);
        QTRY_VERIFY(saveAll()->isEnabled() && node->openNow() == 0);
        QTEST(status()->text(), "outcome");
        QTEST(lines().join(u' '), "lines");
        QCOMPARE(node->count("/files/stat"), kind.isEmpty() ? 0 : 1);
        QVERIFY(tree()->topLevelItem(0)->isExpanded());
    }

    void anErrorEndsTheLoadingEarly()
    {
        haveListings(u"root>docs=held/,a.txt=a"_s);
        open();
        emit client->kindReceived(root, u"File"_s); // nobody here has asked
        QTRY_COMPARE(node->heldCount("/ls"), 1);
        emit client->lsReceived(u"other"_s, {{.name = u"x"_s, .hash = u"x"_s}});
        QVERIFY(!saveAll()->isEnabled());
        emit client->errorOccurred(u"<b>busy</b>"_s); // whoever's it is
        QCOMPARE(status()->text(), u"1 file(s), 1 folder(s)"_s);
        node->answer("/cat", NodeAnswer::hold());
        save(saveAll());
        QTRY_COMPARE(node->heldCount("/cat"), 1);
        node->release("/ls", listing(u"late=l"_s));
        QTRY_COMPARE(status()->text(), u"2 file(s), 1 folder(s)"_s);
        QVERIFY(!saveAll()->isEnabled());
    }

    void fewListingsAreOpenAtATime()
    {
        QStringList folders;
        for (int i = 0; i < 40; ++i)
            folders.append(u"d=held/"_s);
        haveListings(u"root>"_s + folders.join(u','));
        open();
        for (int i = 0; i < 40; ++i) {
            QTRY_COMPARE(node->heldCount("/ls"), std::min(16, 40 - i));
            node->release("/ls", listing(u"f=F"_s));
        }
        QTRY_COMPARE(status()->text(), u"40 file(s), 40 folder(s)"_s);
        QCOMPARE(node->mostOpen("/ls"), 16);
    }

    void tooManyEntriesStopTheLoading()
    {
        haveListings(u"root>d=held/,big=big/,late=late/"_s);
        served[u"big"_s] = u"f=F,"_s.repeated(250'000);
        served[u"late"_s] = u"f=F"_s;
        open();
        QTRY_VERIFY_WITH_TIMEOUT(saveAll()->isEnabled(), 60'000);
        const QString all = u"%1 file(s), 3 folder(s) (stopped; more is not listed)"_s;
        QVERIFY(status()->text() == all.arg(249'997)
                || status()->text() == all.arg(249'996)); // with the late folder, or before it
        QTRY_COMPARE(node->openNow(), 0);
    }

    void aDeepTreeIsDeletedWithoutRecursion()
    {
        auto* top = new ContentsItem(u"."_s, {.isDirectory = true});
        QTreeWidgetItem* last = top;
        for (int level = 0; level < 250'000; ++level) {
            auto* item = new ContentsItem(u"d"_s, {.isDirectory = true});
            last->addChild(item);
            last = item;
        }
        QCOMPARE(last->data(0, ContentsItem::PathRole).toString().size(), 2 * 250'000 - 1);
        deleteWithDescendants(top);
    }

    void savesAll()
    {
        served[root] += u",../up=u,again.txt=a,nothing="_s;
        load();
        saveAll()->click();
        load(); // the first one closes while its folder is chosen
        saveAll()->click();
        dialog->findChild<QFileDialog*>()->reject();
        QTRY_VERIFY(!dialog->findChild<QFileDialog*>());
        QCOMPARE(node->count("/cat"), 0);
        const auto emitForeign = [this](const QString& cid) {
            emit client->catFailed(cid, u"foreign"_s);
            emit client->catReceived(cid, "foreign");
            emit client->catReceived(u"elsewhere"_s, "foreign");
        };
        // Connected after the dialog, so it runs while that writes the file.
        connect(client.get(), &IpfsClient::catReceived, this, emitForeign, Qt::SingleShotConnection);
        save(saveAll());
        QVERIFY(!saveSelected()->isEnabled());
        QTRY_COMPARE(status()->text(), savedText(6));
        QCOMPARE(saved(), QStringList({u".._up=u"_s, u"a.txt=a"_s, u"again.txt=a"_s}) + savedDocs);
        QCOMPARE(node->mostOpen("/cat"), 1);
        verifyNothingRuns();
        QCOMPARE(failures(), u"1 of 6 file(s) were not saved.\nnothing: it has no CID"_s);
        emit client->errorOccurred(u"of something else"_s);
        QCOMPARE(status()->text(), savedText(6));
    }

    void savesWhatLiesBelowTheSelection()
    {
        load();
        QTreeWidgetItem* docs = tree()->topLevelItem(0)->child(0);
        docs->setSelected(true);
        docs->child(0)->setSelected(true);
        save(saveSelected());
        QTRY_COMPARE(status()->text(), savedText(3)); // one is selected in two ways
        QCOMPARE(saved(), savedDocs);
        QCOMPARE(node->count("/cat"), 3);
        QCOMPARE(failures(), QString());
    }

    void nothingToSave()
    {
        haveListings(u"root>d=D/;D>"_s);
        load();
        QStringList texts;
        for (const bool selected : {false, true}) {
            tree()->topLevelItem(0)->child(0)->setSelected(selected);
            for (QPushButton* button : {saveAll(), saveSelected()}) {
                button->click();
                const std::unique_ptr<QMessageBox> box(dialog->findChild<QMessageBox*>());
                texts.append(box ? box->text() : u"no box"_s);
            }
        }
        const QString none = u"No files in this pin."_s;
        const QString choose = u"Select one or more files in the tree (directories are skipped)."_s;
        QCOMPARE(texts, QStringList({none, choose, none, choose}));
        QVERIFY(!dialog->findChild<QFileDialog*>());
    }

    void aSingleFileWithoutASuffixGetsThatOfItsBytes()
    {
        haveListings(u"root>=chunk"_s);
        setKind("file");
        node->answer("/cat", NodeAnswer::text(200, "%PDF-1.7"));
        for (const QString& rootName : {u"paper"_s, u"paper.x"_s}) {
            load(rootName);
            save(saveAll());
            QTRY_COMPARE(status()->text(), savedText(1));
        }
        QCOMPARE(saved(), QStringList({u"paper.pdf=%PDF-1.7"_s, u"paper.x=%PDF-1.7"_s}));
        QCOMPARE(node->requests("/cat").constFirst().value(u"arg"_s), root);
    }

    void aFailedFileStopsNoOther_data()
    {
        const auto row = addColumns<QString, NodeAnswer, QString>("name", "answer", "reason");
        NodeAnswer tooFew = NodeAnswer::text(200, "half");
        tooFew.headers.emplaceBack("X-Content-Length", "8");
        row("refused", u"bad"_s, NodeAnswer::error("no"), u"Internal Server Error"_s);
        row("interrupted", u"bad"_s, NodeAnswer::dropAt("half", 2), u"Connection closed"_s);
        row("short", u"bad"_s, tooFew, u"4 of 8 bytes received"_s);
        row("a folder of that name", u"taken"_s, NodeAnswer::text(200, "x"), u"directory"_s);
        row("name too long", QString(300, u'n'), NodeAnswer::text(200, "x"), u"write"_s);
    }
    void aFailedFileStopsNoOther()
    {
        QFETCH(const QString, name);
        QFETCH(const NodeAnswer, answer);
        QVERIFY(QDir(folder->path()).mkpath(u"taken"_s));
        served[root].prepend(name + u"=bad,"_s);
        node->route("/cat", [answer](const NodeRequest& request) {
            return request.value(u"arg"_s) == u"bad"_s ? answer : cat(request);
        });
        load();
        save(saveAll());
        QTRY_COMPARE(status()->text(), savedText(4));
        QCOMPARE(saved(), QStringList(u"a.txt=a"_s) + savedDocs);
        QVERIFY2(failures().startsWith(u"1 of 4 file(s) were not saved.\n"_s + name + u": "_s), qPrintable(failures()));
        QFETCH(const QString, reason);
        QVERIFY2(failures().contains(reason, Qt::CaseInsensitive), qPrintable(failures()));
    }

    void aFolderThatCannotBeMadeEndsTheSave()
    {
        QFile blocking(folder->filePath(u"docs"_s));
        QVERIFY(blocking.open(QIODevice::WriteOnly));
        load();
        save(saveAll());
        QTRY_COMPARE(status()->text(), u"Failed to create directory: "_s + folder->filePath(u"docs"_s));
        QVERIFY(isRed());
        verifyNothingRuns();
        emit client->catReceived(u"b"_s, "b"); // somebody else's
        emit client->catFailed(u"b"_s, u"no"_s);
        QVERIFY(status()->text().startsWith(u"Failed to create directory"_s));
        QVERIFY(waitForDetached(10s));
        QCOMPARE(saved(), QStringList({u"a.txt=a"_s, u"docs="_s}));
    }

    void closesAtAnyTime()
    {
        haveListings(u"root>1=a"_s);
        for (const QByteArray& held : {"/cat"_ba, "/files/stat"_ba, "/ls"_ba}) { // the last step first
            node->answer(held, NodeAnswer::hold());
            open();
            if (held == "/cat") {
                QTRY_VERIFY(saveAll()->isEnabled());
                save(saveAll());
            }
            QTRY_COMPARE(node->heldCount(held), 1);
            dialog.reset();
            if (held == "/files/stat")
                node->release(held, NodeAnswer::json(R"({"Type":"file"})"));
            QTRY_COMPARE(node->openNow(), 0);
            QCOMPARE(saved(), QStringList());
        }
    }

    void aWriteOutlivesItsDialog()
    {
        load();
        connect(client.get(), &IpfsClient::catReceived, this, [this] { dialog.reset(); }); // after the dialog's own
        save(saveAll());
        QTRY_VERIFY(!dialog);
        QVERIFY(waitForDetached(10s));
        QCoreApplication::processEvents();
        QCOMPARE(saved(), QStringList {u"a.txt=a"_s});
        QCOMPARE(node->count("/cat"), 1);
    }

    void returnInTheTreeSavesNothing()
    {
        open();
        showActive();
        QTRY_VERIFY(saveAll()->isEnabled());
        QCOMPARE(dialog->focusWidget(), tree());
        QTest::keyClick(tree(), Qt::Key_Return);
        QVERIFY(!dialog->findChild<QFileDialog*>());
    }

private:
    /// "cid>entries" with semicolons between; "held" is not answered, and every other CID can't be listed.
    void haveListings(const QString& text)
    {
        served.clear();
        for (const QString& one : text.split(u';', Qt::SkipEmptyParts))
            served.insert(one.section(u'>', 0, 0), one.section(u'>', 1));
        node->route("/ls", [this](const NodeRequest& request) {
            const QString cid = request.value(u"arg"_s);
            if (cid == u"held"_s)
                return NodeAnswer::hold();
            return served.contains(cid) ? listing(served.value(cid)) : NodeAnswer::error("no");
        });
    }
    void setKind(const QByteArray& kind)
    {
        node->answer("/files/stat", NodeAnswer::json("{\"Type\":\"" + kind + "\"}"));
    }
    static NodeAnswer cat(const NodeRequest& request)
    {
        return NodeAnswer::text(200, request.value(u"arg"_s).toUtf8());
    }

    void open(const QString& rootName = {}) { make(root, client.get(), nullptr, rootName); }
    void load(const QString& rootName = {})
    {
        open(rootName);
        QTRY_VERIFY(saveAll()->isEnabled());
    }
    void save(QPushButton* button)
    {
        button->click();
        auto* picker = dialog->findChild<QFileDialog*>();
        QVERIFY(picker);
        picker->setDirectory(folder->path());
        static_cast<QDialog*>(picker)->accept();
    }
    /// "path=content" of every file in the folder.
    QStringList saved() const
    {
        QStringList files;
        QDirIterator walk(folder->path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            QFile entry(walk.next());
            if (entry.open(QIODevice::ReadOnly))
                files.append(QDir(folder->path()).relativeFilePath(entry.fileName()) + u'='
                             + QString::fromUtf8(entry.readAll()));
        }
        files.sort();
        return files;
    }

    /// "path|size|cid" of each item below the root, in the order in which they are seen.
    QStringList lines() const
    {
        QStringList texts;
        for (QTreeWidgetItemIterator item(tree()); *item; ++item)
            texts.append((*item)->data(0, Qt::UserRole).toString() + u'|' + (*item)->text(1) + u'|' + (*item)->text(2));
        return texts.mid(1);
    }
    /// The open box's text and details, a line each; empty if there is none.
    QString failures() const
    {
        const auto* box = dialog->findChild<QMessageBox*>();
        return box ? box->text() + u'\n' + box->detailedText() : QString();
    }
    QString savedText(int count) const { return u"Saved %1 file(s) to "_s.arg(count) + folder->path(); }
    void verifyNothingRuns() const
    {
        QVERIFY(saveAll()->isEnabled() && saveSelected()->isEnabled());
        QVERIFY(dialog->findChild<QProgressBar*>()->isHidden());
    }
    QTreeWidget* tree() const { return dialog->findChild<QTreeWidget*>(); }
    QPushButton* saveAll() const { return dialog->findChildren<QPushButton*>(Qt::FindDirectChildrenOnly).at(0); }
    QPushButton* saveSelected() const { return dialog->findChildren<QPushButton*>(Qt::FindDirectChildrenOnly).at(1); }

    std::unique_ptr<QTemporaryDir> folder;
    QHash<QString, QString> served;
    const QStringList savedDocs {u"docs/b.txt=b"_s, u"docs/deep/c.txt=c"_s};
};

NORVO_TEST_MAIN(QApplication, tst_PinContents)
#include "tst_pincontents.moc"
