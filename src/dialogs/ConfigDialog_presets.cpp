// SPDX-License-Identifier: MIT
#include "ConfigDialog.h"

#include "ActionBox.h"
#include "AppSettings.h"
#include "ConfigPresets.h"
#include "FileWriter.h"
#include "PlainText.h"
#include "StatusLabel.h"

#include <QComboBox>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace {

constexpr auto customPresetsKey = "ConfigDialog/customPresets"_L1;
constexpr auto customField = "custom"_L1; ///< of an entry of the box only

QVariantList storedEntries()
{
    return openAppSettings().value(customPresetsKey).toList();
}

void storeEntries(const QVariantList& entries)
{
    QSettings settings = openAppSettings();
    settings.setValue(customPresetsKey, entries);
}

QVariantMap boxEntry(const ConfigPreset& preset, bool isCustom)
{
    QVariantMap entry = entryOfPreset(preset);
    entry.insert(customField, isCustom);
    return entry;
}

/// Opened without an event loop of its own, so that its parent may go while it is open.
QFileDialog* newPresetPicker(const QString& title, QWidget* parent)
{
    auto* picker = new QFileDialog(parent, title);
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->setNameFilters({ConfigDialog::tr("JSON files (*.json)"), ConfigDialog::tr("All files (*)")});
    picker->setSupportedSchemes({u"file"_s});
    return picker;
}

} // namespace

void ConfigDialog::rebuildPresetCombo(const QString& selectedName)
{
    presetCombo->clear();
    presetCombo->addItem(tr("Select preset…"));
    for (const BuiltInPreset& builtIn : builtInPresets())
        presetCombo->addItem(builtIn.label, boxEntry(builtIn.preset, false));
    for (const ConfigPreset& preset : presetsOfEntries(storedEntries()))
        presetCombo->addItem(lineForLabel(tr("Custom: %1").arg(preset.name)), boxEntry(preset, true));
    int selected = 0;
    for (int i = presetCombo->count() - 1; i > 0 && !selectedName.isEmpty(); --i) {
        if (presetOfEntry(presetCombo->itemData(i)).name == selectedName)
            selected = i;
    }
    presetCombo->setCurrentIndex(selected);
}

void ConfigDialog::onApplyPresetClicked()
{
    const QVariantMap entry = presetCombo->currentData().toMap();
    const ConfigPreset preset = presetOfEntry(entry);
    if (entry.isEmpty()) {
        onError(tr("Select a preset first."));
        return;
    }
    if (preset.key.isEmpty() || preset.mode.isEmpty()) {
        onError(tr("Selected preset is invalid."));
        return;
    }
    keyEdit->setText(preset.key);
    valueEdit->setText(preset.value);
    if (const int mode = modeCombo->findText(preset.mode, Qt::MatchExactly | Qt::MatchCaseSensitive); mode >= 0)
        modeCombo->setCurrentIndex(mode);
    onSetKeyClicked();
}

void ConfigDialog::onSavePresetClicked()
{
    ConfigPreset preset {
        .key = keyEdit->text().trimmed(), .value = valueEdit->text(), .mode = modeCombo->currentText()};
    if (preset.key.isEmpty() || preset.value.trimmed().isEmpty()) {
        onError(tr("Enter key and value before saving a preset."));
        return;
    }
    auto* question = new QInputDialog(this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setWindowTitle(tr("Save preset"));
    question->setLabelText(tr("Preset name:"));
    connect(
        question, &QInputDialog::textValueSelected, this,
        [this, preset](const QString& name) mutable {
            preset.name = name.trimmed();
            savePreset(preset);
        },
        Qt::QueuedConnection); // another question may follow, during which this one may go
    question->open();
}

void ConfigDialog::savePreset(const ConfigPreset& preset)
{
    if (preset.name.isEmpty()) {
        onError(tr("Preset name is required."));
        return;
    }
    QVariantList entries = storedEntries();
    const qsizetype place = entryNamed(entries, preset.name);
    if (place < 0)
        entries.append(entryOfPreset(preset));
    else if (askYesNo(QMessageBox::Question, tr("Overwrite preset"),
                      tr("A preset named '%1' already exists. Overwrite it?").arg(preset.name), this))
        entries[place] = entryOfPreset(preset);
    else
        return; // perhaps with the dialog gone
    storeEntries(entries);
    rebuildPresetCombo(preset.name);
    reportSuccess(tr("Saved preset '%1'.").arg(preset.name));
}

void ConfigDialog::onDeletePresetClicked()
{
    const QVariantMap entry = presetCombo->currentData().toMap();
    const QString name = presetOfEntry(entry).name;
    if (name.isEmpty() || !entry.value(customField).toBool()) {
        onError(tr("Select a custom preset to delete."));
        return;
    }
    if (!askYesNo(QMessageBox::Warning, tr("Delete preset"), tr("Delete preset '%1'?").arg(name), this))
        return; // perhaps with the dialog gone
    storeEntries(entriesWithout(storedEntries(), name));
    rebuildPresetCombo({});
    reportSuccess(tr("Deleted preset '%1'.").arg(name));
}

void ConfigDialog::onImportPresetsClicked()
{
    QFileDialog* picker = newPresetPicker(tr("Import custom presets"), this);
    picker->setFileMode(QFileDialog::ExistingFile);
    connect(picker, &QFileDialog::fileSelected, this, &ConfigDialog::importPresets);
    picker->open();
}

/// The reason of a refusal that the text does not name is in its tool tip.
void ConfigDialog::importPresets(const QString& path)
{
    const PresetFile file = readPresetFile(path);
    if (!file.error.isEmpty()) {
        onError(file.error);
        setPlainToolTip(statusLabel, file.detail);
        return;
    }
    const std::optional<QList<ConfigPreset>> presets = presetsFromJson(file.content);
    if (!presets || presets->isEmpty()) {
        onError(presets ? tr("No valid presets found in file.") : noPresetListText());
        return;
    }
    storeEntries(mergedEntries(storedEntries(), *presets));
    rebuildPresetCombo({});
    reportSuccess(tr("Imported %1 preset(s).").arg(presets->size()));
}

void ConfigDialog::onExportPresetsClicked()
{
    if (storedEntries().isEmpty()) {
        onError(tr("No custom presets to export."));
        return;
    }
    QFileDialog* picker = newPresetPicker(tr("Export custom presets"), this);
    picker->setAcceptMode(QFileDialog::AcceptSave);
    picker->selectFile(u"norvo-config-presets.json"_s);
    connect(picker, &QFileDialog::fileSelected, this, &ConfigDialog::exportPresets);
    picker->open();
}

void ConfigDialog::exportPresets(const QString& path)
{
    const QList<ConfigPreset> presets = presetsOfEntries(storedEntries());
    if (presets.isEmpty()) {
        onError(tr("No valid custom presets to export."));
        return;
    }
    const WriteResult result = writeFile(path, presetsToJson(presets));
    if (!result.ok) {
        onError(tr("Could not write file: %1").arg(result.reason));
        return;
    }
    reportSuccess(tr("Exported %1 preset(s).").arg(presets.size()));
}
