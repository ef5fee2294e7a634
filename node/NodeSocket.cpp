// SPDX-License-Identifier: MIT
#include "NodeSocket.h"

#include <QTimer>

#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr qsizetype readSize = 64 * 1024;  // bytes at a time
constexpr qsizetype writeSize = 64 * 1024; // bytes that are worth a write of their own

#ifdef MSG_NOSIGNAL
constexpr int sendFlags = MSG_NOSIGNAL;
#else
constexpr int sendFlags = 0;
#endif

void setOption(qintptr descriptor, int level, int option, int value)
{
    ::setsockopt(static_cast<int>(descriptor), level, option, &value, sizeof(value));
}

bool isTemporary(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

NodeSocket::NodeSocket(qintptr newDescriptor, QObject* parent)
    : QObject(parent)
    , descriptor(newDescriptor)
    , reader(descriptor, QSocketNotifier::Read)
    , writer(descriptor, QSocketNotifier::Write)
{
    writer.setEnabled(false);
    const int fd = static_cast<int>(descriptor);
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    setOption(descriptor, IPPROTO_TCP, TCP_NODELAY, 1); // a node sends each piece at once
#ifdef SO_NOSIGPIPE
    setOption(descriptor, SOL_SOCKET, SO_NOSIGPIPE, 1);
#endif
    connect(&reader, &QSocketNotifier::activated, this, &NodeSocket::read);
    connect(&writer, &QSocketNotifier::activated, this, &NodeSocket::flush);
}

NodeSocket::~NodeSocket()
{
    if (descriptor >= 0)
        ::close(static_cast<int>(descriptor));
}

void NodeSocket::limitBuffers(int bytes) const
{
    setOption(descriptor, SOL_SOCKET, SO_SNDBUF, bytes);
    setOption(descriptor, SOL_SOCKET, SO_RCVBUF, bytes);
}

void NodeSocket::write(QByteArrayView bytes)
{
    output.append(bytes);
    if (output.size() - sent >= writeSize)
        flush();
}

void NodeSocket::flush()
{
    const bool waited = writer.isEnabled();
    while (descriptor >= 0 && sent < output.size()) {
        const auto count = ::send(static_cast<int>(descriptor), output.constData() + sent,
                                  static_cast<size_t>(output.size() - sent), sendFlags);
        if (count < 0) {
            if (!isTemporary(errno)) {
                closeAs(true);
                return;
            }
            output.remove(0, std::exchange(sent, 0));
            writer.setEnabled(true);
            return;
        }
        sent += count;
    }
    output.resize(0);
    sent = 0;
    if (waited)
        writer.setEnabled(false);
    if (finishing)
        endOutput();
    else if (waited)
        emit drained();
}

void NodeSocket::read()
{
    std::array<char, readSize> bytes; // filled by recv
    const auto count = ::recv(static_cast<int>(descriptor), bytes.data(), bytes.size(), 0);
    if (count > 0)
        emit received(QByteArrayView(bytes.data(), count));
    else if (count == 0 || !isTemporary(errno))
        closeAs(true);
}

void NodeSocket::finish(std::chrono::milliseconds newLinger)
{
    if (finishing)
        return;
    finishing = true;
    linger = newLinger;
    reader.setEnabled(false);
    flush();
}

void NodeSocket::endOutput()
{
    if (descriptor < 0 || !linger)
        return;
    const auto wait = *std::exchange(linger, std::nullopt);
    if (wait.count() == 0) {
        close();
        return;
    }
    ::shutdown(static_cast<int>(descriptor), SHUT_WR);
    QTimer::singleShot(wait, this, &NodeSocket::close);
}

void NodeSocket::reset()
{
    const ::linger abrupt {.l_onoff = 1, .l_linger = 0};
    ::setsockopt(static_cast<int>(descriptor), SOL_SOCKET, SO_LINGER, &abrupt, sizeof(abrupt));
    close();
}

void NodeSocket::close()
{
    closeAs(false);
}

void NodeSocket::closeAs(bool byClient)
{
    if (descriptor < 0)
        return;
    reader.setEnabled(false);
    writer.setEnabled(false);
    ::close(static_cast<int>(std::exchange(descriptor, -1)));
    emit closed(byClient);
}
