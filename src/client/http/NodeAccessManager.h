// SPDX-License-Identifier: MIT
#pragma once

#include <QNetworkAccessManager>

#include <memory>

class CurlLoop;

/// HTTP that holds what it promises, by libcurl, through the interface of Qt's own: a POST is sent once, an answer that
/// was cut off is an error, each call ends with its connection, no redirect is followed, an answer is read while its
/// request is still being sent, and each call that is open has a connection of its own. It speaks http and POST only,
/// with no proxy, no time limit and no decoding of what comes; any other request ends as failed.
///
/// A body that is not QByteArray or QHttpMultiPart needs a device that is open and knows its size; it is read once,
/// from its current position, and what it says in errorString() becomes the reply's if reading fails.
///
/// An answer that the node broke off, by a trailer "X-Stream-Error", is a failure (UnknownServerError) with the node's
/// words as error string. Trailers can be read with rawHeader() once the reply has finished.
class NodeAccessManager : public QNetworkAccessManager
{
    Q_OBJECT

public:
    enum RequestAttribute {
        /// bool. The request only reads, so it may go over a connection that was used before; should that turn out to
        /// have died, the request is sent again. Without it each request gets a new connection and is sent once.
        MayRepeat = QNetworkRequest::User,
        /// bool. What came before a trailer "X-Stream-Error" is valid by itself: the trailer is no failure.
        KeepsWhatCame,
        /// QString. The address to be shown in error texts, where the request's own holds a secret.
        ShownAddress,
        /// QString. The host to be named in error texts, where the request's address has none.
        ShownHost
    };

    explicit NodeAccessManager(QObject* parent = nullptr);
    /// Replies that are still open go with it, without a word.
    ~NodeAccessManager() override;

    /// The first 64 KiB of the body of an answer with an error status; empty for any other. Stays when the reply is
    /// read.
    static QByteArray failureBody(const QNetworkReply* reply);

protected:
    QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request,
                                 QIODevice* outgoingData = nullptr) override;

private:
    std::unique_ptr<CurlLoop> loop;
};
