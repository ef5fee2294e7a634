// SPDX-License-Identifier: MIT
#include "DemoCalls.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

const DemoOptions withService {.pins = 0, .remoteServices = {u"b"_s}};
const QByteArray partHead = "--x\r\nContent-Disposition: form-data; name=\"file\"; filename=\"a\"\r\n\r\n";

NodeAnswer replace(OpenNode& node, QByteArray document)
{
    return node.ask("/config/replace", "multipart/form-data; boundary=x",
                    partHead + document.replace('`', '"') + "\r\n--x--\r\n");
}

void row(const char* name, const QByteArray& calls, const QByteArray& body, int status = 200)
{
    QTest::newRow(name) << calls << status << body;
}

void failure(const char* name, const QByteArray& calls, const QByteArray& message)
{
    row(name, calls, failureText(message), 500);
}

void written(const char* name, const QByteArray& key, const QByteArray& item, const QByteArray& value)
{
    const QByteArray body = "{`Key`:`" + key + "`,`Value`:" + value + "}\n";
    row(name, "/config?arg=" + key + "&arg=" + item, body);
    row(QByteArray(name + QByteArray(", read")).constData(),
        "/config?arg=" + key + "&arg=" + item + " /config?arg=" + key, body);
}

void readRows()
{
    row("text", "/config?arg=Addresses.API", "{`Key`:`Addresses.API`,`Value`:`/ip4/127.0.0.1/tcp/5001`}\n");
    row("object", "/config?arg=Discovery", "{`Key`:`Discovery`,`Value`:{`MDNS`:{`Enabled`:true}}}\n");
    for (const QByteArray key : {"Import.CidVersion", "Nothing", "discovery", "Discovery.", "Addresses.API.x"})
        failure(key.constData(), "/config?arg=" + key, "failed to get config value: \\`" + key + " not found\\`");
    for (const QByteArray key : {"Identity", "Identity.PrivKey", "Identity.PrivKey&arg=x"})
        failure(key.constData(), "/config?arg=" + key, "cannot show or change private key through API");
    for (const QByteArray key : {"Pinning", "Pinning.RemoteServices", "Pinning.RemoteServices.b",
                                 "Pinning.RemoteServices.b.API", "Pinning.RemoteServices.b.API.Key"})
        failure(key.constData(), "/config?arg=" + key, "cannot show or change pinning services credentials");
    row("endpoint", "/config?arg=Pinning.RemoteServices.b.API.Endpoint",
        "{`Key`:`Pinning.RemoteServices.b.API.Endpoint`,`Value`:`https://pins.example/b`}\n");
    row("no key", "/config", "argument `key` is required\n", 400);
    row("bootstrap peers are in the file", "/bootstrap/rm/all /config?arg=Bootstrap",
        "{`Key`:`Bootstrap`,`Value`:null}\n");
}

void writeRows()
{
    written("string", "Datastore.StorageMax", "1%3CB", "`1\\u003cB`");
    written("bool", "Discovery.MDNS.Enabled", "true&bool=true", "true");
    written("bool of another word", "Discovery.MDNS.Enabled", "yes&bool=true", "false");
    written("optional member", "Import.CidVersion", "1&json=true", "1");
    written("digits", "Datastore.BloomFilterSize", "9007199254740993&json=1", "9007199254740993");
    written("64 bits", "Datastore.BloomFilterSize", "-9223372036854775808&json=1", "-9223372036854775808");
    written("digits in a map", "Internal.Bitswap", "{%22a%22:9007199254740993}&json=true", "{`a`:9007199254740993}");
    written("null of a plain member", "Datastore.StorageMax", "null&json=true", "``");
    written("null of an optional member", "Import.CidVersion", "null&json=true", "null");
    written("left out and unknown members", "Pubsub", "{%22Router%22:%22gossipsub%22,%22x%22:1}&json=true",
            "{`DisableSigning`:false,`Router`:`gossipsub`}");
    written("header", "API.HTTPHeaders.X", "[%22*%22]&json=true", "[`*`]");
    written("duration", "Swarm.ConnMgr.GracePeriod", "1h30m", "`1h30m`");
    const QByteArray failed = "failed to set config value: ";
    const auto refused = [&failed](const QByteArray& key, const QByteArray& item, const QByteArray& why) {
        failure((key + '=' + item).constData(), "/config?arg=" + key + "&arg=" + item, failed + why);
    };
    const QByteArray cannot = "json: cannot unmarshal ";
    refused("Foo", "1", "Foo not found (maybe use --json?)");
    refused("Swarm.Foo", "1&json=true", "Swarm.Foo not found (maybe use --json?)");
    refused("Discovery.MDNS.Enabled", "true",
            cannot + "string into Go struct field Config.Discovery.MDNS.Enabled of type bool");
    for (const QByteArray number : {"1.5", "1e21"})
        refused("Import.CidVersion", number + "&json=true",
                cannot + "number into Go struct field Config.Import.CidVersion of type int64");
    refused("Bootstrap", "[1]&json=true", cannot + "array into Go struct field Config.Bootstrap of type []string");
    refused("API.HTTPHeaders.X", "x", cannot + "string into Go struct field Config.API.HTTPHeaders.X of type []string");
    refused("Swarm", "{%22ConnMgr%22:{%22LowWater%22:%22x%22}}&json=true",
            cannot + "string into Go struct field Config.Swarm.ConnMgr.LowWater of type int64");
    refused("Swarm.ConnMgr.GracePeriod", "soon", "time: invalid duration \\`soon\\`");
}

} // namespace

/// The configuration of the demo node, as a node shows and changes its own.
class tst_DemoConfig : public QObject
{
    Q_OBJECT

private slots:
    void init() { failOnWarnings(); }

    void calls_data()
    {
        addCallColumns();
        readRows();
        writeRows();
    }
    void calls()
    {
        OpenNode node(withService);
        runCalls(node);
    }

    void badJson()
    {
        OpenNode node(withService);
        for (const QByteArray text : {"", "{", "1,2", "x"}) {
            const NodeAnswer answer = node.ask("/config?json=true&arg=Swarm.ConnMgr.LowWater&arg=" + text);
            QCOMPARE(answer.status, 500);
            QVERIFY(bodyOf(answer).startsWith("{\"Message\":\"failed to unmarshal json. "));
        }
    }

    void refusedDocuments_data()
    {
        const auto refused = addColumns<QByteArray, QByteArray>("document", "message");
        const auto services = [](const QByteArray& list) { return "{`Pinning`:{`RemoteServices`:" + list + "}}"; };
        const QByteArray undecoded = "failed to decode file as config";
        refused("not JSON", "{`API`", undecoded);
        refused("a list", "[]", undecoded);
        refused("nothing", {}, undecoded);
        refused("wrong shape", "{`Swarm`:1}", undecoded);
        refused("wrong type", "{`Datastore`:{`StorageMax`:1}}", undecoded);
        refused("private key", "{`Identity`:{`PrivKey`:`x`}}", "setting private key with API is not supported");
        const QByteArray others = "cannot add or remove remote pinning services with 'config replace'";
        refused("service added", services("{`a`:{},`b`:{}}"), others);
        refused("services removed", services("{}"), others);
        const QByteArray changed = "cannot change remote pinning services api info with 'config replace'";
        refused("endpoint", services("{`b`:{`API`:{`Endpoint`:`https://x`}}}"), changed);
        refused("key", services("{`b`:{`API`:{`Endpoint`:`https://pins.example/b`,`Key`:`x`}}}"), changed);
    }
    void refusedDocuments()
    {
        QFETCH(const QByteArray, document);
        QFETCH(const QByteArray, message);
        OpenNode node(withService);
        const QByteArray before = bodyOf(node.ask("/config/show"));
        const NodeAnswer answer = replace(node, document);
        QCOMPARE(answer.status, 500);
        QCOMPARE(bodyOf(answer), expanded(failureText(message)));
        QCOMPARE(bodyOf(node.ask("/config/show")), before);
        QCOMPARE(node.ask("/config/replace").status, 400);
    }

    /// What is shown can be sent back; what it hides stays.
    void replaces()
    {
        OpenNode node(withService);
        node.ask("/config?arg=Import.CidVersion&arg=1&json=true");
        node.ask("/config?arg=API.Authorizations&arg={%22u%22:1}&json=true");
        const QByteArray shown = bodyOf(node.ask("/config/show"));
        QVERIFY(shown.startsWith("{\"API\":{\"HTTPHeaders\":{}},\"Addresses\":") && shown.count('\n') == 1);
        QVERIFY(shown.contains("https://pins.example/b") && !shown.contains("\"Key\"") && !shown.contains("PrivKey"));
        const NodeAnswer answer = replace(node, shown);
        QCOMPARE(bodyOf(answer), QByteArray());
        QCOMPARE(answer.status, 200);
        QCOMPARE(bodyOf(node.ask("/config/show")), shown);
        QCOMPARE(node.ask("/config?arg=API.Authorizations.u").status, 200);

        // Plain members that are left out are zero; those of maps and optional ones stay; unknown ones are dropped.
        replace(node, "{`Identity`:{`PeerID`:`p`,`PrivKey`:``},`DNS`:{`Resolvers`:{`eth.`:`x`}},`New`:1}");
        const QJsonObject after = QJsonDocument::fromJson(bodyOf(node.ask("/config/show"))).object();
        QCOMPARE(after["Datastore"_L1]["StorageMax"_L1], QJsonValue(QString()));
        QCOMPARE(after["Discovery"_L1]["MDNS"_L1]["Enabled"_L1], QJsonValue(false));
        QVERIFY(after["Bootstrap"_L1].isNull() && !after.contains("New"_L1));
        QCOMPARE(after["Import"_L1]["CidVersion"_L1], QJsonValue(1));
        QCOMPARE(after["DNS"_L1]["Resolvers"_L1].toObject().keys(), QStringList({u"."_s, u"eth."_s}));
        QVERIFY(after["Pinning"_L1]["RemoteServices"_L1].toObject().contains("b"_L1));
    }

    /// A service that was removed is still in the file.
    void removedServiceReturns()
    {
        OpenNode node(withService);
        node.ask("/pin/remote/service/add?arg=a&arg=https://x&arg=k");
        node.ask("/pin/remote/service/rm?arg=b");
        QCOMPARE(bodyOf(node.ask("/pin/remote/service/ls")).count("\"Service\""), 1);
        node.ask("/config?arg=Datastore.StorageMax&arg=1GB");
        QCOMPARE(bodyOf(node.ask("/pin/remote/service/ls")).count("\"Service\""), 2);
    }
};

NORVO_TEST_MAIN(QCoreApplication, tst_DemoConfig)
#include "tst_democonfig.moc"
