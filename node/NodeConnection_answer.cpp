// SPDX-License-Identifier: MIT
#include "AccessRules.h"
#include "NodeConnection.h"

#include <algorithm>
#include <numeric>

using namespace std::chrono_literals;

namespace {

constexpr qsizetype fullSocket = 256 * 1024; // bytes unsent; a slow reader slows the source down
constexpr auto earlyLinger = 500ms;          // in which a client can read an answer it did not expect yet

QByteArrayView reasonOf(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 204:
        return "No Content";
    case 301:
        return "Moved Permanently";
    case 302:
        return "Found";
    case 307:
        return "Temporary Redirect";
    case 308:
        return "Permanent Redirect";
    case 400:
        return "Bad Request";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 431:
        return "Request Header Fields Too Large";
    case 501:
        return "Not Implemented";
    case 505:
        return "HTTP Version Not Supported";
    default:
        return "Internal Server Error";
    }
}

qint64 sizeOf(const QList<NodeChunk>& chunks)
{
    return std::accumulate(chunks.begin(), chunks.end(), qint64 {0},
                           [](qint64 sum, const NodeChunk& chunk) { return sum + chunk.bytes.size(); });
}

void appendHeader(QByteArray& text, QByteArrayView name, QByteArrayView value)
{
    text.append(name).append(": ").append(value).append("\r\n");
}

QByteArray headOf(const NodeAnswer& answer, bool saysClose)
{
    QByteArray text;
    text.reserve(512);
    text.append("HTTP/1.1 ").append(QByteArray::number(answer.status)).append(' ').append(reasonOf(answer.status));
    text.append("\r\n");
    if (answer.framing == NodeAnswer::Chunked)
        text.append("Transfer-Encoding: chunked\r\nTrailer: X-Stream-Error\r\n");
    else if (answer.status != 204)
        appendHeader(text, "Content-Length", QByteArray::number(sizeOf(answer.chunks)));
    text.append("Server: kubo/").append(nodeVersion).append("\r\nVary: Origin\r\n");
    if (saysClose)
        text.append("Connection: close\r\n");
    for (const auto& [name, value] : answer.headers)
        appendHeader(text, name, value);
    return text.append("\r\n");
}

} // namespace

void NodeConnection::begin(const NodeAnswer& newAnswer)
{
    upload.reset();
    answer = newAnswer;
    progress = {};
    phase = Answering;
    if (answer.held)
        node->held.append(this);
    else if (answer.latency.count() > 0)
        timer.start(answer.latency);
    else
        play();
}

void NodeConnection::onTimer()
{
    if (progress.isBreaking)
        breakNow();
    else
        play();
}

void NodeConnection::onDrained()
{
    play();
    advance();
}

/// Sends until the socket is full, a pause begins or the answer has ended.
void NodeConnection::play()
{
    if (phase != Answering || playing || timer.isActive() || answer.held)
        return;
    playing = true;
    while (phase == Answering && socket.unsent() < fullSocket && playNext()) { }
    socket.flush();
    playing = false;
    if (phase == Receiving)
        advance();
}

/// False if the rest has to wait or there is none.
bool NodeConnection::playNext()
{
    putHead();
    if (!progress.waiting && !progress.isCut) {
        progress.waiting = nextChunk();
        if (progress.waiting && progress.waiting->pause.count() > 0) {
            timer.start(progress.waiting->pause);
            return false;
        }
    }
    if (progress.isCut) {
        breakOff();
        return false;
    }
    if (!progress.waiting) {
        endAnswer();
        return false;
    }
    putChunk(std::exchange(progress.waiting, std::nullopt)->bytes);
    if (progress.position < answer.chunks.size())
        socket.flush();
    return true;
}

std::optional<NodeChunk> NodeConnection::nextChunk()
{
    if (progress.position < answer.chunks.size())
        return answer.chunks.at(progress.position++);
    return answer.source ? answer.source() : std::nullopt;
}

/// Everything goes out through here, so that an answer can be cut at any byte.
void NodeConnection::put(QByteArrayView bytes)
{
    if (progress.isCut)
        return;
    if (answer.cutAfter >= 0 && progress.wireBytes + bytes.size() >= answer.cutAfter) {
        bytes = bytes.first(answer.cutAfter - progress.wireBytes);
        progress.isCut = true;
    }
    progress.wireBytes += bytes.size();
    socket.write(bytes);
}

void NodeConnection::putHead()
{
    if (std::exchange(progress.headSent, true))
        return;
    progress.isEarly = !bodyEnded;
    if (answer.framing != NodeAnswer::Raw)
        put(headOf(answer, saysClose()));
}

void NodeConnection::putChunk(QByteArray bytes)
{
    const bool isLast = answer.dropAfter >= 0 && progress.bodyBytes + bytes.size() >= answer.dropAfter;
    if (isLast)
        bytes.truncate(answer.dropAfter - progress.bodyBytes);
    progress.bodyBytes += bytes.size();
    if (answer.framing != NodeAnswer::Chunked) {
        put(bytes);
    } else if (!bytes.isEmpty()) {
        put(QByteArray::number(bytes.size(), 16) + "\r\n");
        put(bytes);
        put("\r\n");
    }
    progress.isCut = progress.isCut || isLast;
}

void NodeConnection::putEnd()
{
    if (answer.framing != NodeAnswer::Chunked)
        return;
    QByteArray text = "0\r\n";
    for (const auto& [name, value] : std::as_const(answer.trailers))
        appendHeader(text, name, value);
    put(text.append("\r\n"));
}

bool NodeConnection::saysClose() const
{
    return progress.isEarly || answer.afterwards == NodeAnswer::SaidClose
        || request.header("Connection").compare("close", Qt::CaseInsensitive) == 0;
}

void NodeConnection::endAnswer()
{
    if (answer.ending == NodeAnswer::Complete || answer.cutAfter >= 0)
        putEnd();
    if (progress.isCut || answer.ending != NodeAnswer::Complete) {
        breakOff();
        return;
    }
    if (std::exchange(isOpen, false))
        node->countEnd(request.path);
    upload.reset();
    closesAtNext = answer.afterwards == NodeAnswer::CloseAtNextRequest;
    const bool closes = saysClose() || answer.afterwards == NodeAnswer::SilentClose;
    answer = {};
    phase = closes ? Gone : Receiving;
    if (closes)
        socket.finish(progress.isEarly ? earlyLinger : 0ms);
}

void NodeConnection::breakOff()
{
    socket.flush();
    if (answer.ending == NodeAnswer::Hang) {
        phase = Hanging;
    } else if (answer.stall.count() > 0) {
        progress.isBreaking = true;
        timer.start(answer.stall);
    } else {
        breakNow();
    }
}

void NodeConnection::breakNow()
{
    const bool resets = answer.ending == NodeAnswer::Reset;
    leave();
    if (resets)
        socket.reset();
    else
        socket.finish();
}

/// Nothing more is answered here.
void NodeConnection::leave()
{
    node->held.removeOne(this);
    if (std::exchange(isOpen, false))
        node->countEnd(request.path);
    phase = Gone;
    timer.stop();
}

void NodeConnection::onClosed(bool byClient)
{
    if (byClient && std::exchange(isOpen, false))
        node->countEnd(request.path, &NodeServer::Counts::abandoned);
    leave();
    deleteLater();
}
