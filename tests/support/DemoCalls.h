// SPDX-License-Identifier: MIT
#pragma once

#include "DemoNode.h"
#include "DemoPeers.h"
#include "TestMain.h"

/// A demo node that is asked without a connection.
class OpenNode : public DemoNode
{
public:
    explicit OpenNode(DemoOptions options)
        : DemoNode((options.port = 0, options))
    {
    }
    /// `target` is a path and a query.
    NodeAnswer ask(const QByteArray& target, const QByteArray& type = {}, const QByteArray& body = {})
    {
        const qsizetype mark = target.indexOf('?');
        return answerTo({.path = target.first(mark < 0 ? target.size() : mark),
                         .rawQuery = mark < 0 ? QByteArray() : target.sliced(mark + 1),
                         .headers = {{"Content-Type", type}},
                         .body = body});
    }
};

inline QByteArray bodyOf(const NodeAnswer& answer)
{
    QByteArray body;
    for (const NodeChunk& chunk : answer.chunks)
        body += chunk.bytes;
    while (const auto chunk = answer.source ? answer.source() : std::nullopt)
        body += chunk->bytes;
    return body;
}

/// A node's error, with ` for ".
inline QByteArray failureText(const QByteArray& message, int code = 0)
{
    return "{`Message`:`" + message + "`,`Code`:" + QByteArray::number(code) + ",`Type`:`error`}\n";
}

inline QByteArray trailerOf(const NodeAnswer& answer)
{
    return headerIn(answer.trailers, "X-Stream-Error");
}

/// Texts that rows use in place of long ones.
inline QByteArray expanded(QByteArray text)
{
    text.replace("QMHELLO", "QmVJ1xg67UckH6KcJ4K6zEy8mofTdCxFeqCt2L7Jc5QWST")
        .replace("HELLO", "bafkreifjjcie6lypi6ny7amxnfftagclbuxndqonfipmb64f2km2devei4")
        .replace("NOTES", "bafybeigu66tnnkzn65sqrifvkie7nzul6yfbjhkbzgb2rumg3kuwkth3d4")
        .replace("DOCS", "bafybeidhkumeonuwkebh2i4fc7o7lguehauradvlk57gzake6ggjsy372a")
        .replace("LOOSE", "bafybeihdwdcefgh4dqkjv67uzcmw7ojee6xedzdetojuzjevtenxquvyku") // no such pin
        .replace("KSELF", "k51qzi5uqu5dgco0da1k97ov7wpeuywq1clp4ayqbassqybqz7jt1ycp4shjhg")
        .replace("PSELF", selfPeerId.latin1())
        .replace('`', '"')
        .replace("BACKTICK", "`");
    for (const char digit : {'0', '1', '2', '3'})
        text.replace(QByteArray("PEER") + digit, demoPeerId(digit - '0').toLatin1());
    return text;
}

/// A row is a number of calls, and what the last is answered.
inline void addCallColumns()
{
    QTest::addColumn<QByteArray>("calls"); ///< with blanks between them; those before the last succeed
    QTest::addColumn<int>("status");       ///< 0 if there is no answer
    QTest::addColumn<QByteArray>("body");  ///< and the trailer, if there is one; with ` for "
}

/// Compares the answers to a row's calls, each of which `prefix` precedes.
inline void runCalls(OpenNode& node, const QByteArray& prefix = {})
{
    QFETCH(const QByteArray, calls);
    QFETCH(const QByteArray, body);
    NodeAnswer answer;
    for (const QByteArray& call : expanded(calls).split(' ')) {
        QCOMPARE(answer.status, 200);
        answer = node.ask(prefix + call);
    }
    QCOMPARE(bodyOf(answer) + trailerOf(answer), expanded(body));
    QTEST(answer.held ? 0 : answer.status, "status");
}
