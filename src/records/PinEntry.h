// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// One row of the pin table.
struct PinEntry
{
    QString cid {};  ///< in the form the node printed it
    QString type {}; ///< "recursive", "direct" or "indirect" for pins; other texts are shown as they are
    QString name {};
    QString kind {};        ///< what the CID is; empty while not known
    int refsCount = -1;     ///< refs below a recursive pin; negative while not known
    long long dagSize = -1; ///< total DAG size in bytes; negative while not known
    friend bool operator==(const PinEntry&, const PinEntry&) = default;
};

Q_DECLARE_TYPEINFO(PinEntry, Q_RELOCATABLE_TYPE);

/// The pin types as the node names them.
namespace PinType {

inline constexpr QLatin1StringView recursive {"recursive"};
inline constexpr QLatin1StringView direct {"direct"};
inline constexpr QLatin1StringView indirect {"indirect"};
/// The node's word for a list of all types.
inline constexpr QLatin1StringView all {"all"};
/// Not the node's: the filter that asks for both.
inline constexpr QLatin1StringView recursiveAndDirect {"recursive+direct"};

} // namespace PinType
