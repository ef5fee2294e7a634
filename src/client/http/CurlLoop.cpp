// SPDX-License-Identifier: MIT
#include "CurlLoop.h"

#include <QPointer>
#include <QSocketNotifier>

#include <utility>

namespace {

constexpr qsizetype mostIdleHandles = 64;
/// Idle connections that are kept; three queues of 8, 24 and 24 calls and what a person asks for besides.
constexpr long mostIdleConnections = 64;
/// Taken from a socket at a time: a list of tens of megabytes comes in faster by it, and a short answer pays nothing.
constexpr long receiveBuffer = 128 * 1024;
constexpr long sendBuffer = 256 * 1024;

/// Called when a request is about to go over a connection. If that is an idle one that turns out to have died, libcurl
/// sends the request again, up to five times over other idle ones; from here on only a new one will do.
int onConnected(void* handle, char* /*remoteAddress*/, char* /*localAddress*/, int /*remotePort*/, int /*localPort*/)
{
    curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, 1L);
    return CURL_PREREQFUNC_OK;
}

/// Only http, nothing followed, nothing decoded, no proxy, no time limit on an answer, no signal.
void setCommonOptions(CURL* handle)
{
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http");
    curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(handle, CURLOPT_NOPROXY, "*");
    curl_easy_setopt(handle, CURLOPT_PROXY, "");
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(handle, CURLOPT_TCP_KEEPALIVE, 1L); // else a peer that lost its power is never missed
    curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, &onConnected);
    curl_easy_setopt(handle, CURLOPT_PREREQDATA, handle);
    curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, receiveBuffer);
    curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, sendBuffer);
#if LIBCURL_VERSION_NUM >= 0x075700
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L); // else dropping a transfer waits for its name look-up
#endif
}

void initialiseCurl()
{
    static const CURLcode done = curl_global_init(CURL_GLOBAL_WIN32); // no TLS: only http is spoken
    if (done != CURLE_OK)
        qFatal("libcurl can't start: %s", curl_easy_strerror(done));
}

} // namespace

CurlLoop::CurlLoop(QObject* parent)
    : QObject(parent)
    , multi((initialiseCurl(), curl_multi_init()))
{
    if (!multi)
        qFatal("libcurl can't start: out of memory");
    curl_multi_setopt(multi, CURLMOPT_SOCKETFUNCTION, &CurlLoop::onSocket);
    curl_multi_setopt(multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(multi, CURLMOPT_TIMERFUNCTION, &CurlLoop::onTimer);
    curl_multi_setopt(multi, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(multi, CURLMOPT_PIPELINING, static_cast<long>(CURLPIPE_NOTHING));
    curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, mostIdleConnections);
    timer.setSingleShot(true);
    timer.callOnTimeout(this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
    deliveryTimer.setSingleShot(true);
    deliveryTimer.callOnTimeout(this, [this] { deliverMarked(); });
}

CurlLoop::~CurlLoop()
{
    for (auto transfer = running.keyBegin(); transfer != running.keyEnd(); ++transfer)
        dropped.append(*transfer);
    for (CURL* handle : std::as_const(dropped)) {
        curl_multi_remove_handle(multi, handle);
        curl_easy_cleanup(handle);
    }
    for (CURL* handle : std::as_const(idleHandles))
        curl_easy_cleanup(handle);
    curl_multi_cleanup(multi);
}

CURL* CurlLoop::takeHandle()
{
    CURL* handle = idleHandles.isEmpty() ? curl_easy_init() : idleHandles.takeLast();
    if (!handle)
        qFatal("libcurl: out of memory");
    curl_easy_reset(handle); // it counts what it sent again, over all of its transfers
    setCommonOptions(handle);
    return handle;
}

void CurlLoop::start(CURL* handle, CurlTransfer* transfer)
{
    running.insert(handle, transfer);
    if (insideCurl) // refused then
        started.append(handle);
    else
        curl_multi_add_handle(multi, handle); // asks for a turn by onTimer
}

void CurlLoop::drop(CURL* handle)
{
    running.remove(handle);
    started.removeOne(handle);
    if (insideCurl)
        dropped.append(handle);
    else
        release(handle);
}

void CurlLoop::release(CURL* handle)
{
    curl_multi_remove_handle(multi, handle);
    if (idleHandles.size() < mostIdleHandles)
        idleHandles.append(handle);
    else
        curl_easy_cleanup(handle);
}

void CurlLoop::mark(CurlTransfer* transfer)
{
    if (std::exchange(transfer->marked, true))
        return;
    marked.append(transfer);
    if (!insideCurl)
        deliveryTimer.start(0);
}

void CurlLoop::unmark(CurlTransfer* transfer)
{
    if (std::exchange(transfer->marked, false))
        marked.removeOne(transfer);
}

int CurlLoop::onSocket(CURL* /*handle*/, curl_socket_t socket, int what, void* loop, void* /*unused*/)
{
    const bool reads = what == CURL_POLL_IN || what == CURL_POLL_INOUT;
    const bool writes = what == CURL_POLL_OUT || what == CURL_POLL_INOUT;
    static_cast<CurlLoop*>(loop)->watch(socket, reads, writes);
    return 0;
}

std::unique_ptr<QSocketNotifier> CurlLoop::newNotifier(curl_socket_t socket, bool forWriting)
{
    const auto type = forWriting ? QSocketNotifier::Write : QSocketNotifier::Read;
    auto notifier = std::make_unique<QSocketNotifier>(static_cast<qintptr>(socket), type);
    const int event = forWriting ? CURL_CSELECT_OUT : CURL_CSELECT_IN;
    connect(notifier.get(), &QSocketNotifier::activated, this, [this, socket, event] { act(socket, event); });
    return notifier;
}

void CurlLoop::watch(curl_socket_t socket, bool reads, bool writes)
{
    Watch& sides = watches[socket];
    const auto set = [this, socket](std::unique_ptr<QSocketNotifier>& notifier, bool on, bool forWriting) {
        if (!notifier && on)
            notifier = newNotifier(socket, forWriting);
        else if (notifier && notifier->isEnabled() != on)
            notifier->setEnabled(on);
    };
    set(sides.reading, reads, false);
    set(sides.writing, writes, true);
}

int CurlLoop::onTimer(CURLM* /*multi*/, long milliseconds, void* loop)
{
    auto* self = static_cast<CurlLoop*>(loop);
    if (milliseconds < 0)
        self->timer.stop();
    else
        self->timer.start(static_cast<int>(milliseconds));
    return 0;
}

void CurlLoop::act(curl_socket_t socket, int events)
{
    if (insideCurl) { // an upload's device runs an event loop while it is read
        timer.start(1);
        return;
    }
    insideCurl = true;
    int count = 0;
    curl_multi_socket_action(multi, socket, events, &count);
    insideCurl = false;
    for (CURL* handle : std::exchange(dropped, {}))
        release(handle);
    for (CURL* handle : std::exchange(started, {}))
        curl_multi_add_handle(multi, handle);
    collectEnded();
    deliverMarked();
}

void CurlLoop::collectEnded()
{
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        CURL* handle = message->easy_handle;
        const CURLcode result = message->data.result; // the message goes with its handle
        CurlTransfer* transfer = running.take(handle);
        long osError = 0;
        if (result != CURLE_OK)
            curl_easy_getinfo(handle, CURLINFO_OS_ERRNO, &osError);
        release(handle);
        if (!transfer)
            continue;
        transfer->takeEnd(result, osError);
        if (!std::exchange(transfer->marked, true))
            marked.append(transfer);
    }
}

void CurlLoop::deliverMarked()
{
    const QPointer<CurlLoop> self = this;
    while (self && !marked.isEmpty()) {
        CurlTransfer* transfer = marked.takeFirst();
        transfer->marked = false;
        if (!marked.isEmpty() && !deliveryTimer.isActive())
            deliveryTimer.start(0); // the slot that is called next may run an event loop of its own
        transfer->deliver();
    }
}
