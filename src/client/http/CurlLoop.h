// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <memory>
#include <unordered_map>

#include <curl/curl.h>

class QSocketNotifier;

/// One transfer that a CurlLoop drives. libcurl calls back while it works; what it hands over is kept then and reported
/// in deliver().
class CurlTransfer
{
public:
    CurlTransfer() = default;
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    /// Called outside of libcurl, once the transfer was marked: free to emit, abort, start others and delete itself.
    virtual void deliver() = 0;
    /// The transfer is over and off the loop. Called before deliver(); only to be kept.
    virtual void takeEnd(CURLcode result, long osError) = 0;

protected:
    virtual ~CurlTransfer() = default;

private:
    friend class CurlLoop;
    bool marked = false;
};

/// Drives any number of transfers from the event loop of its thread: sockets by QSocketNotifier, time limits by QTimer.
/// As many connections are open as there are transfers; idle ones are kept for the next.
class CurlLoop : public QObject
{
public:
    explicit CurlLoop(QObject* parent = nullptr);
    /// Transfers that are still running are dropped without a word.
    ~CurlLoop() override;

    /// A handle with all options set that no transfer changes, to be prepared and given to start(), or to drop().
    CURL* takeHandle();
    void start(CURL* handle, CurlTransfer* transfer);
    /// Ends the transfer at once, with its connection. Nothing is reported.
    void drop(CURL* handle);
    /// Has the transfer's deliver() called as soon as libcurl has returned.
    void mark(CurlTransfer* transfer);
    void unmark(CurlTransfer* transfer);

private:
    struct Watch
    {
        std::unique_ptr<QSocketNotifier> reading;
        std::unique_ptr<QSocketNotifier> writing;
    };

    static int onSocket(CURL* handle, curl_socket_t socket, int what, void* loop, void* unused);
    static int onTimer(CURLM* multi, long milliseconds, void* loop);
    std::unique_ptr<QSocketNotifier> newNotifier(curl_socket_t socket, bool forWriting);
    void watch(curl_socket_t socket, bool reads, bool writes);
    void act(curl_socket_t socket, int events);
    void collectEnded();
    void deliverMarked();
    void release(CURL* handle);

    CURLM* multi;
    QTimer timer;
    QTimer deliveryTimer;                             ///< for what is marked while a slot runs an event loop of its own
    std::unordered_map<curl_socket_t, Watch> watches; ///< their notifiers are switched off while nothing is awaited
    QHash<CURL*, CurlTransfer*> running;
    QList<CURL*> idleHandles;
    QList<CURL*> started; ///< during a call of libcurl, to be added after it
    QList<CURL*> dropped; ///< likewise, to be released
    QList<CurlTransfer*> marked;
    bool insideCurl = false;
};
