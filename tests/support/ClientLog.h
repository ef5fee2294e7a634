// SPDX-License-Identifier: MIT
#pragma once

#include "Detached.h"
#include "FakeNode.h"
#include "IpfsClient.h"
#include "TestMain.h"

#include <QSettings>
#include <QStringList>

#include <algorithm>
#include <memory>

/// What a client emitted, a line a signal, in order; for comparing orders and for seeing that nothing came.
class ClientLog : public QObject
{
public:
    explicit ClientLog(IpfsClient& client)
    {
        using namespace Qt::StringLiterals;
        connect(&client, &IpfsClient::pinsReceived, this, [this](const QList<PinEntry>& pins) {
            QStringList cids {u"pins"_s};
            for (const PinEntry& pin : pins)
                cids.append(pin.cid + u':' + pin.type + (pin.name.isEmpty() ? QString() : u':' + pin.name));
            lines.append(cids.join(u' '));
        });
        connect(&client, &IpfsClient::streamEntriesLoaded, this, [this](const QString& source, int count) {
            loaded.append(count);
            lines.append(u"loaded %1 %2"_s.arg(source, QString::number(count)));
        });
        connect(&client, &IpfsClient::connectionStatusChanged, this,
                [this](bool on) { lines.append(on ? u"connected"_s : u"disconnected"_s); });
        connect(&client, &IpfsClient::errorOccurred, this,
                [this](const QString& message) { lines.append(u"error "_s + message); });
        connect(&client, &IpfsClient::nodeSaid, this,
                [this](const QString& path, const QString& words) { lines.append(u"said %1 %2"_s.arg(path, words)); });
        connect(&client, &IpfsClient::nodeInfoReceived, this,
                [this](const QString& id, const QString& agent) { lines.append(u"node %1 %2"_s.arg(id, agent)); });
        connect(&client, &IpfsClient::refsReceived, this, [this](const QString& root, const QStringList& cids) {
            lines.append((QStringList {u"refs"_s, root} + cids).join(u' '));
        });
        connect(&client, &IpfsClient::dagStatReceived, this, [this](const QString& cid, qint64 size) {
            lines.append(u"size %1 %2"_s.arg(cid, QString::number(size)));
        });
        connect(&client, &IpfsClient::kindReceived, this,
                [this](const QString& cid, const QString& kind) { lines.append(u"kind %1 %2"_s.arg(cid, kind)); });
        connect(&client, &IpfsClient::unpinned, this,
                [this](const QStringList& cids) { lines.append(u"unpinned "_s + cids.join(u' ')); });
        connect(&client, &IpfsClient::unpinProgress, this, [this](int done, int total) {
            progress.append(u"%1/%2"_s.arg(QString::number(done), QString::number(total)));
        });
        connect(&client, &IpfsClient::pinsMayHaveChanged, this, [this] { lines.append(u"changed"_s); });
        connect(&client, &IpfsClient::lsReceived, this, [this](const QString& cid, const QList<LsEntry>& entries) {
            QString line = u"ls "_s + cid;
            for (const LsEntry& entry : entries)
                line += u" [%1/%2 %3 %4 %5]"_s.arg(entry.objectName, entry.name, entry.hash,
                                                   QString::number(entry.size), QString::number(entry.type));
            lines.append(line);
        });
        connect(&client, &IpfsClient::catReceived, this, [this](const QString& cid, const QByteArray& data) {
            lines.append(u"cat %1 %2"_s.arg(cid, QString::number(data.size())));
        });
        connect(&client, &IpfsClient::catFailed, this, [this](const QString& cid, const QString& message) {
            lines.append(u"cat failed %1 %2"_s.arg(cid, message));
        });
    }

    /// The lines without the progress of streams and the node's words.
    QStringList outcome() const
    {
        QStringList list = lines;
        list.removeIf([](const QString& line) {
            return line.startsWith(QLatin1StringView("loaded ")) || line.startsWith(QLatin1StringView("said "));
        });
        return list;
    }
    int count(QLatin1StringView start) const
    {
        return static_cast<int>(
            std::ranges::count_if(lines, [start](const QString& line) { return line.startsWith(start); }));
    }

    QStringList lines;
    QList<int> loaded;
    QStringList progress; ///< of unpins
};

/// What each test of the client starts from: a node, a client of it and the log of what it emits.
class ClientTest : public QObject
{
    Q_OBJECT

protected slots: // called by their names
    void init()
    {
        failOnWarnings();
        QSettings settings(QLatin1StringView("Norvo"), QLatin1StringView("settings"));
        settings.clear();
        node = std::make_unique<FakeNode>();
        client = std::make_unique<IpfsClient>();
        client->setEndpoint(QStringLiteral("127.0.0.1"), node->port());
        log = std::make_unique<ClientLog>(*client);
    }
    void cleanup() { QVERIFY(waitForDetached(std::chrono::seconds(10))); }

protected:
    std::unique_ptr<FakeNode> node;
    std::unique_ptr<IpfsClient> client;
    std::unique_ptr<ClientLog> log;
};
