// SPDX-License-Identifier: MIT
#include "DiagnosticsParser.h"

#include <QJsonArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// There are views or a reason why not, blank lines around them change nothing, and of lines only objects are kept.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const DhtStats stats = parseDhtStats(body);
    if (stats.data.isUndefined() == stats.parserMessage.isEmpty())
        std::abort();
    if (!stats.data.isUndefined() && !stats.data.isObject() && !stats.data.isArray())
        std::abort();
    if (parseDhtStats("\n" + body + " \n\n").data != stats.data)
        std::abort();
    const DhtStats withGarbage = parseDhtStats("x\n" + body); // no document any more, so lines
    const QJsonArray lines = withGarbage.data.toArray();
    if (withGarbage.data.isArray() && lines.size() < 2)
        std::abort();
    for (const auto& line : lines) {
        if (!line.isObject())
            std::abort();
    }
    return 0;
}
