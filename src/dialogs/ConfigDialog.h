// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>
#include <QJsonObject>
#include <QJsonValue>
#include <QPointer>

class ConfigTree;
class IpfsClient;
class QBoxLayout;
class QComboBox;
class QLayout;
class QLineEdit;
class QPushButton;
class StatusLabel;
struct ConfigPreset;

/// Shows the node's configuration as a tree, reads and writes single keys, replaces the whole of it through an editor,
/// and keeps presets. Before its first write it keeps the configuration as it was, to be restored. All of what it
/// holds is of the node in use, and is dropped with it.
class ConfigDialog : public QDialog
{
    Q_OBJECT

public:
    /// `newClient` is not owned and has to outlive the dialog.
    explicit ConfigDialog(IpfsClient* newClient, QWidget* parent = nullptr);

signals:
    /// A short text for the main window's status line.
    void statusMessageRequested(QString message);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void onConfigReceived(const QJsonObject& config);
    void onError(const QString& message);
    void onRefreshClicked();
    void onExpandCollapseClicked();
    void onGetKeyClicked();
    void onSetKeyClicked();
    void onApplyPresetClicked();
    void onSavePresetClicked();
    void onDeletePresetClicked();
    void onImportPresetsClicked();
    void onExportPresetsClicked();
    void onReplaceConfigClicked();
    void onRestoreBackupClicked();
    void onConfigKeyReceived(const QString& key, const QJsonValue& value);
    void onConfigKeySet(const QString& key, const QJsonValue& value);
    void onConfigReplaceSucceeded();
    void onEndpointChanged();
    void onKeyChosen(const QString& key);

private:
    // ConfigDialog_layout.cpp
    void setupUi();
    void setupFields();
    QLayout* newStatusRow();
    QLayout* newKeyRow();
    QLayout* newPresetRow();
    QPushButton* newButton(const QString& text, void (ConfigDialog::*slot)());
    QLayout* newFoldingRow(QLayout* fields, const QList<QWidget*>& buttons);
    QDialog* newReplaceEditor();
    void connectClient();

    void setLoading(bool loading);
    void updateExpandCollapseButtonText();
    void reportSuccess(const QString& text);
    bool confirms(const QString& title, const QString& question, const QString& node);
    void takeSnapshot();
    void replaceWith(const QString& text, const QString& node);

    // ConfigDialog_presets.cpp
    void rebuildPresetCombo(const QString& selectedName);
    void savePreset(const ConfigPreset& preset);
    void importPresets(const QString& path);
    void exportPresets(const QString& path);

    IpfsClient* client;
    QJsonObject lastConfig;   ///< as last received
    QJsonObject backupConfig; ///< as it was before the first write
    bool hasBackup = false;
    bool isLoading = false;
    QPointer<QDialog> replaceEditor {};
    QPointer<QWidget> focusBefore {}; ///< where the focus was when a request began

    QPushButton* expandCollapseButton = nullptr;
    StatusLabel* statusLabel = nullptr;
    QLineEdit* keyEdit = nullptr;
    QLineEdit* valueEdit = nullptr;
    QComboBox* modeCombo = nullptr;
    QComboBox* presetCombo = nullptr;
    QPushButton* restoreButton = nullptr;
    QList<QWidget*> idleWidgets {}; ///< enabled while no request runs
    QList<QBoxLayout*> foldingRows {};
    ConfigTree* configTree = nullptr;
};
