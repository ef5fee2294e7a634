// SPDX-License-Identifier: MIT
#include "ConfigDialog.h"

#include "ActionBox.h"
#include "AppSettings.h"
#include "ConfigTree.h"
#include "ConfigValues.h"
#include "DialogSizing.h"
#include "IpfsClient.h"
#include "StatusLabel.h"

#include <QComboBox>
#include <QJsonDocument>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

constexpr auto treeExpandedKey = "ConfigDialog/treeExpanded"_L1;

bool treeIsToBeExpanded()
{
    return openAppSettings().value(treeExpandedKey, true).toBool();
}

} // namespace

ConfigDialog::ConfigDialog(IpfsClient* newClient, QWidget* parent)
    : QDialog(parent)
    , client(newClient)
{
    setWindowTitle(tr("Kubo config"));
    DialogSizing::attach(this,
                         {.settingsKey = u"Dialogs/ConfigDialog"_s,
                          .minimumSize = {560, 400},
                          .preferredSize = {1240, 860},
                          .maxWidthRatio = 0.85,
                          .maxHeightRatio = 0.75});
    setupUi();
    updateExpandCollapseButtonText();
    connectClient();
    rebuildPresetCombo({});
    keyEdit->setFocus();
}

void ConfigDialog::connectClient()
{
    connect(client, &IpfsClient::configReceived, this, &ConfigDialog::onConfigReceived);
    connect(client, &IpfsClient::configFailed, this, &ConfigDialog::onError);
    connect(client, &IpfsClient::configKeyReceived, this, &ConfigDialog::onConfigKeyReceived);
    connect(client, &IpfsClient::configKeyRequestFailed, this, &ConfigDialog::onError);
    connect(client, &IpfsClient::configKeySet, this, &ConfigDialog::onConfigKeySet);
    connect(client, &IpfsClient::configKeySetFailed, this, &ConfigDialog::onError);
    connect(client, &IpfsClient::configReplaceSucceeded, this, &ConfigDialog::onConfigReplaceSucceeded);
    connect(client, &IpfsClient::configReplaceFailed, this, &ConfigDialog::onError);
    connect(client, &IpfsClient::endpointChanged, this, &ConfigDialog::onEndpointChanged);
    connect(configTree, &ConfigTree::keyChosen, this, &ConfigDialog::onKeyChosen);
    connect(configTree, &ConfigTree::firstRowToggled, this, &ConfigDialog::updateExpandCollapseButtonText);
}

/// A window that changes its mode is hidden and shown again, perhaps while its first question is on its way.
void ConfigDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (configTree->topLevelItemCount() == 0 && !isLoading)
        onRefreshClicked();
}

/// While its widget is disabled, the focus waits at the dialog itself: it would go on to a widget that Return or the
/// space bar acts on.
void ConfigDialog::setLoading(bool loading)
{
    if (loading && !isLoading) {
        focusBefore = focusWidget();
        if (idleWidgets.contains(focusBefore) || focusBefore == restoreButton)
            setFocus();
    }
    isLoading = loading;
    for (QWidget* widget : idleWidgets)
        widget->setEnabled(!loading);
    restoreButton->setEnabled(!loading && hasBackup);
    if (loading)
        statusLabel->setText(tr("Loading…"));
    else if (focusWidget() == this && focusBefore && focusBefore->isEnabled())
        focusBefore->setFocus();
}

void ConfigDialog::reportSuccess(const QString& text)
{
    statusLabel->showProgress(text);
    statusLabel->setToolTip({});
}

void ConfigDialog::onError(const QString& message)
{
    setLoading(false);
    statusLabel->showFailure(message);
    statusLabel->setToolTip({});
    emit statusMessageRequested(tr("Config error: %1").arg(message));
}

void ConfigDialog::onRefreshClicked()
{
    setLoading(true);
    emit statusMessageRequested(tr("Fetching config…"));
    client->fetchConfig();
}

void ConfigDialog::onConfigReceived(const QJsonObject& config)
{
    setLoading(false);
    lastConfig = config;
    configTree->showConfig(config);
    configTree->setTreeExpanded(treeIsToBeExpanded());
    updateExpandCollapseButtonText();
    reportSuccess(tr("Loaded %1 top-level keys from /api/v0/config/show").arg(config.size()));
    emit statusMessageRequested(tr("Config loaded (%1 keys)").arg(config.size()));
    DialogSizing::requestRefit(this);
}

/// What is shown and kept is of the former node: restored into this one, or written from the editor, it would take
/// this node's settings away. What the former node has still to answer to a question does not come any more.
void ConfigDialog::onEndpointChanged()
{
    lastConfig = {};
    backupConfig = {};
    hasBackup = false;
    configTree->clear();
    keyEdit->clear();
    valueEdit->clear();
    updateExpandCollapseButtonText();
    setLoading(false);
    statusLabel->showHint(tr("Click Refresh to load config from /api/v0/config/show"));
    if (replaceEditor) {
        replaceEditor->reject();
        emit statusMessageRequested(tr("The config editor was closed, as another node is in use"));
    }
    if (isVisible())
        onRefreshClicked();
}

void ConfigDialog::onExpandCollapseClicked()
{
    if (configTree->topLevelItemCount() == 0)
        return;
    const bool expand = !configTree->firstRowExpanded().value_or(false);
    configTree->setTreeExpanded(expand);
    QSettings settings = openAppSettings();
    settings.setValue(treeExpandedKey, expand);
    updateExpandCollapseButtonText();
    emit statusMessageRequested(expand ? tr("Expanded config tree") : tr("Collapsed config tree"));
}

void ConfigDialog::updateExpandCollapseButtonText()
{
    const std::optional<bool> shown = configTree->firstRowExpanded();
    const bool expanded = shown ? *shown : treeIsToBeExpanded();
    expandCollapseButton->setText(expanded ? tr("Collapse All") : tr("Expand All"));
}

/// Nothing is sent by that. A field that waits for an answer is left alone.
void ConfigDialog::onKeyChosen(const QString& key)
{
    if (!isLoading)
        keyEdit->setText(key);
}

void ConfigDialog::onGetKeyClicked()
{
    const QString key = keyEdit->text().trimmed();
    if (key.isEmpty()) {
        onError(tr("Config key is required."));
        return;
    }
    setLoading(true);
    client->fetchConfigKey(key, false);
}

void ConfigDialog::onConfigKeyReceived(const QString& key, const QJsonValue& value)
{
    setLoading(false);
    if (!key.isEmpty())
        keyEdit->setText(key);
    valueEdit->setText(jsonValueToCompactString(value));
    reportSuccess(tr("Loaded key '%1'").arg(key));
}

void ConfigDialog::onSetKeyClicked()
{
    const QString key = keyEdit->text().trimmed();
    const ConfigWrite write = judgeConfigWrite(key, valueEdit->text(), modeCombo->currentText());
    if (!write.error.isEmpty()) {
        onError(write.error);
        return;
    }
    if (isRiskyConfigKey(key)
        && !confirms(tr("Potentially risky key"),
                     tr("You are changing '%1'.\n\nThis may break RPC connectivity or networking.\nProceed?").arg(key),
                     client->baseUrl()))
        return; // perhaps with the dialog gone
    takeSnapshot();
    setLoading(true);
    client->setConfigKey(key, write.value, write.isBool, write.isJson);
}

/// Whether the answer is yes, and `node` is still the address in use. The dialog may be gone after a no.
bool ConfigDialog::confirms(const QString& title, const QString& question, const QString& node)
{
    if (!askYesNo(QMessageBox::Warning, title, question, this))
        return false;
    if (client->baseUrl() == node)
        return true;
    emit statusMessageRequested(tr("Config error: %1").arg(tr("Another node is in use. Nothing was sent.")));
    return false;
}

void ConfigDialog::takeSnapshot()
{
    if (hasBackup || lastConfig.isEmpty())
        return;
    backupConfig = lastConfig;
    hasBackup = true;
    restoreButton->setEnabled(!isLoading);
}

void ConfigDialog::onConfigKeySet(const QString& key, const QJsonValue& value)
{
    setLoading(false);
    reportSuccess(tr("Updated key '%1' to %2").arg(key, jsonValueToCompactString(value)));
    onRefreshClicked();
}

/// Opened without an event loop of its own, so the dialog may go, or its node change, while it is open.
void ConfigDialog::onReplaceConfigClicked()
{
    if (lastConfig.isEmpty()) {
        onError(tr("Load config first before replacing."));
        return;
    }
    replaceEditor = newReplaceEditor();
    replaceEditor->open();
}

void ConfigDialog::replaceWith(const QString& text, const QString& node)
{
    const QByteArray json = text.toUtf8();
    if (!QJsonDocument::fromJson(json).isObject()) {
        onError(tr("Config replace requires valid JSON object."));
        return;
    }
    if (!confirms(tr("Replace full config"), tr("This will replace the entire Kubo config.\n\nContinue?"), node))
        return; // perhaps with the dialog gone
    takeSnapshot();
    setLoading(true);
    client->replaceConfig(json);
}

void ConfigDialog::onRestoreBackupClicked()
{
    if (!hasBackup) {
        onError(tr("No backup is available."));
        return;
    }
    // As it is now: while the question is open the node may change twice, and the snapshot is gone then.
    const QByteArray json = QJsonDocument(backupConfig).toJson(QJsonDocument::Indented);
    if (!confirms(tr("Restore backup"), tr("Restore the previously backed-up config snapshot?"), client->baseUrl()))
        return; // perhaps with the dialog gone
    setLoading(true);
    client->replaceConfig(json);
}

void ConfigDialog::onConfigReplaceSucceeded()
{
    setLoading(false);
    reportSuccess(tr("Config replaced successfully."));
    onRefreshClicked();
}
