#include "platform/linux/X11HotKeyService.h"

#include "core/shortcuts/ShortcutKey.h"
#include "core/support/Log.h"
#include "platform/linux/DesktopSession.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <cstdlib>
#include <xcb/xcb_keysyms.h>
// xkb.h names a struct member "explicit", a C++ keyword.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace scrivel {

namespace {

constexpr uint8_t badAccess = 10;
constexpr uint8_t keyPress = XCB_KEY_PRESS;
constexpr uint8_t keyRelease = XCB_KEY_RELEASE;
constexpr uint8_t mappingNotify = XCB_MAPPING_NOTIFY;
constexpr xcb_keysym_t numLockKeysym = 0xff7f;
constexpr xcb_keysym_t scrollLockKeysym = 0xff14;

// The modifiers a shortcut can hold, in X terms. Alt is Mod1 and the Super
// key (the Mac's Command) is Mod4 on every common layout.
constexpr uint16_t shortcutModifierMask =
    XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;

std::optional<uint16_t> x11Modifiers(int carbonModifiers) {
    if (carbonModifiers & Shortcut::function)
        return std::nullopt; // no Fn modifier ever reaches X
    uint16_t mask = 0;
    if (carbonModifiers & Shortcut::control)
        mask |= XCB_MOD_MASK_CONTROL;
    if (carbonModifiers & Shortcut::option)
        mask |= XCB_MOD_MASK_1;
    if (carbonModifiers & Shortcut::shift)
        mask |= XCB_MOD_MASK_SHIFT;
    if (carbonModifiers & Shortcut::command)
        mask |= XCB_MOD_MASK_4;
    return mask;
}

QList<xcb_keycode_t> keycodesOf(xcb_key_symbols_t* symbols, xcb_keysym_t keysym) {
    QList<xcb_keycode_t> keycodes;
    xcb_keycode_t* found = xcb_key_symbols_get_keycode(symbols, keysym);
    if (!found)
        return keycodes;
    for (xcb_keycode_t* k = found; *k != XCB_NO_SYMBOL; ++k) {
        if (!keycodes.contains(*k))
            keycodes.append(*k);
    }
    std::free(found);
    return keycodes;
}

// Asks the server not to fake a release before each repeated press of a held
// key (Qt's own X connection asks the same). True when the server confirms:
// every release is then a real one and needs no wait for a following press.
bool enableDetectableAutoRepeat(xcb_connection_t* connection) {
    xcb_xkb_use_extension_reply_t* extension = xcb_xkb_use_extension_reply(
        connection, xcb_xkb_use_extension(connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION),
        nullptr);
    const bool supported = extension && extension->supported;
    std::free(extension);
    if (!supported)
        return false;
    const uint32_t detectable = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    xcb_xkb_per_client_flags_reply_t* flags =
        xcb_xkb_per_client_flags_reply(connection,
                                       xcb_xkb_per_client_flags(connection, XCB_XKB_ID_USE_CORE_KBD,
                                                                detectable, detectable, 0, 0, 0),
                                       nullptr);
    const bool enabled = flags && (flags->value & detectable);
    std::free(flags);
    return enabled;
}

} // namespace

std::unique_ptr<X11HotKeyService> X11HotKeyService::forApplication(QObject* parent) {
    // Under XWayland a grab succeeds but sees only the keys typed into our
    // own windows: no global shortcut, so no service that would claim one.
    if (DesktopSession::isWayland())
        return nullptr;
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->connection())
        return nullptr;
    xcb_connection_t* connection = x11->connection();
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    if (!screen)
        return nullptr;
    const std::chrono::milliseconds repeatWindow =
        enableDetectableAutoRepeat(connection) ? std::chrono::milliseconds(0) : defaultRepeatWindow;
    return std::make_unique<X11HotKeyService>(connection, screen->root, repeatWindow, parent);
}

X11HotKeyService::X11HotKeyService(xcb_connection_t* connection, xcb_window_t root,
                                   std::chrono::milliseconds repeatWindow, QObject* parent)
    : HotKeyService(parent), m_connection(connection), m_root(root),
      m_keySymbols(xcb_key_symbols_alloc(connection)) {
    m_releaseTimer.setSingleShot(true);
    m_releaseTimer.setInterval(repeatWindow);
    connect(&m_releaseTimer, &QTimer::timeout, this, &X11HotKeyService::flushRelease);
    readLockMasks();
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11HotKeyService::~X11HotKeyService() {
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeNativeEventFilter(this);
    for (const Grab& g : std::as_const(m_grabs))
        ungrab(g);
    xcb_flush(m_connection);
    xcb_key_symbols_free(m_keySymbols);
}

void X11HotKeyService::readLockMasks() {
    m_numLockMask = 0;
    m_scrollLockMask = 0;
    const QList<xcb_keycode_t> numLock = keycodesOf(m_keySymbols, numLockKeysym);
    const QList<xcb_keycode_t> scrollLock = keycodesOf(m_keySymbols, scrollLockKeysym);
    xcb_get_modifier_mapping_reply_t* reply = xcb_get_modifier_mapping_reply(
        m_connection, xcb_get_modifier_mapping(m_connection), nullptr);
    if (reply) {
        const xcb_keycode_t* keycodes = xcb_get_modifier_mapping_keycodes(reply);
        const int perModifier = reply->keycodes_per_modifier;
        for (int modifier = 0; modifier < 8; ++modifier) {
            for (int i = 0; i < perModifier; ++i) {
                const xcb_keycode_t keycode = keycodes[modifier * perModifier + i];
                if (keycode == XCB_NO_SYMBOL)
                    continue;
                if (numLock.contains(keycode))
                    m_numLockMask |= uint16_t(1u << modifier);
                if (scrollLock.contains(keycode))
                    m_scrollLockMask |= uint16_t(1u << modifier);
            }
        }
        std::free(reply);
    }
    // Num Lock is Mod2 wherever the mapping does not say otherwise.
    if (!m_numLockMask)
        m_numLockMask = XCB_MOD_MASK_2;
    // A lock that shares a bit with a shortcut modifier must not be masked.
    m_numLockMask &= ~shortcutModifierMask;
    m_scrollLockMask &= ~shortcutModifierMask;
}

QList<uint16_t> X11HotKeyService::lockVariants() const {
    const uint16_t locks[] = {XCB_MOD_MASK_LOCK, m_numLockMask, m_scrollLockMask};
    QList<uint16_t> variants{0};
    for (const uint16_t lock : locks) {
        if (!lock)
            continue;
        const qsizetype count = variants.size();
        for (qsizetype i = 0; i < count; ++i) {
            const uint16_t combined = variants[i] | lock;
            if (!variants.contains(combined))
                variants.append(combined);
        }
    }
    return variants;
}

std::expected<X11HotKeyService::Grab, HotKeyError>
X11HotKeyService::resolve(const Shortcut& shortcut) const {
    const auto key = ShortcutKey::forCarbonKeyCode(shortcut.carbonKeyCode);
    const auto modifiers = x11Modifiers(shortcut.carbonModifiers);
    const QList<xcb_keycode_t> keycodes =
        key ? keycodesOf(m_keySymbols, key->x11Keysym) : QList<xcb_keycode_t>{};
    if (!modifiers || keycodes.isEmpty())
        return std::unexpected(HotKeyError{HotKeyError::Kind::unknownKey, -1});
    return Grab{shortcut, 0, 0, keycodes, *modifiers};
}

std::expected<void, HotKeyError> X11HotKeyService::grab(const Grab& g) {
    // All requests first, then the answers: one round trip, not sixteen.
    QList<xcb_void_cookie_t> cookies;
    const QList<uint16_t> variants = lockVariants();
    for (const xcb_keycode_t keycode : g.keycodes) {
        for (const uint16_t lock : variants) {
            // owner_events off: with it on, a press while one of our own
            // windows (the panel) has the focus would be reported on that
            // window instead of the root, and the panel could not be toggled
            // away.
            cookies.append(xcb_grab_key_checked(m_connection, 0, m_root, g.modifiers | lock,
                                                keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        }
    }
    std::optional<HotKeyError> failure;
    for (const xcb_void_cookie_t cookie : cookies) {
        if (xcb_generic_error_t* error = xcb_request_check(m_connection, cookie)) {
            if (!failure) {
                failure = HotKeyError{error->error_code == badAccess
                                          ? HotKeyError::Kind::takenByAnotherClient
                                          : HotKeyError::Kind::refused,
                                      error->error_code};
            }
            std::free(error);
        }
    }
    if (failure) {
        // Drops the variants that did succeed; the failed ones belong to the
        // other client and an ungrab of ours does not touch them.
        ungrab(g);
        xcb_flush(m_connection);
        return std::unexpected(*failure);
    }
    return {};
}

void X11HotKeyService::ungrab(const Grab& g) {
    const QList<uint16_t> variants = lockVariants();
    for (const xcb_keycode_t keycode : g.keycodes) {
        for (const uint16_t lock : variants)
            xcb_ungrab_key(m_connection, keycode, m_root, g.modifiers | lock);
    }
}

std::expected<void, HotKeyError> X11HotKeyService::registerHotKey(const Shortcut& shortcut,
                                                                  quint32 signature, quint32 id) {
    auto resolved = resolve(shortcut);
    if (!resolved)
        return std::unexpected(resolved.error());
    resolved->signature = signature;
    resolved->id = id;
    if (auto grabbed = grab(*resolved); !grabbed)
        return grabbed;
    m_grabs.append(*resolved);
    return {};
}

void X11HotKeyService::unregisterHotKey(quint32 signature, quint32 id) {
    for (qsizetype i = 0; i < m_grabs.size(); ++i) {
        if (m_grabs[i].signature == signature && m_grabs[i].id == id) {
            ungrab(m_grabs[i]);
            xcb_flush(m_connection);
            m_grabs.removeAt(i);
            break;
        }
    }
    if (m_held && m_held->signature == signature && m_held->id == id) {
        m_held.reset();
        m_pendingRelease.reset();
        m_releaseTimer.stop();
    }
}

bool X11HotKeyService::isTakenByAnotherClient(const Shortcut& shortcut) {
    auto resolved = resolve(shortcut);
    if (!resolved)
        return false;
    // A trial grab over one of our own would replace it, and its ungrab
    // would then remove ours.
    for (const Grab& g : std::as_const(m_grabs)) {
        if (g.modifiers == resolved->modifiers && g.keycodes == resolved->keycodes)
            return false;
    }
    const auto grabbed = grab(*resolved);
    if (!grabbed)
        return grabbed.error().kind == HotKeyError::Kind::takenByAnotherClient;
    ungrab(*resolved);
    xcb_flush(m_connection);
    return false;
}

bool X11HotKeyService::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const uint8_t type = event->response_type & 0x7f;
    if (type == keyPress || type == keyRelease) {
        const auto* key = static_cast<const xcb_key_press_event_t*>(message);
        if (key->event != m_root)
            return false;
        return type == keyPress ? handleKeyPress(key->detail, key->state, key->time)
                                : handleKeyRelease(key->detail, key->time);
    }
    if (type == mappingNotify) {
        auto* mapping = static_cast<xcb_mapping_notify_event_t*>(message);
        if (mapping->request == XCB_MAPPING_KEYBOARD || mapping->request == XCB_MAPPING_MODIFIER) {
            xcb_refresh_keyboard_mapping(m_keySymbols, mapping);
            remap();
        }
    }
    return false; // Qt keeps its own keyboard up to date too
}

bool X11HotKeyService::handleKeyPress(xcb_keycode_t keycode, uint16_t state, xcb_timestamp_t time) {
    if (m_pendingRelease && m_pendingRelease->keycode == keycode) {
        // The server's auto-repeat: a release and a press at the same moment.
        if (m_pendingRelease->time == time) {
            m_pendingRelease.reset();
            m_releaseTimer.stop();
            return true;
        }
        flushRelease();
    }
    // Repeats of a held key arrive as presses alone where the client asked
    // for detectable auto-repeat.
    if (m_held && m_held->keycode == keycode)
        return true;
    const uint16_t modifiers = state & shortcutModifierMask;
    for (const Grab& g : std::as_const(m_grabs)) {
        if (g.modifiers == modifiers && g.keycodes.contains(keycode)) {
            if (m_held)
                flushRelease();
            m_held = HeldKey{keycode, g.signature, g.id};
            Q_EMIT hotKeyEvent(g.signature, g.id, EventKind::pressed);
            return true;
        }
    }
    return false;
}

bool X11HotKeyService::handleKeyRelease(xcb_keycode_t keycode, xcb_timestamp_t time) {
    // The release is matched by key alone: the modifiers may already be up.
    if (!m_held || m_held->keycode != keycode)
        return false;
    m_pendingRelease = PendingRelease{keycode, time};
    if (m_releaseTimer.interval() == 0)
        flushRelease();
    else
        m_releaseTimer.start();
    return true;
}

void X11HotKeyService::flushRelease() {
    m_releaseTimer.stop();
    m_pendingRelease.reset();
    if (!m_held)
        return;
    const HeldKey held = *m_held;
    m_held.reset();
    Q_EMIT hotKeyEvent(held.signature, held.id, EventKind::released);
}

void X11HotKeyService::remap() {
    for (const Grab& g : std::as_const(m_grabs))
        ungrab(g);
    readLockMasks();
    for (Grab& g : m_grabs) {
        if (auto resolved = resolve(g.shortcut))
            g.keycodes = resolved->keycodes;
        if (!grab(g))
            qCWarning(rewriteLog()) << "hotkey regrab failed after keymap change";
    }
    xcb_flush(m_connection);
}

} // namespace scrivel
