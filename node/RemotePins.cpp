// SPDX-License-Identifier: MIT
#include "RemotePins.h"

#include <QStringList>

using namespace Qt::StringLiterals;

const QStringList& RemotePins::statuses()
{
    static const QStringList words {u"queued"_s, u"pinning"_s, u"pinned"_s, u"failed"_s};
    return words;
}

QList<RemotePin> RemotePins::pinsAt(const QString& endpoint) const
{
    QList<RemotePin> found = pins;
    found.removeIf([&endpoint](const RemotePin& pin) { return pin.endpoint != endpoint; });
    return found;
}

QString RemotePins::statusOf(const RemotePin& pin, Clock::time_point now) const
{
    const auto age = now - pin.added;
    if (age >= time)
        return pin.fails ? u"failed"_s : u"pinned"_s;
    return age * 2 >= time ? u"pinning"_s : u"queued"_s;
}
