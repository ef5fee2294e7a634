#include "Detached.h"
#include "FakeNode.h"
#include "IpfsClient.h"
#include "ModalAnswer.h"
#include "PinContentsDialog.h"
#include "StatusLabel.h"
#include "TestMain.h"

#include <QDirIterator>
#include <QFileDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString root = u"root"_s;
constexpr int directory = 1;
constexpr int file = 2;

QByteArray listing(const QList<LsEntry>& list)
{
    QJsonArray links;
    for (const LsEntry& entry : list) {
        links.append(QJsonObject {
            {u"Name"_s, entry.name}, {u"Hash"_s, entry.hash}, {u"Size"_s, entry.size}, {u"Type"_s, entry.type}});
    }
    const QString name = list.isEmpty() ? QString() : list.constFirst().objectName;
    const QJsonObject object {{u"Name"_s, name}, {u"Links"_s, links}};
    return QJsonDocument(QJsonObject {{u"Objects"_s, QJsonArray {object}}}).toJson();
}

/// "name=cid/" for a folder, "name=cid" or "name=cid=size=name of the listed object" for a file; with commas between.
QList<LsEntry> entries(const QString& text)
{
    QList<LsEntry> list;
    for (const QString& entry : text.split(u',', Qt::SkipEmptyParts)) {
        const QStringList parts = entry.split(u'=');
        const bool folder = parts.at(1).endsWith(u'/');
        list.append({.name = parts.at(0),
                     .objectName = parts.value(3),
                     .hash = folder ? parts.at(1).chopped(1) : parts.at(1),
                     .size = parts.value(2, folder ? u"0"_s : u"1"_s).toLongLong(),
                     .type = folder ? directory : file});
    }
    return list;
}

/// "path|size|cid" of each item below `item`, deepest first within each.
QStringList linesOf(const QTreeWidgetItem* item)
{
    QStringList lines;
    for (int i = 0; i < item->childCount(); ++i) {
        const QTreeWidgetItem* child = item->child(i);
        const QString path = child->data(0, Qt::UserRole).toString();
        lines.append(QStringList {path, child->text(1), child->text(2)}.join(u'|'));
        lines += linesOf(child);
    }
    return lines;
}

} // namespace

class tst_PinContents : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        failOnWarnings();
        node = std::make_unique<FakeNode>();
        client = std::make_unique<IpfsClient>();
        client->setEndpoint(u"127.0.0.1"_s, node->port());
        folder = std::make_unique<QTemporaryDir>();
        setKind("directory");
        node->route("/cat", [](const FakeRequest& request) { return cat(request.value(u"arg"_s)); });
        haveListings(u"root>docs=docs/,a.txt=a;docs>b.txt=b,deep=deep/;deep>c.txt=c=2048"_s);
    }
    void cleanup()
    {
        dialog.reset();
        QVERIFY(waitForDetached(10s));
    }

    void trees_data()
    {
        QTest::addColumn<QString>("listings");
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<QString>("rootName");
        QTest::addColumn<QString>("lines");
        QTest::addColumn<QString>("outcome");
        QTest::addColumn<int>("kindRequests");
        const auto row = [](const char* name, const QString& listings, const QByteArray& kind, const QString& rootName,
                            const QString& lines, const QString& outcome, int kindRequests) {
            QTest::newRow(name) << listings << kind << rootName << lines << outcome << kindRequests;
        };
        const QString oneFile = u"1 file(s), 0 folder(s)"_s;
        row("folders in folders", u"root>d=D/,f=F=1024;D>1=G"_s, "directory", {}, u"d||D d/1|1|G f|1.0 KB|F"_s,
            u"2 file(s), 1 folder(s)"_s, 0);
        row("chunks without names are one file", u"root>=k=1500,=k=-900, =k=1500"_s, "file", u" film "_s,
            u"film|2.9 KB|root"_s, oneFile, 1);
        row("the object's name comes first", u"root>=k=10= talk.ogg "_s, "file", u"film"_s, u"talk.ogg|10|root"_s,
            oneFile, 1);
        row("numbered files in a folder", u"root>1=F, ٣ =G"_s, "directory", {}, u"1|1|F ٣|1|G"_s,
            u"2 file(s), 0 folder(s)"_s, 1);
        row("the word for a file is exact", u"root>1=F"_s, "symlink", {}, u"1|1|F"_s, oneFile, 1);
        row("a numbered folder is no chunk", u"root>1=F,2=D/;D>"_s, "file", {}, u"1|1|F 2||D"_s,
            u"1 file(s), 1 folder(s)"_s, 0);
        row("small file", u"root>"_s, "file", u" "_s, u"root-file-root||root"_s, oneFile, 1);
        row("empty folder", u"root>"_s, "directory", u"x"_s, {}, u"0 file(s), 0 folder(s)"_s, 1);
        row("one folder at two places", u"root>x=D/,y=D/;D>f=F"_s, "directory", {}, u"x||D x/f|1|F y||D y/f|1|F"_s,
            u"2 file(s), 2 folder(s)"_s, 0);
        row("names that lead elsewhere", u"root>..=D/,<b>/a:b. =F,  =bafyabcdefghijk,lost=/;D>../../x=G"_s, "directory",
            {}, u"file||D file/.._.._x|1|G _b__a_b|1|F bafyabcdefgh|1|bafyabcdefghijk lost||"_s,
            u"3 file(s), 2 folder(s)"_s, 0);
        row("a folder that can't be listed stays empty", u"root>d=gone/,f=F"_s, "directory", {}, u"d||gone f|1|F"_s,
            u"1 file(s), 1 folder(s)"_s, 0);
        row("a root that can't be listed", {}, "nonsense", {}, {}, u"0 file(s), 0 folder(s)"_s, 1);
    }
    void trees()
    {
        QFETCH(const QString, listings);
        QFETCH(const QByteArray, kind);
        QFETCH(const QString, rootName);
        QFETCH(const int, kindRequests);
        haveListings(listings);
        setKind(kind);
        open(rootName);
        QTRY_VERIFY(saveAll()->isEnabled() && node->openNow() == 0);
        QTEST(status(), "outcome");
        QTEST(linesOf(tree()->topLevelItem(0)).join(u' '), "lines");
        QCOMPARE(node->count("/files/stat"), kindRequests);
        QVERIFY(tree()->topLevelItem(0)->isExpanded());
    }

    void anErrorEndsTheLoadingEarly()
    {
        node->route("/ls", [this](const FakeRequest& request) {
            const QString cid = request.value(u"arg"_s);
            return cid == u"docs"_s ? FakeAnswer::hold() : FakeAnswer::json(listing(served.value(cid)));
        });
        open();
        emit client->kindReceived(root, u"File"_s); // nobody here has asked
        QTRY_COMPARE(node->heldCount("/ls"), 1);
        emit client->lsReceived(u"other"_s, entries(u"x=x"_s));
        QVERIFY(!saveAll()->isEnabled());
        emit client->errorOccurred(u"<b>busy</b>"_s); // whoever's it is
        QCOMPARE(status(), u"1 file(s), 1 folder(s)"_s);
        emit client->errorOccurred(u"busy"_s);
        QCOMPARE(status(), u"1 file(s), 1 folder(s)"_s);

        node->route("/cat", [](const FakeRequest&) { return FakeAnswer::hold(); });
        save(saveAll());
        QTRY_COMPARE(node->heldCount("/cat"), 1);
        node->release("/ls", FakeAnswer::json(listing(entries(u"late=l"_s))));
        QTRY_COMPARE(status(), u"2 file(s), 1 folder(s)"_s);
        QVERIFY(!saveAll()->isEnabled());
    }

    void savesAll()
    {
        served[root].append(entries(u"../up=u,again.txt=a,nothing="_s));
        load();
        save(saveAll());
        QVERIFY(!saveSelected()->isEnabled());
        QTRY_COMPARE(status(), u"Saved 6 file(s) to %1"_s.arg(folder->path()));
        QCOMPARE(
            saved(),
            QStringList({u".._up=u"_s, u"a.txt=a"_s, u"again.txt=a"_s, u"docs/b.txt=b"_s, u"docs/deep/c.txt=c"_s}));
        QCOMPARE(node->mostOpen("/cat"), 1);
        QVERIFY(saveAll()->isEnabled() && saveSelected()->isEnabled());
        QVERIFY(dialog->findChild<QProgressBar*>()->isHidden());
        emit client->errorOccurred(u"of something else"_s);
        QVERIFY(status().startsWith(u"Saved "_s));
    }

    void savesWhatLiesBelowTheSelection()
    {
        load();
        QTreeWidgetItem* docs = tree()->topLevelItem(0)->child(0);
        docs->setSelected(true);
        docs->child(0)->setSelected(true);
        save(saveSelected());
        QTRY_COMPARE(status(), u"Saved 3 file(s) to %1"_s.arg(folder->path())); // one is selected in two ways
        QCOMPARE(saved(), QStringList({u"docs/b.txt=b"_s, u"docs/deep/c.txt=c"_s}));
        QCOMPARE(node->count("/cat"), 3);
    }

    void nothingToSave_data()
    {
        QTest::addColumn<bool>("all");
        QTest::addColumn<bool>("select");
        QTest::addColumn<QString>("text");
        QTest::newRow("no files") << true << false << u"No files in this pin."_s;
        const QString choose = u"Select one or more files in the tree (directories are skipped)."_s;
        QTest::newRow("nothing selected") << false << false << choose;
        QTest::newRow("empty folder selected") << false << true << choose;
    }
    void nothingToSave()
    {
        QFETCH(const bool, all);
        QFETCH(const bool, select);
        haveListings(u"root>d=D/;D>"_s);
        load();
        tree()->topLevelItem(0)->child(0)->setSelected(select);
        QString text;
        ModalAnswer<QMessageBox> answer([&text](QMessageBox& box) {
            text = box.text();
            box.accept();
        });
        (all ? saveAll() : saveSelected())->click();
        QTRY_VERIFY(answer.wasGiven());
        QTEST(text, "text");
        QVERIFY(!dialog->findChild<QFileDialog*>());
    }

    void noFolderChosen()
    {
        load();
        saveAll()->click();
        dialog->findChild<QFileDialog*>()->reject();
        QTRY_VERIFY(!dialog->findChild<QFileDialog*>());
        QVERIFY(saveAll()->isEnabled());
        QCOMPARE(node->count("/cat"), 0);
    }

    void aSingleFileGetsTheSuffixOfItsBytes_data()
    {
        QTest::addColumn<QString>("rootName");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("name");
        QTest::newRow("bare name") << u"paper"_s << QByteArray("%PDF-1.7") << u"paper.pdf"_s;
        QTest::newRow("a suffix stays") << u"paper.x"_s << QByteArray("%PDF-1.7") << u"paper.x"_s;
        QTest::newRow("unknown bytes") << u"paper"_s << QByteArray("hello") << u"paper"_s;
    }
    void aSingleFileGetsTheSuffixOfItsBytes()
    {
        QFETCH(const QString, rootName);
        QFETCH(const QByteArray, bytes);
        haveListings(u"root>=chunk"_s);
        setKind("file");
        node->answer("/cat", FakeAnswer::text(200, bytes));
        load(rootName);
        save(saveAll());
        QTRY_COMPARE(status(), u"Saved 1 file(s) to %1"_s.arg(folder->path()));
        QFETCH(const QString, name);
        QCOMPARE(saved(), QStringList {name + u'=' + QString::fromLatin1(bytes)});
        QCOMPARE(node->requests("/cat").constFirst().value(u"arg"_s), root);
    }

    void aFailedFileStopsNoOther_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<FakeAnswer>("answer");
        FakeAnswer tooFew = FakeAnswer::text(200, "half");
        tooFew.headers.emplaceBack("X-Content-Length", "8");
        QTest::newRow("refused") << u"bad"_s << FakeAnswer::error("no");
        QTest::newRow("broken off") << u"bad"_s << FakeAnswer::dropAt("half", 2);
        QTest::newRow("short") << u"bad"_s << tooFew;
        QTest::newRow("a folder of that name") << u"taken"_s << FakeAnswer::text(200, "x");
        QTest::newRow("name too long") << QString(300, u'n') << FakeAnswer::text(200, "x");
    }
    void aFailedFileStopsNoOther()
    {
        QFETCH(const QString, name);
        QFETCH(const FakeAnswer, answer);
        QVERIFY(QDir(folder->path()).mkpath(u"taken"_s));
        served[root].prepend({.name = name, .hash = u"bad"_s, .type = file});
        node->route("/cat", [answer](const FakeRequest& request) {
            const QString cid = request.value(u"arg"_s);
            return cid == u"bad"_s ? answer : cat(cid);
        });
        load();
        save(saveAll());
        QTRY_COMPARE(status(), u"Saved 4 file(s) to %1"_s.arg(folder->path()));
        QCOMPARE(saved(), QStringList({u"a.txt=a"_s, u"docs/b.txt=b"_s, u"docs/deep/c.txt=c"_s}));
    }

    void aFolderThatCannotBeMadeEndsTheSave()
    {
        QFile blocking(folder->filePath(u"docs"_s));
        QVERIFY(blocking.open(QIODevice::WriteOnly));
        load();
        save(saveAll());
        QTRY_COMPARE(status(), u"Failed to create directory: "_s + folder->filePath(u"docs"_s));
        QVERIFY(dialog->findChild<StatusLabel*>()->styleSheet().contains(u"darkred"_s));
        QVERIFY(saveAll()->isEnabled());
        QVERIFY(dialog->findChild<QProgressBar*>()->isHidden());
        emit client->catReceived(u"b"_s, "b"); // somebody else's
        emit client->catFailed(u"b"_s, u"no"_s);
        QVERIFY(status().startsWith(u"Failed to create directory"_s));
        QVERIFY(waitForDetached(10s));
        QCOMPARE(saved(), QStringList({u"a.txt=a"_s, u"docs="_s}));
    }

    void foreignDownloadsAreLeftAlone()
    {
        // Once the dialog has taken a file, another listener's answers for the same CID come while it is written.
        load();
        connect(
            client.get(), &IpfsClient::catReceived, this,
            [this](const QString& cid) {
                emit client->catFailed(cid, u"foreign"_s);
                emit client->catReceived(cid, "foreign");
                emit client->catReceived(u"elsewhere"_s, "foreign");
            },
            Qt::SingleShotConnection);
        save(saveAll());
        QTRY_COMPARE(status(), u"Saved 3 file(s) to %1"_s.arg(folder->path()));
        QCOMPARE(saved(), QStringList({u"a.txt=a"_s, u"docs/b.txt=b"_s, u"docs/deep/c.txt=c"_s}));
    }

    void closesAtAnyTime_data()
    {
        QTest::addColumn<QByteArray>("heldPath");
        QTest::newRow("while it lists") << QByteArray("/ls");
        QTest::newRow("while it asks for the kind") << QByteArray("/files/stat");
        QTest::newRow("while it downloads") << QByteArray("/cat");
        QTest::newRow("while a folder is chosen") << QByteArray();
    }
    void closesAtAnyTime()
    {
        QFETCH(const QByteArray, heldPath);
        if (heldPath == "/files/stat")
            haveListings(u"root>"_s);
        if (!heldPath.isEmpty())
            node->answer(heldPath, FakeAnswer::hold());
        open();
        if (heldPath == "/cat" || heldPath.isEmpty()) {
            QTRY_VERIFY(saveAll()->isEnabled());
            saveAll()->click();
        }
        if (heldPath == "/cat")
            choose();
        if (!heldPath.isEmpty())
            QTRY_COMPARE(node->heldCount(heldPath), 1);
        dialog.reset();
        if (!heldPath.isEmpty())
            node->release(heldPath, FakeAnswer::json(R"({"Objects":[],"Type":"file"})"));
        QTRY_COMPARE(node->openNow(), 0);
        QCOMPARE(saved(), QStringList());
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

    void keyboard()
    {
        open();
        dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
        QTRY_VERIFY(saveAll()->isEnabled());
        QCOMPARE(dialog->focusWidget(), tree());
        QTest::keyClick(tree(), Qt::Key_Return);
        QVERIFY(!dialog->findChild<QFileDialog*>()); // no save by accident
        QTest::keyClick(tree(), Qt::Key_Escape);
        QVERIFY(!dialog->isVisible());
    }

private:
    /// "cid>entries" with semicolons between; every other CID can't be listed.
    void haveListings(const QString& text)
    {
        served.clear();
        for (const QString& one : text.split(u';', Qt::SkipEmptyParts))
            served.insert(one.section(u'>', 0, 0), entries(one.section(u'>', 1)));
        node->route("/ls", [this](const FakeRequest& request) {
            const QString cid = request.value(u"arg"_s);
            return served.contains(cid) ? FakeAnswer::json(listing(served.value(cid))) : FakeAnswer::error("no");
        });
    }
    void setKind(const QByteArray& kind)
    {
        node->answer("/files/stat", FakeAnswer::json("{\"Type\":\"" + kind + "\"}"));
    }
    static FakeAnswer cat(const QString& cid) { return FakeAnswer::text(200, cid.toUtf8()); }

    void open(const QString& rootName = {})
    {
        dialog = std::make_unique<PinContentsDialog>(root, client.get(), nullptr, rootName);
    }
    void load(const QString& rootName = {})
    {
        open(rootName);
        QTRY_VERIFY(saveAll()->isEnabled());
    }
    void save(QPushButton* button)
    {
        button->click();
        choose();
    }
    void choose()
    {
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

    QString status() const { return dialog->findChild<StatusLabel*>()->text(); }
    QTreeWidget* tree() const { return dialog->findChild<QTreeWidget*>(); }
    QPushButton* saveAll() const { return dialog->findChildren<QPushButton*>(Qt::FindDirectChildrenOnly).at(0); }
    QPushButton* saveSelected() const { return dialog->findChildren<QPushButton*>(Qt::FindDirectChildrenOnly).at(1); }

    std::unique_ptr<FakeNode> node;
    std::unique_ptr<IpfsClient> client;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<PinContentsDialog> dialog;
    QHash<QString, QList<LsEntry>> served;
};

int main(int argc, char* argv[])
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const QApplication app(argc, argv);
    tst_PinContents test;
    return runTestObject(test, argc, argv);
}
#include "tst_pincontents.moc"
