// SPDX-License-Identifier: MIT
#include "AddParser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// Only an object is a line, and blanks around it change nothing.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto line = parseAddLine(bytes);
    if (line && !bytes.contains('{'))
        std::abort();
    if (const auto padded = parseAddLine(' ' + bytes + ' '); line && (!padded || padded->entry != line->entry))
        std::abort();
    return 0;
}
