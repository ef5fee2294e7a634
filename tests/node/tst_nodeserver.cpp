// SPDX-License-Identifier: MIT
#include "DemoNode.h"
#include "FakeNode.h"
#include "TestMain.h"

#include <QCoreApplication>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 10'000; // milliseconds

QByteArray post(const QByteArray& target, const QByteArray& headers = {}, const QByteArray& body = {})
{
    return "POST /api/v0" + target + " HTTP/1.1\r\nHost: x\r\n" + headers + "\r\n" + body;
}

/// Sends what it is given, and collects what comes.
class Wire : public QTcpSocket
{
public:
    explicit Wire(const NodeServer& node)
    {
        connect(this, &QTcpSocket::readyRead, this, [this] { came += readAll(); });
        connectToHost(u"127.0.0.1"_s, node.port());
    }
    Wire(const NodeServer& node, const QByteArray& bytes)
        : Wire(node)
    {
        write(bytes);
    }
    bool brings(const QByteArray& text) const
    {
        return QTest::qWaitFor([&] { return came.contains(text); }, patience);
    }
    bool ends() const
    {
        return QTest::qWaitFor([this] { return state() == UnconnectedState && !isOpenForReading(); }, patience);
    }

    QByteArray came;

private:
    bool isOpenForReading() const { return bytesAvailable() > 0; }
};

/// The bodies of chunked answers, one after the other.
QByteArray withoutFrames(const QByteArray& text)
{
    const qsizetype head = text.indexOf("\r\n\r\n");
    QByteArray body;
    for (qsizetype at = head + 4; at < text.size();) {
        const qsizetype lineEnd = text.indexOf("\r\n", at);
        const qsizetype size = text.mid(at, lineEnd - at).toLongLong(nullptr, 16);
        body += text.mid(lineEnd + 2, size);
        if (size == 0)
            break;
        at = lineEnd + 2 + size + 2;
    }
    return body;
}

/// What a call can't do without, and what it may not have.
template <typename Row> void argumentRows(const Row& row)
{
    row("no argument", post("/refs?recursive=true"), "400", "argument \"ipfs-path\" is required\n");
    row("argument with a raw semicolon", post("/refs?arg=a;b"), "400", "argument \"ipfs-path\" is required\n");
    row("doubled option", post("/pin/ls?type=all&type=direct"), "400",
        "expected key type to have only a single value, received [all direct]\n");
    row("doubled option that nobody knows", post("/id?x=1&x=2"), "200");
    row("add of nothing", post("/add"), "400", "file argument 'path' is required\n");
    row("add without boundary", post("/add", "Content-Type: multipart/form-data\r\n"), "400",
        "no multipart boundary param in Content-Type\n");
    row("no number", post("/add?cid-version=x"), "400",
        "could not convert value \"x\" to type \"int\" (for option \"-cid-version\")\n");
    row("add of an unknown version", post("/add?cid-version=2", "Content-Type: multipart/form-data; boundary=b\r\n"),
        "500", "unknown CID version: 2");
    row("no bool", post("/pin/ls?stream=yes"), "400",
        "could not convert value \"yes\" to type \"bool\" (for option \"-stream\")\n");
}

} // namespace

/// What a node does with requests that a proper client never sends, and how an answer goes wrong if it is asked to.
class tst_NodeServer : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    void requests_data()
    {
        addColumns<QByteArray, QByteArray, QByteArray, bool>("sent", "status", "text", "closes");
        const auto row = [](const char* name, const QByteArray& sent, const char* status, const char* text = "") {
            QTest::newRow(name) << sent << QByteArray(status) << QByteArray(text) << false;
        };
        const auto closing = [](const char* name, const QByteArray& sent, const char* status) {
            QTest::newRow(name) << sent << QByteArray(status) << QByteArray("Connection: close") << true;
        };
        const QByteArray id = "/id";
        closing("negative length", post(id, "Content-Length: -5\r\n"), "400");
        closing("huge length", post(id, "Content-Length: 99999999999999999999\r\n"), "400");
        closing("length in words", post(id, "Content-Length: five\r\n"), "400");
        closing("two lengths", post(id, "Content-Length: 1\r\nContent-Length: 2\r\n"), "400");
        closing("header without colon", post(id, "what is this\r\n"), "400");
        closing("header without name", post(id, ": x\r\n"), "400");
        closing("no request", "\x16\x03\x01 hello\r\n\r\n", "400");
        closing("other version", "POST /api/v0/id HTTP/1.0\r\n\r\n", "505");
        closing("other coding", post(id, "Transfer-Encoding: gzip\r\n"), "501");
        const auto chunks = [&](const QByteArray& body) { return post(id, "Transfer-Encoding: chunked\r\n", body); };
        closing("negative chunk", chunks("-3\r\nabc\r\n0\r\n\r\n"), "400");
        closing("huge chunk", chunks("ffffffffffffffffffff\r\nabc\r\n"), "400");
        closing("chunk size in words", chunks("three\r\nabc\r\n"), "400");
        closing("chunk without end", chunks("3\r\nabcdef\r\n0\r\n\r\n"), "400");
        closing("endless chunk size", chunks(QByteArray(5000, '0')), "400");
        row("chunks", chunks("3;x=y\r\nabc\r\n0\r\nA: b\r\n\r\n"), "200");
        row("head of 1 MiB", post(id, "A: " + QByteArray(1024 * 1024, 'a') + "\r\n"), "200");
        closing("head above 1 MiB and 4 KiB", post(id, "A: " + QByteArray(1024 * 1024 + 4096, 'a') + "\r\n"), "431");
        closing("target above", post("/id?" + QByteArray(2 * 1024 * 1024, 'a')), "431");

        row("own origin", post(id, "Origin: http://localhost:PORT\r\n"), "200");
        row("own origin beats the agent", post(id, "Origin: http://[::1]:PORT\r\nUser-Agent: Mozilla/5.0\r\n"), "200");
        row("foreign origin", post(id, "Origin: http://localhost:1\r\n"), "403", "403 - Forbidden\n");
        row("foreign referer", post(id, "Referer: http://evil.example/http://localhost:PORT\r\n"), "403");
        row("own referer", post(id, "Referer: http://127.0.0.1:PORT/webui/#/x\r\nUser-Agent: Mozilla/5.0\r\n"), "200");
        row("browser", post(id, "User-Agent: Mozilla/5.0\r\n"), "403");
        row("desktop browser", post(id, "User-Agent: Mozilla/5.0 Electron/9\r\n"), "200");
        row("foreign node", post(id, "User-Agent: x/kubo/0.1.0/\r\n"), "400", "api version mismatch");
        row("foreign node asks for the version", post("/version", "User-Agent: /go-ipfs/0.4.0/\r\n"), "200");
        row("same node", post(id, "User-Agent: /kubo/0.43.0/\r\n"), "200");
        closing("large body that is refused", post(id, "Origin: http://a\r\nContent-Length: 999999999\r\n"), "403");
        row("options", "OPTIONS /api/v0/id HTTP/1.1\r\n\r\n", "204");
        row("head", "HEAD /api/v0/id HTTP/1.1\r\n\r\n", "405", "Allow: OPTIONS, POST\r\n\r\n");
        row("unknown path", post("/pin/nothing"), "404", "404 page not found\n");

        argumentRows(row);
    }
    /// Two of each: what is said goes for a kept connection too, and afterwards the node still answers.
    void requests()
    {
        QFETCH(QByteArray, sent);
        QFETCH(const QByteArray, status);
        QFETCH(const QByteArray, text);
        QFETCH(const bool, closes);
        const DemoNode node({.port = 0});
        sent.replace("PORT", QByteArray::number(node.port()));
        const Wire wire(node, post("/version") + sent + (closes ? QByteArray() : sent));
        const QByteArray line = "HTTP/1.1 " + status + ' ';
        const int answers = status == "200" ? 3 : 2;
        QVERIFY2(
            QTest::qWaitFor([&] { return wire.came.count(closes ? line : "HTTP/1.1 ") >= (closes ? 1 : 3); }, patience),
            wire.came.last(std::min<qsizetype>(wire.came.size(), 2000)).constData());
        QCOMPARE(wire.came.count(line), closes ? 1 : answers);
        QVERIFY2(wire.came.contains(text), wire.came.constData());
        if (closes)
            QVERIFY(wire.ends());
        QVERIFY(Wire(node, post("/id")).brings("\"ID\""));
        QTRY_COMPARE(node.openNow(), 0);
    }

    void wholePinLists()
    {
        DemoNode node({.port = 0});
        const Wire document(node, post("/pin/ls?type=recursive&names=true&stream=false"));
        QVERIFY(document.brings("0\r\n\r\n"));
        QCOMPARE(withoutFrames(document.came).count("\"Type\":\"recursive\""), 8);
        QVERIFY(withoutFrames(document.came).startsWith("{\"Keys\":{\""));
        node.forget(*decodeCid(u"bafkreifjjcie6lypi6ny7amxnfftagclbuxndqonfipmb64f2km2devei4"_s));
        const Wire broken(node, post("/pin/ls?stream=true"));
        QVERIFY2(broken.brings("\r\n0\r\nX-Stream-Error: block was not found locally"), broken.came.constData());
        const Wire none(node, post("/pin/ls"));
        QVERIFY2(none.brings("HTTP/1.1 500 "), none.came.constData());
        const DemoNode empty({.port = 0, .pins = 0});
        const Wire without(empty, post("/pin/ls"));
        QVERIFY(without.brings("\r\n3\r\n{}\n\r\n0\r\n\r\n"));
    }

    void endings_data()
    {
        QTest::addColumn<NodeAnswer>("answer");
        QTest::addColumn<QByteArray>("came"); ///< its end
        QTest::addColumn<int>("error");       ///< of the socket; -1 if the connection stays
        const auto with = [](auto change) {
            NodeAnswer answer = NodeAnswer::json("body");
            change(answer);
            return answer;
        };
        const int closed = QAbstractSocket::RemoteHostClosedError; // a reset is the same to QTcpSocket
        QTest::newRow("complete") << with([](auto&) {}) << QByteArray("\r\n4\r\nbody\r\n0\r\n\r\n") << -1;
        QTest::newRow("cut in the head") << with([](auto& a) { a.cutAfter = 8; }) << QByteArray("HTTP/1.1") << closed;
        QTest::newRow("cut in the last chunk, after a stall") << with([](auto& a) {
            a.headers.clear();
            a.chunks.append({.bytes = "more", .pause = std::chrono::milliseconds(5)});
            a.cutAfter = QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nTrailer: X-Stream-Error\r\n"
                                    "Server: kubo/0.43.0\r\nVary: Origin\r\n\r\n4\r\nbody\r\n4\r\nmore\r\n0")
                             .size();
            a.stall = std::chrono::milliseconds(5);
            a.ending = NodeAnswer::Reset;
        }) << QByteArray("4\r\nmore\r\n0") << closed;
        QTest::newRow("raw") << NodeAnswer::raw("HTTP/1.0 200\r\n\r\nx", NodeAnswer::Close)
                             << QByteArray("HTTP/1.0 200\r\n\r\nx") << closed;
        QTest::newRow("length and trailers") << with([](auto& a) {
            a.framing = NodeAnswer::ContentLength;
            a.trailers = {{"X", "y"}};
            a.afterwards = NodeAnswer::SilentClose;
        }) << QByteArray("\r\nContent-Type: application/json\r\n\r\nbody")
                                             << closed;
        QTest::newRow("trailers") << NodeAnswer::brokenOff("a\n", "no") << QByteArray("0\r\nX-Stream-Error: no\r\n\r\n")
                                  << -1;
    }
    void endings()
    {
        QFETCH(const NodeAnswer, answer);
        QFETCH(const QByteArray, came);
        QFETCH(const int, error);
        FakeNode node;
        node.answer("/x", answer);
        const Wire wire(node, post("/x"));
        QVERIFY2(QTest::qWaitFor([&] { return wire.came.endsWith(came); }, patience), wire.came.constData());
        QTRY_COMPARE(static_cast<int>(wire.error()), error);
        QTRY_COMPARE(node.openNow(), 0);
        QCOMPARE(node.abandonedCount(), 0);
    }

    void closesAReusedConnection()
    {
        FakeNode node;
        NodeAnswer answer = NodeAnswer::json("{}");
        answer.afterwards = NodeAnswer::CloseAtNextRequest;
        node.answer("/x", answer);
        Wire wire(node, post("/x"));
        QVERIFY(wire.brings("0\r\n\r\n"));
        wire.came.clear();
        wire.write(post("/x"));
        QVERIFY(wire.ends());
        QCOMPARE(wire.came, QByteArray());
        QCOMPARE(node.headCount("/x"), 2);
        QCOMPARE(node.count("/x"), 1);
        QCOMPARE(node.unansweredCount("/x"), 1);
        QCOMPARE(node.connectionCount(), 1);
    }

    void countsWhoLeaves()
    {
        FakeNode node;
        node.answer("/x", NodeAnswer::hold());
        node.answer("/y", NodeAnswer::hangAfter("a"));
        Wire held(node, post("/x"));
        Wire hanging(node, post("/y"));
        QVERIFY(hanging.brings("1\r\na\r\n"));
        QTRY_COMPARE(node.heldCount("/x"), 1);
        held.disconnectFromHost();
        hanging.abort();
        QTRY_COMPARE(node.abandonedCount(), 2);
        QCOMPARE(node.heldCount("/x"), 0);
        QCOMPARE(node.openNow(), 0);
        QCOMPARE(node.mostOpen(), 2);
    }

    /// Each piece of the body is answered with as many bytes while the rest is still to come.
    void answersAnUpload()
    {
        FakeNode node;
        NodeUpload upload {.head = NodeAnswer::json({})};
        upload.head.chunks.clear();
        upload.onPiece = [](const QByteArray& piece, bool) {
            if (piece.contains('!'))
                return NodeStep {.last = NodeAnswer::error("no")};
            return NodeStep {.bytes = piece.toUpper()};
        };
        node.routeUpload("/add", [&upload](const NodeRequest&) { return upload; });
        Wire wire(node, post("/add", "Transfer-Encoding: chunked\r\n", "3\r\nabc\r\n"));
        QVERIFY(wire.brings("\r\n3\r\nABC\r\n"));
        QVERIFY(wire.came.contains("Connection: close\r\n"));
        wire.write("2\r\nde\r\n0\r\n\r\n");
        QVERIFY(wire.brings("\r\n2\r\nDE\r\n0\r\n\r\n"));
        QVERIFY(wire.ends());

        const Wire refused(node, post("/add", "Content-Length: 1000\r\n", "half!"));
        QVERIFY(refused.brings("HTTP/1.1 500 "));
        QVERIFY(refused.brings("\"no\""));
        QVERIFY(refused.ends());

        upload = {.head = NodeAnswer::text(403, "403 - Forbidden\n")};
        const Wire unread(node, post("/add", "Content-Length: 100000000\r\n"));
        QVERIFY(unread.brings("403 - Forbidden\n"));
        QVERIFY(unread.ends());
        QTRY_COMPARE(node.openNow(), 0);
    }

    /// A file is answered before the next one has come; what was added is pinned and can be read.
    void adds()
    {
        const DemoNode node({.port = 0, .pins = 0});
        const QByteArray start
            = "--b\r\nContent-Disposition: form-data; name=\"file\"; filename=\"docs/hello.txt\"\r\n\r\n"
              "hello world\n\r\n--b\r\n";
        const QByteArray rest = "Content-Disposition: form-data; filename=\"docs\"\r\n"
                                "Content-Type: application/x-directory\r\n\r\n\r\n--b--\r\n";
        const auto add = [&](const QByteArray& options) {
            return post("/add?cid-version=1&wrap-with-directory=true&pin-name=site" + options,
                        "Content-Type: multipart/form-data; boundary=b\r\nContent-Length: "
                            + QByteArray::number(start.size() + rest.size()) + "\r\n",
                        start);
        };
        const QByteArray file = "{\"Name\":\"docs/hello.txt\",\"Hash\":"
                                "\"bafkreifjjcie6lypi6ny7amxnfftagclbuxndqonfipmb64f2km2devei4\",\"Size\":\"12\"}\n";
        const QByteArray root = "bafybeigu66tnnkzn65sqrifvkie7nzul6yfbjhkbzgb2rumg3kuwkth3d4";
        const QByteArray folders = "{\"Name\":\"docs\",\"Hash\":"
                                   "\"bafybeidhkumeonuwkebh2i4fc7o7lguehauradvlk57gzake6ggjsy372a\",\"Size\":\"69\"}\n"
                                   "{\"Name\":\"\",\"Hash\":\""
            + root + "\",\"Size\":\"121\"}\n";
        const QByteArray pin = "{\"Cid\":\"" + root + "\",\"Name\":\"site\",\"Type\":\"recursive\"}\n";
        for (const QByteArray options : {"&only-hash=true", "&pin=false", ""}) {
            Wire wire(node, add(options));
            QVERIFY2(wire.brings(file), wire.came.constData());
            QVERIFY(wire.came.contains("Connection: close\r\n"));
            wire.write(rest);
            QVERIFY(wire.ends());
            QCOMPARE(withoutFrames(wire.came), file + folders);
            const Wire pins(node, post("/pin/ls?names=true&stream=true&type=recursive"));
            QVERIFY(pins.brings("0\r\n\r\n"));
            QCOMPARE(withoutFrames(pins.came), options.isEmpty() ? pin : QByteArray());
        }
        const Wire stat(node, post("/dag/stat?arg=" + root));
        QVERIFY2(stat.brings("\"TotalSize\":121"), stat.came.constData());
    }

    /// A client that does not read is not read either, and both go on when it does.
    void stopsReadingAnUpload()
    {
        FakeNode node;
        node.limitBuffers(128 * 1024);
        qsizetype taken = 0;
        NodeUpload upload {.head = NodeAnswer::json({}), .mostUnsent = 64 * 1024};
        upload.onPiece = [&taken](const QByteArray& piece, bool) {
            taken += piece.size();
            return NodeStep {.bytes = piece + piece};
        };
        node.routeUpload("/add", [&upload](const NodeRequest&) { return upload; });
        constexpr qsizetype size = 16 * 1024 * 1024;
        Wire wire(node);
        wire.setReadBufferSize(1);
        wire.disconnect(&wire);
        wire.write(post("/add", "Content-Length: " + QByteArray::number(size) + "\r\n", QByteArray(size, 'a')));
        QTRY_VERIFY(taken > 0);
        qsizetype before = -1;
        while (before != taken) {
            before = taken;
            QTest::qWait(50);
        }
        QVERIFY2(taken < size / 2, QByteArray::number(taken).constData());
        wire.setReadBufferSize(0);
        QTRY_COMPARE_WITH_TIMEOUT(wire.bytesAvailable() > 2 * size, true, patience);
        QCOMPARE(taken, size);
        QTRY_COMPARE(node.openNow(), 0);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_NodeServer)
#include "tst_nodeserver.moc"
