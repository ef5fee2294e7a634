// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "RefsParser.h"

/// Lines are read one by one, to no empty CID, and an object reads the same whichever road it takes.
void checkInput(const QByteArray& body)
{
    QStringList cids;
    for (const QByteArray& line : body.split('\n')) {
        cids += parseRefs(line);
        if (!line.startsWith('{'))
            continue;
        const QByteArray spaced = "{ " + line.sliced(1); // no line as a node writes it, so the JSON parser reads it
        abortIf(parseRefs(spaced) != parseRefs(line) || refFromLine(spaced) != refFromLine(line));
    }
    abortIf(cids != parseRefs(body) || cids != parseRefs(body + '\n') || cids.contains(QString()));
}
