// SPDX-License-Identifier: MIT
#pragma once

#include "NodeMessages.h"

#include <QHash>
#include <QObject>

#include <memory>

class NodeConnection;
class NodeListener;

/// An HTTP/1.1 server on 127.0.0.1 with the manners and limits of a node's RPC: keep-alive, chunks, trailers, and the
/// rules for who may call. What is answered is up to the class above.
class NodeServer : public QObject
{
    Q_OBJECT

public:
    explicit NodeServer(QObject* parent = nullptr);
    ~NodeServer() override;

    /// Port 0 takes a free one. False if the port can't be had; port() is 0 then.
    bool listen(quint16 port);
    quint16 port() const;
    QString lastError() const;
    /// Refuses connections from here on, and closes those that are open.
    void stop();

    void allowOrigin(const QByteArray& origin) { allowedOrigins.append(origin); }
    /// Bounds what the system buffers for each later connection, in bytes a direction, so that a client which does not
    /// read is noticed early.
    void limitBuffers(int bytes) { bufferLimit = bytes; }

    int connectionCount() const { return connections; }
    /// Requests whose head has come, whatever became of them; an empty path means all, here and below.
    int headCount(const QByteArray& path = {}) const { return counts.value(path).heads; }
    /// Requests whose answer has not ended, from their head on.
    int openNow(const QByteArray& path = {}) const { return counts.value(path).open; }
    int mostOpen(const QByteArray& path = {}) const { return counts.value(path).most; }
    /// Requests whose connection the client has closed before the answer had ended.
    int abandonedCount(const QByteArray& path = {}) const { return counts.value(path).abandoned; }
    /// Requests that met NodeAnswer::CloseAtNextRequest.
    int unansweredCount(const QByteArray& path = {}) const { return counts.value(path).unanswered; }

signals:
    /// A request has come, with its body unless an upload takes that.
    void requestReceived(const NodeRequest& request);

protected:
    /// The answer to a request that may call.
    virtual NodeAnswer answerTo(const NodeRequest& request) = 0;
    /// Asked when a head has come. Nothing lets the body be collected first.
    virtual std::optional<NodeUpload> uploadOf(const NodeRequest& head);
    /// Called with each request that is reported, before it is judged.
    virtual void keep(const NodeRequest& /*request*/) { }

    QList<NodeConnection*> held; ///< whose answers wait, oldest first

private:
    friend class NodeConnection;
    friend class NodeListener;

    struct Counts
    {
        int heads = 0;
        int open = 0;
        int most = 0;
        int abandoned = 0;
        int unanswered = 0;
    };

    void accept(qintptr descriptor);
    NodeAnswer receive(const NodeRequest& request);
    std::optional<NodeAnswer> refusalOf(const NodeRequest& request) const;
    template <typename Change> void count(const QByteArray& path, const Change& change);
    void countOpen(const QByteArray& path);
    void countEnd(const QByteArray& path, int Counts::*way = nullptr);

    std::unique_ptr<NodeListener> listener;
    QList<QByteArray> allowedOrigins;
    QHash<QByteArray, Counts> counts;
    int connections = 0;
    int bufferLimit = 0;
};
