// SPDX-License-Identifier: MIT
#include "UpdateCheck.h"

#include "AppSettings.h"
#include "ProductInfo.h"
#include "RequestHeaders.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QProgressBar>
#include <QProgressDialog>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int firstErrorStatus = 400;

} // namespace

UpdateCheck::UpdateCheck(QWidget* newParent)
    : QObject(newParent)
    , parent(newParent)
    , endpoint(ProductInfo::webUrl)
{
}

bool UpdateCheck::start()
{
    if (std::exchange(updateCheckRunning, true))
        return false;
    showProgress();
    body.clear();
    network = new QNetworkAccessManager(parent);
    connect(network, &QNetworkAccessManager::finished, this, &UpdateCheck::finished);
    QNetworkRequest request(QUrl(endpoint + "/latest-version.txt"_L1));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setHeader(QNetworkRequest::UserAgentHeader, userAgent());
    if (const QByteArray origin = originHeader(openAppSettings()); !origin.isEmpty())
        request.setRawHeader("Origin", origin);
    reply = network->get(request);
    reply->setReadBufferSize(largestAnswer);
    connect(reply, &QNetworkReply::readyRead, this, &UpdateCheck::onReadyRead);
    return true;
}

void UpdateCheck::showProgress()
{
    if (!updateProgressDialog) {
        updateProgressDialog = new QProgressDialog(parent);
        updateProgressDialog->setWindowTitle(tr("Check for update"));
        updateProgressDialog->setLabelText(tr("Checking for updates..."));
        updateProgressDialog->setCancelButton(nullptr);
        updateProgressDialog->setAutoClose(false);
        updateProgressDialog->setAutoReset(false);
        updateProgressDialog->setMinimumDuration(0);
        updateProgressDialog->setWindowModality(Qt::ApplicationModal);
        connect(updateProgressDialog, &QProgressDialog::canceled, this, &UpdateCheck::cancel);
        connect(updateProgressDialog, &QDialog::rejected, this, &UpdateCheck::cancel); // by Escape
    }
    updateProgressDialog->setRange(0, 0);
    // The dialog's own setValue would run the event loop.
    updateProgressDialog->findChild<QProgressBar*>()->setValue(0);
    updateProgressDialog->show();
}

void UpdateCheck::onReadyRead()
{
    body += reply->readAll();
    if (body.size() > largestAnswer)
        reply->abort(); // which finishes it
}

UpdateAnswer UpdateCheck::take(QNetworkReply* finishedReply)
{
    updateCheckRunning = false;
    if (updateProgressDialog)
        updateProgressDialog->hide();
    if (!finishedReply)
        return {};
    finishedReply->deleteLater();
    finishedReply->manager()->deleteLater();
    const bool isTooLong = body.size() > largestAnswer;
    if (!isTooLong && finishedReply->error() != QNetworkReply::NoError)
        return {.error = finishedReply->errorString()};
    if (finishedReply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() >= firstErrorStatus)
        body.clear(); // a page of an error, which is not shown
    UpdateAnswer answer {.versions = judgeVersions(body, QCoreApplication::applicationVersion())};
    if (isTooLong)
        answer.versions.kind = VersionVerdict::Unparsable;
    return answer;
}

void UpdateCheck::cancel()
{
    if (!std::exchange(updateCheckRunning, false))
        return;
    updateProgressDialog->hide();
    network->disconnect(this);
    reply->disconnect(this);
    reply->abort();
    network->deleteLater(); // and the reply with it
    emit cancelled();
}
