#pragma once

#include "core/shortcuts/HotKeyService.h"

#include <QAbstractNativeEventFilter>
#include <QList>
#include <QTimer>
#include <chrono>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

struct _XCBKeySymbols;

namespace scrivel {

// Global hot keys on X11: passive key grabs on the root window, read back
// through Qt's native event filter on the same connection.
//
// A combination is grabbed once for every state of Caps Lock, Num Lock and
// Scroll Lock (the server compares the whole modifier state), and the lock
// bits are masked off incoming events. Holding the keys reports one press:
// the server's auto-repeat arrives as a release and a press with the same
// timestamp, so a release is held back for a moment and dropped with the
// press that repeats it.
class X11HotKeyService : public HotKeyService, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds defaultRepeatWindow{30};

    // The service on the running QGuiApplication's X connection, or nothing
    // when the application does not run on X11 or runs on XWayland in a
    // Wayland session (where grabs are not global).
    static std::unique_ptr<X11HotKeyService> forApplication(QObject* parent = nullptr);

    // The connection must be the one Qt reads events from (the events reach
    // this service through the application's native event filters).
    X11HotKeyService(xcb_connection_t* connection, xcb_window_t root,
                     std::chrono::milliseconds repeatWindow = defaultRepeatWindow,
                     QObject* parent = nullptr);
    ~X11HotKeyService() override;

    std::expected<void, HotKeyError> registerHotKey(const Shortcut& shortcut, quint32 signature,
                                                    quint32 id) override;
    void unregisterHotKey(quint32 signature, quint32 id) override;
    bool isTakenByAnotherClient(const Shortcut& shortcut) override;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    struct Grab {
        Shortcut shortcut;
        quint32 signature = 0;
        quint32 id = 0;
        QList<xcb_keycode_t> keycodes;
        uint16_t modifiers = 0;
    };
    struct HeldKey {
        xcb_keycode_t keycode = 0;
        quint32 signature = 0;
        quint32 id = 0;
    };
    struct PendingRelease {
        xcb_keycode_t keycode = 0;
        xcb_timestamp_t time = 0;
    };

    std::expected<Grab, HotKeyError> resolve(const Shortcut& shortcut) const;
    std::expected<void, HotKeyError> grab(const Grab& grab);
    void ungrab(const Grab& grab);
    QList<uint16_t> lockVariants() const;
    void readLockMasks();
    void remap();
    bool handleKeyPress(xcb_keycode_t keycode, uint16_t state, xcb_timestamp_t time);
    bool handleKeyRelease(xcb_keycode_t keycode, xcb_timestamp_t time);
    void flushRelease();

    xcb_connection_t* m_connection;
    xcb_window_t m_root;
    _XCBKeySymbols* m_keySymbols;
    uint16_t m_numLockMask = 0;
    uint16_t m_scrollLockMask = 0;
    QList<Grab> m_grabs;
    std::optional<HeldKey> m_held;
    std::optional<PendingRelease> m_pendingRelease;
    QTimer m_releaseTimer;
};

} // namespace scrivel
