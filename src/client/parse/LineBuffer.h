// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <utility>

/// Whole lines from a stream: keeps the open line at its end from one chunk to the next. Costs the chunk, however long
/// the open line is.
class LineBuffer
{
public:
    explicit LineBuffer(QByteArray newOpenLine = {})
        : open(std::move(newOpenLine))
    {
    }

    /// Calls `visit` with each line that the chunk completes, without its line feed. A view lives as long as the call.
    template <typename Visit> void take(QByteArrayView chunk, Visit visit)
    {
        for (qsizetype feed = chunk.indexOf('\n'); feed >= 0; feed = chunk.indexOf('\n')) {
            if (open.isEmpty()) {
                visit(chunk.first(feed));
            } else {
                open.append(chunk.first(feed));
                visit(QByteArrayView(open));
                open.clear();
            }
            chunk = chunk.sliced(feed + 1);
        }
        open.append(chunk);
    }

    /// What came after the last line feed.
    const QByteArray& openLine() const { return open; }

private:
    QByteArray open;
};
