// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// A remote pinning service that the node has been configured for.
struct RemoteServiceEntry
{
    QString name {};
    QString endpoint {}; ///< may be empty
    friend bool operator==(const RemoteServiceEntry&, const RemoteServiceEntry&) = default;
};
