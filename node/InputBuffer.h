// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <optional>

/// Bytes that have come and are not yet taken. Views into it hold until the next append.
class InputBuffer
{
public:
    void append(QByteArrayView bytes);
    /// The next line without its end, which may be a bare line feed; nothing if no line has come whole.
    std::optional<QByteArrayView> takeLine();
    QByteArrayView take(qsizetype count);
    QByteArrayView rest() const { return QByteArrayView(input).sliced(start); }
    qsizetype size() const { return input.size() - start; }

private:
    QByteArray input;
    qsizetype start = 0;   ///< of what is not yet taken
    qsizetype scanned = 0; ///< where no line end was found so far
};
