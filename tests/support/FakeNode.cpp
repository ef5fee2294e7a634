#include "FakeNode.h"

#include "FakeConnection.h"

#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString goUnescaped(QByteArray text)
{
    return QString::fromUtf8(QByteArray::fromPercentEncoding(text.replace('+', ' ')));
}

} // namespace

QByteArray FakeRequest::header(QByteArrayView name) const
{
    const auto match = std::ranges::find_if(
        headers, [name](const auto& header) { return header.first.compare(name, Qt::CaseInsensitive) == 0; });
    return match == headers.end() ? QByteArray() : match->second;
}

QList<std::pair<QString, QString>> FakeRequest::items() const
{
    QList<std::pair<QString, QString>> list;
    for (const QByteArray& item : rawQuery.split('&')) {
        if (item.isEmpty() || item.contains(';'))
            continue;
        const qsizetype equals = item.indexOf('=');
        if (equals < 0)
            list.append({goUnescaped(item), {}});
        else
            list.append({goUnescaped(item.first(equals)), goUnescaped(item.sliced(equals + 1))});
    }
    return list;
}

QString FakeRequest::value(const QString& key) const
{
    return values(key).value(0);
}

QStringList FakeRequest::values(const QString& key) const
{
    QStringList found;
    for (const auto& [name, value] : items()) {
        if (name == key)
            found.append(value);
    }
    return found;
}

FakeAnswer FakeAnswer::json(const QByteArray& body)
{
    return {.headers = {{"Content-Type", "application/json"}}, .chunks = {{.bytes = body}}};
}

FakeAnswer FakeAnswer::error(const QByteArray& message, int code)
{
    FakeAnswer answer
        = json("{\"Message\":\"" + message + "\",\"Code\":" + QByteArray::number(code) + ",\"Type\":\"error\"}\n");
    answer.status = code == 1 ? 400 : 500;
    return answer;
}

FakeAnswer FakeAnswer::text(int status, const QByteArray& body)
{
    return {.status = status, .headers = {{"Content-Type", "text/plain"}}, .chunks = {{.bytes = body}}};
}

FakeAnswer FakeAnswer::hold()
{
    return {.held = true};
}

FakeAnswer FakeAnswer::hangAfter(const QByteArray& body)
{
    FakeAnswer answer = json(body);
    answer.ending = Hang;
    return answer;
}

FakeAnswer FakeAnswer::dropAt(const QByteArray& body, qint64 byte)
{
    FakeAnswer answer = json(body);
    answer.dropAfter = byte;
    return answer;
}

FakeAnswer FakeAnswer::chunked(const QByteArray& body, qsizetype size, std::chrono::milliseconds pause)
{
    FakeAnswer answer = json({});
    answer.chunks.clear();
    for (qsizetype start = 0; start < body.size(); start += size)
        answer.chunks.append({.bytes = body.mid(start, size), .pause = pause});
    return answer;
}

FakeNode::FakeNode(QObject* parent)
    : QObject(parent)
{
    connect(&server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = server.nextPendingConnection())
            new FakeConnection(socket, this);
    });
    listen(0);
}

FakeNode::~FakeNode()
{
    qDeleteAll(findChildren<FakeConnection*>(Qt::FindDirectChildrenOnly)); // each counts itself out
}

bool FakeNode::listen(quint16 port)
{
    server.close();
    return server.listen(QHostAddress::LocalHost, port);
}

void FakeNode::stop()
{
    server.close();
    for (FakeConnection* connection : findChildren<FakeConnection*>())
        connection->drop();
}

void FakeNode::answer(const QByteArray& path, const FakeAnswer& answer)
{
    route(path, [answer](const FakeRequest&) { return answer; });
}

void FakeNode::answers(const QByteArray& path, const QList<FakeAnswer>& list)
{
    route(path, [list = QList(list)](const FakeRequest&) mutable {
        return list.size() > 1 ? list.takeFirst() : list.constFirst();
    });
}

QList<FakeRequest> FakeNode::requests(const QByteArray& path) const
{
    QList<FakeRequest> matching;
    std::ranges::copy_if(received, std::back_inserter(matching),
                         [&path](const FakeRequest& request) { return request.path == path; });
    return matching;
}

int FakeNode::heldCount(const QByteArray& path) const
{
    return static_cast<int>(
        std::ranges::count_if(held, [&path](const FakeConnection* waiting) { return waiting->currentPath() == path; }));
}

void FakeNode::release(const QByteArray& path, const FakeAnswer& answer, int index)
{
    for (FakeConnection* waiting : std::as_const(held)) {
        if (waiting->currentPath() == path && index-- == 0) {
            held.removeOne(waiting);
            waiting->send(answer);
            return;
        }
    }
    qFatal("no request to %s is held", path.constData());
}

FakeAnswer FakeNode::answerTo(const FakeRequest& request)
{
    if (keeping)
        received.append(request);
    emit requestReceived(request);
    if (auto refusal = refusalOf(request))
        return *std::move(refusal);
    const auto handler = handlers.constFind(request.path);
    return handler == handlers.constEnd() ? FakeAnswer::text(404, "404 page not found\n") : (*handler)(request);
}

std::optional<FakeAnswer> FakeNode::refusalOf(const FakeRequest& request) const
{
    const auto forbidden = FakeAnswer::text(403, "403 - Forbidden\n");
    if (request.method != "POST") {
        FakeAnswer refusal = FakeAnswer::text(405, "405 - Method Not Allowed\n");
        refusal.headers.emplaceBack("Allow", "OPTIONS, POST");
        return refusal;
    }
    if (const QByteArray origin = request.header("Origin"); !origin.isEmpty()) {
        const bool known = origin == "http://127.0.0.1:" + QByteArray::number(port())
            || origin == "http://localhost:" + QByteArray::number(port()) || allowedOrigins.contains(origin)
            || allowedOrigins.contains("*");
        return known ? std::nullopt : std::optional(forbidden);
    }
    return request.header("User-Agent").startsWith("Mozilla") ? std::optional(forbidden) : std::nullopt;
}

void FakeNode::countOpen(const QByteArray& path, int change)
{
    for (const QByteArray& key : {path, QByteArray()}) {
        open[key] += change;
        most[key] = std::max(most[key], open[key]);
    }
}
