// SPDX-License-Identifier: MIT
#include "JsonReply.h"
#include "LsParser.h"

#include <cstdlib>

using namespace Qt::StringLiterals;

/// A listing is read or refused, never both; only an object with the right key is read, and blanks around it don't
/// count.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const Listing listing = parseLs(body);
    const QJsonObject object = judgeJsonReply(body, {}).object;
    const bool isListing = object.contains("Objects"_L1) || object.contains("Entries"_L1);
    if (listing.error.isEmpty() != isListing || (!isListing && !listing.entries.isEmpty()))
        std::abort();
    const Listing again = parseLs("\r\n" + body + "\n");
    if (again.error != listing.error || again.entries != listing.entries)
        std::abort();
    return 0;
}
