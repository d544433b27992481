#pragma once

#include "core/shortcuts/HotKeyService.h"
#include "core/shortcuts/Shortcut.h"
#include "core/shortcuts/ShortcutName.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <functional>
#include <optional>

namespace scrivel {

class SettingsStore;

// The application's global shortcuts: what is stored for each name, which
// combinations are registered with the system's hot-key service, and which
// actions run when one is pressed or released. One instance for the life of
// the process, on the main thread.
//
// A name is "adopted" on its first use here: when nothing at all is stored
// under its key yet, its default is stored (once; a removed default stays
// removed across restarts because removal stores false).
class KeyboardShortcuts : public QObject {
    Q_OBJECT

public:
    using Name = ShortcutName;
    using Action = std::function<void()>;
    using ErrorLineWriter = std::function<void(const QByteArray& line)>;

    // Every registration carries this signature ("WQHK"); events with any
    // other are someone else's.
    static constexpr quint32 hotKeySignature = 0x5751484B;

    KeyboardShortcuts(SettingsStore& settings, HotKeyService& hotKeys, QObject* parent = nullptr);

    // The stored shortcut; nothing when none is stored or the stored value
    // cannot be read (which is then left as it is).
    std::optional<Shortcut> shortcut(const Name& name);
    // Stores the shortcut (or clears it) and moves the registration to it.
    void setShortcut(const std::optional<Shortcut>& shortcut, const Name& name);

    // The shortcut as the panel's hint and the recorder show it
    // ("Ctrl+Alt+Return"), or nothing when the name has none. Follow
    // shortcutChanged to keep a copy current.
    std::optional<QString> displayText(const Name& name);

    // Attach an action; the name's shortcut is registered on first need.
    // Actions are never detached.
    void onKeyDown(const Name& name, Action action);
    void onKeyUp(const Name& name, Action action);

    // Unregister (or register again) the names' shortcuts; their actions stay
    // attached. The tray disables while its menu is open.
    void disable(const QList<Name>& names);
    void enable(const QList<Name>& names);

    bool isRegistered(const Shortcut& shortcut) const { return m_registered.contains(shortcut); }
    // Whether another application holds the combination now (the recorder's
    // check before it stores one). Our own registrations never count.
    bool isTakenByAnotherClient(const Shortcut& shortcut) {
        return !isRegistered(shortcut) && m_hotKeys.isTakenByAnotherClient(shortcut);
    }

    // How this session delivers the shortcuts (key grabs, the desktop's
    // portal, or not at all); follow deliveryStatusChanged.
    GlobalShortcutStatus deliveryStatus() const { return m_hotKeys.status(); }
    // Opens the desktop's own dialog for the shortcuts, where it offers one.
    void configureInDesktop(const QString& activationToken) {
        m_hotKeys.configureInDesktop(activationToken);
    }

    // Set while a recorder is recording: the shortcuts stay registered but
    // their grabs are let go, so pressing the current shortcut reaches the
    // recorder and is recorded instead of firing it.
    bool isRecorderActive() const { return m_recorderActive; }
    void setRecorderActive(bool active);

    // Handles one hot-key event; false when it is not one of ours (wrong
    // signature or unknown identifier) or the kind is not handled.
    bool dispatch(quint32 signature, quint32 id, HotKeyService::EventKind kind);

    // Where the registration error line goes: standard output unless
    // replaced.
    void setErrorLineWriter(ErrorLineWriter writer) { m_errorLineWriter = std::move(writer); }

Q_SIGNALS:
    // The stored shortcut of the name (its raw value) changed.
    void shortcutChanged(const QString& name);
    void deliveryStatusChanged();
    // The system refused a registration; the stored value is kept and the
    // next enable or setShortcut tries again.
    void registrationFailed(const scrivel::Shortcut& shortcut, const scrivel::HotKeyError& error);

private:
    struct HotKey {
        Shortcut shortcut;
        quint32 id = 0;
    };

    void adopt(const Name& name);
    std::optional<Shortcut> storedShortcut(const Name& name) const;
    void attach(QHash<QString, QList<Action>>& handlers, const Name& name, Action action);
    void registerShortcut(const Shortcut& shortcut);
    // The hot-key service's part of registering (held back while recording).
    void grab(const Shortcut& shortcut);
    void unregisterShortcut(const Shortcut& shortcut);
    void runHandlers(const QHash<QString, QList<Action>>& handlers, const Shortcut& shortcut);

    SettingsStore& m_settings;
    HotKeyService& m_hotKeys;
    QHash<QString, Name> m_names;
    QHash<QString, QList<Action>> m_keyDownHandlers;
    QHash<QString, QList<Action>> m_keyUpHandlers;
    // Registered shortcuts; those in m_records are grabbed from the service.
    QSet<Shortcut> m_registered;
    QHash<quint32, HotKey> m_records;
    quint32 m_idCounter = 0;
    bool m_recorderActive = false;
    ErrorLineWriter m_errorLineWriter;
};

} // namespace scrivel
