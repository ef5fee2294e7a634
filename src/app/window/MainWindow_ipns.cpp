// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "ActionBox.h"
#include "ContentMode.h"
#include "Gateway.h"
#include "IpfsClient.h"
#include "IpnsReport.h"
#include "PinTable.h"
#include "PlainText.h"
#include "TextQuestion.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Without its answer. It may be closed already, or gone.
void closeQuestion(QDialog* question)
{
    if (question)
        question->deleteLater();
}

} // namespace

/// Asks the node nothing: the gateway resolves the name.
void MainWindow::onOpenViaIpnsClicked()
{
    const auto open = [this](const QString& answer) {
        const QString name = bareIpnsName(answer);
        if (name.isEmpty())
            return;
        QDesktopServices::openUrl(publicGatewayUrl(ipnsPath(name)));
        setStatusMessage(tr("Opening /ipns/%1 in browser…").arg(name));
    };
    askForText(
        {.title = tr("Open via IPNS"), .label = tr("IPNS name (k51..., peer id, or /ipns/...):"), .initial = u"self"_s},
        this, open);
}

void MainWindow::onResolveIpnsClicked()
{
    const auto resolve = [this](const QString& name) {
        if (name.isEmpty())
            return;
        setStatusMessage(tr("Resolving %1…").arg(name));
        client->resolveIpns(name);
    };
    askForText({.title = tr("Resolve IPNS"), .label = tr("IPNS name (k51..., peer id, or /ipns/...):")}, this, resolve);
}

void MainWindow::onPublishToIpnsClicked()
{
    publishToIpns(pinTable->firstSelectedCid());
}

/// A publish that runs goes on. One whose key is still to be chosen is replaced, and its question is closed.
void MainWindow::publishToIpns(const QString& cid)
{
    const QString target = cid.trimmed();
    if (values.contentMode != ContentMode::pinned || target.isEmpty())
        return;
    closeQuestion(ipns.question);
    ipns.pendingIpnsPublishCid = target;
    ipns.choice = IpnsPublishing::KeysAsked;
    setStatusMessage(tr("Fetching IPNS keys for publish (%1)…").arg(target));
    client->fetchIpnsKeys();
}

void MainWindow::onIpnsKeysReceived(const QList<IpnsKeyEntry>& keys)
{
    askForIpnsKey({.label = tr("Publish CID\n%1\n\nSelect key:").arg(paragraphForLabel(ipns.pendingIpnsPublishCid)),
                   .choices = ipnsKeyChoices(keys)});
}

/// The key can be typed all the same.
void MainWindow::onIpnsKeysFailed(const QString& message)
{
    askForIpnsKey(
        {.label = tr("Could not load keys automatically.\n\n%1\n\nEnter key name:").arg(paragraphForLabel(message)),
         .initial = u"self"_s});
}

void MainWindow::askForIpnsKey(const TextQuestion& question)
{
    if (ipns.choice != IpnsPublishing::KeysAsked)
        return; // given up, or asked for twice
    ipns.choice = IpnsPublishing::KeyOffered;
    TextQuestion titled = question;
    titled.title = tr("Publish to IPNS");
    ipns.question = askForText(titled, this, [this](const QString& key) { publishUnder(key); });
}

void MainWindow::publishUnder(const QString& key)
{
    if (key.isEmpty()) {
        dropIpnsChoice();
        return;
    }
    ipns.choice = IpnsPublishing::None;
    ++ipns.running;
    const QString text = tr("Publishing %1 to IPNS key '%2'…").arg(ipns.pendingIpnsPublishCid, key);
    setIdleStatus(text); // it may take minutes
    setStatusMessage(text);
    client->publishIpns(ipns.pendingIpnsPublishCid, key);
}

/// A CID is not published with the keys of another node. A publish that runs goes on where it began.
void MainWindow::dropIpnsChoice()
{
    if (ipns.choice == IpnsPublishing::None)
        return;
    ipns.choice = IpnsPublishing::None;
    ipns.pendingIpnsPublishCid.clear();
    closeQuestion(ipns.question);
    setStatusMessage(tr("IPNS publish cancelled"));
}

void MainWindow::endIpnsPublish()
{
    ipns.running = std::max(ipns.running - 1, 0);
    if (ipns.running == 0)
        setIdleStatus({});
    if (ipns.choice == IpnsPublishing::None) // else it is the CID of the next one
        ipns.pendingIpnsPublishCid.clear();
}

void MainWindow::onIpnsPublished(const IpnsPublishResult& result)
{
    endIpnsPublish();
    showIpnsReport(reportOf(result));
}

void MainWindow::onIpnsPublishFailed(const QString& message)
{
    endIpnsPublish();
    showError(message);
}

void MainWindow::onIpnsResolved(const IpnsResolveResult& result)
{
    showIpnsReport(reportOf(result));
}

void MainWindow::onIpnsResolveFailed(const QString& message)
{
    showError(message);
}

void MainWindow::showIpnsReport(const IpnsReport& report)
{
    showNotification(report.message, false);
    setStatusMessage(report.message);
    QStringList captions;
    captions.reserve(report.actions.size());
    for (const IpnsAction& action : report.actions)
        captions.append(action.caption);
    auto* box = new ActionBox(QMessageBox::Information, report.title, report.text, captions, this);
    box->openFor([this, actions = report.actions](int choice) {
        const IpnsAction chosen = actions.value(choice);
        if (!chosen.copied.isEmpty()) {
            QGuiApplication::clipboard()->setText(chosen.copied);
            setStatusMessage(chosen.status);
        }
        if (!chosen.url.isEmpty())
            QDesktopServices::openUrl(chosen.url);
    });
}
