#pragma once

#include <QCoreApplication>
#include <QString>

namespace scrivel {

// How this session delivers the global shortcut: what the settings row and
// the panel's hint may promise. Only keyGrabs and a desktop binding with a
// trigger mean that a key combination opens Scrivel from anywhere.
struct GlobalShortcutStatus {
    Q_DECLARE_TR_FUNCTIONS(GlobalShortcutStatus)

public:
    enum class Kind {
        // The stored shortcut is grabbed from the display server (X11); the
        // recorder changes it.
        keyGrabs,
        // The desktop's shortcut portal has been asked and has not answered.
        desktopPending,
        // The desktop delivers the shortcut; it chooses the keys.
        desktopBound,
        // No global shortcut in this session.
        unavailable,
    };
    // Why there is none.
    enum class Reason {
        // Neither key grabs nor a shortcut portal (a Wayland desktop without
        // the portal, or no session bus).
        noPortal,
        // The portal (or the user, in its dialog) declined.
        refused,
        // The portal failed or went away.
        failed,
    };

    Kind kind = Kind::keyGrabs;
    Reason reason = Reason::noPortal;
    // desktopBound: how the desktop words the keys that trigger the shortcut
    // ("Ctrl+Alt+Return"); empty when the user has assigned none.
    QString triggerDescription;
    // desktopBound: the desktop offers its own dialog to change the keys.
    bool canConfigure = false;

    friend bool operator==(const GlobalShortcutStatus&, const GlobalShortcutStatus&) = default;

    static GlobalShortcutStatus pending() {
        GlobalShortcutStatus status;
        status.kind = Kind::desktopPending;
        return status;
    }
    static GlobalShortcutStatus bound(const QString& trigger, bool canConfigure) {
        return {Kind::desktopBound, Reason::noPortal, trigger, canConfigure};
    }
    static GlobalShortcutStatus unavailable(Reason reason) {
        GlobalShortcutStatus status;
        status.kind = Kind::unavailable;
        status.reason = reason;
        return status;
    }

    // The command users bind in their desktop's keyboard settings where no
    // global shortcut is to be had.
    static QString toggleCommand() { return QStringLiteral("scrivel --toggle"); }

    // Whether a key combination opens Scrivel from anywhere right now.
    bool deliversKeys() const {
        return kind == Kind::keyGrabs ||
               (kind == Kind::desktopBound && !triggerDescription.isEmpty());
    }
    // The settings row's text for every kind but keyGrabs (where the recorder
    // shows the shortcut).
    QString settingsText() const;
};

} // namespace scrivel
