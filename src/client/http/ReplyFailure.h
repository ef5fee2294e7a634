// SPDX-License-Identifier: MIT
#pragma once

#include <QNetworkReply>

/// Why a call failed, with the codes and texts that Qt's own HTTP uses where it has one.
struct ReplyFailure
{
    QNetworkReply::NetworkError code = QNetworkReply::NoError;
    QString text {};
};

/// Of a whole answer that is no success (2xx), redirects included. `reason` is the phrase of its status line.
ReplyFailure failureOfStatus(int status, const QByteArray& reason, const QUrl& url);

/// Of a transfer that ended with the libcurl code `result`, above 0; `osError` is the error number of the system's call
/// that failed, or 0.
ReplyFailure failureOfTransfer(int result, long osError, const QUrl& url);

ReplyFailure hostNotFound(const QString& host);
