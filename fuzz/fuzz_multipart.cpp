// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "MultipartReader.h"
#include "PartHead.h"

#include <algorithm>
#include <vector>

namespace {

/// Everything that the reader makes of a body, which comes in pieces of `size` bytes.
QByteArray readIn(QByteArrayView body, qsizetype size)
{
    MultipartReader reader("b");
    QByteArray seen;
    while (true) {
        const auto event = reader.next();
        seen.append(event == MultipartReader::Piece ? reader.piece() : QByteArrayView());
        if (event == MultipartReader::PartHead || event == MultipartReader::PartEnd)
            seen.append('\n').append(QByteArray::number(event));
        if (event == MultipartReader::PartHead) {
            const QList<QByteArray> path = partPath(reader.head()).value_or(QList<QByteArray> {"unreadable"});
            abortIf(std::ranges::any_of(path, [](const QByteArray& name) {
                return name.isEmpty() || name == "." || name == ".." || name.contains('/');
            }));
            seen.append(path.join('/')).append('\n');
        }
        if (event == MultipartReader::Failed)
            return seen + reader.error();
        if (event == MultipartReader::End)
            return seen;
        if (event != MultipartReader::NeedsMore)
            continue;
        if (body.isEmpty())
            reader.finish();
        reader.append(body.first(std::min(size, body.size())));
        body = body.sliced(std::min(size, body.size()));
    }
}

} // namespace

/// However a body is cut, the same parts come out of it, and the reading ends.
void checkInput(const QByteArray& input)
{
    const std::vector<char> exact(input.begin(), input.end()); // so that a read beyond it is seen
    const QByteArrayView body(exact);
    const QByteArray whole = readIn(body, std::max<qsizetype>(1, body.size()));
    for (const qsizetype piece : {1, 2, 5, 64})
        abortIf(readIn(body, piece) != whole);
}
