// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <chrono>
#include <optional>

/// A connection's socket. Unlike QTcpSocket it sends what was put together in one write, can stop reading, and ends a
/// connection in each of the ways there are.
class NodeSocket : public QObject
{
    Q_OBJECT

public:
    explicit NodeSocket(qintptr newDescriptor, QObject* parent);
    ~NodeSocket() override;

    /// Bounds what the system keeps in each direction, in bytes.
    void limitBuffers(int bytes) const;
    /// Keeps the bytes until flush, or until there are many.
    void write(QByteArrayView bytes);
    void flush();
    /// Bytes that the system has not taken yet.
    qsizetype unsent() const { return output.size() - sent; }
    void setReading(bool on) { reader.setEnabled(on && descriptor >= 0); }

    /// Sends what is left, says the end, and closes after `linger`. Without a linger a client that is still sending
    /// finds its connection reset, and may lose what it has not read.
    void finish(std::chrono::milliseconds newLinger = {});
    /// Closes with a reset.
    void reset();
    /// Closes at once, whatever is left to send.
    void close();

signals:
    void received(QByteArrayView bytes);
    void drained();
    /// Comes once. `byClient` if it has closed or reset the connection.
    void closed(bool byClient);

private:
    void read();
    void endOutput();
    void closeAs(bool byClient);

    qintptr descriptor;
    QSocketNotifier reader;
    QSocketNotifier writer;
    QByteArray output;
    qsizetype sent = 0; ///< of `output`
    bool finishing = false;
    std::optional<std::chrono::milliseconds> linger; ///< until the end has been said
};
