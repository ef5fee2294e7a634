// SPDX-License-Identifier: MIT
#include "JsonBody.h"

#include <QJsonDocument>

JsonBody parseJsonBody(const QByteArray& body)
{
    QJsonParseError error {};
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    return {.object = document.object(), .parserMessage = error.errorString(), .isObject = document.isObject()};
}
