// SPDX-License-Identifier: MIT
#include "AddParser.h"
#include "FuzzTarget.h"

/// Only an object is a line, and blanks around it change nothing.
void checkInput(const QByteArray& bytes)
{
    const auto line = parseAddLine(bytes);
    abortIf(line && !bytes.contains('{'));
    const auto padded = parseAddLine(' ' + bytes + ' ');
    abortIf(line && (!padded || padded->entry != line->entry));
}
