// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <optional>
#include <utility>

using HeaderList = QList<std::pair<QByteArray, QByteArray>>;

/// The first header of that name, in any case; empty if there is none.
QByteArray headerIn(const HeaderList& headers, QByteArrayView name);

/// Adds the header that `line` holds; false if it holds none.
bool takeHeader(QByteArrayView line, HeaderList& headers);

/// One request, as it was sent.
struct NodeRequest
{
    QByteArray method {};
    QByteArray path {}; ///< without "/api/v0" and without the query
    QByteArray rawQuery {};
    HeaderList headers {};
    QByteArray body {}; ///< empty if an upload takes it

    /// Empty if the header is absent; `name` in any case.
    QByteArray header(QByteArrayView name) const;
    bool hasHeader(QByteArrayView name) const;
    /// The query items in order, decoded as the node decodes them: "+" is a blank, an item with a raw ";" is dropped.
    QList<std::pair<QString, QString>> items() const;
    QString value(const QString& key) const;
    QStringList values(const QString& key) const;
};

struct NodeChunk
{
    QByteArray bytes {};
    std::chrono::milliseconds pause {0}; ///< waited before the bytes are sent
};

/// What a node answers, and how it goes wrong.
struct NodeAnswer
{
    enum Framing {
        Chunked,       ///< as a node does
        ContentLength, ///< one body of known length; there must be no `source`, and no trailer is sent
        Raw            ///< `chunks` are all there is: no head, no frames, no end
    };
    /// What follows the last chunk, or the cut.
    enum Ending {
        Complete,
        Hang,  ///< nothing more comes, and the connection stays
        Close, ///< the connection is closed after `stall`; with a cut, Complete means this too
        Reset  ///< the connection is reset after `stall`: what the client has not read by then is lost to it
    };
    /// What becomes of the connection after a complete answer.
    enum Afterwards {
        KeepAlive,
        SaidClose,         ///< closed, as a header "Connection: close" has said
        SilentClose,       ///< closed although nothing said so
        CloseAtNextRequest ///< closed without an answer as soon as the head of the next request has come
    };

    int status = 200;
    HeaderList headers {};
    QList<NodeChunk> chunks {}; ///< each is written by itself; head, first chunk and end in one write if they can
    /// Asked for more chunks after `chunks`, whenever the socket has room; nothing ends the body.
    std::function<std::optional<NodeChunk>()> source {};
    HeaderList trailers {};
    Framing framing = Chunked;
    Ending ending = Complete;
    qint64 dropAfter = -1;               ///< body bytes after which the answer is cut; -1 for never
    qint64 cutAfter = -1;                ///< bytes of all that goes over the wire, the head included; -1 for never
    std::chrono::milliseconds stall {0}; ///< waited before the ending closes or resets
    Afterwards afterwards = KeepAlive;
    std::chrono::milliseconds latency {0}; ///< waited before the first byte
    bool held = false;                     ///< nothing is sent until FakeNode::release

    static NodeAnswer json(const QByteArray& body);
    /// A node's error before the first value.
    static NodeAnswer error(const QByteArray& message, int code = 0);
    static NodeAnswer text(int status, const QByteArray& body);
    static NodeAnswer hold();
    static NodeAnswer hangAfter(const QByteArray& body);
    static NodeAnswer dropAt(const QByteArray& body, qint64 byte);
    /// `body` cut into chunks of `size` bytes, `pause` before each.
    static NodeAnswer chunked(const QByteArray& body, qsizetype size, std::chrono::milliseconds pause = {});
    /// `bytes` as they are, a head of any form included. The connection is kept unless `ending` says otherwise.
    static NodeAnswer raw(const QByteArray& bytes, Ending ending = Complete);
    /// `body` as a list that breaks off: it ends in the normal way, with `message` as the trailer X-Stream-Error.
    static NodeAnswer brokenOff(const QByteArray& body, const QByteArray& message);
};

/// What follows from one piece of a body: bytes to answer at once, and the end of the answer if this is it.
struct NodeStep
{
    QByteArray bytes {}; ///< one chunk of the answer; the head goes out before the first
    /// Ends the answer, and the rest of the body is not read. If nothing has been sent yet it is the whole answer;
    /// else its chunks, trailers and ending follow what was sent.
    std::optional<NodeAnswer> last {};
};

/// Answers a request while its body is still coming. An answer that begins before the body has ended says
/// "Connection: close", and its connection is closed after it.
struct NodeUpload
{
    NodeAnswer head {}; ///< status and headers of what `onPiece` returns, and its end after the whole body
    /// Called with each piece of the body, decoded if it comes in chunks, and with an empty one and true at its end.
    /// Without it `head` is sent at once, whole, and the body is not read.
    std::function<NodeStep(const QByteArray& piece, bool isEnd)> onPiece {};
    /// The body is not read while more bytes of the answer than this wait to be read by the client, beyond what the
    /// system's socket buffers take; -1 reads on.
    qint64 mostUnsent = -1;
};
