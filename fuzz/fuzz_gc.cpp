// SPDX-License-Identifier: MIT
#include "DiagnosticsParser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// Lines are read one by one, to no empty text, and an object reads the same whichever road it takes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    GcReport lines;
    for (const QByteArray& line : body.split('\n')) {
        const GcReport read = parseGcReport(line);
        lines.collectedCids += read.collectedCids;
        lines.errors += read.errors;
        if (!line.startsWith('{'))
            continue;
        const GcReport spaced = parseGcReport("{ " + line.sliced(1)); // the JSON parser reads it
        if (spaced.collectedCids != read.collectedCids || spaced.errors != read.errors)
            std::abort();
    }
    const GcReport whole = parseGcReport(body);
    const bool byLines = !lines.collectedCids.isEmpty() || !lines.errors.isEmpty();
    if (byLines && (whole.collectedCids != lines.collectedCids || whole.errors != lines.errors))
        std::abort();
    if (whole.collectedCids.contains(QString()) || whole.errors.contains(QString()))
        std::abort();
    return 0;
}
