// SPDX-License-Identifier: MIT
#include "InputBuffer.h"

#include <algorithm>

void InputBuffer::append(QByteArrayView bytes)
{
    if (start >= input.size() - start) { // what is moved is never more than what was taken
        scanned = std::max<qsizetype>(0, scanned - start);
        const qsizetype left = size();
        std::copy(input.cbegin() + start, input.cend(), input.begin());
        input.resize(left);
        start = 0;
    }
    input.append(bytes);
}

std::optional<QByteArrayView> InputBuffer::takeLine()
{
    const qsizetype lineEnd = input.indexOf('\n', std::max(scanned, start));
    if (lineEnd < 0) {
        scanned = input.size();
        return std::nullopt;
    }
    QByteArrayView line = take(lineEnd + 1 - start).chopped(1);
    if (line.endsWith('\r'))
        line.chop(1);
    return line;
}

QByteArrayView InputBuffer::take(qsizetype count)
{
    const QByteArrayView taken = rest().first(count);
    start += count;
    return taken;
}
