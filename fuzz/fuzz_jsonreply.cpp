// SPDX-License-Identifier: MIT
#include "JsonReply.h"

#include <cstdlib>

using namespace Qt::StringLiterals;

/// A reply is good or has a message that names the action, and the node's words never pass for a good one.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QString action = u"read %1 and %2"_s; // no place to fill in
    const JsonReply reply = judgeJsonReply(body, action);
    const JsonReply failed = failedJsonReply(body, u"Connection closed"_s, action);
    if (reply.ok != reply.errorMessage.isEmpty() || reply.body != body || failed.ok || !failed.object.isEmpty())
        std::abort();
    for (const JsonReply& answer : {reply, failed}) {
        if (!answer.ok && !answer.errorMessage.startsWith(u"Failed to "_s + action + u": "_s))
            std::abort();
    }
    if (reply.ok && !rpcErrorMessage(body).trimmed().isEmpty())
        std::abort();
    if (judgeJsonReply(body + '\n', action).errorMessage != reply.errorMessage)
        std::abort();
    return 0;
}
