// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "JsonReply.h"
#include "LsParser.h"

using namespace Qt::StringLiterals;

/// A listing is read or refused, never both; only an object with the right key is read, and blanks around it don't
/// count.
void checkInput(const QByteArray& body)
{
    const Listing listing = parseLs(body);
    const QJsonObject object = judgeJsonReply(body, {}).object;
    const bool isListing = object.contains("Objects"_L1) || object.contains("Entries"_L1);
    abortIf(listing.error.isEmpty() != isListing || (!isListing && !listing.entries.isEmpty()));
    const Listing again = parseLs("\r\n" + body + "\n");
    abortIf(again.error != listing.error || again.entries != listing.entries);
}
