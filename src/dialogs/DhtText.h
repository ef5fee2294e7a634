// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QStringList>

// What is shown of a node's answer of "/stats/dht", which is an array of views, or one view.

/// The objects of an array, in their order; an object by itself; none of any other value.
QList<QJsonObject> dhtViews(const QJsonValue& value);

/// "DHT: wan"; a view without a name is called "DHT".
QString dhtViewTitle(const QJsonObject& view);

/// With the number of its peers and when it was refreshed. `index` counts from 0.
QString dhtBucketTitle(qsizetype index, const QJsonObject& bucket);

/// The captions of the columns of a bucket's table.
QStringList dhtPeerColumns();

/// The cells of a peer, one for each column.
QStringList dhtPeerCells(const QJsonObject& peer);
