// SPDX-License-Identifier: MIT
#include "RequestReader.h"

#include <algorithm>

namespace {

constexpr qsizetype mostHead = 1024 * 1024 + 4096; // bytes of request line and headers together
constexpr qsizetype mostChunkLine = 4096;          // bytes
constexpr qsizetype mostDigits = 15;               // of a number of bytes, decimal or hexadecimal

bool isToken(QByteArrayView name)
{
    return !name.isEmpty() && std::ranges::all_of(name, [](char c) { return c > ' ' && c < 127; });
}

/// Nothing but digits, and not more of them than fit.
std::optional<qint64> sizeIn(QByteArrayView text, int base)
{
    const auto isDigit = [base](char c) {
        return (c >= '0' && c <= '9') || (base == 16 && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')));
    };
    if (text.isEmpty() || text.size() > mostDigits || !std::ranges::all_of(text, isDigit))
        return std::nullopt;
    return text.toByteArray().toLongLong(nullptr, base);
}

} // namespace

RequestReader::Event RequestReader::next()
{
    switch (state) {
    case RequestLine:
    case HeaderLine:
        return readHead();
    case FixedBody:
        return left == 0 ? end() : takePiece(FixedBody);
    case ChunkSize:
        return readChunkSize();
    case ChunkData:
        return takePiece(ChunkEnd);
    case ChunkEnd:
        return readChunkEnd();
    case Trailer:
        return readTrailer();
    default:
        return Malformed;
    }
}

RequestReader::Event RequestReader::readHead()
{
    while (true) {
        const qsizetype before = buffered();
        const auto line = input.takeLine();
        if (headSize + (line ? before - buffered() : before) > mostHead)
            return broken(HeadTooLarge);
        if (!line)
            return NeedsMore;
        headSize += before - buffered();
        const Event event = state == RequestLine ? readRequestLine(*line) : readHeaderLine(*line);
        if (event != NeedsMore)
            return event;
    }
}

RequestReader::Event RequestReader::readRequestLine(QByteArrayView line)
{
    if (line.isEmpty())
        return NeedsMore; // some clients end a body with a line too many
    const QList<QByteArray> words = line.toByteArray().split(' ');
    if (words.size() != 3 || !isToken(words[0]) || !words[1].startsWith('/') || !words[2].startsWith("HTTP/"))
        return broken(Malformed);
    if (words[2] != "HTTP/1.1")
        return broken(UnknownVersion);
    const QByteArray& target = words[1];
    const qsizetype mark = target.indexOf('?');
    current = {};
    current.method = words[0];
    current.path = mark < 0 ? target : target.first(mark);
    current.rawQuery = mark < 0 ? QByteArray() : target.sliced(mark + 1);
    if (current.path.startsWith("/api/v0/"))
        current.path.remove(0, 7);
    state = HeaderLine;
    return NeedsMore;
}

RequestReader::Event RequestReader::readHeaderLine(QByteArrayView line)
{
    if (line.isEmpty())
        return endHead();
    return takeHeader(line, current.headers) ? NeedsMore : broken(Malformed);
}

RequestReader::Event RequestReader::endHead()
{
    const QByteArray coding = current.header("Transfer-Encoding").toLower();
    if (!coding.isEmpty() && coding != "chunked")
        return broken(UnknownCoding);
    chunked = !coding.isEmpty();
    left = 0;
    if (!readContentLength())
        return broken(Malformed);
    state = chunked ? ChunkSize : FixedBody;
    return Head;
}

/// False if there is one that is no number, or two that differ.
bool RequestReader::readContentLength()
{
    std::optional<qint64> length;
    for (const auto& [name, value] : std::as_const(current.headers)) {
        if (name.compare("Content-Length", Qt::CaseInsensitive) != 0)
            continue;
        const auto size = sizeIn(value, 10);
        if (!size || (length && *length != *size))
            return false;
        length = size;
    }
    if (!chunked)
        left = length.value_or(0);
    return true;
}

RequestReader::Event RequestReader::readChunkSize()
{
    const auto line = input.takeLine();
    if ((line ? line->size() : buffered()) > mostChunkLine)
        return broken(Malformed);
    if (!line)
        return NeedsMore;
    const qsizetype extension = line->indexOf(';');
    const auto size = sizeIn((extension < 0 ? *line : line->first(extension)).trimmed(), 16);
    if (!size)
        return broken(Malformed);
    left = *size;
    state = left == 0 ? Trailer : ChunkData;
    headSize = 0;
    return next();
}

RequestReader::Event RequestReader::readChunkEnd()
{
    const auto line = input.takeLine();
    if (line ? !line->isEmpty() : buffered() > 1)
        return broken(Malformed);
    if (!line)
        return NeedsMore;
    state = ChunkSize;
    return next();
}

/// What a client sends after its last chunk is of no use to anybody.
RequestReader::Event RequestReader::readTrailer()
{
    while (const auto line = input.takeLine()) {
        headSize += line->size();
        if (line->isEmpty())
            return end();
        if (headSize > mostHead)
            return broken(Malformed);
    }
    return headSize + buffered() > mostHead ? broken(Malformed) : NeedsMore;
}

RequestReader::Event RequestReader::takePiece(State after)
{
    const auto size = static_cast<qsizetype>(std::min<qint64>(buffered(), left));
    if (size == 0)
        return NeedsMore;
    bodyPiece = input.take(size).toByteArray();
    left -= size;
    if (left == 0)
        state = after;
    return Piece;
}

RequestReader::Event RequestReader::end()
{
    bodyPiece.clear();
    headSize = 0;
    state = RequestLine;
    return End;
}

RequestReader::Event RequestReader::broken(Event why)
{
    state = Broken;
    return why;
}
