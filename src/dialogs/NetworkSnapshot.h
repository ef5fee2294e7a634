// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QStringList>

/// What one refresh has brought so far. A call that has not answered is neither done nor ok.
struct NetworkFacts
{
    QStringList swarmPeers {}; ///< addresses, or peers where there is none
    QJsonValue dhtData {};     ///< a view, or an array of views
    QJsonObject bitswapStat {};
    bool swarmDone = false;
    bool dhtDone = false;
    bool bitswapDone = false;
    bool swarmOk = false;
    bool dhtOk = false;
    bool bitswapOk = false;
    QString swarmError {};
    QString dhtError {};
    QString bitswapError {};

    bool allDone() const { return swarmDone && dhtDone && bitswapDone; }
    bool allOk() const { return swarmOk && dhtOk && bitswapOk; }
};

/// The network snapshot, this program's file format: the facts, their sums and a verdict, "health". All of its members
/// are always there; a call without an answer has an empty section. On any thread, for any input.
QJsonObject buildSnapshot(const NetworkFacts& facts, const QDateTime& timestamp);

/// What the window shows of a snapshot.
struct SnapshotView
{
    QString json {};            ///< the document, indented
    QStringList jsonLines {};   ///< the same
    QStringList signalLines {}; ///< connectivity, routing, exchange
};
SnapshotView viewOfSnapshot(const QJsonObject& snapshot);

/// How many peers and blocks the facts name, which is what a snapshot's size and making depend on.
qsizetype entriesIn(const NetworkFacts& facts);

/// A number without its fraction or a text of digits as a number of 64 bits; 0 if it is neither. A number that doesn't
/// fit reads as the nearest that does.
qint64 toInt64(const QJsonValue& value);
