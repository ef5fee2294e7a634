// SPDX-License-Identifier: MIT
#pragma once

#include "RemoteServiceEntry.h"

#include <QByteArray>
#include <QList>

/// A service as "/pin/remote/service/ls" lists it.
struct ListedService
{
    RemoteServiceEntry entry {};
    QString status {}; ///< the node's verdict on it, "valid" or "invalid"; empty if it was not asked for
};

/// What came of the list: its services, or why there is none.
struct ServiceList
{
    QList<ListedService> services {};
    QString error {};

    QList<RemoteServiceEntry> entries() const;
};

/// Reads the list in any of the shapes that it has had. An error is the node's own text, or that the body is no JSON
/// object. Services without a name are left out.
ServiceList parseServiceList(const QByteArray& body);

/// What a service says of one pin, or why nothing is known of it.
struct RemotePinState
{
    QString status {}; ///< in lower case; "not-found" if there is no such pin, "unknown" if it has no word
    QString error {};
};

/// Reads "/pin/remote/ls" in any of its shapes, an array in an object or an object a line. Of several pins of `cid`,
/// which is compared as text, one that is "pinned" wins, else the first.
RemotePinState parseRemotePinState(const QByteArray& body, const QString& cid);
