// SPDX-License-Identifier: MIT
#include "UnpinParser.h"

#include "JsonReply.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

QString parseFormattedCid(const QByteArray& body)
{
    return QJsonDocument::fromJson(body)["Formatted"_L1].toString();
}

std::optional<QStringList> parseRemovedPins(const QByteArray& body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        return std::nullopt;
    QStringList cids;
    for (const auto& value : document["Pins"_L1].toArray()) {
        if (value.isString())
            cids.append(value.toString());
    }
    return cids;
}

bool saysNotPinned(const QByteArray& body)
{
    const QString words = rpcErrorMessage(body);
    return words == "not pinned or pinned indirectly"_L1 || words == "not pinned"_L1; // the latter before 0.5
}
