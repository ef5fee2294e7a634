// SPDX-License-Identifier: MIT
#include "ConfigDialog.h"

#include "ConfigTree.h"
#include "ConfigValues.h"
#include "DialogSizing.h"
#include "FlowLayout.h"
#include "IpfsClient.h"
#include "StatusLabel.h"
#include "WidgetBuilders.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int keyShare = 2;
constexpr int valueShare = 3;
constexpr int longestValue = 16 * 1024 * 1024; // characters; a field has 32,767 by itself and would cut a section off
constexpr int presetLetters = 24;              // a long name is not to widen the dialog
constexpr double editorShare = 0.8;            // of the dialog
constexpr QSize smallestEditor(640, 420);

QLineEdit* newConfigField(const QString& name, const QString& placeholder, QWidget* parent)
{
    auto* field = new QLineEdit(parent);
    field->setAccessibleName(name);
    field->setPlaceholderText(placeholder);
    makeRoomForPlaceholder(field);
    field->setMaxLength(longestValue);
    return field;
}

} // namespace

/// Widgets are made in the order in which they are read, which is that of the Tab key as well.
void ConfigDialog::setupUi()
{
    auto* column = new QVBoxLayout(this);
    column->addLayout(newStatusRow());
    column->addLayout(newKeyRow());
    column->addLayout(newPresetRow());
    configTree = new ConfigTree(this);
    column->addWidget(configTree, 1);
}

QLayout* ConfigDialog::newStatusRow()
{
    expandCollapseButton = newButton({}, &ConfigDialog::onExpandCollapseClicked);
    expandCollapseButton->setObjectName("expandCollapseBtn"_L1);
    statusLabel = new StatusLabel(this);
    statusLabel->showHint(tr("Click Refresh to load config from /api/v0/config/show"));
    auto* refreshButton = newButton(tr("&Refresh"), &ConfigDialog::onRefreshClicked);
    idleWidgets.append(refreshButton);

    auto* row = new FlowLayout;
    row->addWidgets({expandCollapseButton, statusLabel, refreshButton});
    return row;
}

QLayout* ConfigDialog::newKeyRow()
{
    setupFields();
    auto* getButton = newButton(tr("&Get"), &ConfigDialog::onGetKeyClicked);
    auto* setButton = newButton(tr("&Set"), &ConfigDialog::onSetKeyClicked);
    auto* replaceButton = newButton(tr("Re&place Config…"), &ConfigDialog::onReplaceConfigClicked);
    restoreButton = newButton(tr("Restore &Backup"), &ConfigDialog::onRestoreBackupClicked);
    restoreButton->setEnabled(false);

    auto* fields = new QHBoxLayout;
    fields->addWidget(keyEdit, keyShare);
    fields->addWidget(valueEdit, valueShare);
    fields->addWidget(modeCombo);
    idleWidgets += {keyEdit, valueEdit, modeCombo, getButton, setButton, replaceButton};
    return newFoldingRow(fields, {getButton, setButton, replaceButton, restoreButton});
}

void ConfigDialog::setupFields()
{
    keyEdit = newConfigField(tr("Config key"), tr("Config key (e.g. Addresses.API)"), this);
    valueEdit = newConfigField(tr("Value"), tr("Value"), this);
    modeCombo = new QComboBox(this);
    modeCombo->setToolTip(tr("Value mode")); // on Linux a combo box is read out with this, never by a name of its own
    modeCombo->setAccessibleName(tr("Value mode"));
    for (const QLatin1StringView mode : {ConfigMode::text, ConfigMode::boolean, ConfigMode::json})
        modeCombo->addItem(mode);
    connect(keyEdit, &QLineEdit::returnPressed, this, &ConfigDialog::onGetKeyClicked);
    connect(valueEdit, &QLineEdit::returnPressed, this, &ConfigDialog::onSetKeyClicked);
}

QLayout* ConfigDialog::newPresetRow()
{
    presetCombo = new QComboBox(this);
    presetCombo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    presetCombo->setMinimumContentsLength(presetLetters);
    auto* choice = new QHBoxLayout;
    choice->addWidget(newLabelFor(tr("Prese&ts:"), presetCombo));
    choice->addWidget(presetCombo, 1);
    const QList<QWidget*> buttons {newButton(tr("&Apply Preset"), &ConfigDialog::onApplyPresetClicked),
                                   newButton(tr("Sa&ve Preset"), &ConfigDialog::onSavePresetClicked),
                                   newButton(tr("&Delete Preset"), &ConfigDialog::onDeletePresetClicked),
                                   newButton(tr("&Import Presets"), &ConfigDialog::onImportPresetsClicked),
                                   newButton(tr("E&xport Presets"), &ConfigDialog::onExportPresetsClicked)};
    idleWidgets += presetCombo;
    idleWidgets += buttons;
    return newFoldingRow(choice, buttons);
}

/// Where the dialog is too narrow for one line, its buttons are in a second.
QLayout* ConfigDialog::newFoldingRow(QLayout* fields, const QList<QWidget*>& buttons)
{
    auto* line = new FlowLayout;
    line->addStretch();
    line->addWidgets(buttons);
    auto* row = new QBoxLayout(QBoxLayout::LeftToRight);
    row->addLayout(fields, 1);
    row->addLayout(line);
    foldingRows.append(row);
    return row;
}

/// All rows fold at once.
void ConfigDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    int wanted = 0; // pixels
    for (const QBoxLayout* row : std::as_const(foldingRows))
        wanted = std::max(wanted,
                          row->itemAt(0)->sizeHint().width() + row->spacing() + row->itemAt(1)->sizeHint().width());
    const bool fits = wanted <= layout()->contentsRect().width();
    for (QBoxLayout* row : std::as_const(foldingRows))
        row->setDirection(fits ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

/// Return belongs to the fields.
QPushButton* ConfigDialog::newButton(const QString& text, void (ConfigDialog::*slot)())
{
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

QDialog* ConfigDialog::newReplaceEditor()
{
    auto* editor = new QDialog(this);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    editor->setWindowTitle(tr("Replace Kubo config"));
    DialogSizing::attach(
        editor,
        {.settingsKey = u"Dialogs/ConfigDialog/ReplaceEditor"_s,
         .minimumSize = {520, 360},
         .preferredSize = QSize(static_cast<int>(editorShare * width()), static_cast<int>(editorShare * height()))
                              .expandedTo(smallestEditor),
         .maxWidthRatio = 0.8,
         .maxHeightRatio = 0.8});
    auto* text = new QPlainTextEdit(configForEditor(lastConfig), editor);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setTabChangesFocus(true);
    text->setLayoutDirection(Qt::LeftToRight); // it is JSON
    text->setAccessibleName(tr("Config JSON"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, editor);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("Replace"));
    connect(buttons, &QDialogButtonBox::accepted, editor, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, editor, &QDialog::reject);
    connect(editor, &QDialog::accepted, this, [this, text, node = client->baseUrl()] {
        // Once the editor is through with its end: a question follows, during which it may go.
        QMetaObject::invokeMethod(
            this, [this, json = text->toPlainText(), node] { replaceWith(json, node); }, Qt::QueuedConnection);
    });

    auto* column = new QVBoxLayout(editor);
    column->addWidget(
        newWrappedLabel(tr("Paste full config JSON. This will replace the entire Kubo config file."), editor));
    column->addWidget(text, 1);
    column->addWidget(buttons);
    text->setFocus();
    return editor;
}
