#pragma once

#include "FakeNode.h"

#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

/// One client's connection to a FakeNode: reads requests one after the other and plays their answers.
class FakeConnection : public QObject
{
    Q_OBJECT

public:
    FakeConnection(QTcpSocket* newSocket, FakeNode* newNode);
    ~FakeConnection() override;

    const QByteArray& currentPath() const { return request.path; }
    void send(const FakeAnswer& newAnswer);
    void drop();

private:
    void onReadyRead();
    bool takeRequest();
    bool takeHead();
    bool takeBody();
    void begin();
    void play();
    bool playChunk(const FakeChunk& chunk);
    std::optional<FakeChunk> nextChunk();
    void end();
    void closeRequest();
    QByteArray head() const;

    QPointer<QTcpSocket> socket;
    FakeNode* node;
    QTimer timer;
    QByteArray input;
    FakeRequest request;
    bool headTaken = false;
    bool answering = false;
    bool playing = false;
    FakeAnswer answer;
    std::optional<FakeChunk> waiting; ///< its pause is running
    bool headSent = false;
    qsizetype position = 0;
    qint64 sentBytes = 0;
};
