// SPDX-License-Identifier: MIT
#include "NodeReply.h"

#include "NodeAccessManager.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstring>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestFailureBody = 64 * 1024;
/// The node takes a request line and headers of 1 MiB and 4 KiB together, libcurl makes 1 MiB at most.
constexpr qsizetype longestRequestHead = 1024 * 1024 - 16 * 1024;
constexpr qint64 progressInterval = 50; // ms
constexpr auto streamErrorName = "X-Stream-Error";

bool isSet(const QNetworkRequest& request, NodeAccessManager::RequestAttribute attribute)
{
    return request.attribute(static_cast<QNetworkRequest::Attribute>(attribute)).toBool();
}

QString textOf(const QNetworkRequest& request, NodeAccessManager::RequestAttribute attribute)
{
    return request.attribute(static_cast<QNetworkRequest::Attribute>(attribute)).toString();
}

QUrl shownUrl(const QNetworkRequest& request)
{
    const QString shown = textOf(request, NodeAccessManager::ShownAddress);
    return shown.isEmpty() ? request.url() : QUrl(shown);
}

QByteArray headerLine(const QByteArray& name, QByteArray value)
{
    value.replace('\r', ' ').replace('\n', ' ').replace('\0', ' ');
    return value.isEmpty() ? name + ';' : name + ": " + value;
}

} // namespace

NodeReply::NodeReply(CurlLoop& newLoop, QNetworkAccessManager::Operation newOperation,
                     const QNetworkRequest& newRequest, QIODevice* newBody, QObject* parent)
    : QNetworkReply(parent)
    , loop(&newLoop)
    , body(newBody)
{
    setRequest(newRequest);
    setUrl(newRequest.url());
    setOperation(newOperation);
    open(ReadOnly | Unbuffered);
    start();
}

NodeReply::~NodeReply()
{
    leaveLoop();
}

/// Why the request is none that this class can make; empty if it is one.
QString NodeReply::refusal() const
{
    if (operation() != QNetworkAccessManager::PostOperation)
        return tr("Only POST requests can be sent");
    if (url().scheme() != "http"_L1)
        return tr("Protocol \"%1\" is unknown").arg(url().scheme());
    if (body && (body->isSequential() || !body->isReadable()))
        return tr("What is to be sent can't be read");
    return {};
}

void NodeReply::start()
{
    if (const QString reason = refusal(); !reason.isEmpty()) {
        failLater({ProtocolUnknownError, reason});
    } else if (url().host().isEmpty()) {
        failLater(hostNotFound(textOf(request(), NodeAccessManager::ShownHost)));
    } else if (const QByteArray address = url().toEncoded(); address.size() > longestRequestHead) {
        failLater({ProtocolInvalidOperationError,
                   tr("The request is too long for the node: %1 bytes, of at most %2")
                       .arg(QString::number(address.size()), QString::number(longestRequestHead))});
    } else {
        handle = loop->takeHandle();
        if (prepare())
            loop->start(handle, this);
        else
            failLater({ProtocolFailure, tr("The request can't be made: out of memory")});
    }
}

void NodeReply::failLater(const ReplyFailure& newFailure)
{
    leaveLoop();
    failure = newFailure;
    ended = true;
    loop->mark(this);
}

bool NodeReply::prepare()
{
    const QByteArray address = url().toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    const bool reuses = isSet(request(), NodeAccessManager::MayRepeat) && !body;
    curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, reuses ? 0L : 1L);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &NodeReply::onHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &NodeReply::onBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
    return curl_easy_setopt(handle, CURLOPT_URL, address.constData()) == CURLE_OK && prepareHeaders() && prepareBody();
}

bool NodeReply::prepareHeaders()
{
    // libcurl's own "Expect" would hold a body up, and a node needs no "Accept".
    QList<QByteArray> lines {"Expect:", "Accept:"};
    const QList<QByteArray> names = request().rawHeaderList();
    for (const QByteArray& name : names) {
        if (name.compare("Content-Length", Qt::CaseInsensitive) != 0)
            lines.append(headerLine(name, request().rawHeader(name)));
    }
    for (const QByteArray& line : std::as_const(lines)) {
        curl_slist* longer = curl_slist_append(requestHeaders.get(), line.constData());
        if (!longer)
            return false;
        static_cast<void>(requestHeaders.release());
        requestHeaders.reset(longer);
    }
    return curl_easy_setopt(handle, CURLOPT_HTTPHEADER, requestHeaders.get()) == CURLE_OK;
}

bool NodeReply::prepareBody()
{
    bodySize = body ? body->size() - body->pos() : 0;
    curl_easy_setopt(handle, CURLOPT_POST, 1L);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(bodySize));
    curl_easy_setopt(handle, CURLOPT_READFUNCTION, &NodeReply::onRead);
    curl_easy_setopt(handle, CURLOPT_READDATA, this);
    // No fields means that the body is read; an empty one is given at once.
    return curl_easy_setopt(handle, CURLOPT_POSTFIELDS, bodySize > 0 ? nullptr : "") == CURLE_OK;
}

void NodeReply::leaveLoop()
{
    if (!loop)
        return;
    loop->unmark(this);
    if (!handle)
        return;
    // Dropped while libcurl works, the handle may call back once more.
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, nullptr);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, nullptr);
    curl_easy_setopt(handle, CURLOPT_READDATA, nullptr);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, nullptr);
    loop->drop(std::exchange(handle, nullptr));
}

size_t NodeReply::onHeader(char* bytes, size_t size, size_t count, void* reply)
{
    auto* self = static_cast<NodeReply*>(reply);
    const size_t length = size * count;
    if (!self || !self->head.takeLine(QByteArrayView(bytes, static_cast<qsizetype>(length))))
        return 0;
    if (self->head.isComplete() && !self->headPublished && self->loop)
        self->loop->mark(self);
    return length;
}

size_t NodeReply::onBody(char* bytes, size_t size, size_t count, void* reply)
{
    auto* self = static_cast<NodeReply*>(reply);
    return self ? self->takeBody(QByteArrayView(bytes, static_cast<qsizetype>(size * count))) : 0;
}

size_t NodeReply::takeBody(QByteArrayView bytes)
{
    if (head.status() >= 400 && keptBody.size() < longestFailureBody)
        keptBody.append(bytes.first(std::min(bytes.size(), longestFailureBody - keptBody.size())));
    received.append(bytes);
    hasNews = true;
    loop->mark(this);
    return static_cast<size_t>(bytes.size());
}

size_t NodeReply::onRead(char* bytes, size_t size, size_t count, void* reply)
{
    auto* self = static_cast<NodeReply*>(reply);
    return self ? self->giveBody(bytes, size * count) : CURL_READFUNC_ABORT;
}

size_t NodeReply::giveBody(char* bytes, size_t room)
{
    const QPointer<NodeReply> self = this;
    const qint64 wanted = std::min(static_cast<qint64>(room), bodySize - bodySent);
    const qint64 given = body ? body->read(bytes, wanted) : -1;
    if (!self || !handle) // the device's own slots have ended this reply
        return CURL_READFUNC_ABORT;
    if (given <= 0 && wanted > 0) {
        failure = {UnknownContentError, body ? body->errorString() : tr("What was to be sent is gone")};
        return CURL_READFUNC_ABORT;
    }
    bodySent += given;
    loop->mark(this);
    return static_cast<size_t>(given);
}

qint64 NodeReply::bytesAvailable() const
{
    return QNetworkReply::bytesAvailable() + received.size() - receivedStart;
}

qint64 NodeReply::readData(char* data, qint64 maxSize)
{
    const qsizetype taken = std::min<qsizetype>(received.size() - receivedStart, maxSize);
    if (taken == 0)
        return isFinished() ? -1 : 0;
    std::memcpy(data, received.constData() + receivedStart, static_cast<size_t>(taken));
    receivedStart += taken;
    if (receivedStart == received.size()) {
        received.resize(0); // keeps its room for what is still to come
        receivedStart = 0;
    }
    return taken;
}

void NodeReply::takeEnd(CURLcode result, long osError)
{
    handle = nullptr;
    requestHeaders.reset();
    ended = true;
    if (failure.code == NoError)
        failure = failureOf(result, osError);
}

ReplyFailure NodeReply::failureOf(CURLcode result, long osError) const
{
    if (result != CURLE_OK)
        return failureOfTransfer(result, osError, url());
    if (!head.isComplete()) // cut off within its head, which libcurl lets pass
        return {RemoteHostClosedError, failureOfTransfer(CURLE_PARTIAL_FILE, 0, url()).text};
    if (head.status() < 200 || head.status() > 299)
        return failureOfStatus(head.status(), head.reason(), shownUrl(request()));
    if (const QByteArray words = head.trailer(streamErrorName);
        !words.isEmpty() && !isSet(request(), NodeAccessManager::KeepsWhatCame))
        return {UnknownServerError, QString::fromUtf8(words)};
    return {};
}

void NodeReply::deliver()
{
    const QPointer<NodeReply> self = this;
    if (head.isComplete() && !headPublished)
        publishHead();
    if (self && !isFinished())
        publishUploadProgress();
    if (self && !isFinished() && std::exchange(hasNews, false))
        emit readyRead();
    if (self && ended && !isFinished())
        finish();
}

void NodeReply::publishHead()
{
    headPublished = true;
    setAttribute(QNetworkRequest::HttpStatusCodeAttribute, head.status());
    setAttribute(QNetworkRequest::HttpReasonPhraseAttribute, head.reason());
    for (const auto& [name, value] : head.headers())
        setRawHeader(name, value);
    emit metaDataChanged();
}

void NodeReply::publishTrailers()
{
    for (const auto& [name, value] : head.trailers())
        setRawHeader(name, value);
}

void NodeReply::publishUploadProgress()
{
    const bool due = !sinceProgress.isValid() || sinceProgress.hasExpired(progressInterval) || bodySent == bodySize;
    if (bodySent == bodyReported || !due)
        return;
    bodyReported = bodySent;
    sinceProgress.start();
    emit uploadProgress(bodySent, bodySize);
}

void NodeReply::finish()
{
    publishTrailers();
    setFinished(true);
    const QPointer<NodeReply> self = this;
    if (failure.code != NoError) {
        setError(failure.code, failure.text);
        emit errorOccurred(failure.code);
    }
    if (self)
        emit finished();
}

void NodeReply::abort()
{
    if (isFinished())
        return;
    leaveLoop();
    received.clear();
    receivedStart = 0;
    failure = {OperationCanceledError, tr("Operation canceled")};
    const QPointer<NodeReply> self = this;
    finish();
    if (self)
        close();
}
