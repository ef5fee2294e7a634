#include "NdJson.h"

#include <QJsonDocument>

std::optional<QJsonObject> parseJsonLine(QByteArrayView line)
{
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromRawData(line.data(), line.size()));
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}
