// SPDX-License-Identifier: MIT
#include "DiagnosticsParser.h"
#include "FuzzTarget.h"

#include <QJsonArray>

/// There are views or a reason why not, blank lines around them change nothing, and of lines only objects are kept.
void checkInput(const QByteArray& body)
{
    const DhtStats stats = parseDhtStats(body);
    abortIf(stats.data.isUndefined() == stats.parserMessage.isEmpty());
    abortIf(!stats.data.isUndefined() && !stats.data.isObject() && !stats.data.isArray());
    abortIf(parseDhtStats("\n" + body + " \n\n").data != stats.data);
    const DhtStats withGarbage = parseDhtStats("x\n" + body); // no document any more, so lines
    const QJsonArray lines = withGarbage.data.toArray();
    abortIf(withGarbage.data.isArray() && lines.size() < 2);
    for (const auto& line : lines)
        abortIf(!line.isObject());
}
