// SPDX-License-Identifier: MIT
#include "NodeConnection.h"

namespace {

constexpr qsizetype mostPipelined = 1024 * 1024; // bytes
constexpr qint64 mostSkippedBody = 256 * 1024;   // bytes read of a refused request, to keep its connection

int statusOf(RequestReader::Event event)
{
    switch (event) {
    case RequestReader::HeadTooLarge:
        return 431;
    case RequestReader::UnknownCoding:
        return 501;
    case RequestReader::UnknownVersion:
        return 505;
    default:
        return 400;
    }
}

} // namespace

NodeConnection::NodeConnection(qintptr descriptor, NodeServer* newNode, int bufferLimit)
    : QObject(newNode)
    , socket(descriptor, nullptr)
    , node(newNode)
{
    if (bufferLimit > 0)
        socket.limitBuffers(bufferLimit);
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &NodeConnection::onTimer);
    connect(&socket, &NodeSocket::received, this, &NodeConnection::onReceived);
    connect(&socket, &NodeSocket::drained, this, &NodeConnection::onDrained);
    connect(&socket, &NodeSocket::closed, this, &NodeConnection::onClosed);
}

NodeConnection::~NodeConnection()
{
    leave();
}

void NodeConnection::drop()
{
    leave();
    socket.close();
}

void NodeConnection::release(const NodeAnswer& newAnswer)
{
    begin(newAnswer);
}

void NodeConnection::onReceived(QByteArrayView bytes)
{
    reader.append(bytes);
    advance();
}

void NodeConnection::advance()
{
    if (advancing)
        return;
    advancing = true;
    while (phase == Receiving && !waitsForClient()) {
        const auto event = reader.next();
        if (event == RequestReader::NeedsMore)
            break;
        if (event == RequestReader::Head)
            onHead();
        else if (event == RequestReader::Piece)
            onPiece();
        else if (event == RequestReader::End)
            onEnd();
        else
            onBadRequest(event);
    }
    advancing = false;
    updateReading();
}

/// Whether an upload's answer is to be read before more of the body is.
bool NodeConnection::waitsForClient() const
{
    return upload && upload->mostUnsent >= 0 && socket.unsent() > upload->mostUnsent;
}

/// Reads on while an answer plays, to see whether the client leaves; but no body that nobody wants.
void NodeConnection::updateReading()
{
    const bool ignoresBody = phase == Answering && !bodyEnded;
    const bool hasEnough = phase != Receiving && reader.buffered() > mostPipelined;
    socket.setReading(phase != Gone && !ignoresBody && !hasEnough && !waitsForClient());
}

void NodeConnection::onHead()
{
    request = reader.request();
    isOpen = true;
    bodyEnded = false;
    progress = {};
    node->countOpen(request.path);
    if (closesAtNext) {
        isOpen = false;
        node->countEnd(request.path, &NodeServer::Counts::unanswered);
        leave();
        socket.finish();
        return;
    }
    const bool isRefused = node->refusalOf(request).has_value();
    if (isRefused && (reader.bodyLeft() < 0 || reader.bodyLeft() > mostSkippedBody)) {
        begin(node->receive(request));
        return;
    }
    if (!isRefused) {
        if (const auto newUpload = node->uploadOf(request))
            beginUpload(*newUpload);
    }
    if (phase == Receiving && request.header("Expect").toLower() == "100-continue") {
        socket.write("HTTP/1.1 100 Continue\r\n\r\n");
        socket.flush();
    }
}

void NodeConnection::beginUpload(const NodeUpload& newUpload)
{
    node->keep(request);
    emit node->requestReceived(request);
    if (!newUpload.onPiece) {
        bodyEnded = reader.bodyLeft() == 0 && reader.next() == RequestReader::End;
        begin(newUpload.head);
        return;
    }
    upload = newUpload;
    answer = upload->head;
}

void NodeConnection::onPiece()
{
    if (upload)
        takeStep(reader.piece());
    else
        request.body += reader.piece();
}

void NodeConnection::onEnd()
{
    bodyEnded = true;
    if (upload)
        takeStep({});
    else
        begin(node->receive(request));
}

void NodeConnection::takeStep(const QByteArray& piece)
{
    const NodeStep step = upload->onPiece(piece, bodyEnded);
    if (step.last && !progress.headSent && step.bytes.isEmpty()) {
        begin(*step.last);
        return;
    }
    if (!step.bytes.isEmpty()) {
        putHead();
        putChunk(step.bytes);
        socket.flush();
    }
    if (step.last)
        answer = *step.last;
    if (phase == Receiving && (step.last || bodyEnded || progress.isCut)) {
        phase = Answering;
        play();
    }
}

void NodeConnection::onBadRequest(RequestReader::Event event)
{
    if (isOpen && progress.headSent) { // a body that turns to nonsense while it is being answered
        drop();
        return;
    }
    if (!isOpen)
        request = {};
    bodyEnded = false;
    const int status = statusOf(event);
    NodeAnswer refusal = NodeAnswer::text(status, QByteArray::number(status) + " - refused\n");
    refusal.framing = NodeAnswer::ContentLength;
    begin(refusal);
}
