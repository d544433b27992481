#pragma once

#include "core/shortcuts/Shortcut.h"
#include "core/shortcuts/ShortcutName.h"

#include <QList>
#include <optional>

class QAction;
class QMenu;

namespace scrivel {

class KeyboardShortcuts;

// Menu items and the global shortcuts: an item that shows a name's shortcut
// and follows its changes, and the search the recorder uses to refuse a
// combination one of the application's own items already uses.
class ShortcutActionBinding {
public:
    // The action shows the name's shortcut (none when the name has none, or
    // when the session does not deliver it by key grabs) and follows every
    // change until the action is destroyed. Binding again replaces the
    // earlier binding.
    static void bind(QAction* action, KeyboardShortcuts& shortcuts, const ShortcutName& name);

    // The title (without mnemonic markers) of the first item in the menus or
    // their submenus whose shortcut is this combination. Items bound to a
    // global shortcut are skipped: they show it, they do not compete for it.
    static std::optional<QString> menuItemUsing(const QList<QMenu*>& menus,
                                                const Shortcut& shortcut);
    static std::optional<QString> menuItemUsing(const QList<QAction*>& actions,
                                                const Shortcut& shortcut);
    // The same search over every menu and menu bar the application has made
    // (the tray's, the main window's): what the recorder on the settings page
    // is given.
    static std::optional<QString> applicationMenuItemUsing(const Shortcut& shortcut);
};

} // namespace scrivel
