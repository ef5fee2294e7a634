// SPDX-License-Identifier: MIT
#pragma once

#include "JsonReply.h"

#include <QNetworkRequest>
#include <QObject>
#include <QSettings>
#include <QString>
#include <QUrl>
#include <QUrlQuery>

class NodeAccessManager;
class QIODevice;
class QNetworkReply;

/// Where a node's RPC answers.
struct RpcEndpoint
{
    QString host {};
    unsigned short port = 0;
    QString base {};          ///< as "http://127.0.0.1:5001/api/v0"
    bool hostIsValid = false; ///< requests to a host that can't be one fail before they leave

    static RpcEndpoint at(const QString& host, unsigned short port);
};

/// Sends requests to a node: the address, the headers that each one carries, and the line that announces it.
class RpcTransport : public QObject
{
    Q_OBJECT

public:
    explicit RpcTransport(QObject* parent = nullptr);

    /// Posts to `path`, which starts with a slash, with an empty body. Emits requestIssued before the request leaves.
    QNetworkReply* post(const RpcEndpoint& endpoint, const QString& path, const QUrlQuery& query);
    /// A request like that, announced by requestIssued but not sent yet.
    QNetworkRequest announce(const RpcEndpoint& endpoint, const QString& path, const QUrlQuery& query);
    /// Sends what was announced with a multipart body, which the reply takes over. `contentType` names its boundary.
    QNetworkReply* upload(QNetworkRequest request, const QByteArray& contentType, QIODevice* body);
    /// As upload, of a form of one part, named "file", that holds `content`.
    QNetworkReply* uploadFile(QNetworkRequest request, const QString& fileName, const QByteArray& contentType,
                              const QByteArray& content);

signals:
    /// "[yyyy-MM-dd hh:mm:ss] POST <encoded URL>".
    void requestIssued(QString description);

private:
    NodeAccessManager* network;
    QSettings settings; ///< kept open, as opening costs a tenth of a call; sees what other views write
};

/// The node's own words of a call that failed or was broken off: the "Message" of its JSON error, or the trailer of an
/// answer that it broke off. Empty if there are none.
QString nodeWords(const QNetworkReply* reply);

/// Whether the node broke its answer off with these words.
bool wasBrokenOffBy(const QNetworkReply* reply, QByteArrayView words);

/// Reads a finished plain JSON reply and deletes it later; `action` is in the infinitive form, as "get repo stat".
JsonReply readJsonObjectReply(QNetworkReply* reply, const QString& action);
