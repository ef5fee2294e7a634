// SPDX-License-Identifier: MIT
#include "MultipartReader.h"

#include <algorithm>

namespace {

constexpr qsizetype mostPartHead = 64 * 1024; // bytes of a part's head
constexpr qsizetype mostBoundaryLine = 4096;  // bytes of a line between parts

QByteArrayView withoutBlanksAtEnd(QByteArrayView line)
{
    while (line.endsWith(' ') || line.endsWith('\t'))
        line.chop(1);
    return line;
}

} // namespace

MultipartReader::MultipartReader(const QByteArray& boundary)
    : dashes("--" + boundary)
    , delimiter("\r\n" + dashes)
{
}

MultipartReader::Event MultipartReader::next()
{
    switch (state) {
    case Preamble:
    case Boundary:
        return readBoundary();
    case Head:
        return readHead();
    case BodyStart:
        return readBodyStart();
    case Body:
        return readBody();
    case BodyEnd:
        state = Boundary;
        return PartEnd;
    case Closed:
        input.take(input.size());
        return End;
    default:
        return Failed;
    }
}

/// The last line of a body may lack its end.
std::optional<QByteArrayView> MultipartReader::takeLine()
{
    const auto line = input.takeLine();
    return line || !isFinished || input.size() == 0 ? line : input.take(input.size());
}

MultipartReader::Event MultipartReader::readBoundary()
{
    while (true) {
        const qsizetype before = input.size();
        const auto line = takeLine();
        if ((line ? before - input.size() : before) > mostBoundaryLine)
            return fail("multipart: line too long");
        if (!line)
            return wait("multipart: NextPart: EOF");
        const QByteArrayView words = withoutBlanksAtEnd(*line);
        if (words == dashes) {
            state = Head;
            headSize = 0;
            headers.clear();
            return readHead();
        }
        if (words == dashes + "--") {
            state = Closed;
            return next();
        }
        if (state == Boundary)
            return fail("multipart: expecting a new Part; got line \"" + line->toByteArray() + '"');
    }
}

MultipartReader::Event MultipartReader::readHead()
{
    while (true) {
        const qsizetype before = input.size();
        const auto line = input.takeLine();
        if (headSize + (line ? before - input.size() : before) > mostPartHead)
            return fail("multipart: message too large");
        if (!line)
            return wait("multipart: NextPart: EOF");
        headSize += before - input.size();
        if (line->isEmpty()) {
            state = BodyStart;
            return PartHead;
        }
        if (!readHeaderLine(*line))
            return fail("malformed MIME header line: " + line->toByteArray());
    }
}

/// A line that begins with a blank goes on with the one before.
bool MultipartReader::readHeaderLine(QByteArrayView line)
{
    if (line.startsWith(' ') || line.startsWith('\t')) {
        if (!headers.isEmpty())
            headers.last().second.append(' ').append(line.trimmed());
        return !headers.isEmpty();
    }
    return takeHeader(line, headers);
}

/// A part without bytes may end right after its head, where no line end precedes the boundary.
MultipartReader::Event MultipartReader::readBodyStart()
{
    const QByteArrayView rest = input.rest();
    const qsizetype known = std::min(rest.size(), dashes.size());
    if (rest.first(known) == QByteArrayView(dashes).first(known)) {
        const Verdict verdict = known < dashes.size() ? IsOpen : judge(rest.sliced(known));
        if (verdict == IsOpen)
            return wait("unexpected EOF");
        if (verdict == IsBoundary)
            return endPart();
    }
    state = Body;
    return readBody();
}

MultipartReader::Event MultipartReader::readBody()
{
    const QByteArrayView rest = input.rest();
    const qsizetype length = delimiter.pattern().size();
    for (qsizetype at = 0; (at = delimiter.indexIn(rest, at)) >= 0; at += length) {
        const Verdict verdict = judge(rest.sliced(at + length));
        if (verdict == IsData)
            continue;
        if (at > 0)
            return takePiece(at);
        if (verdict == IsOpen)
            return wait("unexpected EOF");
        input.take(2);
        return endPart();
    }
    const qsizetype open = rest.indexOf('\r', std::max<qsizetype>(0, rest.size() - length + 1));
    const qsizetype sure = open < 0 || isFinished ? rest.size() : open;
    return sure > 0 ? takePiece(sure) : wait("unexpected EOF");
}

/// What follows the dashes says whether they are a boundary, once enough of it has come.
MultipartReader::Verdict MultipartReader::judge(QByteArrayView after) const
{
    const bool mayGoOn = !isFinished && (after.isEmpty() || after == "-");
    if (mayGoOn)
        return IsOpen;
    const bool isEnd = after.isEmpty() || after.startsWith("--");
    return isEnd || QByteArrayView(" \t\r\n").contains(after.front()) ? IsBoundary : IsData;
}

MultipartReader::Event MultipartReader::takePiece(qsizetype size)
{
    bodyPiece = input.take(size);
    return Piece;
}

MultipartReader::Event MultipartReader::endPart()
{
    state = BodyEnd;
    return next();
}

MultipartReader::Event MultipartReader::wait(const QByteArray& lack)
{
    return isFinished ? fail(lack) : NeedsMore;
}

MultipartReader::Event MultipartReader::fail(const QByteArray& why)
{
    state = Broken;
    problem = why;
    return Failed;
}
