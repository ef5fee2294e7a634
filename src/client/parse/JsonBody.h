// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// A body that should be one JSON object.
struct JsonBody
{
    QJsonObject object {};
    QString parserMessage {}; ///< of a document that is no object it names no error
    bool isObject = false;
};

JsonBody parseJsonBody(const QByteArray& body);
