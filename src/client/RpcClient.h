// SPDX-License-Identifier: MIT
#pragma once

#include "ParseBody.h"
#include "ReplyProperties.h"
#include "RpcTransport.h"

#include <QNetworkReply>
#include <QObject>
#include <QUrlQuery>

#include <optional>
#include <utility>

/// What all calls to the node share: its address, how a request leaves and its reply comes back, and how a failure is
/// reported. Operations return nothing; every answer comes back as a signal on the main thread and reaches every
/// listener, whoever asked. No call has a timeout and none is repeated.
class RpcClient : public QObject
{
    Q_OBJECT

public:
    /// Takes effect with the next request; requests in flight end against the old endpoint, and so does an unpin.
    void setEndpoint(const QString& newHost, unsigned short newPort);
    QString endpointHost() const { return endpoint.host; }
    unsigned short endpointPort() const { return endpoint.port; }
    /// Where every call goes, as "http://127.0.0.1:5001/api/v0".
    QString baseUrl() const { return endpoint.base; }

    /// Posts to `path`, which starts with a slash, with an empty body. The reply belongs to the caller's handler, which
    /// deletes it later. Emits rpcRequestIssued before the request leaves.
    QNetworkReply* postRequest(const QString& path, const QUrlQuery& query);

signals:
    /// Another address is in use. What the former node still answers to a question is not reported any more; what it
    /// did is.
    void endpointChanged();
    /// "[yyyy-MM-dd hh:mm:ss] POST <encoded URL>", for every request. A secret in it reads "…".
    void rpcRequestIssued(QString requestDescription);
    void errorOccurred(QString message);
    /// The node's own words of a call to `path` that failed, before the call's own signals. Not of facts that are asked
    /// for in turn, whose failures are ordinary.
    void nodeSaid(QString path, QString words);

protected:
    explicit RpcClient(QObject* parent);

    /// Posts and hands the finished reply to `handler`.
    template <typename Client>
    QNetworkReply* callQuietly(const RpcEndpoint& node, const QString& path, const QUrlQuery& query,
                               void (Client::*handler)(QNetworkReply*))
    {
        QNetworkReply* reply = transport->post(node, path, query);
        handOverQuietly(reply, handler);
        return reply;
    }
    template <typename Client>
    QNetworkReply* callQuietly(const QString& path, const QUrlQuery& query, void (Client::*handler)(QNetworkReply*))
    {
        return callQuietly(endpoint, path, query, handler);
    }
    /// As callQuietly, and reports the node's words of a failure before.
    template <typename Client>
    QNetworkReply* call(const QString& path, const QUrlQuery& query, void (Client::*handler)(QNetworkReply*))
    {
        QNetworkReply* reply = postRequest(path, query);
        handOver(reply, path, handler);
        return reply;
    }
    /// As call, of a question that only the node in use may answer: `handler` finds that by isOfFormerNode.
    template <typename Client>
    QNetworkReply* ask(const QString& path, const QUrlQuery& query, void (Client::*handler)(QNetworkReply*))
    {
        QNetworkReply* reply = call(path, query, handler);
        markAsQuestion(reply);
        return reply;
    }
    template <typename Client>
    void handOver(QNetworkReply* reply, const QString& path, void (Client::*handler)(QNetworkReply*))
    {
        connect(reply, &QNetworkReply::finished, this, [this, reply, path] { reportNodeWords(reply, path); });
        handOverQuietly(reply, handler);
    }

    /// Emits errorOccurred and then the call's own signal.
    template <typename Client, typename... Parameters, typename... Values>
    void reportFailure(const QString& message, void (Client::*ownSignal)(Parameters...), Values&&... values)
    {
        emit errorOccurred(message);
        emit(static_cast<Client*>(this)->*ownSignal)(std::forward<Values>(values)...);
    }
    /// As that, with the message as the signal's argument.
    template <typename Client> void reportFailure(const QString& message, void (Client::*ownSignal)(QString))
    {
        reportFailure(message, ownSignal, message);
    }
    /// As that, of a reply that is over.
    template <typename Client>
    void endWithFailure(QNetworkReply* reply, const QString& message, void (Client::*ownSignal)(QString))
    {
        reply->deleteLater();
        reportFailure(message, ownSignal);
    }
    /// Hands what `read` makes of a finished reply's body to `deliver`, by way of a thread if it is long, unless it is
    /// a question to a former node by then. The reply is deleted later.
    template <typename Read, typename Deliver>
    void readBody(QNetworkReply* reply, const Read& read, const Deliver& deliver)
    {
        reply->deleteLater();
        const QVariant base = reply->property(ReplyProperty::base);
        parseBody(this, reply->readAll(), read, [this, base, deliver](const auto& records) {
            if (!base.isValid() || base.toString() == endpoint.base)
                deliver(records);
        });
    }
    /// The object of a finished plain JSON reply, which is deleted later; none after a failure, which was reported.
    template <typename Client>
    std::optional<QJsonObject> goodObject(QNetworkReply* reply, const QString& action,
                                          void (Client::*ownSignal)(QString))
    {
        JsonReply answer = readJsonObjectReply(reply, action);
        if (answer.ok)
            return std::move(answer.object);
        reportFailure(answer.errorMessage, ownSignal);
        return std::nullopt;
    }

    void reportNodeWords(const QNetworkReply* reply, const QString& path);
    void markAsQuestion(QNetworkReply* reply) const;
    bool isOfFormerNode(const QNetworkReply* reply) const;
    /// Whether the reply's end is not to be heard of.
    virtual bool isSilenced(const QNetworkReply* reply) const = 0;

    RpcTransport* transport;
    RpcEndpoint endpoint;

private:
    template <typename Client> void handOverQuietly(QNetworkReply* reply, void (Client::*handler)(QNetworkReply*))
    {
        auto* self = static_cast<Client*>(this);
        connect(reply, &QNetworkReply::finished, this, [self, reply, handler] { (self->*handler)(reply); });
    }
};
