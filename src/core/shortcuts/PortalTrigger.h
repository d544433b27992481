#pragma once

#include "core/shortcuts/Shortcut.h"

#include <QString>
#include <optional>

namespace scrivel {

// The trigger format of desktop shortcut portals: the modifiers CTRL, ALT,
// SHIFT and LOGO and the key's keysym name, joined by "+"
// ("CTRL+ALT+Return", "LOGO+SHIFT+k").
namespace PortalTrigger {

// The shortcut as the preferred trigger to offer the desktop; nothing for a
// key the portal cannot name or for the Fn modifier (it never reaches the
// desktop).
std::optional<QString> fromShortcut(const Shortcut& shortcut);

// The keysym name of an X keysym the shortcut keys use ("Return",
// "KP_Enter", "bracketleft"), or nothing.
std::optional<QString> keysymName(quint32 keysym);

} // namespace PortalTrigger

} // namespace scrivel
