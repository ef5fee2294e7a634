// SPDX-License-Identifier: MIT
#pragma once

#include "FakeNode.h"

#include <QEventLoop>
#include <QThread>

#include <functional>
#include <future>
#include <memory>

/// Runs `measure` with the port of a node that `script` has prepared. The node has a thread of its own, so that its
/// work is no stall of the program's. Returns what `measure` returns.
inline bool measureWithNode(const std::function<void(FakeNode&)>& script, const std::function<bool(quint16)>& measure)
{
    std::promise<quint16> port;
    const std::unique_ptr<QThread> thread(QThread::create([&script, &port] {
        FakeNode node;
        script(node);
        port.set_value(node.port());
        QEventLoop().exec();
    }));
    thread->start();
    const bool whole = measure(port.get_future().get());
    thread->quit();
    thread->wait();
    return whole;
}
