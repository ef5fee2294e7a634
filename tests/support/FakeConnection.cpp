#include "FakeConnection.h"

#include <algorithm>

namespace {

/// The socket is kept this full at most, so that a slow reader slows the source down.
constexpr qint64 fullSocket = 256 * 1024;

QByteArray reasonOf(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 400:
        return "Bad Request";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    default:
        return "Internal Server Error";
    }
}

QByteArray chunkFrame(const QByteArray& bytes)
{
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n";
}

/// Takes the first chunk of a chunked body off `input`; nothing while it is incomplete.
std::optional<QByteArray> takeChunk(QByteArray& input)
{
    const qsizetype lineEnd = input.indexOf("\r\n");
    if (lineEnd < 0)
        return std::nullopt;
    const qsizetype size = input.first(lineEnd).toLongLong(nullptr, 16);
    if (input.size() < lineEnd + 2 + size + 2)
        return std::nullopt;
    const QByteArray chunk = input.sliced(lineEnd + 2, size);
    input.remove(0, lineEnd + 2 + size + 2);
    return chunk;
}

} // namespace

FakeConnection::FakeConnection(QTcpSocket* newSocket, FakeNode* newNode)
    : QObject(newNode)
    , socket(newSocket)
    , node(newNode)
{
    socket->setParent(this);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1); // a node sends each piece at once
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &FakeConnection::play);
    connect(socket, &QTcpSocket::readyRead, this, &FakeConnection::onReadyRead);
    connect(socket, &QTcpSocket::bytesWritten, this, &FakeConnection::play);
    connect(socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    onReadyRead();
}

FakeConnection::~FakeConnection()
{
    socket->disconnect(this);
    node->held.removeOne(this);
    if (answering)
        node->countOpen(request.path, -1);
}

void FakeConnection::drop()
{
    socket->abort();
}

void FakeConnection::onReadyRead()
{
    input += socket->readAll();
    while (!answering && takeRequest())
        begin();
}

bool FakeConnection::takeRequest()
{
    if (!headTaken && !takeHead())
        return false;
    headTaken = true;
    if (!takeBody())
        return false;
    headTaken = false;
    return true;
}

bool FakeConnection::takeHead()
{
    const qsizetype end = input.indexOf("\r\n\r\n");
    if (end < 0)
        return false;
    QList<QByteArray> lines = input.first(end).split('\n');
    input.remove(0, end + 4);
    request = {};
    const QList<QByteArray> words = lines.takeFirst().trimmed().split(' ');
    const QByteArray target = words.value(1);
    const qsizetype mark = target.indexOf('?');
    request.method = words.value(0);
    request.path = mark < 0 ? target : target.first(mark);
    request.rawQuery = mark < 0 ? QByteArray() : target.sliced(mark + 1);
    if (request.path.startsWith("/api/v0"))
        request.path.remove(0, 7);
    for (const QByteArray& line : std::as_const(lines)) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            request.headers.append({line.first(colon).trimmed(), line.sliced(colon + 1).trimmed()});
    }
    return true;
}

bool FakeConnection::takeBody()
{
    if (request.header("Transfer-Encoding").toLower() == "chunked") {
        while (const auto chunk = takeChunk(input)) {
            if (chunk->isEmpty())
                return true;
            request.body += *chunk;
        }
        return false;
    }
    const qsizetype length = request.header("Content-Length").toLongLong();
    if (input.size() < length)
        return false;
    request.body = input.first(length);
    input.remove(0, length);
    return true;
}

void FakeConnection::begin()
{
    answering = true;
    node->countOpen(request.path, 1);
    const FakeAnswer scripted = node->answerTo(request);
    if (scripted.held)
        node->held.append(this);
    else
        send(scripted);
}

void FakeConnection::send(const FakeAnswer& newAnswer)
{
    answer = newAnswer;
    position = 0;
    sentBytes = 0;
    headSent = false;
    waiting.reset();
    timer.start(answer.latency);
}

QByteArray FakeConnection::head() const
{
    QByteArray text = "HTTP/1.1 " + QByteArray::number(answer.status) + ' ' + reasonOf(answer.status)
        + "\r\nTransfer-Encoding: chunked\r\nServer: kubo/0.43.0\r\nVary: Origin\r\nTrailer: X-Stream-Error\r\n";
    for (const auto& [name, value] : answer.headers)
        text += name + ": " + value + "\r\n";
    return text + "\r\n";
}

std::optional<FakeChunk> FakeConnection::nextChunk()
{
    if (position < answer.chunks.size())
        return answer.chunks.at(position++);
    return answer.source ? answer.source() : std::nullopt;
}

/// Sends until the socket is full, a pause begins or the answer has ended.
void FakeConnection::play()
{
    if (!answering || playing || timer.isActive() || node->held.contains(this))
        return;
    playing = true; // a flush tells of written bytes while it writes
    if (!headSent)
        socket->write(head());
    headSent = true;
    while (socket->bytesToWrite() < fullSocket && socket->state() == QAbstractSocket::ConnectedState) {
        if (!waiting) {
            waiting = nextChunk();
            if (waiting && waiting->pause.count() > 0) {
                timer.start(waiting->pause);
                break;
            }
        }
        if (!waiting || !playChunk(*std::exchange(waiting, std::nullopt))) {
            end();
            break;
        }
    }
    playing = false;
}

/// Writes and flushes; false once the answer's byte to break at is reached.
bool FakeConnection::playChunk(const FakeChunk& chunk)
{
    QByteArray bytes = chunk.bytes;
    if (answer.dropAfter >= 0)
        bytes.truncate(std::max<qint64>(answer.dropAfter - sentBytes, 0));
    if (!bytes.isEmpty())
        socket->write(chunkFrame(bytes));
    sentBytes += bytes.size();
    socket->flush();
    return answer.dropAfter < 0 || sentBytes < answer.dropAfter;
}

void FakeConnection::end()
{
    if (answer.dropAfter >= 0 || answer.ending == FakeAnswer::Drop) {
        // What was sent is to arrive before the break does.
        socket->disconnectFromHost();
        return;
    }
    if (answer.ending == FakeAnswer::Hang)
        return;
    const QByteArray trailer
        = answer.streamError.isEmpty() ? QByteArray() : "X-Stream-Error: " + answer.streamError + "\r\n";
    socket->write("0\r\n" + trailer + "\r\n");
    closeRequest();
}

void FakeConnection::closeRequest()
{
    answering = false;
    answer = {};
    node->countOpen(request.path, -1);
    if (!input.isEmpty())
        QMetaObject::invokeMethod(this, &FakeConnection::onReadyRead, Qt::QueuedConnection);
}
