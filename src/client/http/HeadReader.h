// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

#include <utility>

using HeaderList = QList<std::pair<QByteArray, QByteArray>>;

/// Reads the head of an HTTP answer line by line, and its trailers. Interim answers (1xx) are passed over, so that what
/// remains is the last one. Lines that are no header are passed over too.
class HeadReader
{
public:
    /// One line, with or without its line end. False once the lines come to more than 1 MiB, which ends the answer.
    bool takeLine(QByteArrayView line);

    /// Whether the empty line after the final head has come.
    bool isComplete() const { return complete; }
    /// 100 to 999, or 0 before the first status line.
    int status() const { return statusCode; }
    const QByteArray& reason() const { return reasonPhrase; }
    /// Names as sent, in the order of arrival; a folded header is one value.
    const HeaderList& headers() const { return fields; }
    /// What came after the body.
    const HeaderList& trailers() const { return trailerFields; }
    /// Empty if there is none; `name` in any case.
    QByteArray trailer(QByteArrayView name) const;

private:
    void takeStatus(QByteArrayView line);
    static void takeField(HeaderList& list, QByteArrayView line);

    int statusCode = 0;
    QByteArray reasonPhrase;
    HeaderList fields;
    HeaderList trailerFields;
    qsizetype taken = 0; ///< bytes
    bool complete = false;
};
