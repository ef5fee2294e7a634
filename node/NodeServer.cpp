// SPDX-License-Identifier: MIT
#include "NodeServer.h"

#include "AccessRules.h"
#include "NodeConnection.h"

#include <QTcpServer>

#include <algorithm>

/// Hands descriptors over, since a connection needs no QTcpSocket.
class NodeListener : public QTcpServer
{
public:
    explicit NodeListener(NodeServer* newNode)
        : node(newNode)
    {
    }

protected:
    void incomingConnection(qintptr descriptor) override { node->accept(descriptor); }

private:
    NodeServer* node;
};

NodeServer::NodeServer(QObject* parent)
    : QObject(parent)
    , listener(std::make_unique<NodeListener>(this))
{
    listener->setListenBacklogSize(4096); // as a node; past it a connection waits for a second to be tried again
}

NodeServer::~NodeServer()
{
    qDeleteAll(findChildren<NodeConnection*>(Qt::FindDirectChildrenOnly)); // each counts itself out
}

bool NodeServer::listen(quint16 port)
{
    listener->close();
    return listener->listen(QHostAddress::LocalHost, port);
}

quint16 NodeServer::port() const
{
    return listener->serverPort();
}

QString NodeServer::lastError() const
{
    return listener->errorString();
}

void NodeServer::stop()
{
    listener->close();
    for (NodeConnection* connection : findChildren<NodeConnection*>(Qt::FindDirectChildrenOnly))
        connection->drop();
}

void NodeServer::accept(qintptr descriptor)
{
    ++connections;
    new NodeConnection(descriptor, this, bufferLimit);
}

std::optional<NodeUpload> NodeServer::uploadOf(const NodeRequest& /*head*/)
{
    return std::nullopt;
}

NodeAnswer NodeServer::receive(const NodeRequest& request)
{
    keep(request);
    emit requestReceived(request);
    if (auto refusal = refusalOf(request))
        return *std::move(refusal);
    return answerTo(request);
}

std::optional<NodeAnswer> NodeServer::refusalOf(const NodeRequest& request) const
{
    return refusalByRules(request, port(), allowedOrigins);
}

template <typename Change> void NodeServer::count(const QByteArray& path, const Change& change)
{
    change(counts[path]);
    change(counts[QByteArray()]);
}

void NodeServer::countOpen(const QByteArray& path)
{
    count(path, [](Counts& counted) {
        ++counted.heads;
        counted.most = std::max(counted.most, ++counted.open);
    });
}

void NodeServer::countEnd(const QByteArray& path, int Counts::*way)
{
    count(path, [way](Counts& counted) {
        --counted.open;
        if (way)
            ++(counted.*way);
    });
}
