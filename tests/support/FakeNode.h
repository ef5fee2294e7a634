#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QTcpServer>

#include <chrono>
#include <functional>
#include <optional>
#include <utility>

class FakeConnection;

using HeaderList = QList<std::pair<QByteArray, QByteArray>>;

/// One request, as it was sent.
struct FakeRequest
{
    QByteArray method {};
    QByteArray path {}; ///< without "/api/v0" and without the query
    QByteArray rawQuery {};
    HeaderList headers {};
    QByteArray body {};

    /// Empty if the header is absent; `name` in any case.
    QByteArray header(QByteArrayView name) const;
    /// The query items in order, decoded as the node decodes them: "+" is a blank, an item with a raw ";" is dropped.
    QList<std::pair<QString, QString>> items() const;
    QString value(const QString& key) const;
    QStringList values(const QString& key) const;
};

struct FakeChunk
{
    QByteArray bytes {};
    std::chrono::milliseconds pause {0}; ///< waited before the bytes are sent
};

/// What the node answers, and how it goes wrong.
struct FakeAnswer
{
    enum Ending { Complete, Hang, Drop };

    int status = 200;
    HeaderList headers {};
    QList<FakeChunk> chunks {};
    /// Asked for more chunks after `chunks`, whenever the socket has room; nothing ends the body.
    std::function<std::optional<FakeChunk>()> source {};
    Ending ending = Complete;              ///< what follows the last chunk
    qint64 dropAfter = -1;                 ///< body bytes after which the connection breaks; -1 for never
    QByteArray streamError {};             ///< sent as the trailer X-Stream-Error
    std::chrono::milliseconds latency {0}; ///< waited before the first byte
    bool held = false;                     ///< nothing is sent until FakeNode::release

    static FakeAnswer json(const QByteArray& body);
    /// A node's error before the first value.
    static FakeAnswer error(const QByteArray& message, int code = 0);
    static FakeAnswer text(int status, const QByteArray& body);
    static FakeAnswer hold();
    static FakeAnswer hangAfter(const QByteArray& body);
    static FakeAnswer dropAt(const QByteArray& body, qint64 byte);
    /// `body` cut into chunks of `size` bytes, `pause` before each.
    static FakeAnswer chunked(const QByteArray& body, qsizetype size, std::chrono::milliseconds pause = {});
};

/// An HTTP/1.1 server on 127.0.0.1 that answers as a node's RPC does: keep-alive, chunked, 405 for anything but POST
/// and 403 for a foreign Origin or a browser's agent. What a path answers is scripted; what was asked is kept.
class FakeNode : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<FakeAnswer(const FakeRequest&)>;

    explicit FakeNode(QObject* parent = nullptr);
    ~FakeNode() override;

    /// Port 0 takes a free one. The constructor has listened on a free one already.
    bool listen(quint16 port);
    quint16 port() const { return server.serverPort(); }
    QString lastError() const { return server.errorString(); }
    /// From here on connections are refused.
    void stop();

    void allowOrigin(const QByteArray& origin) { allowedOrigins.append(origin); }
    /// Scripts for paths as "/pin/ls". A path without one is answered with 404.
    void route(const QByteArray& path, Handler handler) { handlers[path] = std::move(handler); }
    void answer(const QByteArray& path, const FakeAnswer& answer);
    /// One after the other; the last one stays.
    void answers(const QByteArray& path, const QList<FakeAnswer>& list);

    const QList<FakeRequest>& requests() const { return received; }
    QList<FakeRequest> requests(const QByteArray& path) const;
    int count(const QByteArray& path) const { return static_cast<int>(requests(path).size()); }
    void clearRequests() { received.clear(); }
    /// A long run need not keep every request.
    void keepRequests(bool on) { keeping = on; }

    /// Requests whose answer has not ended; an empty path stands for all.
    int openNow(const QByteArray& path = {}) const { return open.value(path); }
    int mostOpen(const QByteArray& path = {}) const { return most.value(path); }

    /// How many requests to `path` are held.
    int heldCount(const QByteArray& path) const;
    /// Answers the `index`th of the held requests to `path`, oldest first.
    void release(const QByteArray& path, const FakeAnswer& answer, int index = 0);

signals:
    void requestReceived(const FakeRequest& request);

private:
    friend class FakeConnection;
    FakeAnswer answerTo(const FakeRequest& request);
    std::optional<FakeAnswer> refusalOf(const FakeRequest& request) const;
    void countOpen(const QByteArray& path, int change);

    QTcpServer server;
    QHash<QByteArray, Handler> handlers;
    QList<QByteArray> allowedOrigins;
    QList<FakeRequest> received;
    QHash<QByteArray, int> open;
    QHash<QByteArray, int> most;
    QList<FakeConnection*> held;
    bool keeping = true;
};
