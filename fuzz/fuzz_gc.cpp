// SPDX-License-Identifier: MIT
#include "DiagnosticsParser.h"
#include "FuzzTarget.h"

/// Lines are read one by one, to no empty text, and an object reads the same whichever road it takes.
void checkInput(const QByteArray& body)
{
    GcReport lines;
    for (const QByteArray& line : body.split('\n')) {
        const GcReport read = parseGcReport(line);
        lines.collectedCids += read.collectedCids;
        lines.errors += read.errors;
        if (!line.startsWith('{'))
            continue;
        const GcReport spaced = parseGcReport("{ " + line.sliced(1)); // the JSON parser reads it
        abortIf(spaced.collectedCids != read.collectedCids || spaced.errors != read.errors);
    }
    const GcReport whole = parseGcReport(body);
    const bool byLines = !lines.collectedCids.isEmpty() || !lines.errors.isEmpty();
    abortIf(byLines && (whole.collectedCids != lines.collectedCids || whole.errors != lines.errors));
    abortIf(whole.collectedCids.contains(QString()) || whole.errors.contains(QString()));
}
