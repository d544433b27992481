#pragma once

#include "core/presets/PresetStore.h"

#include <QString>
#include <expected>

namespace scrivel::cli {

// Finds the preset a command line names: by identifier, or by name ignoring
// case. The error is the message to print: no such preset, or several presets
// of that name listed with their identifiers.
std::expected<Preset, QString> findPreset(const PresetStore& store, const QString& nameOrID);

// Whether a command line word names a preset (or several).
bool namesPreset(const PresetStore& store, const QString& word);

// "1 preset", "2 presets".
QString presetCount(qsizetype count);

// A word quoted for a POSIX shell where it needs quoting, so that suggested
// commands can be pasted as they stand.
QString shellQuoted(const QString& word);

} // namespace scrivel::cli
