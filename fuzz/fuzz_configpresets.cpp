// SPDX-License-Identifier: MIT
#include "ConfigPresets.h"

#include <QSet>

#include <cstdint>
#include <cstdlib>

/// Presets of a file are complete, are the same when written and read again, and merge to one of each name.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const std::optional<QList<ConfigPreset>> presets = presetsFromJson(bytes);
    if (!presets)
        return 0;
    QSet<QString> names;
    for (const ConfigPreset& preset : *presets) {
        if (!preset.isComplete())
            std::abort();
        names.insert(preset.name);
    }
    if (presetsFromJson(presetsToJson(*presets)) != presets)
        std::abort();
    const QVariantList merged = mergedEntries({}, *presets);
    if (merged.size() != names.size() || mergedEntries(merged, *presets) != merged)
        std::abort();
    return 0;
}
