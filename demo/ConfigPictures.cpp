// SPDX-License-Identifier: MIT
#include "ConfigPictures.h"

#include "AppSettings.h"
#include "ConfigDialog.h"
#include "ConfigPresets.h"
#include "ConfigTree.h"
#include "MainWindow.h"
#include "PictureSteps.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using Take = std::function<void(QWidget*, QLatin1StringView)>;

void press(const QDialog& dialog, const QString& text)
{
    const QList<QPushButton*> buttons = dialog.findChildren<QPushButton*>();
    const auto button = std::ranges::find_if(buttons, [&text](auto* any) { return any->text().remove(u'&') == text; });
    need(button != buttons.end(), u"there is no button "_s + text);
    (*button)->click();
}

void storePresets()
{
    const auto entry = [](const QString& name, const QString& key, const QString& value, const QString& mode) {
        return entryOfPreset({.name = name, .key = key, .value = value, .mode = mode});
    };
    QSettings settings = openAppSettings();
    settings.setValue("ConfigDialog/customPresets"_L1,
                      QVariantList {entry(u"keep 100 GB"_s, u"Datastore.StorageMax"_s, u"100GB"_s, u"String"_s),
                                    entry(u"few peers"_s, u"Swarm.ConnMgr.HighWater"_s, u"96"_s, u"JSON"_s)});
}

void riskyKey(ConfigDialog& dialog, const Take& take)
{
    const QList<QLineEdit*> fields = dialog.findChildren<QLineEdit*>();
    fields.value(0)->setText(u"Swarm.ConnMgr.HighWater"_s);
    fields.value(1)->setText(u"96"_s);
    dialog.findChildren<QComboBox*>().constFirst()->setCurrentText(u"JSON"_s);
    inNext<QMessageBox>([&take](QMessageBox& question) {
        take(&question, "config-risky-key"_L1);
        question.reject();
    });
    press(dialog, u"Set"_s);
}

void editor(const ConfigDialog& dialog, const Take& take)
{
    press(dialog, u"Replace Config…"_s);
    const auto* text = dialog.findChild<QPlainTextEdit*>();
    need(text, u"the editor did not come"_s);
    take(text->window(), "config-replace"_L1);
    text->window()->close();
}

void presets(const ConfigDialog& dialog, const Take& take)
{
    auto* box = dialog.findChildren<QComboBox*>().value(1);
    box->showPopup();
    take(box->view()->window(), "config-presets"_L1);
    box->hidePopup();
}

} // namespace

void takeConfigPictures(MainWindow& window, const Take& take)
{
    storePresets();
    window.showConfigDialog(MainWindow::AuxChildWindow);
    const QPointer<ConfigDialog> dialog = window.findChild<ConfigDialog*>();
    need(dialog, u"the config window did not come"_s);
    const auto* tree = dialog->findChild<ConfigTree*>();
    awaitThat([tree] { return tree->topLevelItemCount() > 0; }, u"the configuration did not come"_s);
    take(dialog, "config"_L1);
    riskyKey(*dialog, take);
    editor(*dialog, take);
    presets(*dialog, take);
    dialog->close();
    awaitThat([&dialog] { return !dialog; }, u"the config window did not close"_s);
}
