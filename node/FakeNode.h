// SPDX-License-Identifier: MIT
#pragma once

#include "NodeServer.h"

/// A node for tests: what a path answers is scripted, and what was asked is kept.
class FakeNode : public NodeServer
{
    Q_OBJECT

public:
    using Handler = std::function<NodeAnswer(const NodeRequest&)>;
    using UploadHandler = std::function<NodeUpload(const NodeRequest&)>;

    /// Listens on a free port.
    explicit FakeNode(QObject* parent = nullptr);

    /// Scripts for paths as "/pin/ls". A path without one is answered with 404.
    void route(const QByteArray& path, Handler handler) { handlers[path] = std::move(handler); }
    void answer(const QByteArray& path, const NodeAnswer& answer);
    /// One after the other; the last one stays.
    void answers(const QByteArray& path, const QList<NodeAnswer>& list);
    /// Called when the head of a request has come, before its body.
    void routeUpload(const QByteArray& path, UploadHandler handler) { uploads[path] = std::move(handler); }

    const QList<NodeRequest>& requests() const { return received; }
    QList<NodeRequest> requests(const QByteArray& path) const;
    /// How many requests to `path` have come, with their bodies.
    int count(const QByteArray& path) const;
    void clearRequests() { received.clear(); }

    /// How many requests to `path` are held.
    int heldCount(const QByteArray& path) const;
    /// Answers the `index`th of the held requests to `path`, oldest first.
    void release(const QByteArray& path, const NodeAnswer& answer, int index = 0);

protected:
    NodeAnswer answerTo(const NodeRequest& request) override;
    std::optional<NodeUpload> uploadOf(const NodeRequest& head) override;
    void keep(const NodeRequest& request) override { received.append(request); }

private:
    QHash<QByteArray, Handler> handlers;
    QHash<QByteArray, UploadHandler> uploads;
    QList<NodeRequest> received;
};
