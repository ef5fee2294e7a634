// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

/// Runs `work` on a detached thread of its own, then `done` on the calling thread, by a queued call.
/// `done` is dropped if `context` is gone by then. The calling thread needs an event loop.
void startDetached(QObject* context, std::function<void()> work, std::function<void()> done);

/// As startDetached, and hands what `work` returns to `done`.
template <typename Work, typename Done> void runDetached(QObject* context, Work work, Done done)
{
    const auto result = std::make_shared<std::optional<std::invoke_result_t<Work&>>>();
    startDetached(
        context, [result, work = std::move(work)]() mutable { result->emplace(work()); },
        [result, done = std::move(done)]() mutable { done(std::move(**result)); });
}

/// Frees what a value holds on a thread: half a million texts take a tenth of a second.
template <typename Value> void discard(Value value)
{
    startDetached(
        nullptr, [held = std::move(value)] {}, nullptr);
}

/// Has each block of a megabyte or more go back to the system as soon as it is freed, where the C library would keep
/// it; for the start of `main`. Long lists come and go with every refresh.
void returnLargeBlocks();

/// Gives memory that is free back to the system, where the C library keeps it. Takes some 30 ms after a long list.
void trimMemory();

/// Waits until no detached work runs, for at most `limit`; for the end of `main`. Returns whether all work has ended.
bool waitForDetached(std::chrono::milliseconds limit);
