// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// A key of the node, under which a name can be published.
struct IpnsKeyEntry
{
    QString name {};
    QString id {}; ///< the IPNS name that belongs to it; may be empty
    friend bool operator==(const IpnsKeyEntry&, const IpnsKeyEntry&) = default;
};

/// What a publish came to. Name and value are as the node gave them, and may be empty.
struct IpnsPublishResult
{
    QString key {};   ///< the key used
    QString name {};  ///< the IPNS name, without "/ipns/"
    QString value {}; ///< the published path
};

/// What a name leads to.
struct IpnsResolveResult
{
    QString input {}; ///< the name asked for, with "/ipns/"
    QString path {};  ///< may be empty
};
