// SPDX-License-Identifier: MIT
#include "FakeNode.h"
#include "NodeAccessManager.h"
#include "TestMain.h"

#include <QElapsedTimer>
#include <QNetworkReply>
#include <QPointer>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include <dlfcn.h>
#include <netdb.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

std::atomic<int> lookUps = 0;

} // namespace

/// The name "slow.test" takes three seconds to look up, as on a machine whose name server is away.
extern "C" int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** result)
{
    if (QByteArrayView(host) == "slow.test") {
        ++lookUps;
        QThread::sleep(3);
        return EAI_NONAME;
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(host, service, hints, result);
}

namespace {

constexpr auto mayRepeat = static_cast<QNetworkRequest::Attribute>(NodeAccessManager::MayRepeat);

struct Recording
{
    const char* path;
    QByteArray body;
    bool onlyReads = true;
    HeaderList headers {};
};

const QByteArray cid = "bafybeidhkumeonuwkebh2i4fc7o7lguehauradvlk57gzake6ggjsy372a";

/// Answers as a node gave them.
QList<Recording> recordings()
{
    return {{"/pin/ls",
             "{\"Cid\":\"" + cid + "\",\"Type\":\"recursive\"}\n{\"Cid\":\"" + cid + "\",\"Type\":\"direct\"}\n"},
            {"/refs", "{\"Ref\":\"" + cid + "\",\"Err\":\"\"}\n"},
            {"/ls", "{\"Objects\":[{\"Hash\":\"" + cid + "\",\"Links\":[]}]}\n"},
            {"/cat", "hello world\n", true, {{"X-Stream-Output", "1"}, {"X-Content-Length", "12"}}},
            {"/pin/rm", "{\"Pins\":[\"" + cid + "\"]}\n", false},
            {"/dag/stat", "{\"UniqueBlocks\":2,\"TotalSize\":69,\"Ratio\":1}\n"}};
}

/// As a node sends it: a chunk for each line.
QByteArray onTheWire(const Recording& recording)
{
    QByteArray bytes = "HTTP/1.1 200 OK\r\nServer: kubo/0.43.0\r\nTrailer: X-Stream-Error\r\nVary: Origin\r\n";
    for (const auto& [name, value] : recording.headers)
        bytes += name + ": " + value + "\r\n";
    bytes += "Transfer-Encoding: chunked\r\n\r\n";
    for (const QByteArray& line : recording.body.split('\n')) {
        if (!line.isEmpty())
            bytes += QByteArray::number(line.size() + 1, 16) + "\r\n" + line + "\n\r\n";
    }
    return bytes + "0\r\n\r\n";
}

} // namespace

class tst_Http : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        failOnWarnings();
        node = std::make_unique<FakeNode>();
        manager = std::make_unique<NodeAccessManager>();
    }
    void cleanup()
    {
        manager.reset();
        node.reset();
    }

    void cutAnywhere_data()
    {
        addColumns<int, NodeAnswer::Ending, int>("recording", "ending", "stallMs");
        for (int i = 0; i < recordings().size(); ++i) {
            const char* path = recordings().at(i).path;
            QTest::addRow("%s closed", path) << i << NodeAnswer::Close << 0;
            QTest::addRow("%s reset", path) << i << NodeAnswer::Reset << 0;
            QTest::addRow("%s closed after a stall", path) << i << NodeAnswer::Close << 3;
        }
    }
    /// An answer that was cut is a failure, or whole if its body had come; it always ends, and what acts is sent once.
    void cutAnywhere()
    {
        QFETCH(const int, recording);
        QFETCH(const NodeAnswer::Ending, ending);
        QFETCH(const int, stallMs);
        const Recording recorded = recordings().at(recording);
        const QByteArray wire = onTheWire(recorded);
        node->route(recorded.path, [&](const NodeRequest& request) {
            NodeAnswer answer = NodeAnswer::raw(wire, ending);
            answer.cutAfter = request.value(u"cut"_s).toInt();
            answer.stall = std::chrono::milliseconds(stallMs);
            return answer;
        });
        QList<QNetworkReply*> replies;
        for (qsizetype cut = 0; cut <= wire.size(); ++cut)
            replies.append(post(QString::fromLatin1(recorded.path) + u"?cut=%1"_s.arg(cut), recorded.onlyReads));
        const qsizetype bodyEnd = wire.size() - 5; // "0\r\n\r\n"
        for (qsizetype cut = 0; cut <= wire.size(); ++cut) {
            QNetworkReply* reply = replies.at(cut);
            QTRY_VERIFY2(reply->isFinished(), qPrintable(u"cut at %1"_s.arg(cut)));
            const bool good = reply->error() == QNetworkReply::NoError;
            if (good)
                QCOMPARE(reply->readAll(), recorded.body);
            QVERIFY2(!good || cut > bodyEnd, qPrintable(u"cut at %1 passed as whole"_s.arg(cut)));
            if (ending == NodeAnswer::Close && cut == wire.size())
                QVERIFY2(good, qPrintable(reply->errorString()));
        }
        const int calls = static_cast<int>(replies.size());
        const int heads = node->headCount(recorded.path);
        QVERIFY2(recorded.onlyReads ? heads >= calls && heads <= 2 * calls : heads == calls,
                 qPrintable(QString::number(heads)));
    }

    void heads_data()
    {
        // text: of the body, or how the error string ends
        const auto row = addColumns<QByteArray, QNetworkReply::NetworkError, QString>("wire", "error", "text");
        constexpr auto good = QNetworkReply::NoError;
        constexpr auto closed = QNetworkReply::RemoteHostClosedError;
        constexpr auto broken = QNetworkReply::ProtocolFailure;
        const QByteArray sized = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nab";
        row("interim answers", "HTTP/1.1 103 Early Hints\r\nX: 1\r\n\r\nHTTP/1.1 102 Processing\r\n\r\n" + sized, good,
            u"ab"_s);
        row("interim answer and no other", "HTTP/1.1 102 Processing\r\n\r\n", closed, u"Connection closed"_s);
        row("no phrase", "HTTP/1.1 200\r\nContent-Length: 2\r\n\r\nab", good, u"ab"_s);
        row("ends with its connection", "HTTP/1.0 200 OK\r\n\r\nab", good, u"ab"_s);
        row("folded", "HTTP/1.1 200 OK\r\nX-A: b\r\n c\r\nContent-Length: 2\r\n\r\nab", good, u"b cab"_s);
        row("length too long", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab", closed, u"Connection closed"_s);
        row("length too short", "HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nab", good, u"a"_s);
        row("negative length", "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nab", broken, {});
        row("nothing at all", "", closed, u"Connection closed"_s);
        row("no HTTP", "SSH-2.0-OpenSSH\r\n", broken, {});
        row("header without colon", "HTTP/1.1 200 OK\r\nrubbish\r\n\r\nab", broken, {});
        row("endless header", "HTTP/1.1 200 OK\r\nX: " + QByteArray(2'000'000, 'x') + "\r\n\r\n", broken, {});
        row("endless headers", "HTTP/1.1 200 OK\r\n" + QByteArray("X-Filler: y\r\n").repeated(200'000) + "\r\nab",
            broken, {});
        row("garbled chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nab\r\n0\r\n\r\n", broken, {});
        row("endless trailer",
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\na\r\n0\r\nX: " + QByteArray(2'000'000, 'x')
                + "\r\n\r\n",
            broken, {});
        const QByteArray trailed = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n0\r\n";
        row("broken off", trailed + "X-Stream-Error: block not found\r\n\r\n", QNetworkReply::UnknownServerError,
            u"block not found"_s);
        row("another trailer", trailed + "X-Other: 1\r\n\r\n", good, u"ab"_s);
        const auto status = [&row](const char* line, QNetworkReply::NetworkError error) {
            const QByteArray wire
                = QByteArray("HTTP/1.1 ") + line + "\r\nLocation: /api/v0/elsewhere\r\nContent-Length: 0\r\n\r\n";
            row(line, wire, error, u"/api/v0/x - server replied: "_s + QString::fromLatin1(line).section(u' ', 1));
        };
        for (const char* redirect : {"301 Moved Permanently", "302 Found", "303 See Other", "307 Temporary Redirect",
                                     "308 Permanent Redirect"})
            status(redirect, broken);
        status("400 Bad Request", QNetworkReply::ProtocolInvalidOperationError);
        status("403 Forbidden", QNetworkReply::ContentAccessDenied);
        status("404 Not Found", QNetworkReply::ContentNotFoundError);
        status("418 Teapot", QNetworkReply::UnknownContentError);
        status("500 Internal Server Error", QNetworkReply::InternalServerError);
        status("599 Odd", QNetworkReply::UnknownServerError);
    }
    void heads()
    {
        QFETCH(const QByteArray, wire);
        QFETCH(const QNetworkReply::NetworkError, error);
        QFETCH(const QString, text);
        node->answer("/x", NodeAnswer::raw(wire, NodeAnswer::Close));
        node->answer("/elsewhere", NodeAnswer::json("{}"));
        QNetworkReply* reply = post(u"/x"_s, false);
        QTRY_VERIFY(reply->isFinished());
        QCOMPARE(reply->error(), error);
        if (error == QNetworkReply::NoError)
            QCOMPARE(reply->rawHeader("X-A") + reply->readAll(), text.toLatin1());
        else
            QVERIFY2(reply->errorString().endsWith(text), qPrintable(reply->errorString()));
        QCOMPARE(node->headCount(), 1);
    }

    void notSent_data()
    {
        const auto row = addColumns<QString, QString>("address", "text");
        row("no http", u"https://127.0.0.1/"_s, u"Protocol \"https\" is unknown"_s);
        row("no host", u"http:///api/v0"_s, u"Host  not found"_s);
        row("unknown host", u"http://nowhere.invalid/"_s, u"Host nowhere.invalid not found"_s);
        row("nobody there", u"http://127.0.0.1:1/"_s, u"Connection refused"_s);
        row("too long", u"http://127.0.0.1:1/?arg="_s + QString(1024 * 1024, u'x'),
            u"The request is too long for the node: 1048600 bytes, of at most 1032192"_s);
    }
    void notSent()
    {
        QFETCH(const QString, address);
        QNetworkReply* reply = manager->post(QNetworkRequest(QUrl(address)), QByteArray());
        QVERIFY(!reply->isFinished());
        QTRY_VERIFY(reply->isFinished());
        QTEST(reply->errorString(), "text");
    }

    void aNodeThatClosesAfterEachAnswer_data()
    {
        const auto row = addColumns<NodeAnswer::Afterwards, bool>("afterwards", "onlyReads");
        row("reads, said", NodeAnswer::SaidClose, true);
        row("reads, silent", NodeAnswer::SilentClose, true);
        row("reads, on the next request", NodeAnswer::CloseAtNextRequest, true);
        row("acts, silent", NodeAnswer::SilentClose, false);
        row("acts, on the next request", NodeAnswer::CloseAtNextRequest, false);
    }
    void aNodeThatClosesAfterEachAnswer()
    {
        QFETCH(const NodeAnswer::Afterwards, afterwards);
        QFETCH(const bool, onlyReads);
        NodeAnswer answer = NodeAnswer::json("{}");
        answer.afterwards = afterwards;
        node->answer("/x", answer);
        constexpr int calls = 1000;
        int sent = 0;
        int good = 0;
        std::function<void()> next = [&] {
            QNetworkReply* reply = post(u"/x"_s, onlyReads);
            ++sent;
            connect(reply, &QNetworkReply::finished, reply, [&, reply] {
                good += reply->error() == QNetworkReply::NoError && reply->readAll() == "{}" ? 1 : 0;
                reply->deleteLater();
                if (sent < calls)
                    next();
            });
        };
        for (int i = 0; i < 8; ++i)
            next();
        QTRY_COMPARE_WITH_TIMEOUT(good, calls, 60'000);
        QVERIFY(node->headCount("/x") <= (onlyReads ? 2 * calls : calls));
    }

    void anySlotMayEndIt_data()
    {
        addColumns<QByteArray, QByteArray>("signal", "deed");
        for (const QByteArray signal : {"metaDataChanged()", "uploadProgress(qint64,qint64)", "readyRead()",
                                        "errorOccurred(QNetworkReply::NetworkError)", "finished()"}) {
            for (const QByteArray deed : {"abort", "delete", "deleteLater", "deleteManager", "runLoop"})
                QTest::addRow("%s, %s", signal.constData(), deed.constData()) << signal << deed;
        }
    }
    void anySlotMayEndIt()
    {
        QFETCH(const QByteArray, signal);
        QFETCH(const QByteArray, deed);
        NodeAnswer answer = NodeAnswer::chunked("abc", 1, 1ms);
        answer.status = 500;
        answer.headers = {{"Content-Type", "text/plain"}};
        node->answer("/x", answer);
        const QPointer<QNetworkReply> reply = manager->post(QNetworkRequest(url(u"/x"_s)), QByteArray("body"));
        QPointer<QNetworkReply> other = post(u"/x"_s, false);
        int finished = 0;
        connect(reply, &QNetworkReply::finished, this, [&finished] { ++finished; });
        ender = [&] {
            if (deed == "abort") {
                const bool wasFinished = reply->isFinished();
                reply->abort();
                QVERIFY(wasFinished || (reply->error() == QNetworkReply::OperationCanceledError && finished == 1));
            } else if (deed == "delete") {
                delete reply;
            } else if (deed == "deleteLater") {
                reply->deleteLater();
            } else if (deed == "deleteManager") {
                manager.reset();
            } else {
                QTRY_VERIFY(other->isFinished());
            }
            ended = true;
        };
        ended = false;
        connect(reply.data(), ('2' + signal).constData(), this, SLOT(end()));
        QTRY_VERIFY(ended);
        if (manager)
            QTRY_VERIFY(other->isFinished() && other->error() == QNetworkReply::InternalServerError);
        QVERIFY(finished <= 1);
    }

    void aSlowLookUpHoldsNothingUp_data()
    {
        QTest::addColumn<QByteArray>("deed");
        for (const QByteArray deed : {"abort", "delete", "quit"})
            QTest::newRow(deed.constData()) << deed;
    }
    void aSlowLookUpHoldsNothingUp()
    {
        QFETCH(const QByteArray, deed);
        const int before = lookUps;
        QNetworkReply* reply = manager->post(QNetworkRequest(QUrl(u"http://slow.test/"_s)), QByteArray());
        QTRY_COMPARE(lookUps.load(), before + 1);
        QElapsedTimer clock;
        clock.start();
        if (deed == "abort")
            reply->abort();
        else if (deed == "delete")
            delete reply;
        manager.reset();
        QVERIFY2(clock.elapsed() < 500, qPrintable(u"%1 ms"_s.arg(clock.elapsed())));
        QTest::qWait(3100); // the look-up ends into nothing
    }

public slots:
    void end()
    {
        if (const auto deed = std::exchange(ender, nullptr))
            deed();
    }

private:
    QUrl url(const QString& path) const
    {
        return QUrl(u"http://127.0.0.1:%1/api/v0%2"_s.arg(QString::number(node->port()), path));
    }
    QNetworkReply* post(const QString& path, bool onlyReads)
    {
        QNetworkRequest request(url(path));
        request.setAttribute(mayRepeat, onlyReads);
        return manager->post(request, QByteArray());
    }

    std::unique_ptr<FakeNode> node;
    std::unique_ptr<NodeAccessManager> manager;
    std::function<void()> ender;
    bool ended = false;
};

NORVO_TEST_MAIN(QCoreApplication, tst_Http)
#include "tst_http.moc"
