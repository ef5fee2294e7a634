// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>
#include <QStringList>

/// The views of a DHT.
struct DhtStats
{
    QJsonValue data {QJsonValue::Undefined}; ///< an object, or an array; undefined if the body holds neither
    QString parserMessage {};                ///< why it is undefined
};

/// Reads an answer of "/stats/dht": one document, or an object a line of which only those that parse are kept. A single
/// one is not wrapped into an array.
DhtStats parseDhtStats(const QByteArray& body);

/// What a garbage collection came to.
struct GcReport
{
    QStringList collectedCids {};
    QStringList errors {};
};

/// Reads an answer of "/repo/gc": an object a line, of which each can name a CID and an error; or one document.
GcReport parseGcReport(const QByteArray& body);
