// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ActionBox.h"
#include "PlainText.h"
#include "UpdateCheck.h"

#include <QDesktopServices>
#include <QNetworkReply>

void MainWindow::checkForUpdates()
{
    if (updateCheck->start())
        setStatusMessage(tr("Checking for updates..."));
}

void MainWindow::onUpdateCheckFinished(QNetworkReply* reply)
{
    const UpdateAnswer answer = updateCheck->take(reply);
    if (!reply)
        return;
    if (!answer.error.isEmpty()) {
        const QString message = tr("Update check failed: %1").arg(answer.error);
        openMessageBox(QMessageBox::Warning, tr("Check for update"), message, this);
        setStatusMessage(message);
        return;
    }
    const QString current = lineForLabel(answer.versions.current);
    const QString latest = lineForLabel(answer.versions.latest);
    switch (answer.versions.kind) {
    case VersionVerdict::Unparsable:
        openMessageBox(QMessageBox::Warning, tr("Check for update"),
                       tr("Could not parse version information.\nCurrent: %1\nLatest: %2").arg(current, latest), this);
        setStatusMessage(tr("Update check failed: invalid version response"));
        break;
    case VersionVerdict::UpToDate:
        openMessageBox(QMessageBox::Information, tr("Check for update"),
                       tr("You are up to date.\nCurrent version: %1").arg(current), this);
        setStatusMessage(tr("Up to date: %1").arg(current));
        break;
    case VersionVerdict::Newer:
        offerUpdate(current, latest);
        break;
    }
}

void MainWindow::offerUpdate(const QString& current, const QString& latest)
{
    auto* box = new ActionBox(QMessageBox::Information, tr("Update available"),
                              tr("A newer version is available: %1\nYou are running: %2").arg(latest, current),
                              {tr("Open download page")}, this, QMessageBox::Close);
    box->openFor([this, latest](int choice) {
        if (choice == 0)
            QDesktopServices::openUrl(updateCheck->downloadPage());
        setStatusMessage(tr("Update available: %1").arg(latest));
    });
}
