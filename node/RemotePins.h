// SPDX-License-Identifier: MIT
#pragma once

#include "CidText.h"

#include <QList>

#include <chrono>

/// A pin at a remote pinning service.
struct RemotePin
{
    QString endpoint {}; ///< of the service
    Cid cid {};
    QString name {};
    bool fails = false; ///< whether it ends as failed, not as pinned
    std::chrono::steady_clock::time_point added {};
};

/// What the remote pinning services keep, in memory. A CID may have several pins at one service.
class RemotePins
{
public:
    using Clock = std::chrono::steady_clock;

    /// A pin takes `newPinTime` from queued to its end.
    explicit RemotePins(std::chrono::milliseconds newPinTime)
        : time(newPinTime)
    {
    }

    /// The words for a pin's status, in the order in which a node counts them.
    static const QStringList& statuses();
    std::chrono::milliseconds pinTime() const { return time; }

    void add(const RemotePin& pin) { pins.prepend(pin); }
    /// Newest first.
    QList<RemotePin> pinsAt(const QString& endpoint) const;
    /// "queued" for the first half of the time, "pinning" for the second, then "pinned" or "failed".
    QString statusOf(const RemotePin& pin, Clock::time_point now) const;

private:
    std::chrono::milliseconds time;
    QList<RemotePin> pins;
};
