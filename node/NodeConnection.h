// SPDX-License-Identifier: MIT
#pragma once

#include "NodeServer.h"
#include "NodeSocket.h"
#include "RequestReader.h"

#include <QTimer>

/// One client's connection to a NodeServer: reads requests one after the other and plays their answers.
class NodeConnection : public QObject
{
    Q_OBJECT

public:
    NodeConnection(qintptr descriptor, NodeServer* newNode, int bufferLimit);
    ~NodeConnection() override;

    const QByteArray& currentPath() const { return request.path; }
    /// Ends the wait of a held request.
    void release(const NodeAnswer& newAnswer);
    void drop();

private:
    enum Phase { Receiving, Answering, Hanging, Gone };

    // requests
    void onReceived(QByteArrayView bytes);
    void advance();
    void onHead();
    void onPiece();
    void onEnd();
    void onBadRequest(RequestReader::Event event);
    void beginUpload(const NodeUpload& newUpload);
    void takeStep(const QByteArray& piece);
    bool waitsForClient() const;
    void updateReading();

    // answers, in NodeConnection_answer.cpp
    void begin(const NodeAnswer& newAnswer);
    void onTimer();
    void onDrained();
    void play();
    bool playNext();
    std::optional<NodeChunk> nextChunk();
    void put(QByteArrayView bytes);
    void putHead();
    void putChunk(QByteArray bytes);
    void putEnd();
    bool saysClose() const;
    void endAnswer();
    void breakOff();
    void breakNow();
    void leave();
    void onClosed(bool byClient);

    /// How far an answer has come.
    struct Progress
    {
        std::optional<NodeChunk> waiting {}; ///< its pause is running
        bool headSent = false;
        bool isEarly = false; ///< the head went out before the body had ended
        bool isCut = false;
        bool isBreaking = false; ///< the timer is a stall
        qsizetype position = 0;  ///< of the next chunk
        qint64 bodyBytes = 0;
        qint64 wireBytes = 0;
    };

    NodeSocket socket;
    NodeServer* node;
    QTimer timer; ///< a latency, a pause or a stall
    RequestReader reader;
    NodeRequest request;
    Phase phase = Receiving;
    bool isOpen = false;    ///< between a head and the end of its answer
    bool bodyEnded = false; ///< of the open request
    bool advancing = false;
    bool playing = false;
    bool closesAtNext = false;
    std::optional<NodeUpload> upload;
    NodeAnswer answer;
    Progress progress;
};
