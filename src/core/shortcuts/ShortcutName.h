#pragma once

#include "core/shortcuts/Shortcut.h"

#include <QString>
#include <optional>

namespace scrivel {

// A named shortcut the application reacts to, with the combination it starts
// with. The stored shortcut lives under settingsKey() in the settings store.
struct ShortcutName {
    QString rawValue;
    std::optional<Shortcut> defaultShortcut;

    // The shortcut that opens the panel; Ctrl+Alt+Return (Control-Option-
    // Return on the Mac) until the user records another.
    static const ShortcutName& rewriteFocusedField();

    // "KeyboardShortcuts_" followed by the raw value.
    QString settingsKey() const;

    // Names are told apart by their raw value alone.
    friend bool operator==(const ShortcutName& a, const ShortcutName& b) {
        return a.rawValue == b.rawValue;
    }
};

inline size_t qHash(const ShortcutName& name, size_t seed = 0) {
    return qHash(name.rawValue, seed);
}

} // namespace scrivel
