// SPDX-License-Identifier: MIT
#pragma once

#include "InputBuffer.h"
#include "NodeMessages.h"

/// Takes requests out of the bytes that a connection brings, one after the other. Bodies may be of any size; the rest
/// has the limits that a node has.
class RequestReader
{
public:
    enum Event {
        NeedsMore,
        Head,  ///< request() is known but for its body
        Piece, ///< piece() is the next of the body, decoded
        End,   ///< of the request; the next one may follow
        // After these nothing more can be read.
        Malformed,
        HeadTooLarge,
        UnknownCoding,
        UnknownVersion
    };

    void append(QByteArrayView bytes) { input.append(bytes); }
    Event next();

    const NodeRequest& request() const { return current; }
    const QByteArray& piece() const { return bodyPiece; }
    /// How many bytes of the body are still to be read; -1 if it comes in chunks, so that nobody knows.
    qint64 bodyLeft() const { return chunked ? -1 : left; }
    /// Bytes that have come and are not yet taken.
    qsizetype buffered() const { return input.size(); }

private:
    enum State { RequestLine, HeaderLine, FixedBody, ChunkSize, ChunkData, ChunkEnd, Trailer, Broken };

    Event readHead();
    Event readRequestLine(QByteArrayView line);
    Event readHeaderLine(QByteArrayView line);
    Event endHead();
    bool readContentLength();
    Event readChunkSize();
    Event readChunkEnd();
    Event readTrailer();
    Event takePiece(State after);
    Event end();
    Event broken(Event why);

    InputBuffer input;
    qsizetype headSize = 0;
    State state = RequestLine;
    NodeRequest current;
    QByteArray bodyPiece;
    bool chunked = false;
    qint64 left = 0; ///< of the body, or of its chunk
};
