// SPDX-License-Identifier: MIT
#include "ConfigPresets.h"
#include "FuzzTarget.h"

#include <QSet>

/// Presets of a file are complete, are the same when written and read again, and merge to one of each name.
void checkInput(const QByteArray& bytes)
{
    const std::optional<QList<ConfigPreset>> presets = presetsFromJson(bytes);
    if (!presets)
        return;
    QSet<QString> names;
    for (const ConfigPreset& preset : *presets) {
        abortIf(!preset.isComplete());
        names.insert(preset.name);
    }
    abortIf(presetsFromJson(presetsToJson(*presets)) != presets);
    const QVariantList merged = mergedEntries({}, *presets);
    abortIf(merged.size() != names.size() || mergedEntries(merged, *presets) != merged);
}
