// SPDX-License-Identifier: MIT
#include "ConfigPresets.h"

#include "ByteText.h"
#include "ConfigValues.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestPresetFile = 8LL * 1024 * 1024; // bytes

// The same in the store and in files.
const auto nameField = u"name"_s;
const auto keyField = u"key"_s;
const auto valueField = u"value"_s;
const auto modeField = u"mode"_s;

QString ofConfigDialog(const char* text)
{
    return QCoreApplication::translate("ConfigDialog", text);
}

/// Of a stored map or of an object in a file.
template <typename Fields> ConfigPreset presetOf(const Fields& fields)
{
    return {.name = fields.value(nameField).toString().trimmed(),
            .key = fields.value(keyField).toString().trimmed(),
            .value = fields.value(valueField).toString(),
            .mode = fields.value(modeField).toString().trimmed()};
}

bool isMode(const QString& text)
{
    return text == ConfigMode::text || text == ConfigMode::boolean || text == ConfigMode::json;
}

QString storedName(const QVariant& entry)
{
    return entry.toMap().value(nameField).toString();
}

} // namespace

QList<BuiltInPreset> builtInPresets()
{
    const auto builtIn = [](const QString& label, const QString& name, const QString& key, const QString& value,
                            QLatin1StringView mode) {
        return BuiltInPreset {.label = label, .preset = {.name = name, .key = key, .value = value, .mode = mode}};
    };
    const QString mdns = u"Discovery.MDNS.Enabled"_s;
    return {builtIn(ofConfigDialog(QT_TRANSLATE_NOOP("ConfigDialog", "API: localhost:5001")),
                    u"builtin-api-localhost"_s, u"Addresses.API"_s, u"/ip4/127.0.0.1/tcp/5001"_s, ConfigMode::text),
            builtIn(ofConfigDialog(QT_TRANSLATE_NOOP("ConfigDialog", "Gateway: localhost:8080")),
                    u"builtin-gateway-localhost"_s, u"Addresses.Gateway"_s, u"/ip4/127.0.0.1/tcp/8080"_s,
                    ConfigMode::text),
            builtIn(ofConfigDialog(QT_TRANSLATE_NOOP("ConfigDialog", "Bootstrap: empty list []")),
                    u"builtin-bootstrap-empty"_s, u"Bootstrap"_s, u"[]"_s, ConfigMode::json),
            builtIn(mdns + u" = true"_s, u"builtin-mdns-true"_s, mdns, u"true"_s, ConfigMode::boolean),
            builtIn(mdns + u" = false"_s, u"builtin-mdns-false"_s, mdns, u"false"_s, ConfigMode::boolean)};
}

ConfigPreset presetOfEntry(const QVariant& entry)
{
    return presetOf(entry.toMap());
}

QVariantMap entryOfPreset(const ConfigPreset& preset)
{
    return {{nameField, preset.name}, {keyField, preset.key}, {valueField, preset.value}, {modeField, preset.mode}};
}

QList<ConfigPreset> presetsOfEntries(const QVariantList& entries)
{
    QList<ConfigPreset> presets;
    for (const QVariant& entry : entries) {
        if (const ConfigPreset preset = presetOfEntry(entry); preset.isComplete())
            presets.append(preset);
    }
    return presets;
}

qsizetype entryNamed(const QVariantList& entries, const QString& name)
{
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (storedName(entries.at(i)) == name)
            return i;
    }
    return -1;
}

QVariantList entriesWithout(const QVariantList& entries, const QString& name)
{
    QVariantList rest = entries;
    rest.removeIf([&name](const QVariant& entry) { return storedName(entry) == name; });
    return rest;
}

QVariantList mergedEntries(const QVariantList& entries, const QList<ConfigPreset>& imported)
{
    QVariantList merged;
    QHash<QString, qsizetype> places;
    const QList<ConfigPreset> all = presetsOfEntries(entries) + imported;
    for (const ConfigPreset& preset : all) {
        const auto place = places.constFind(preset.name);
        if (place != places.cend()) {
            merged[*place] = entryOfPreset(preset);
            continue;
        }
        places.insert(preset.name, merged.size());
        merged.append(entryOfPreset(preset));
    }
    return merged;
}

std::optional<QList<ConfigPreset>> presetsFromJson(const QByteArray& json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return std::nullopt;
    QList<ConfigPreset> presets;
    const QJsonArray elements = document.array();
    presets.reserve(elements.size());
    for (const auto& element : elements) {
        const ConfigPreset preset = presetOf(element.toObject());
        if (preset.isComplete() && isMode(preset.mode))
            presets.append(preset);
    }
    return presets;
}

QByteArray presetsToJson(const QList<ConfigPreset>& presets)
{
    QJsonArray elements;
    for (const ConfigPreset& preset : presets)
        elements.append(QJsonObject::fromVariantMap(entryOfPreset(preset)));
    return QJsonDocument(elements).toJson(QJsonDocument::Indented);
}

/// A pipe would keep the window waiting, and a device need not have an end.
PresetFile readPresetFile(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile() && !info.isDir())
        return {.error = noPresetListText(),
                .detail = ofConfigDialog(QT_TRANSLATE_NOOP("ConfigDialog", "It is not a regular file."))};
    QFile file(path);
    QByteArray content;
    if (file.open(QIODevice::ReadOnly))
        content = file.read(largestPresetFile + 1);
    if (file.error() != QFileDevice::NoError)
        return {.error
                = ofConfigDialog(QT_TRANSLATE_NOOP("ConfigDialog", "Could not open file: %1")).arg(file.errorString())};
    if (content.size() > largestPresetFile) {
        return {.error = noPresetListText(),
                .detail = ofConfigDialog(QT_TRANSLATE_NOOP("ConfigDialog", "The file has %1; at most %2 are read."))
                              .arg(byteText(file.size()), byteText(largestPresetFile))};
    }
    return {.content = content};
}

QString noPresetListText()
{
    return ofConfigDialog(QT_TRANSLATE_NOOP("ConfigDialog", "Import file must be a JSON array of presets."));
}
