// SPDX-License-Identifier: MIT
#include "JsonReply.h"
#include "UnpinParser.h"

#include <cstdlib>

/// Only an object lists removed pins, a CID or a refusal, and a refusal is no good reply.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto removed = parseRemovedPins(body);
    const JsonReply reply = judgeJsonReply(body, {});
    if (!removed && (reply.ok || saysNotPinned(body) || !parseFormattedCid(body).isEmpty()))
        std::abort();
    if (saysNotPinned(body) && reply.ok)
        std::abort();
    if (parseRemovedPins(body + '\n') != removed || parseFormattedCid(body + '\n') != parseFormattedCid(body))
        std::abort();
    return 0;
}
