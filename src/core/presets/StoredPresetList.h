#pragma once

#include "core/presets/Preset.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

namespace scrivel {

// The stored preset list read element by element, so that one damaged preset
// (a wrong-typed field, a cut-off end, a value a newer version wrote) costs
// only itself.
struct StoredPresetList {
    // Every element that decodes as a preset, in stored order.
    QList<Preset> presets;
    // Elements that do not decode; an element cut off by the end of the data
    // counts as one.
    int unreadable = 0;
    // Whether the data is well-formed JSON holding an array. When it is not,
    // the whole elements before the damage are still read.
    bool wellFormed = true;
    // Keys of kept presets that this version does not know (as a newer
    // version may write), sorted, each once. Saving the list drops them.
    QStringList unknownKeys;

    // Whether saving the presets would lose something the data holds.
    bool losesData() const { return !wellFormed || unreadable > 0 || !unknownKeys.isEmpty(); }

    static StoredPresetList read(const QByteArray& data);
};

} // namespace scrivel
