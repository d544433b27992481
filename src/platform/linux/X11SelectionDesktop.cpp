#include "platform/linux/X11SelectionDesktop.h"

#include "platform/linux/DesktopSession.h"

#include <QGuiApplication>
#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>
#include <cstdlib>
#include <cstring>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

namespace scrivel {

namespace {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

constexpr xcb_keysym_t controlKeysym = 0xffe3;
constexpr xcb_keysym_t shiftKeysym = 0xffe1;
constexpr xcb_keysym_t vKeysym = 0x0076;
// _NET_ACTIVE_WINDOW's source indication for pagers and other tools acting
// on the user's behalf; window managers may refuse applications (1).
constexpr uint32_t sourcePager = 2;
// No window tree is this deep; the bound only guards against a loop.
constexpr int maximumDepth = 64;

bool isNowhere(xcb_window_t window, xcb_window_t root) {
    return window == XCB_WINDOW_NONE || window == XCB_INPUT_FOCUS_POINTER_ROOT || window == root;
}

} // namespace

std::unique_ptr<X11SelectionDesktop> X11SelectionDesktop::forSession(QObject* parent) {
    if (!qGuiApp || QGuiApplication::platformName() != QLatin1String("xcb") ||
        DesktopSession::isWayland())
        return nullptr;
    auto desktop = std::make_unique<X11SelectionDesktop>(QByteArray(), parent);
    if (!desktop->isConnected() || !desktop->hasXTest())
        return nullptr;
    return desktop;
}

X11SelectionDesktop::X11SelectionDesktop(const QByteArray& displayName, QObject* parent)
    : QObject(parent) {
    int screenNumber = 0;
    m_connection =
        xcb_connect(displayName.isEmpty() ? nullptr : displayName.constData(), &screenNumber);
    if (xcb_connection_has_error(m_connection))
        return;
    const xcb_setup_t* setup = xcb_get_setup(m_connection);
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(setup);
    for (int i = 0; i < screenNumber && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    m_root = screens.data ? screens.data->root : xcb_window_t(XCB_WINDOW_NONE);
    m_resourceMask = setup->resource_id_mask;
    const xcb_query_extension_reply_t* xtest = xcb_get_extension_data(m_connection, &xcb_test_id);
    m_hasXTest = xtest && xtest->present;
    m_keySymbols = xcb_key_symbols_alloc(m_connection);
    internAtoms();
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection),
                                                   QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11SelectionDesktop::readEvents);
}

X11SelectionDesktop::~X11SelectionDesktop() {
    m_notifier.reset();
    if (m_keySymbols)
        xcb_key_symbols_free(m_keySymbols);
    xcb_disconnect(m_connection);
}

bool X11SelectionDesktop::isConnected() const {
    return m_connection && xcb_connection_has_error(m_connection) == 0 && m_root != XCB_WINDOW_NONE;
}

void X11SelectionDesktop::internAtoms() {
    const char* names[] = {"UTF8_STRING",        "INCR",           "WM_STATE",
                           "_NET_ACTIVE_WINDOW", "_NET_SUPPORTED", "SCRIVEL_SELECTION"};
    xcb_atom_t* atoms[] = {&m_utf8String,      &m_incr,         &m_wmState,
                           &m_netActiveWindow, &m_netSupported, &m_property};
    xcb_intern_atom_cookie_t cookies[std::size(names)];
    for (size_t i = 0; i < std::size(names); ++i)
        cookies[i] = xcb_intern_atom(m_connection, 0, uint16_t(std::strlen(names[i])), names[i]);
    for (size_t i = 0; i < std::size(names); ++i) {
        Reply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(m_connection, cookies[i], nullptr));
        *atoms[i] = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    }
}

QList<xcb_window_t> X11SelectionDesktop::ancestry(xcb_window_t window) {
    QList<xcb_window_t> chain;
    xcb_window_t current = window;
    for (int depth = 0; depth < maximumDepth; ++depth) {
        Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, current), nullptr));
        if (!tree)
            return {}; // gone
        chain.append(current);
        if (tree->parent == tree->root || tree->parent == XCB_WINDOW_NONE)
            break;
        current = tree->parent;
    }
    return chain;
}

xcb_window_t X11SelectionDesktop::topLevelOf(xcb_window_t window) {
    const QList<xcb_window_t> chain = ancestry(window);
    return chain.isEmpty() ? xcb_window_t(XCB_WINDOW_NONE) : chain.last();
}

bool X11SelectionDesktop::hasWmState(xcb_window_t window) {
    Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, 0, window, m_wmState, XCB_ATOM_ANY, 0, 0),
        nullptr));
    return reply && reply->type != XCB_ATOM_NONE;
}

std::optional<DesktopWindow> X11SelectionDesktop::describe(xcb_window_t window) {
    if (isNowhere(window, m_root))
        return std::nullopt;
    const QList<xcb_window_t> chain = ancestry(window);
    if (chain.isEmpty())
        return std::nullopt;
    DesktopWindow described;
    described.topLevel = chain.last();

    // The client's own window carries WM_STATE; ask for all at once.
    QList<xcb_get_property_cookie_t> cookies;
    for (const xcb_window_t w : chain)
        cookies.append(xcb_get_property(m_connection, 0, w, m_wmState, XCB_ATOM_ANY, 0, 0));
    xcb_window_t client = XCB_WINDOW_NONE;
    for (qsizetype i = 0; i < chain.size(); ++i) {
        Reply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(m_connection, cookies[i], nullptr));
        if (client == XCB_WINDOW_NONE && reply && reply->type != XCB_ATOM_NONE)
            client = chain[i];
    }
    if (client == XCB_WINDOW_NONE && window == described.topLevel) {
        // The focus can rest on a window manager's frame: its client is the
        // child that carries WM_STATE.
        Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
        if (tree) {
            const xcb_window_t* children = xcb_query_tree_children(tree.get());
            for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
                if (hasWmState(children[i])) {
                    client = children[i];
                    break;
                }
            }
        }
    }
    described.id = client != XCB_WINDOW_NONE ? client : window;
    described.connection = described.id & ~m_resourceMask;
    Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        m_connection, xcb_get_window_attributes(m_connection, described.topLevel), nullptr));
    described.viewable = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    return described;
}

std::optional<xcb_window_t> X11SelectionDesktop::activeWindow() {
    Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 0, m_root, m_netActiveWindow, XCB_ATOM_WINDOW, 0, 1),
        nullptr));
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
        return std::nullopt;
    const xcb_window_t active =
        *static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
    if (active == XCB_WINDOW_NONE)
        return std::nullopt;
    return active;
}

bool X11SelectionDesktop::supportsActiveWindowRequests() {
    Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 0, m_root, m_netSupported, XCB_ATOM_ATOM, 0, 4096),
        nullptr));
    if (!reply || reply->format != 32)
        return false;
    const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    const int count = xcb_get_property_value_length(reply.get()) / 4;
    return std::find(atoms, atoms + count, m_netActiveWindow) != atoms + count;
}

SelectionScene X11SelectionDesktop::scene() {
    SelectionScene scene;
    if (!isConnected())
        return scene;
    const xcb_get_input_focus_cookie_t focusCookie = xcb_get_input_focus(m_connection);
    const xcb_get_selection_owner_cookie_t ownerCookie =
        xcb_get_selection_owner(m_connection, XCB_ATOM_PRIMARY);
    Reply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(m_connection, focusCookie, nullptr));
    Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(m_connection, ownerCookie, nullptr));
    xcb_window_t focused = focus ? focus->focus : xcb_window_t(XCB_WINDOW_NONE);
    // Some window managers keep the focus on their own window while they
    // say which client is active.
    if (isNowhere(focused, m_root))
        focused = activeWindow().value_or(XCB_WINDOW_NONE);
    scene.focused = describe(focused);
    if (owner && owner->owner != XCB_WINDOW_NONE)
        scene.owner = describe(owner->owner);
    scheduleRead();
    return scene;
}

Future<PrimarySelection> X11SelectionDesktop::readPrimary(qsizetype byteLimit) {
    Promise<PrimarySelection> promise;
    Future<PrimarySelection> future = promise.future();
    if (!isConnected()) {
        promise.resolve(PrimarySelection::notText());
        return future;
    }
    // A window of its own for each read: the answer to a read given up on
    // is then sent to a window that no longer exists.
    const xcb_window_t requestor = xcb_generate_id(m_connection);
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, requestor, m_root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    Transfer transfer;
    transfer.promise = promise;
    transfer.byteLimit = byteLimit;
    m_transfers.insert(requestor, transfer);
    convert(requestor, m_utf8String);
    QPointer<X11SelectionDesktop> self(this);
    promise.onCancel([self, requestor] {
        if (self)
            self->drop(requestor);
    });
    return future;
}

void X11SelectionDesktop::convert(xcb_window_t requestor, xcb_atom_t target) {
    m_transfers[requestor].target = target;
    xcb_convert_selection(m_connection, requestor, XCB_ATOM_PRIMARY, target, m_property,
                          XCB_CURRENT_TIME);
    xcb_flush(m_connection);
}

void X11SelectionDesktop::scheduleRead() {
    // A round trip may have moved events off the socket into xcb's queue,
    // where the socket notifier does not see them.
    if (m_readScheduled || m_transfers.isEmpty())
        return;
    m_readScheduled = true;
    QTimer::singleShot(0, this, &X11SelectionDesktop::readEvents);
}

void X11SelectionDesktop::readEvents() {
    m_readScheduled = false;
    if (!isConnected())
        return;
    while (xcb_generic_event_t* raw = xcb_poll_for_event(m_connection)) {
        Reply<xcb_generic_event_t> event(raw);
        switch (event->response_type & 0x7f) {
        case XCB_SELECTION_NOTIFY:
            onSelectionNotify(*reinterpret_cast<xcb_selection_notify_event_t*>(raw));
            break;
        case XCB_PROPERTY_NOTIFY:
            onPropertyNotify(*reinterpret_cast<xcb_property_notify_event_t*>(raw));
            break;
        case XCB_MAPPING_NOTIFY:
            xcb_refresh_keyboard_mapping(m_keySymbols,
                                         reinterpret_cast<xcb_mapping_notify_event_t*>(raw));
            break;
        default:
            // Errors of requests on windows that went away meanwhile.
            break;
        }
    }
    if (xcb_connection_has_error(m_connection)) {
        m_notifier->setEnabled(false);
        for (const xcb_window_t requestor : m_transfers.keys())
            finish(requestor, PrimarySelection::notText());
    }
}

void X11SelectionDesktop::onSelectionNotify(const xcb_selection_notify_event_t& event) {
    const auto transfer = m_transfers.find(event.requestor);
    if (transfer == m_transfers.end() || event.selection != XCB_ATOM_PRIMARY)
        return;
    if (event.property == XCB_ATOM_NONE) {
        // Refused: older owners may still give Latin-1.
        if (transfer->target == m_utf8String)
            convert(event.requestor, XCB_ATOM_STRING);
        else
            finish(event.requestor, PrimarySelection::notText());
        return;
    }
    // Reading with delete also tells an owner that sends in pieces (INCR)
    // to send the first one.
    const auto words = uint32_t(transfer->byteLimit / 4 + 2);
    Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 1, event.requestor, event.property, XCB_ATOM_ANY, 0, words),
        nullptr));
    if (!reply) {
        finish(event.requestor, PrimarySelection::notText());
        return;
    }
    const int length = xcb_get_property_value_length(reply.get());
    if (reply->type == m_incr) {
        // Its value is a lower bound of the size.
        const uint32_t atLeast =
            length >= 4 ? *static_cast<const uint32_t*>(xcb_get_property_value(reply.get())) : 0;
        if (qsizetype(atLeast) > transfer->byteLimit) {
            finish(event.requestor, PrimarySelection::overLimit());
            return;
        }
        transfer->incremental = true;
        xcb_flush(m_connection);
        return;
    }
    if ((reply->type != m_utf8String && reply->type != XCB_ATOM_STRING) || reply->format != 8) {
        finish(event.requestor, PrimarySelection::notText());
        return;
    }
    if (reply->bytes_after > 0 || length > transfer->byteLimit) {
        finish(event.requestor, PrimarySelection::overLimit());
        return;
    }
    transfer->bytes =
        QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())), length);
    finish(event.requestor, decoded(*transfer, reply->type));
}

void X11SelectionDesktop::onPropertyNotify(const xcb_property_notify_event_t& event) {
    const auto transfer = m_transfers.find(event.window);
    if (transfer == m_transfers.end() || !transfer->incremental || event.atom != m_property ||
        event.state != XCB_PROPERTY_NEW_VALUE)
        return;
    const qsizetype room = transfer->byteLimit - transfer->bytes.size();
    const auto words = uint32_t(room / 4 + 2);
    Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 1, event.window, m_property, XCB_ATOM_ANY, 0, words),
        nullptr));
    if (!reply) {
        finish(event.window, PrimarySelection::notText());
        return;
    }
    const int length = xcb_get_property_value_length(reply.get());
    if (length == 0) {
        // The empty piece ends the transfer.
        finish(event.window, decoded(*transfer, transfer->target));
        return;
    }
    if ((reply->type != m_utf8String && reply->type != XCB_ATOM_STRING) || reply->format != 8) {
        finish(event.window, PrimarySelection::notText());
        return;
    }
    if (reply->bytes_after > 0 || length > room) {
        finish(event.window, PrimarySelection::overLimit());
        return;
    }
    transfer->target = reply->type;
    transfer->bytes.append(static_cast<const char*>(xcb_get_property_value(reply.get())), length);
    xcb_flush(m_connection);
}

PrimarySelection X11SelectionDesktop::decoded(const Transfer& transfer, xcb_atom_t type) const {
    if (type == XCB_ATOM_STRING)
        return PrimarySelection::ofText(QString::fromLatin1(transfer.bytes));
    return PrimarySelection::ofText(QString::fromUtf8(transfer.bytes));
}

void X11SelectionDesktop::finish(xcb_window_t requestor, const PrimarySelection& result) {
    const auto transfer = m_transfers.constFind(requestor);
    if (transfer == m_transfers.cend())
        return;
    const Promise<PrimarySelection> promise = transfer->promise;
    drop(requestor);
    promise.resolve(result);
}

void X11SelectionDesktop::drop(xcb_window_t requestor) {
    if (!m_transfers.remove(requestor) || !isConnected())
        return;
    // An owner still sending in pieces gets an error for the next one and
    // stops.
    xcb_destroy_window(m_connection, requestor);
    xcb_flush(m_connection);
}

bool X11SelectionDesktop::isAlive(const DesktopWindow& window) {
    if (!isConnected())
        return false;
    Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        m_connection, xcb_get_window_attributes(m_connection, window.id), nullptr));
    scheduleRead();
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

QStringList X11SelectionDesktop::windowClass(const DesktopWindow& window) {
    if (!isConnected())
        return {};
    // Without a window manager the window may be one inside the client's
    // top-level window, which carries the class.
    QStringList names = classOf(window.id);
    if (names.isEmpty() && window.topLevel != XCB_WINDOW_NONE && window.topLevel != window.id)
        names = classOf(window.topLevel);
    scheduleRead();
    return names;
}

QStringList X11SelectionDesktop::classOf(xcb_window_t window) {
    Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256),
        nullptr));
    if (!reply || reply->format != 8)
        return {};
    const QByteArray value(static_cast<const char*>(xcb_get_property_value(reply.get())),
                           xcb_get_property_value_length(reply.get()));
    QStringList names;
    for (const QByteArray& name : value.split('\0')) {
        if (!name.isEmpty())
            names.append(QString::fromLatin1(name));
    }
    return names;
}

void X11SelectionDesktop::activate(const DesktopWindow& window) {
    if (!isConnected())
        return;
    if (supportsActiveWindowRequests()) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window.id;
        message.type = m_netActiveWindow;
        message.data.data32[0] = sourcePager;
        message.data.data32[1] = XCB_CURRENT_TIME;
        xcb_send_event(m_connection, 0, m_root,
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
    } else {
        // No window manager to ask: the focus goes straight back.
        xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, window.id, XCB_CURRENT_TIME);
    }
    xcb_flush(m_connection);
    scheduleRead();
}

bool X11SelectionDesktop::hasFocus(const DesktopWindow& window) {
    if (!isConnected())
        return false;
    Reply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    if (!focus)
        return false;
    if (focus->focus == window.id)
        return true;
    if (isNowhere(focus->focus, m_root) || window.topLevel == XCB_WINDOW_NONE)
        return false;
    const bool inside = topLevelOf(focus->focus) == window.topLevel;
    scheduleRead();
    return inside;
}

void X11SelectionDesktop::typePaste(PasteKeys keys) {
    if (keys == PasteKeys::none || !isConnected() || !m_hasXTest)
        return;
    QList<xcb_keysym_t> chord{controlKeysym};
    if (keys == PasteKeys::ctrlShiftV)
        chord.append(shiftKeysym);
    chord.append(vKeysym);
    QList<xcb_keycode_t> keycodes;
    for (const xcb_keysym_t keysym : chord) {
        xcb_keycode_t* found = xcb_key_symbols_get_keycode(m_keySymbols, keysym);
        const xcb_keycode_t keycode = found ? found[0] : XCB_NO_SYMBOL;
        std::free(found);
        if (keycode == XCB_NO_SYMBOL)
            return; // a keyboard without the key: nothing half-typed
        keycodes.append(keycode);
    }
    for (const xcb_keycode_t keycode : keycodes)
        xcb_test_fake_input(m_connection, XCB_KEY_PRESS, keycode, XCB_CURRENT_TIME, XCB_WINDOW_NONE,
                            0, 0, 0);
    for (auto keycode = keycodes.crbegin(); keycode != keycodes.crend(); ++keycode)
        xcb_test_fake_input(m_connection, XCB_KEY_RELEASE, *keycode, XCB_CURRENT_TIME,
                            XCB_WINDOW_NONE, 0, 0, 0);
    xcb_flush(m_connection);
}

} // namespace scrivel
