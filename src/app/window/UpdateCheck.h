// SPDX-License-Identifier: MIT
#pragma once

#include "VersionText.h"

#include <QByteArray>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

class QNetworkAccessManager;
class QProgressDialog;

/// What came of a check: an error, or a comparison of versions.
struct UpdateAnswer
{
    QString error {};
    VersionVerdict versions {};
};

/// Asks the product's web endpoint for the latest version, on the user's request, and shows a busy bar meanwhile.
/// Closing that ends the check.
class UpdateCheck : public QObject
{
    Q_OBJECT

public:
    explicit UpdateCheck(QWidget* newParent);

    /// Sends the request; false if a check is running. What comes of it is reported by finished or cancelled.
    bool start();
    /// Ends the check of a finished reply, which is deleted later. Null ends one that has none.
    UpdateAnswer take(QNetworkReply* reply);
    bool isRunning() const { return updateCheckRunning; }
    QUrl downloadPage() const { return QUrl(endpoint + u'/'); }
    /// Another web endpoint, without a slash at its end; for tests.
    void setEndpoint(const QString& url) { endpoint = url; }

    static constexpr qsizetype largestAnswer = 64 * 1024; ///< bytes; a longer one can't be a version

signals:
    /// To be taken by take().
    void finished(QNetworkReply* reply);
    void cancelled();

private:
    void showProgress();
    void onReadyRead();
    void cancel();

    QWidget* parent;
    QString endpoint;
    bool updateCheckRunning = false;
    QProgressDialog* updateProgressDialog = nullptr; ///< made at the first check
    QPointer<QNetworkAccessManager> network;         ///< of this check, as what follows is
    QPointer<QNetworkReply> reply;
    QByteArray body {};
};
