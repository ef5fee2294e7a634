// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariantList>

#include <optional>

/// A named write to the node's configuration.
struct ConfigPreset
{
    QString name {};  ///< what it is known by
    QString key {};   ///< dotted
    QString value {}; ///< as typed
    QString mode {};  ///< one of ConfigMode

    /// Whether name, key and mode are there. A value may be missing until it is applied.
    bool isComplete() const { return !name.isEmpty() && !key.isEmpty() && !mode.isEmpty(); }
    friend bool operator==(const ConfigPreset&, const ConfigPreset&) = default;
};

struct BuiltInPreset
{
    QString label {};
    ConfigPreset preset {};
};

QList<BuiltInPreset> builtInPresets();

// The store holds presets as maps. Entries that are no preset are passed over where they are read, and stay.

/// Without blanks around name, key and mode.
ConfigPreset presetOfEntry(const QVariant& entry);
QVariantMap entryOfPreset(const ConfigPreset& preset);
/// The complete ones.
QList<ConfigPreset> presetsOfEntries(const QVariantList& entries);
/// The first entry that is stored under exactly this name; -1 if there is none.
qsizetype entryNamed(const QVariantList& entries, const QString& name);
/// Without any entry that is stored under exactly this name.
QVariantList entriesWithout(const QVariantList& entries, const QString& name);
/// What an import leaves: the complete entries of the store, each name once, and the imported presets in their place
/// or after them.
QVariantList mergedEntries(const QVariantList& entries, const QList<ConfigPreset>& imported);

// The file is one JSON array of objects.

/// The valid presets of a file, in its order; none if it is no JSON array.
std::optional<QList<ConfigPreset>> presetsFromJson(const QByteArray& json);
QByteArray presetsToJson(const QList<ConfigPreset>& presets);

struct PresetFile
{
    QByteArray content {};
    QString error {};  ///< for people; empty if it was read
    QString detail {}; ///< of the error
};

/// Reads a whole file of at most 8 MiB, and nothing that is not a regular file.
PresetFile readPresetFile(const QString& path);
/// That the content of a file is no list of presets.
QString noPresetListText();
