// SPDX-License-Identifier: MIT
// Calls a second with 24 open, over a bare NodeAccessManager and over Qt's own, and how fast a long body comes in. The
// server is a process of its own that does nothing but answer; what it manages with a bare socket loop is the limit.

#include "BenchSupport.h"
#include "NodeAccessManager.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QProcess>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int openCalls = 24;
constexpr size_t longBody = 64 * 1024 * 1024;
constexpr size_t pieceSize = 64 * 1024;

const std::string statAnswer = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nServer: kubo/0.43.0\r\n"
                               "Trailer: X-Stream-Error\r\nVary: Origin\r\nTransfer-Encoding: chunked\r\n\r\n"
                               "3a\r\n{\"UniqueBlocks\":2,\"TotalSize\":69,\"Ratio\":1,\"DagStats\":[]}\n\r\n0\r\n\r\n";

sockaddr_in loopback(int port)
{
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void sendAll(int socket, const std::string& bytes)
{
    for (size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        sent += static_cast<size_t>(count);
    }
}

void sendLongBody(int socket)
{
    std::array<char, 16> size {};
    std::snprintf(size.data(), size.size(), "%zx\r\n", pieceSize);
    const std::string piece = size.data() + std::string(pieceSize, 'x') + "\r\n";
    sendAll(socket, statAnswer.substr(0, statAnswer.find("\r\n\r\n") + 4));
    for (size_t sent = 0; sent < longBody; sent += pieceSize)
        sendAll(socket, piece);
    sendAll(socket, "0\r\n\r\n");
}

/// Answers what came on the socket; false once the peer has closed it. A request comes in one piece.
bool answerOn(int socket)
{
    std::array<char, 8192> bytes {};
    const ssize_t count = recv(socket, bytes.data(), bytes.size(), 0);
    if (count <= 0)
        return false;
    const std::string request(bytes.data(), static_cast<size_t>(count));
    if (request.find("/refs/local") != std::string::npos)
        sendLongBody(socket);
    else
        sendAll(socket, statAnswer);
    return true;
}

[[noreturn]] void serve()
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof(address);
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(listener, 128) != 0
        || getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        std::exit(1);
    std::printf("%d\n", ntohs(address.sin_port));
    std::fflush(stdout);
    std::vector<pollfd> sockets {{listener, POLLIN, 0}};
    while (poll(sockets.data(), sockets.size(), -1) > 0) {
        const size_t known = sockets.size();
        if (sockets.front().revents != 0) {
            const int one = 1;
            const int peer = accept(listener, nullptr, nullptr);
            setsockopt(peer, IPPROTO_TCP, TCP_NODELAY, &one, sizeof(one));
            sockets.push_back({peer, POLLIN, 0});
        }
        for (size_t i = known - 1; i > 0; --i) {
            if (sockets.at(i).revents != 0 && !answerOn(sockets.at(i).fd)) {
                close(sockets.at(i).fd);
                sockets.erase(sockets.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
    }
    std::exit(1);
}

/// What the server manages when nothing is in its way: calls a second over bare sockets.
double limitRate(int port, int calls)
{
    std::vector<pollfd> sockets;
    const std::string request = "POST /api/v0/dag/stat?arg=x HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 0\r\n\r\n";
    sockaddr_in address = loopback(port);
    for (int i = 0; i < openCalls; ++i) {
        sockets.push_back({socket(AF_INET, SOCK_STREAM, 0), POLLIN, 0});
        if (connect(sockets.back().fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0)
            return -1;
        sendAll(sockets.back().fd, request);
    }
    QElapsedTimer clock;
    clock.start();
    std::array<char, 4096> bytes {};
    for (int done = 0; done < calls;) {
        poll(sockets.data(), sockets.size(), -1);
        for (const pollfd& one : sockets) {
            if (one.revents == 0 || recv(one.fd, bytes.data(), bytes.size(), 0) <= 0)
                continue;
            ++done;
            sendAll(one.fd, request);
        }
    }
    const double rate = calls * 1e9 / static_cast<double>(clock.nsecsElapsed());
    for (const pollfd& one : sockets)
        close(one.fd);
    return rate;
}

double longBodySeconds(QNetworkAccessManager& manager, const QString& url)
{
    QEventLoop loop;
    QElapsedTimer clock;
    clock.start();
    qsizetype taken = 0;
    QNetworkReply* reply = postReading(manager, url);
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [&] { taken += reply->readAll().size(); });
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    taken += reply->readAll().size();
    delete reply;
    return taken == static_cast<qsizetype>(longBody) ? static_cast<double>(clock.nsecsElapsed()) / 1e9 : -1;
}

void measure(QJsonObject& result, const QString& name, QNetworkAccessManager& manager, int port, int calls)
{
    const QString base = u"http://127.0.0.1:%1/api/v0"_s.arg(port);
    const CallRate rate = measureCalls(manager, base + u"/dag/stat?progress=false&arg=%1"_s, calls);
    result[name + u"CallsPerSecond"_s] = rate.callsPerSecond;
    result[name + u"CpuMicroseconds"_s] = rate.cpuMicroseconds;
    result[name + u"LongBodySeconds"_s] = longBodySeconds(manager, base + u"/refs/local"_s);
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc > 1 && std::string(argv[1]) == "--serve")
        serve();
    const QCoreApplication app(argc, argv);
    constexpr int calls = 40'000;
    QProcess server;
    server.start(QCoreApplication::applicationFilePath(), {u"--serve"_s});
    if (!server.waitForReadyRead())
        return 1;
    const int port = server.readLine().trimmed().toInt();
    for (int round = 0; round < 3; ++round) {
        QJsonObject result {{u"calls"_s, calls}, {u"limitCallsPerSecond"_s, limitRate(port, calls)}};
        QNetworkAccessManager plain;
        NodeAccessManager ours;
        measure(result, u"qt"_s, plain, port, calls);
        measure(result, u"node"_s, ours, port, calls);
        std::printf("%s\n", QJsonDocument(rounded(result)).toJson(QJsonDocument::Compact).constData());
    }
    server.kill();
    server.waitForFinished();
    return 0;
}
