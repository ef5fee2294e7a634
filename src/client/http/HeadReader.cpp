// SPDX-License-Identifier: MIT
#include "HeadReader.h"

#include <algorithm>

namespace {

constexpr qsizetype longestHead = 1024 * 1024;

bool isInterim(int status)
{
    return status >= 100 && status < 200 && status != 101;
}

QByteArrayView withoutLineEnd(QByteArrayView line)
{
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return line;
}

bool isNameCharacter(char c)
{
    return c > ' ' && c < 0x7F && c != ':';
}

} // namespace

bool HeadReader::takeLine(QByteArrayView line)
{
    taken += line.size();
    line = withoutLineEnd(line);
    if (complete)
        takeField(trailerFields, line);
    else if (line.startsWith("HTTP/"))
        takeStatus(line);
    else if (!line.isEmpty())
        takeField(fields, line);
    else
        complete = statusCode != 0 && !isInterim(statusCode);
    return taken <= longestHead;
}

void HeadReader::takeStatus(QByteArrayView line)
{
    fields.clear();
    const qsizetype blank = line.indexOf(' ');
    const QByteArrayView rest = blank < 0 ? QByteArrayView() : line.sliced(blank).trimmed();
    const qsizetype end = rest.indexOf(' ');
    const int code = (end < 0 ? rest : rest.first(end)).toInt();
    statusCode = code >= 100 && code <= 999 ? code : 0;
    reasonPhrase = end < 0 ? QByteArray() : rest.sliced(end).trimmed().toByteArray();
}

void HeadReader::takeField(HeaderList& list, QByteArrayView line)
{
    const bool folded = line.startsWith(' ') || line.startsWith('\t');
    if (folded && !list.isEmpty()) {
        list.last().second = (list.constLast().second + ' ' + line.trimmed().toByteArray()).trimmed();
        return;
    }
    const qsizetype colon = line.indexOf(':');
    if (colon > 0 && std::ranges::all_of(line.first(colon), isNameCharacter))
        list.emplaceBack(line.first(colon).toByteArray(), line.sliced(colon + 1).trimmed().toByteArray());
}

QByteArray HeadReader::trailer(QByteArrayView name) const
{
    const auto match = std::ranges::find_if(
        trailerFields, [name](const auto& field) { return field.first.compare(name, Qt::CaseInsensitive) == 0; });
    return match == trailerFields.end() ? QByteArray() : match->second;
}
