// SPDX-License-Identifier: MIT
#include "AddBody.h"
#include "ClientLog.h"
#include "TestFiles.h"

#include <QHttpMultiPart>
#include <QNetworkReply>

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

const QByteArray path = "/add";

QByteArray contentOf(const QString& file)
{
    QFile opened(file);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
}

/// The first line of each part's head, and the body of a short one.
QStringList partsOf(const NodeRequest& request)
{
    const QByteArray type = request.header("content-type");
    const QByteArray boundary = "--" + type.sliced(type.indexOf('"') + 1).chopped(1);
    QStringList parts;
    for (qsizetype from = request.body.indexOf(boundary) + boundary.size(), to = 0;
         (to = request.body.indexOf(boundary, from)) > 0; from = to + boundary.size()) {
        const QByteArray part = request.body.sliced(from, to - from);
        const qsizetype head = part.indexOf("\r\n\r\n");
        const qsizetype name = part.indexOf("filename=\"") + 10;
        const bool isFolder = part.first(head).endsWith("application/x-directory");
        parts.append(QString::fromUtf8(part.sliced(name, part.indexOf("\"\r\n", name) - name))
                     + (isFolder ? u"/"_s
                                 : u"="_s
                                + QString::fromUtf8(part.sliced(head + 4).chopped(2).first(
                                    std::min<qsizetype>(part.size() - head - 6, 20)))));
    }
    return parts;
}

/// Lowers the soft limit of open files as long as it lives.
class FewFiles
{
public:
    explicit FewFiles(rlim_t most)
    {
        getrlimit(RLIMIT_NOFILE, &before);
        const rlimit lower {.rlim_cur = most, .rlim_max = before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &lower);
    }
    ~FewFiles() { setrlimit(RLIMIT_NOFILE, &before); }
    Q_DISABLE_COPY_MOVE(FewFiles)

private:
    rlimit before {};
};

} // namespace

class tst_Add : public ClientTest
{
    Q_OBJECT

private slots:
    void init()
    {
        ClientTest::init();
        folder = std::make_unique<QTemporaryDir>();
        lines.clear();
        sent.clear();
        connect(client.get(), &IpfsClient::errorOccurred, this, [this] { lines.append(u"errorOccurred"_s); });
        connect(client.get(), &IpfsClient::nodeSaid, this,
                [this](const QString&, const QString& words) { lines.append(u"said "_s + words); });
        connect(client.get(), &IpfsClient::addBytesSent, this, [this](qint64 done, qint64) { sent.append(done); });
        connect(client.get(), &IpfsClient::addProgress, this, [this](const QString& name, int done, int total) {
            lines.append(u"%1 %2/%3"_s.arg(name, QString::number(done), QString::number(total)));
        });
        connect(client.get(), &IpfsClient::addShortfall, this,
                [this](int in, int out, int skipped, int loops, bool cut) {
                    lines.append(u"short %1 %2 %3 %4%5"_s.arg(QString::number(in), QString::number(out),
                                                              QString::number(skipped), QString::number(loops),
                                                              cut ? u" cut"_s : QString()));
                });
        connect(client.get(), &IpfsClient::addCompleted, this,
                [this](const QString& root, const QList<AddEntry>& entries) {
                    lines.append(u"completed %1 %2"_s.arg(root, QString::number(entries.size())));
                });
        connect(client.get(), &IpfsClient::addFailed, this,
                [this](const QString& message) { lines.append(u"failed "_s + message); });
    }

    void bodyIsThatOfAMultiPart()
    {
        const QString file = newFile(u"b\"1+%\\.txt"_s, QByteArray(70'000, 'x'));
        const QString empty = newFile(u"empty"_s, {});
        AddBody body("bound");
        body.appendDirectory(u"d/ünï"_s);
        QVERIFY(body.appendFile(file, u"d/b\"1+%\\.txt"_s));
        QVERIFY(body.appendFile(empty, u"empty"_s));
        QVERIFY(!body.appendFile(folder->path() + u"/none"_s, u"none"_s));
        QVERIFY(body.open(QIODevice::ReadOnly | QIODevice::Unbuffered));

        // Qt's own, as a server gets it.
        QHttpMultiPart parts(QHttpMultiPart::FormDataType);
        parts.setBoundary("bound");
        const auto append = [&parts](const QByteArray& name, const QString& from) {
            QHttpPart part;
            part.setRawHeader("Content-Disposition", "form-data; name=\"file\"; filename=\"" + name + '"');
            if (!from.isEmpty())
                part.setRawHeader("Abspath", from.toUtf8());
            part.setHeader(QNetworkRequest::ContentTypeHeader,
                           from.isEmpty() ? u"application/x-directory"_s : u"application/octet-stream"_s);
            part.setBody(from.isEmpty() ? QByteArray() : contentOf(from));
            parts.append(part);
        };
        append("d/ünï", {});
        append("d/b%221%2B%25%5C.txt", file);
        append("empty", empty);
        QNetworkAccessManager manager;
        node->answer(path, NodeAnswer::json({}));
        QNetworkRequest request(QUrl(client->baseUrl() + u"/add"_s));
        request.setRawHeader("User-Agent", "test");
        const std::unique_ptr<QNetworkReply> reply(manager.post(request, &parts));
        QTRY_COMPARE(node->count(path), 1);
        const NodeRequest peer = node->requests(path).constFirst();
        QCOMPARE(body.size(), peer.body.size());
        QCOMPARE(body.contentType(), peer.header("Content-Type"));
        QByteArray read;
        for (qsizetype size = 1; !body.atEnd(); size = size * 3 % 1009 + 1)
            read += body.read(size);
        QVERIFY(read.toLower() == peer.body.toLower()); // newer versions of Qt write names of headers in small letters
        QCOMPARE(body.read(1), QByteArray());
        QTRY_VERIFY(reply->isFinished());
    }

    void foldersAreWalked()
    {
        newFile(u"top/z.txt"_s, "z");
        newFile(u"top/.hidden/h"_s, "h");
        newFile(u"top/sub/b"_s, "b");
        newFile(u"top/sub/a\r\nb"_s, "line");
        QDir(folder->path()).mkpath(u"top/empty"_s);
        const std::string undecodable = QFile::encodeName(folder->path() + u"/top/"_s).toStdString() + "not \xff UTF-8";
        std::ofstream {undecodable} << "left out";
        QFile::link(folder->path() + u"/top/z.txt"_s, folder->path() + u"/top/link"_s);
        QFile::link(folder->path() + u"/nowhere"_s, folder->path() + u"/top/dangling"_s);
        QFile::link(folder->path() + u"/top"_s, folder->path() + u"/top/sub/loop"_s);
        node->answer(path, NodeAnswer::json(R"({"Name":"","Hash":"Qr","Size":"1"})"));
        client->addLocalPaths({{.path = folder->path() + u"/gone"_s},
                               {.path = folder->path() + u"/top"_s},
                               {.path = folder->path() + u"/top/z.txt"_s, .name = u"other"_s}},
                              {.pin = false, .onlyHash = true, .cidVersion = 0});
        std::filesystem::remove(undecodable); // Qt can't
        QTRY_COMPARE(lines.size(), 2);
        QCOMPARE(partsOf(node->requests(path).constFirst()),
                 QStringList({u"top/"_s, u"top/.hidden/"_s, u"top/.hidden/h=h"_s, u"top/empty/"_s, u"top/sub/"_s,
                              u"top/sub/loop/"_s, u"top/sub/a%0D%0Ab=line"_s, u"top/sub/b=b"_s, u"top/link=z"_s,
                              u"top/z.txt=z"_s, u"other=z"_s}));
        QCOMPARE(node->requests(path).constFirst().rawQuery,
                 QByteArray("recursive=true&wrap-with-directory=true&pin=false&only-hash=true&cid-version=0"));
        QVERIFY(node->requests(path).constFirst().header("user-agent").startsWith("Norvo/"));
        QCOMPARE(lines, QStringList({u"short 6 0 2 1"_s, u"completed Qr 1"_s}));
        QCOMPARE(sent.constLast(), node->requests(path).constFirst().body.size());
    }

    void answers_data()
    {
        const auto row = addColumns<bool, NodeAnswer, QString>("wrap", "answer", "expected");
        const QByteArray a = R"({"Name":"a","Hash":"Qa","Size":"1"})";
        const QByteArray root = R"({"Name":"","Hash":"Qr","Size":"9"})";
        row("wrapped", true, NodeAnswer::json("{\"Name\":\"a\",\"Bytes\":7}\n\nnonsense\n" + a + '\n' + root + '\n'),
            u"a 1/1\n 2/1\ncompleted Qr 2"_s);
        row("not wrapped", false, NodeAnswer::json(a + '\n'), u"a 1/1\ncompleted Qa 1"_s);
        row("the last line is open", true, NodeAnswer::json(a + '\n' + root), u"a 1/1\ncompleted Qr 2"_s);
        row("several, not wrapped", false, NodeAnswer::chunked(a + '\n' + R"({"Name":"d","Hash":"Qd"})" + '\n', 3),
            u"a 1/1\nd 2/1\ncompleted  2"_s);
        row("nothing came", false, NodeAnswer::json({}), u"short 1 0 0 0\ncompleted  0"_s);
        row("no root line", true, NodeAnswer::json(a + '\n'), u"a 1/1\nshort 1 1 0 0 cut\ncompleted  1"_s);
        row("error line", true, NodeAnswer::json(a + "\n{\"Error\":\" no space \"}\n{\"Error\":\"b\"}\n" + root + '\n'),
            u"a 1/1\n 2/1\nfailed Add failed: no space"_s);
        row("broken off", true, NodeAnswer::brokenOff(a + '\n', "disk full"),
            u"a 1/1\nsaid disk full\nfailed Add failed: disk full"_s);
        row("refused", true, NodeAnswer::error("not now"),
            u"said not now\nfailed Add failed: Error transferring %1 - server replied: Internal Server Error"_s);
        row("dropped", true, NodeAnswer::dropAt(a + '\n', 10), u"failed Add failed: Connection closed"_s);
    }
    void answers()
    {
        QFETCH(const bool, wrap);
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QString, expected);
        node->answer(path, answer);
        client->addLocalPaths({{.path = newFile(u"a"_s, "a")}}, {.wrapWithDirectory = wrap});
        client->cancelActiveLoading(); // not its business
        QTRY_VERIFY(!lines.isEmpty()
                    && QRegularExpression(u"^(failed|completed)"_s).match(lines.constLast()).hasMatch());
        const QString address
            = client->baseUrl() + u"/add?"_s + QString::fromLatin1(node->requests(path).constFirst().rawQuery);
        QCOMPARE(lines.join(u'\n'), expected.contains("%1"_L1) ? expected.arg(address) : expected);
    }

    void nothingToSend()
    {
        client->addLocalPaths({}, {});
        client->addLocalPaths({{.path = folder->path() + u"/none"_s}}, {});
        QCOMPARE(lines,
                 QStringList({u"failed Nothing selected to add."_s,
                              u"failed No readable files or folders found in the selected input."_s}));
    }

    /// With few descriptors most files are opened again when they are due.
    void changesWhileSending_data()
    {
        QTest::addColumn<int>("victim");
        QTest::addColumn<QByteArray>("content"); // null: removed
        QTest::newRow("an open file is gone") << 1 << QByteArray();
        QTest::newRow("an open file is shorter") << 1 << QByteArray("1");
        QTest::newRow("an open file is longer") << 1 << QByteArray(400, '1');
        QTest::newRow("a closed file is gone") << 200 << QByteArray();
        QTest::newRow("a closed file is shorter") << 200 << QByteArray("1");
        QTest::newRow("a closed file is longer") << 200 << QByteArray(400, '1');
        QTest::newRow("nothing changes") << -1 << QByteArray();
    }
    void changesWhileSending()
    {
        QFETCH(const int, victim);
        QFETCH(const QByteArray, content);
        const FewFiles few(256);
        const auto name = [](int index) { return u"d/%1"_s.arg(index, 3, 10, QChar(u'0')); };
        for (int i = 0; i < 300; ++i)
            newFile(name(i), QByteArray(300, 'x'));
        node->answer(path, NodeAnswer::json({}));
        client->addLocalPaths({{.path = folder->path() + u"/d"_s}}, {.wrapWithDirectory = false});
        const QString changed = folder->path() + u'/' + name(victim);
        if (content.isNull())
            QFile::remove(changed);
        else
            newFile(name(victim), content);
        QTRY_VERIFY(!lines.isEmpty());
        if (victim >= 0) {
            QCOMPARE(lines, QStringList(u"failed Add failed: %1 changed while it was being sent."_s.arg(changed)));
        } else {
            QCOMPARE(lines, QStringList({u"short 300 0 0 0"_s, u"completed  0"_s}));
            QCOMPARE(partsOf(node->requests(path).constFirst()).size(), 301);
        }
    }

    /// As the bar of a modal progress window does.
    void listenersMayRunAnEventLoop()
    {
        QByteArray answer;
        for (int i = 0; i < 500; ++i)
            answer += QByteArray("{\"Name\":\"%\",\"Hash\":\"Q\"}\n").replace("%", QByteArray::number(i));
        node->answer(path, NodeAnswer::chunked(answer, 300));
        connect(client.get(), &IpfsClient::addProgress, this, [] { QTest::qWait(1); });
        client->addLocalPaths({{.path = newFile(u"a"_s, "a")}}, {.wrapWithDirectory = false});
        QTRY_COMPARE_WITH_TIMEOUT(lines.size(), 502, 20'000);
        for (int i = 0; i < 500; ++i)
            QCOMPARE(lines.at(i), u"%1 %2/1"_s.arg(QString::number(i), QString::number(i + 1)));
        QCOMPARE(lines.constLast(), u"completed  500"_s);
    }

private:
    QString newFile(const QString& name, const QByteArray& content) const
    {
        return writeTestFile(folder->path(), name, content);
    }

    std::unique_ptr<QTemporaryDir> folder;
    QStringList lines;
    QList<qint64> sent;
};

NORVO_TEST_MAIN(QCoreApplication, tst_Add)

#include "tst_add.moc"
