// SPDX-License-Identifier: MIT
#include "JsonReply.h"
#include "LsParser.h"
#include "MetadataParser.h"

#include <algorithm>
#include <cstdlib>

using namespace Qt::StringLiterals;

/// Only an object with members has a size or a kind, a kind is one of the known words, and a line feed after it changes
/// nothing.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QString kind = parseFileKind(body);
    if (!QStringList({QString(), u"Directory"_s, u"File"_s, u"Symlink"_s}).contains(kind))
        std::abort();
    if (judgeJsonReply(body, {}).object.isEmpty() && (parseDagSize(body) != -1 || !kind.isEmpty()))
        std::abort();
    if (parseDagSize(body + '\n') != parseDagSize(body) || parseFileKind(body + '\n') != kind)
        std::abort();

    const QList<LsEntry> entries = parseLs(body).entries;
    const QString listed = kindOfListing(entries);
    if ((listed == otherKind()) != entries.isEmpty()
        || (listed == u"File"_s && std::ranges::any_of(entries, &QString::isEmpty, &LsEntry::name)))
        std::abort();
    return 0;
}
