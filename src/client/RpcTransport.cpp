// SPDX-License-Identifier: MIT
#include "RpcTransport.h"

#include "AppSettings.h"
#include "JsonReply.h"
#include "LogTime.h"
#include "NodeAccessManager.h"
#include "RequestHeaders.h"
#include "ShownAddress.h"

#include <QBuffer>
#include <QHttpMultiPart>
#include <QNetworkReply>

#include <algorithm>
#include <array>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr auto nowhere = "http:///api/v0"_L1; ///< the base for a host that can't be one
constexpr auto streamErrorName = "X-Stream-Error";

/// Calls that change nothing, wherever they are repeated. All others go out once, over a connection of their own.
constexpr std::array readingPaths {"/bitswap/stat"_L1,
                                   "/bootstrap/list"_L1,
                                   "/cat"_L1,
                                   "/cid/format"_L1,
                                   "/config/show"_L1,
                                   "/dag/stat"_L1,
                                   "/files/stat"_L1,
                                   "/id"_L1,
                                   "/key/list"_L1,
                                   "/ls"_L1,
                                   "/name/resolve"_L1,
                                   "/pin/ls"_L1,
                                   "/pin/remote/ls"_L1,
                                   "/refs"_L1,
                                   "/refs/local"_L1,
                                   "/repo/stat"_L1,
                                   "/stats/dht"_L1,
                                   "/swarm/addrs"_L1,
                                   "/swarm/peers"_L1,
                                   "/version"_L1,
                                   "/swarm/addrs/listen"_L1,
                                   "/pin/remote/service/ls"_L1};

/// Answers of which each line is valid by itself.
constexpr std::array lineByLinePaths {"/repo/gc"_L1, "/stats/dht"_L1};

bool onlyReads(const QString& path, const QUrlQuery& query)
{
    if (path == "/config"_L1) // a second argument is a value to be set
        return query.allQueryItemValues(u"arg"_s).size() < 2;
    return std::ranges::find(readingPaths, path) != readingPaths.end();
}

void setAttribute(QNetworkRequest& request, NodeAccessManager::RequestAttribute attribute, const QVariant& value)
{
    request.setAttribute(static_cast<QNetworkRequest::Attribute>(attribute), value);
}

} // namespace

RpcEndpoint RpcEndpoint::at(const QString& host, unsigned short port)
{
    QUrl url;
    url.setScheme(u"http"_s);
    url.setHost(host);
    url.setPort(port);
    url.setPath(u"/api/v0"_s);
    RpcEndpoint endpoint {.host = host, .port = port, .hostIsValid = !url.host().isEmpty()};
    endpoint.base = endpoint.hostIsValid ? url.toString() : u"http://%1:%2/api/v0"_s.arg(host, QString::number(port));
    return endpoint;
}

RpcTransport::RpcTransport(QObject* parent)
    : QObject(parent)
    , network(new NodeAccessManager(this))
    , settings(openAppSettings())
{
}

QNetworkReply* RpcTransport::post(const RpcEndpoint& endpoint, const QString& path, const QUrlQuery& query)
{
    return network->post(announce(endpoint, path, query), QByteArray());
}

QNetworkReply* RpcTransport::upload(QNetworkRequest request, const QByteArray& contentType, QIODevice* body)
{
    request.setRawHeader("Content-Type", contentType);
    request.setRawHeader("MIME-Version", "1.0");
    QNetworkReply* reply = network->post(request, body);
    body->setParent(reply);
    return reply;
}

QNetworkReply* RpcTransport::uploadFile(QNetworkRequest request, const QString& fileName, const QByteArray& contentType,
                                        const QByteArray& content)
{
    auto form = std::make_unique<QHttpMultiPart>(QHttpMultiPart::FormDataType);
    auto* body = new QBuffer(form.get());
    body->setData(content);
    body->open(QIODevice::ReadOnly);
    QHttpPart part;
    part.setRawHeader("Content-Disposition", "form-data; name=\"file\"; filename=\"" + fileName.toUtf8() + '"');
    part.setHeader(QNetworkRequest::ContentTypeHeader, contentType);
    part.setBodyDevice(body);
    form->append(part);
    request.setHeader(QNetworkRequest::ContentTypeHeader, {}); // the form sets its own
    QNetworkReply* reply = network->post(request, form.get());
    form.release()->setParent(reply);
    return reply;
}

QNetworkRequest RpcTransport::announce(const RpcEndpoint& endpoint, const QString& path, const QUrlQuery& query)
{
    // A host that can't be one is shown as it was given, and nothing leaves: read as an address the text could name
    // another host.
    QUrl url((endpoint.hostIsValid ? endpoint.base : QString(nowhere)) + path);
    if (!query.isEmpty())
        url.setQuery(query);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/x-www-form-urlencoded"_L1);
    request.setHeader(QNetworkRequest::UserAgentHeader, userAgent()); // a default node refuses a browser's with 403
    // Read from the store for each request, so that a change is in force for the next one.
    if (const QByteArray origin = originHeader(settings); !origin.isEmpty())
        request.setRawHeader("Origin", origin);
    setAttribute(request, NodeAccessManager::MayRepeat, onlyReads(path, query));
    setAttribute(request, NodeAccessManager::KeepsWhatCame,
                 std::ranges::find(lineByLinePaths, path) != lineByLinePaths.end());
    QString shown = shownAddress(url);
    if (shown.contains(u'…')) // what is encoded holds none
        setAttribute(request, NodeAccessManager::ShownAddress, shown);
    if (!endpoint.hostIsValid) {
        shown.replace(0, nowhere.size(), endpoint.base);
        setAttribute(request, NodeAccessManager::ShownHost, endpoint.host);
    }
    emit requestIssued(u"[%1] POST %2"_s.arg(logTime(), shown));
    return request;
}

QString nodeWords(const QNetworkReply* reply)
{
    const QString words = QString::fromUtf8(reply->rawHeader(streamErrorName));
    return withoutSecrets(words.isEmpty() ? rpcErrorMessage(NodeAccessManager::failureBody(reply)) : words,
                          reply->url());
}

bool wasBrokenOffBy(const QNetworkReply* reply, QByteArrayView words)
{
    return reply->rawHeader(streamErrorName) == words;
}

JsonReply readJsonObjectReply(QNetworkReply* reply, const QString& action)
{
    reply->deleteLater();
    const QByteArray body = reply->readAll();
    return reply->error() == QNetworkReply::NoError ? judgeJsonReply(body, action)
                                                    : failedJsonReply(body, reply->errorString(), action);
}
