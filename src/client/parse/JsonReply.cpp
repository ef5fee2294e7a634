// SPDX-License-Identifier: MIT
#include "JsonReply.h"

#include <QCoreApplication>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

constexpr auto messageKey = "Message"_L1;

QString failedTo(const QString& action, const QString& detail)
{
    return QCoreApplication::translate("JsonReply", "Failed to %1: %2").arg(action, detail);
}

QString trimmedText(const QJsonObject& object, QLatin1StringView key)
{
    return object.value(key).toString().trimmed();
}

} // namespace

JsonReply judgeJsonReply(const QByteArray& body, const QString& action)
{
    JsonReply reply {.body = body};
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject()) {
        reply.errorMessage
            = QCoreApplication::translate("JsonReply", "Failed to %1: invalid JSON response").arg(action);
        return reply;
    }
    reply.object = document.object();
    QString detail = trimmedText(reply.object, "Error"_L1);
    if (detail.isEmpty())
        detail = trimmedText(reply.object, messageKey);
    if (detail.isEmpty())
        reply.ok = true;
    else
        reply.errorMessage = failedTo(action, detail);
    return reply;
}

JsonReply failedJsonReply(const QByteArray& body, const QString& errorString, const QString& action)
{
    const QString words = QString::fromUtf8(body).trimmed();
    return {.body = body, .errorMessage = failedTo(action, words.isEmpty() ? errorString : words)};
}

QString rpcErrorMessage(const QByteArray& body)
{
    return QJsonDocument::fromJson(body)[messageKey].toString();
}
