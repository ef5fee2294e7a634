// SPDX-License-Identifier: MIT
#include "DemoCalls.h"
#include "RemotePins.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

DemoOptions optionsWith(std::chrono::milliseconds pinTime)
{
    return {.pins = 0,
            .latency = 5ms,
            .remoteServices = {u"unreachable"_s, u"invalid"_s, u"failing"_s, u"b"_s},
            .remotePinTime = pinTime};
}

constexpr int hour = 3'600'000;

void row(const char* name, const QByteArray& calls, const QByteArray& body, int pinTime = 0, int status = 200)
{
    QTest::newRow(name) << calls << status << body << pinTime;
}

void failure(const char* name, const QByteArray& calls, const QByteArray& message)
{
    row(name, calls, failureText(message), 0, 500);
}

QByteArray line(const QByteArray& status, const QByteArray& cid, const QByteArray& name)
{
    return "{`Status`:`" + status + "`,`Cid`:`" + cid + "`,`Name`:`" + name + "`}\n";
}

QByteArray service(const QByteArray& name, const QByteArray& stat = {})
{
    return "{`Service`:`" + name + "`,`ApiEndpoint`:`https://pins.example/" + name + '`'
        + (stat.isEmpty() ? "}" : ",`Stat`:{`Status`:`" + stat + "}}");
}

void serviceRows()
{
    const QByteArray none = "service/rm?arg=b service/rm?arg=b service/rm?arg=failing service/rm?arg=invalid "
                            "service/rm?arg=unreachable ";
    const QByteArray hanging = none + "service/add?arg=hanging&arg=https://pins.example/hanging//&arg=k ";
    row("no services", none + "service/ls?stat=true", "{`RemoteServices`:[]}\n");
    row("services", hanging + "service/add?arg=a%3C&arg=http://x&arg=k service/ls?stat=false",
        "{`RemoteServices`:[{`Service`:`a\\u003c`,`ApiEndpoint`:`http://x`}," + service("hanging") + "]}\n");
    row("states of services", "add?service=b&arg=HELLO add?service=failing&arg=HELLO&background=1 service/ls?stat=true",
        "{`RemoteServices`:[" + service("b", "valid`,`PinCount`:{`Queued`:0,`Pinning`:0,`Pinned`:1,`Failed`:0}") + ','
            + service("failing", "valid`,`PinCount`:{`Queued`:0,`Pinning`:0,`Pinned`:0,`Failed`:1}") + ','
            + service("invalid", "invalid`") + ',' + service("unreachable", "invalid`") + "]}\n");
    row("a hanging service holds the list", hanging + "service/ls?stat=true", {}, 0, 0);
    row("no key", "service/add?arg=x&arg=http://x", "argument `key` is required\n", 0, 400);
    failure("service twice", "service/add?arg=b&arg=http://x&arg=k", "service already present");
    for (const QByteArray endpoint : {"x", "ftp://x", "http:///psa"})
        failure(endpoint.constData(), "service/add?arg=x&arg=" + endpoint + "&arg=k",
                "service endpoint must be a valid HTTP URL");
    failure("pins suffix", "service/add?arg=x&arg=http://x/pins/&arg=k",
            "service endpoint should be provided without the /pins suffix");
    failure("query", "service/add?arg=x&arg=http://x/psa?a=b&arg=k",
            "service endpoint should be provided without any query parameters");
}

void pinRows()
{
    row("queued", "add?service=b&arg=/ipfs/HELLO&name=a%22&background=true", line("queued", "HELLO", "a\\`"), hour);
    row("version 0 stays", "add?service=b&arg=QMHELLO&cid-base=base32", line("pinned", "QMHELLO", {}), hour);
    row("longest name", "add?service=b&arg=HELLO&name=" + QByteArray(255, 'n'),
        line("pinned", "HELLO", QByteArray(255, 'n')));
    failure("name above", "add?service=b&arg=HELLO&name=n" + QByteArray("%C3%A4").repeated(127) + 'n',
            "pin name is 256 bytes (max 255 bytes)");
    failure("pin at an unknown service", "add?service=c&arg=HELLO", "service not known");
    failure("pin of no CID", "add?service=b&arg=x", "invalid path \\`x\\`: path does not have enough components");
    failure("pin that fails", "add?service=failing&arg=HELLO", "remote service failed to pin");
    failure("refused key", "add?service=invalid&arg=HELLO",
            "reason: \\`UNAUTHORIZED\\`, details: \\`access token is missing or wrong\\`: 401 Unauthorized");
    failure("unreachable", "ls?service=unreachable",
            "empty response from remote pinning service: "
            "\\`https://pins.example/unreachable/pins\\`: connection refused");
}

void listRows()
{
    const QByteArray some = "add?service=b&arg=HELLO&name=1 add?service=b&arg=QMHELLO&name=2 "
                            "add?service=failing&arg=HELLO&background=1 add?service=b&arg=HELLO&name=3 ";
    const QByteArray lines
        = line("pinned", "HELLO", "3") + line("pinned", "QMHELLO", "2") + line("pinned", "HELLO", "1");
    row("all", some + "ls?service=b&arg=QMHELLO", lines);
    row("of a CID", some + "ls?service=b&cid=HELLO", line("pinned", "HELLO", "3") + line("pinned", "HELLO", "1"));
    row("of a name, two CIDs", some + "ls?service=b&cid=QMHELLO&cid=HELLO&name=2", line("pinned", "QMHELLO", "2"));
    row("back with its service",
        some + "service/rm?arg=b service/add?arg=c&arg=https://pins.example/b&arg=k ls?service=c", lines);
    row("pinned alone", some + "ls?service=failing", {});
    row("failed", some + "ls?service=failing&status=pinned&status=failed", line("failed", "HELLO", {}));
    row("of a status", "add?service=b&arg=HELLO&background= ls?service=b&status=failed&status=queued",
        line("queued", "HELLO", {}), hour);
    failure("statuses with commas", "ls?service=b&status=queued,pinned", "status \\`queued,pinned\\` is not valid");
    failure("CIDs with commas", "ls?service=b&cid=HELLO,HELLO", "CID \\`HELLO,HELLO\\` cannot be parsed");
}

} // namespace

/// Remote pinning as a node answers it.
class tst_RemotePins : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    void calls_data()
    {
        addCallColumns();
        QTest::addColumn<int>("pinTime"); ///< in ms
        serviceRows();
        pinRows();
        listRows();
    }
    void calls()
    {
        QFETCH(const int, pinTime);
        OpenNode node(optionsWith(std::chrono::milliseconds(pinTime)));
        runCalls(node, "/pin/remote/");
    }

    /// Without `background` the answer comes when the pin has come to its end.
    void waits()
    {
        OpenNode node(optionsWith(1s));
        const QByteArray pin = "&arg=QmVJ1xg67UckH6KcJ4K6zEy8mofTdCxFeqCt2L7Jc5QWST";
        QCOMPARE(node.ask("/pin/remote/add?service=b" + pin).latency, 1005ms);
        QCOMPARE(node.ask("/pin/remote/add?service=failing" + pin).latency, 1005ms);
        QCOMPARE(node.ask("/pin/remote/add?service=b&background=true" + pin).latency, 5ms);
    }

    void statuses()
    {
        const RemotePins pins(100ms);
        QStringList words;
        for (const auto age : {49ms, 50ms, 99ms, 100ms})
            words += pins.statusOf({}, RemotePins::Clock::time_point(age));
        QCOMPARE(words, QStringList({u"queued"_s, u"pinning"_s, u"pinning"_s, u"pinned"_s}));
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_RemotePins)
#include "tst_remotepins.moc"
