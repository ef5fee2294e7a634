// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "JsonReply.h"
#include "UnpinParser.h"

/// Only an object lists removed pins, a CID or a refusal, and a refusal is no good reply.
void checkInput(const QByteArray& body)
{
    const auto removed = parseRemovedPins(body);
    const JsonReply reply = judgeJsonReply(body, {});
    abortIf(!removed && (reply.ok || saysNotPinned(body) || !parseFormattedCid(body).isEmpty()));
    abortIf(saysNotPinned(body) && reply.ok);
    abortIf(parseRemovedPins(body + '\n') != removed || parseFormattedCid(body + '\n') != parseFormattedCid(body));
}
