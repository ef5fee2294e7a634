// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "JsonReply.h"

using namespace Qt::StringLiterals;

/// A reply is good or has a message that names the action, and the node's words never pass for a good one.
void checkInput(const QByteArray& body)
{
    const QString action = u"read %1 and %2"_s; // no place to fill in
    const JsonReply reply = judgeJsonReply(body, action);
    const JsonReply failed = failedJsonReply(body, u"Connection closed"_s, action);
    abortIf(reply.ok != reply.errorMessage.isEmpty() || reply.body != body || failed.ok || !failed.object.isEmpty());
    for (const JsonReply& answer : {reply, failed})
        abortIf(!answer.ok && !answer.errorMessage.startsWith(u"Failed to "_s + action + u": "_s));
    abortIf(reply.ok && !rpcErrorMessage(body).trimmed().isEmpty());
    abortIf(judgeJsonReply(body + '\n', action).errorMessage != reply.errorMessage);
}
