// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "JsonReply.h"
#include "LsParser.h"
#include "MetadataParser.h"

#include <algorithm>

using namespace Qt::StringLiterals;

/// Only an object with members has a size or a kind, a kind is one of the known words, and a line feed after it changes
/// nothing.
void checkInput(const QByteArray& body)
{
    const QString kind = parseFileKind(body);
    abortIf(!QStringList({QString(), u"Directory"_s, u"File"_s, u"Symlink"_s}).contains(kind));
    abortIf(judgeJsonReply(body, {}).object.isEmpty() && (parseDagSize(body) != -1 || !kind.isEmpty()));
    abortIf(parseDagSize(body + '\n') != parseDagSize(body) || parseFileKind(body + '\n') != kind);

    const QList<LsEntry> entries = parseLs(body).entries;
    const QString listed = kindOfListing(entries);
    abortIf((listed == otherKind()) != entries.isEmpty()
            || (listed == u"File"_s && std::ranges::any_of(entries, &QString::isEmpty, &LsEntry::name)));
}
