// SPDX-License-Identifier: MIT
#include "VersionText.h"

#include <cstdlib>

using namespace Qt::StringLiterals;

/// Whatever a web site answers, the texts are short, and a newer version has a number.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const VersionVerdict verdict = judgeVersions(body, u"v1.1.3"_s);
    if (verdict.latest.size() > 100 || verdict.latest.contains(u'\n') || verdict.current != u"1.1.3"_s)
        std::abort();
    if (verdict.kind == VersionVerdict::Newer
        && judgeVersions("1.1.3", verdict.latest).kind != VersionVerdict::UpToDate)
        std::abort();
    return 0;
}
