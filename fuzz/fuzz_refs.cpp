// SPDX-License-Identifier: MIT
#include "RefsParser.h"

#include <cstdlib>

/// Lines are read one by one, to no empty CID, and an object reads the same whichever road it takes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QStringList cids;
    for (const QByteArray& line : body.split('\n')) {
        cids += parseRefs(line);
        if (!line.startsWith('{'))
            continue;
        const QByteArray spaced = "{ " + line.sliced(1); // no line as a node writes it, so the JSON parser reads it
        if (parseRefs(spaced) != parseRefs(line) || refFromLine(spaced) != refFromLine(line))
            std::abort();
    }
    if (cids != parseRefs(body) || cids != parseRefs(body + '\n') || cids.contains(QString()))
        std::abort();
    return 0;
}
