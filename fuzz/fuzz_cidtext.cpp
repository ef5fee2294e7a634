// SPDX-License-Identifier: MIT
#include "CidText.h"

#include <cstdlib>

/// What reads as a CID writes as a text that reads as the same CID.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto cid = decodeCid(QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    if (cid && decodeCid(encodeCid(*cid)) != cid)
        std::abort();
    return 0;
}
