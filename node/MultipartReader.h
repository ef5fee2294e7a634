// SPDX-License-Identifier: MIT
#pragma once

#include "InputBuffer.h"
#include "NodeMessages.h"

#include <QByteArrayMatcher>

/// Takes the parts out of a multipart/form-data body of any size, which comes in pieces of any size. Keeps no more than
/// what was appended last and a part's head.
class MultipartReader
{
public:
    enum Event {
        NeedsMore,
        PartHead, ///< head() is known
        Piece,    ///< piece() is the next of the part's bytes
        PartEnd,
        // After these nothing more is read.
        End,   ///< of the last part; what follows it is passed over
        Failed ///< error() says why
    };

    explicit MultipartReader(const QByteArray& boundary);

    void append(QByteArrayView bytes) { input.append(bytes); }
    /// Nothing more will be appended.
    void finish() { isFinished = true; }
    Event next();

    const HeaderList& head() const { return headers; }
    /// Holds until the next append.
    QByteArrayView piece() const { return bodyPiece; }
    const QByteArray& error() const { return problem; }

private:
    enum State { Preamble, Head, BodyStart, Body, BodyEnd, Boundary, Closed, Broken };
    enum Verdict { IsBoundary, IsData, IsOpen };

    Event readBoundary();
    Event readHead();
    bool readHeaderLine(QByteArrayView line);
    Event readBodyStart();
    Event readBody();
    Event takePiece(qsizetype size);
    Event endPart();
    Event wait(const QByteArray& lack);
    Event fail(const QByteArray& why);
    std::optional<QByteArrayView> takeLine();
    Verdict judge(QByteArrayView after) const;

    QByteArray dashes;           ///< "--" and the boundary
    QByteArrayMatcher delimiter; ///< a line end and the dashes
    InputBuffer input;
    State state = Preamble;
    bool isFinished = false;
    qsizetype headSize = 0;
    HeaderList headers;
    QByteArrayView bodyPiece;
    QByteArray problem;
};
