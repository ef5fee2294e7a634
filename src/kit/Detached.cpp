// SPDX-License-Identifier: MIT
#include "Detached.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QPointer>

#include <atomic>
#include <thread>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

std::atomic<int> running = 0;

/// Carries the way back from a thread. It belongs to the calling thread and nobody but its own event deletes it, so
/// the worker never posts to an object that is gone, and `context` is looked at on its own thread only.
class Courier : public QObject
{
public:
    Courier(QObject* newContext, std::function<void()> newWork, std::function<void()> newDone)
        : context(newContext)
        , work(std::move(newWork))
        , done(std::move(newDone))
    {
    }

    void runWork()
    {
        work();
        work = nullptr; // what the work captured goes here, not on the calling thread
        finished.store(true, std::memory_order_release);
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

protected:
    void customEvent(QEvent* /*event*/) override
    {
        if (finished.load(std::memory_order_acquire) && context)
            done();
        delete this;
    }

private:
    QPointer<QObject> context;
    std::function<void()> work;
    std::function<void()> done;
    std::atomic<bool> finished = false;
};

} // namespace

void startDetached(QObject* context, std::function<void()> work, std::function<void()> done)
{
    auto* courier = new Courier(context, std::move(work), std::move(done));
    ++running;
    std::thread([courier] {
        courier->runWork();
        --running;
    }).detach();
}

void returnLargeBlocks()
{
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 1024 * 1024); // a fixed threshold; the usual one grows with the blocks that are freed
#endif
}

void trimMemory()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

bool waitForDetached(std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    while (running > 0 && !deadline.hasExpired())
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return running == 0;
}
