// SPDX-License-Identifier: MIT
#include "RpcQuery.h"

#include <QUrl>

void addQueryItem(QUrlQuery& query, const QString& key, const QString& value)
{
    // QUrlQuery keeps "+" and ";" as they are and decodes "%41"; what is encoded already it leaves alone.
    query.addQueryItem(key, QString::fromLatin1(QUrl::toPercentEncoding(value)));
}

QUrlQuery rpcQuery(std::initializer_list<std::pair<QString, QString>> items)
{
    QUrlQuery query;
    for (const auto& [key, value] : items)
        addQueryItem(query, key, value);
    return query;
}
