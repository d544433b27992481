#include "ui/settings/ShortcutActionBinding.h"

#include "core/shortcuts/KeyboardShortcuts.h"

#include <QAction>
#include <QApplication>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

namespace scrivel {

namespace {

const char* boundNameProperty = "scrivelShortcutName";
const char* bindingObjectName = "scrivelShortcutBinding";

QKeySequence keySequence(const std::optional<Shortcut>& shortcut) {
    if (!shortcut)
        return {};
    const auto combination = shortcut->qtKeyCombination();
    return combination ? QKeySequence(*combination) : QKeySequence();
}

// What the item shows: the stored shortcut where its keys are grabbed. A
// desktop's keys are its own words (no key sequence), and a session without
// global shortcuts has none to promise.
QKeySequence shownKeys(KeyboardShortcuts& shortcuts, const ShortcutName& name) {
    if (shortcuts.deliveryStatus().kind != GlobalShortcutStatus::Kind::keyGrabs)
        return {};
    return keySequence(shortcuts.shortcut(name));
}

QString withoutMnemonics(QString title) {
    title.replace(QStringLiteral("&&"), QStringLiteral("\x01"));
    title.remove(QLatin1Char('&'));
    title.replace(QStringLiteral("\x01"), QStringLiteral("&"));
    return title;
}

} // namespace

void ShortcutActionBinding::bind(QAction* action, KeyboardShortcuts& shortcuts,
                                 const ShortcutName& name) {
    // The binding lives in a child of the action, so it ends with the action
    // and a second binding can replace it.
    delete action->findChild<QObject*>(QLatin1String(bindingObjectName),
                                       Qt::FindDirectChildrenOnly);
    auto* binding = new QObject(action);
    binding->setObjectName(QLatin1String(bindingObjectName));
    action->setProperty(boundNameProperty, name.rawValue);
    action->setShortcutVisibleInContextMenu(true);
    action->setShortcut(shownKeys(shortcuts, name));
    QObject::connect(&shortcuts, &KeyboardShortcuts::shortcutChanged, binding,
                     [action, &shortcuts, name](const QString& rawValue) {
                         if (rawValue == name.rawValue)
                             action->setShortcut(shownKeys(shortcuts, name));
                     });
    QObject::connect(
        &shortcuts, &KeyboardShortcuts::deliveryStatusChanged, binding,
        [action, &shortcuts, name] { action->setShortcut(shownKeys(shortcuts, name)); });
}

std::optional<QString> ShortcutActionBinding::menuItemUsing(const QList<QMenu*>& menus,
                                                            const Shortcut& shortcut) {
    for (const QMenu* menu : menus) {
        if (menu) {
            if (auto title = menuItemUsing(menu->actions(), shortcut))
                return title;
        }
    }
    return std::nullopt;
}

std::optional<QString> ShortcutActionBinding::menuItemUsing(const QList<QAction*>& actions,
                                                            const Shortcut& shortcut) {
    const QKeySequence wanted = keySequence(shortcut);
    if (wanted.isEmpty())
        return std::nullopt;
    for (const QAction* action : actions) {
        if (action->isSeparator())
            continue;
        if (action->menu()) {
            if (auto title = menuItemUsing(QList<QMenu*>{action->menu()}, shortcut))
                return title;
            continue;
        }
        if (action->property(boundNameProperty).isValid())
            continue;
        if (action->shortcuts().contains(wanted))
            return withoutMnemonics(action->text());
    }
    return std::nullopt;
}

std::optional<QString> ShortcutActionBinding::applicationMenuItemUsing(const Shortcut& shortcut) {
    const QList<QWidget*> widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        if (auto* bar = qobject_cast<QMenuBar*>(widget)) {
            if (auto title = menuItemUsing(bar->actions(), shortcut))
                return title;
        } else if (auto* menu = qobject_cast<QMenu*>(widget)) {
            if (auto title = menuItemUsing(menu->actions(), shortcut))
                return title;
        }
    }
    return std::nullopt;
}

} // namespace scrivel
