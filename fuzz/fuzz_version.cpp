// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "VersionText.h"

using namespace Qt::StringLiterals;

/// Whatever a web site answers, the texts are short, and a newer version has a number.
void checkInput(const QByteArray& body)
{
    const VersionVerdict verdict = judgeVersions(body, u"v1.1.3"_s);
    abortIf(verdict.latest.size() > 100 || verdict.latest.contains(u'\n') || verdict.current != u"1.1.3"_s);
    abortIf(verdict.kind == VersionVerdict::Newer
            && judgeVersions("1.1.3", verdict.latest).kind != VersionVerdict::UpToDate);
}
