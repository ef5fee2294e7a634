// SPDX-License-Identifier: MIT
#include "CidText.h"
#include "FuzzTarget.h"

/// What reads as a CID writes as a text that reads as the same CID.
void checkInput(const QByteArray& input)
{
    const auto cid = decodeCid(QString::fromUtf8(input));
    abortIf(cid && decodeCid(encodeCid(*cid)) != cid);
}
