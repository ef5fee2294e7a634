#pragma once

#include "IpfsClient.h"

#include <QStringList>

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
        connect(&client, &IpfsClient::nodeInfoReceived, this,
                [this](const QString& id, const QString& agent) { lines.append(u"node %1 %2"_s.arg(id, agent)); });
    }

    /// The lines without the progress of streams.
    QStringList outcome() const
    {
        QStringList list = lines;
        list.removeIf([](const QString& line) { return line.startsWith(QLatin1StringView("loaded ")); });
        return list;
    }
    int count(QLatin1StringView start) const
    {
        return static_cast<int>(
            std::ranges::count_if(lines, [start](const QString& line) { return line.startsWith(start); }));
    }

    QStringList lines;
    QList<int> loaded;
};
