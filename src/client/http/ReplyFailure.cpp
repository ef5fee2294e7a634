// SPDX-License-Identifier: MIT
#include "ReplyFailure.h"

#include <QCoreApplication>
#include <QUrl>

#include <algorithm>
#include <array>
#include <cerrno>

#include <curl/curl.h>

#ifdef Q_OS_WIN
#include <winsock2.h>
#endif

using namespace Qt::StringLiterals;

namespace {

struct StatusError
{
    int status;
    QNetworkReply::NetworkError code;
};

constexpr std::array statusErrors {StatusError {400, QNetworkReply::ProtocolInvalidOperationError},
                                   StatusError {401, QNetworkReply::AuthenticationRequiredError},
                                   StatusError {403, QNetworkReply::ContentAccessDenied},
                                   StatusError {404, QNetworkReply::ContentNotFoundError},
                                   StatusError {405, QNetworkReply::ContentOperationNotPermittedError},
                                   StatusError {409, QNetworkReply::ContentConflictError},
                                   StatusError {410, QNetworkReply::ContentGoneError},
                                   StatusError {500, QNetworkReply::InternalServerError},
                                   StatusError {501, QNetworkReply::OperationNotImplementedError},
                                   StatusError {503, QNetworkReply::ServiceUnavailableError}};

#ifdef Q_OS_WIN
constexpr long refused = WSAECONNREFUSED;
constexpr long timedOut = WSAETIMEDOUT;
constexpr long netUnreachable = WSAENETUNREACH;
constexpr long hostUnreachable = WSAEHOSTUNREACH;
#else
constexpr long refused = ECONNREFUSED;
constexpr long timedOut = ETIMEDOUT;
constexpr long netUnreachable = ENETUNREACH;
constexpr long hostUnreachable = EHOSTUNREACH;
#endif

QString text(const char* source)
{
    return QCoreApplication::translate("NodeReply", source);
}

QNetworkReply::NetworkError codeOfStatus(int status)
{
    const auto known = std::ranges::find(statusErrors, status, &StatusError::status);
    if (known != statusErrors.end())
        return known->code;
    if (status >= 500)
        return QNetworkReply::UnknownServerError;
    return status >= 400 ? QNetworkReply::UnknownContentError : QNetworkReply::ProtocolFailure;
}

ReplyFailure failureOfConnect(long osError)
{
    if (osError == refused)
        return {QNetworkReply::ConnectionRefusedError, text("Connection refused")};
    if (osError == timedOut)
        return {QNetworkReply::TimeoutError, text("Connection timed out")};
    if (osError == netUnreachable)
        return {QNetworkReply::UnknownNetworkError, text("Network unreachable")};
    if (osError == hostUnreachable)
        return {QNetworkReply::UnknownNetworkError, text("Host unreachable")};
    return {QNetworkReply::UnknownNetworkError, text("The connection could not be made")};
}

} // namespace

ReplyFailure failureOfStatus(int status, const QByteArray& reason, const QUrl& url)
{
    const QString words = reason.isEmpty() ? QString::number(status) : QString::fromUtf8(reason);
    return {codeOfStatus(status), text("Error transferring %1 - server replied: %2").arg(url.toString(), words)};
}

ReplyFailure hostNotFound(const QString& host)
{
    return {QNetworkReply::HostNotFoundError, text("Host %1 not found").arg(host)};
}

ReplyFailure failureOfTransfer(int result, long osError, const QUrl& url)
{
    const bool isBroken = result == CURLE_RECV_ERROR && osError == 0; // what came can't be right
    switch (isBroken ? CURLE_WEIRD_SERVER_REPLY : result) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return hostNotFound(url.host());
    case CURLE_COULDNT_CONNECT:
        return failureOfConnect(osError);
    case CURLE_OPERATION_TIMEDOUT: // connecting: nothing else has a limit
        return failureOfConnect(timedOut);
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
        return {QNetworkReply::RemoteHostClosedError, text("Connection closed")};
    default:
        return {QNetworkReply::ProtocolFailure,
                text("The answer can't be read: %1")
                    .arg(QString::fromUtf8(curl_easy_strerror(static_cast<CURLcode>(result))))};
    }
}
