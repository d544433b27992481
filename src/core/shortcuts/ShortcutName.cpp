#include "core/shortcuts/ShortcutName.h"

namespace scrivel {

const ShortcutName& ShortcutName::rewriteFocusedField() {
    static const ShortcutName name{QStringLiteral("rewriteFocusedField"),
                                   Shortcut{36, Shortcut::control | Shortcut::option}};
    return name;
}

QString ShortcutName::settingsKey() const {
    return QStringLiteral("KeyboardShortcuts_") + rawValue;
}

} // namespace scrivel
