#include "core/shortcuts/KeyboardShortcuts.h"

#include "core/storage/SettingsStore.h"

#include <cstdio>

namespace scrivel {

KeyboardShortcuts::KeyboardShortcuts(SettingsStore& settings, HotKeyService& hotKeys,
                                     QObject* parent)
    : QObject(parent), m_settings(settings), m_hotKeys(hotKeys),
      m_errorLineWriter([](const QByteArray& line) {
          std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
          std::fflush(stdout);
      }) {
    connect(&m_hotKeys, &HotKeyService::hotKeyEvent, this,
            [this](quint32 signature, quint32 id, HotKeyService::EventKind kind) {
                dispatch(signature, id, kind);
            });
    connect(&m_hotKeys, &HotKeyService::statusChanged, this,
            &KeyboardShortcuts::deliveryStatusChanged);
}

void KeyboardShortcuts::adopt(const Name& name) {
    if (m_names.contains(name.rawValue))
        return;
    m_names.insert(name.rawValue, name);
    // Only a key with nothing at all under it gets the default: false means
    // the user removed it, and an unreadable value waits for a new recording.
    // Stored without registering: attaching the first action registers it,
    // so a combination another client holds is reported once, not twice.
    if (name.defaultShortcut && !m_settings.contains(name.settingsKey())) {
        m_settings.setText(name.settingsKey(), QString::fromUtf8(name.defaultShortcut->toJson()));
        Q_EMIT shortcutChanged(name.rawValue);
    }
}

std::optional<Shortcut> KeyboardShortcuts::storedShortcut(const Name& name) const {
    const auto text = m_settings.text(name.settingsKey());
    if (!text)
        return std::nullopt;
    return Shortcut::fromJson(text->toUtf8());
}

std::optional<Shortcut> KeyboardShortcuts::shortcut(const Name& name) {
    adopt(name);
    return storedShortcut(name);
}

void KeyboardShortcuts::setShortcut(const std::optional<Shortcut>& shortcut, const Name& name) {
    adopt(name);
    const std::optional<Shortcut> current = storedShortcut(name);
    if (shortcut) {
        if (current)
            unregisterShortcut(*current);
        if (!m_registered.contains(*shortcut))
            registerShortcut(*shortcut);
        m_settings.setText(name.settingsKey(), QString::fromUtf8(shortcut->toJson()));
    } else {
        if (!current)
            return;
        if (name.defaultShortcut)
            m_settings.setBoolean(name.settingsKey(), false);
        else
            m_settings.remove(name.settingsKey());
        unregisterShortcut(*current);
    }
    Q_EMIT shortcutChanged(name.rawValue);
}

std::optional<QString> KeyboardShortcuts::displayText(const Name& name) {
    const auto current = shortcut(name);
    if (!current)
        return std::nullopt;
    return current->displayText();
}

void KeyboardShortcuts::attach(QHash<QString, QList<Action>>& handlers, const Name& name,
                               Action action) {
    adopt(name);
    handlers[name.rawValue].append(std::move(action));
    const auto current = storedShortcut(name);
    if (current && !m_registered.contains(*current))
        registerShortcut(*current);
}

void KeyboardShortcuts::onKeyDown(const Name& name, Action action) {
    attach(m_keyDownHandlers, name, std::move(action));
}

void KeyboardShortcuts::onKeyUp(const Name& name, Action action) {
    attach(m_keyUpHandlers, name, std::move(action));
}

void KeyboardShortcuts::disable(const QList<Name>& names) {
    for (const Name& name : names) {
        if (const auto current = shortcut(name))
            unregisterShortcut(*current);
    }
}

void KeyboardShortcuts::enable(const QList<Name>& names) {
    for (const Name& name : names) {
        const auto current = shortcut(name);
        if (current && !m_registered.contains(*current))
            registerShortcut(*current);
    }
}

void KeyboardShortcuts::setRecorderActive(bool active) {
    if (m_recorderActive == active)
        return;
    m_recorderActive = active;
    // A grabbed combination goes to the grab, never to the focused window:
    // the recorder could not see the shortcut now in use. Its grabs are let
    // go while it records and taken again after (the new shortcut's, when it
    // recorded one).
    if (active) {
        for (const HotKey& record : std::as_const(m_records))
            m_hotKeys.unregisterHotKey(hotKeySignature, record.id);
        m_records.clear();
    } else {
        const QList<Shortcut> registered = m_registered.values();
        for (const Shortcut& shortcut : registered)
            grab(shortcut);
    }
}

void KeyboardShortcuts::registerShortcut(const Shortcut& shortcut) {
    m_registered.insert(shortcut);
    if (!m_recorderActive)
        grab(shortcut);
}

void KeyboardShortcuts::grab(const Shortcut& shortcut) {
    const quint32 id = ++m_idCounter;
    const auto registered = m_hotKeys.registerHotKey(shortcut, hotKeySignature, id);
    if (!registered) {
        m_registered.remove(shortcut);
        // A session without global shortcuts is reported once by the
        // service, not at every registration.
        if (registered.error().kind != HotKeyError::Kind::unavailable)
            m_errorLineWriter(QStringLiteral("Error registering hotkey %1: %2\n")
                                  .arg(shortcut.description())
                                  .arg(registered.error().status)
                                  .toUtf8());
        Q_EMIT registrationFailed(shortcut, registered.error());
        return;
    }
    m_records.insert(id, HotKey{shortcut, id});
}

void KeyboardShortcuts::unregisterShortcut(const Shortcut& shortcut) {
    for (auto it = m_records.begin(); it != m_records.end(); ++it) {
        if (it->shortcut == shortcut) {
            m_hotKeys.unregisterHotKey(hotKeySignature, it->id);
            m_records.erase(it);
            break;
        }
    }
    m_registered.remove(shortcut);
}

bool KeyboardShortcuts::dispatch(quint32 signature, quint32 id, HotKeyService::EventKind kind) {
    if (signature != hotKeySignature)
        return false;
    const auto record = m_records.constFind(id);
    if (record == m_records.constEnd())
        return false;
    // A handler may change the registrations; work on a copy of the record.
    const Shortcut shortcut = record->shortcut;
    runHandlers(kind == HotKeyService::EventKind::pressed ? m_keyDownHandlers : m_keyUpHandlers,
                shortcut);
    return true;
}

void KeyboardShortcuts::runHandlers(const QHash<QString, QList<Action>>& handlers,
                                    const Shortcut& shortcut) {
    // Copies: an action may attach further actions.
    const auto names = handlers.keys();
    for (const QString& rawValue : names) {
        if (storedShortcut(m_names.value(rawValue)) != shortcut)
            continue;
        const QList<Action> actions = handlers.value(rawValue);
        for (const Action& action : actions)
            action();
    }
}

} // namespace scrivel
