// SPDX-License-Identifier: MIT
#include "FakeNode.h"

#include "NodeConnection.h"

#include <algorithm>
#include <iterator>

FakeNode::FakeNode(QObject* parent)
    : NodeServer(parent)
{
    listen(0);
}

void FakeNode::answer(const QByteArray& path, const NodeAnswer& answer)
{
    route(path, [answer](const NodeRequest&) { return answer; });
}

void FakeNode::answers(const QByteArray& path, const QList<NodeAnswer>& list)
{
    route(path, [list = QList(list)](const NodeRequest&) mutable {
        return list.size() > 1 ? list.takeFirst() : list.constFirst();
    });
}

QList<NodeRequest> FakeNode::requests(const QByteArray& path) const
{
    QList<NodeRequest> matching;
    std::ranges::copy_if(received, std::back_inserter(matching),
                         [&path](const NodeRequest& request) { return request.path == path; });
    return matching;
}

int FakeNode::count(const QByteArray& path) const
{
    return static_cast<int>(std::ranges::count(received, path, &NodeRequest::path));
}

int FakeNode::heldCount(const QByteArray& path) const
{
    return static_cast<int>(std::ranges::count(held, path, &NodeConnection::currentPath));
}

void FakeNode::release(const QByteArray& path, const NodeAnswer& answer, int index)
{
    for (NodeConnection* waiting : std::as_const(held)) {
        if (waiting->currentPath() == path && index-- == 0) {
            held.removeOne(waiting);
            waiting->release(answer);
            return;
        }
    }
    qFatal("no request to %s is held", path.constData());
}

NodeAnswer FakeNode::answerTo(const NodeRequest& request)
{
    const auto handler = handlers.constFind(request.path);
    return handler == handlers.constEnd() ? NodeAnswer::text(404, "404 page not found\n") : (*handler)(request);
}

std::optional<NodeUpload> FakeNode::uploadOf(const NodeRequest& head)
{
    const auto handler = uploads.constFind(head.path);
    return handler == uploads.constEnd() ? std::nullopt : std::optional((*handler)(head));
}
