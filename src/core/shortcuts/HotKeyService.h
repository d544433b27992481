#pragma once

#include "core/shortcuts/GlobalShortcutStatus.h"
#include "core/shortcuts/HotKeyError.h"
#include "core/shortcuts/Shortcut.h"

#include <QObject>
#include <expected>

namespace scrivel {

// The system's global hot keys: a registered combination is reported
// wherever the keyboard focus is. Lives on the main thread.
class HotKeyService : public QObject {
    Q_OBJECT

public:
    enum class EventKind { pressed, released };

    using QObject::QObject;

    // Starts reporting the combination as hot-key events carrying the
    // signature and identifier. Fails when the system refuses, for instance
    // when another application holds the combination.
    virtual std::expected<void, HotKeyError> registerHotKey(const Shortcut& shortcut,
                                                            quint32 signature, quint32 id) = 0;
    virtual void unregisterHotKey(quint32 signature, quint32 id) = 0;
    // Whether another application holds the combination now (a trial grab
    // that is released at once). Our own registrations never count.
    virtual bool isTakenByAnotherClient(const Shortcut& shortcut) = 0;

    // How shortcuts reach the app in this session. Key grabs unless the
    // service says otherwise.
    virtual GlobalShortcutStatus status() const { return {}; }
    // Opens the desktop's own dialog for the app's shortcuts, where the
    // status offers one; the activation token lets the dialog take the
    // keyboard.
    virtual void configureInDesktop(const QString& activationToken) { Q_UNUSED(activationToken); }

Q_SIGNALS:
    void statusChanged();
    // Holding the keys reports one press; the key's auto-repeat is not an
    // event.
    void hotKeyEvent(quint32 signature, quint32 id, scrivel::HotKeyService::EventKind kind);
};

} // namespace scrivel
