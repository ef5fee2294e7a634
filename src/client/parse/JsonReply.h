// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// What a plain JSON call came to. `errorMessage` is empty exactly if `ok` is true.
struct JsonReply
{
    QByteArray body {};
    QJsonObject object {};
    QString errorMessage {};
    bool ok = false;
};

/// Judges the body of a reply that did not fail. `action` is in the infinitive form, as "get repo stat".
/// An object with a text under "Error" or "Message" is a failure, even on a good HTTP status.
JsonReply judgeJsonReply(const QByteArray& body, const QString& action);

/// The answer of a reply that failed: its text is the trimmed body, or `errorString` where there is none.
JsonReply failedJsonReply(const QByteArray& body, const QString& errorString, const QString& action);

/// The node's own words of a call that failed, the "Message" of its JSON error; empty if there are none.
QString rpcErrorMessage(const QByteArray& body);
