// SPDX-License-Identifier: MIT
#include "IpnsParser.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

QList<IpnsKeyEntry> ipnsKeysOf(const QJsonObject& answer)
{
    QList<IpnsKeyEntry> keys;
    const QJsonArray values = answer.value("Keys"_L1).toArray();
    keys.reserve(values.size());
    for (const auto& value : values) {
        const QJsonObject key = value.toObject();
        if (QString name = key.value("Name"_L1).toString().trimmed(); !name.isEmpty())
            keys.append({.name = std::move(name), .id = key.value("Id"_L1).toString().trimmed()});
    }
    return keys;
}
