// SPDX-License-Identifier: MIT
#pragma once

#include "CurlLoop.h"
#include "HeadReader.h"
#include "ReplyFailure.h"

#include <QElapsedTimer>
#include <QNetworkReply>
#include <QPointer>

#include <memory>

/// The answer to one request of a NodeAccessManager. The body waits in memory, however long, until it is read.
/// Emits metaDataChanged, uploadProgress and readyRead as things come, then errorOccurred if it failed, and finished.
class NodeReply final : public QNetworkReply, private CurlTransfer
{
    Q_OBJECT

public:
    NodeReply(CurlLoop& newLoop, QNetworkAccessManager::Operation newOperation, const QNetworkRequest& newRequest,
              QIODevice* newBody, QObject* parent);
    ~NodeReply() override;

    /// Ends the reply before it returns, with OperationCanceledError.
    void abort() override;
    qint64 bytesAvailable() const override;
    /// See NodeAccessManager::failureBody.
    const QByteArray& failureBody() const { return keptBody; }

protected:
    qint64 readData(char* data, qint64 maxSize) override;

private:
    struct FreeList
    {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    QString refusal() const;
    void start();
    bool prepare();
    bool prepareHeaders();
    bool prepareBody();
    void failLater(const ReplyFailure& newFailure);
    void leaveLoop();

    static size_t onHeader(char* bytes, size_t size, size_t count, void* reply);
    static size_t onBody(char* bytes, size_t size, size_t count, void* reply);
    static size_t onRead(char* bytes, size_t size, size_t count, void* reply);
    size_t takeBody(QByteArrayView bytes);
    size_t giveBody(char* bytes, size_t room);

    void deliver() override;
    void takeEnd(CURLcode result, long osError) override;
    ReplyFailure failureOf(CURLcode result, long osError) const;
    void publishHead();
    void publishTrailers();
    void publishUploadProgress();
    void finish();

    QPointer<CurlLoop> loop;
    CURL* handle = nullptr; ///< null once the transfer is over
    std::unique_ptr<curl_slist, FreeList> requestHeaders;

    QPointer<QIODevice> body;
    qint64 bodySize = 0;
    qint64 bodySent = 0;
    qint64 bodyReported = 0;
    QElapsedTimer sinceProgress;

    HeadReader head;
    bool headPublished = false;
    QByteArray received;
    qsizetype receivedStart = 0; ///< what is before was read
    bool hasNews = false;        ///< bytes came since the last readyRead
    QByteArray keptBody;

    bool ended = false;
    ReplyFailure failure;
};
