#include "support/X11TestClient.h"

#include <cstdlib>
#include <cstring>
#include <xcb/xcb_keysyms.h>

namespace scrivel::test {

X11TestClient::X11TestClient() : m_connection(xcb_connect(nullptr, nullptr)) {}

X11TestClient::~X11TestClient() {
    xcb_disconnect(m_connection);
}

bool X11TestClient::isConnected() const {
    return xcb_connection_has_error(m_connection) == 0;
}

bool X11TestClient::grab(xcb_keysym_t keysym, uint16_t modifiers) {
    return tryGrab(keysym, modifiers, true);
}

bool X11TestClient::isHeldElsewhere(xcb_keysym_t keysym, uint16_t modifiers) {
    return !tryGrab(keysym, modifiers, false);
}

bool X11TestClient::tryGrab(xcb_keysym_t keysym, uint16_t modifiers, bool keep) {
    if (!isConnected())
        return false;
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(m_connection);
    xcb_keycode_t* keycodes = xcb_key_symbols_get_keycode(symbols, keysym);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    bool grabbed = false;
    if (keycodes) {
        xcb_generic_error_t* error = xcb_request_check(
            m_connection, xcb_grab_key_checked(m_connection, 1, root, modifiers, keycodes[0],
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        grabbed = error == nullptr;
        std::free(error);
        if (grabbed && !keep) {
            xcb_ungrab_key(m_connection, keycodes[0], root, modifiers);
            xcb_flush(m_connection);
        }
    }
    std::free(keycodes);
    xcb_key_symbols_free(symbols);
    return grabbed;
}

xcb_atom_t X11TestClient::atom(const char* name) {
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, uint16_t(std::strlen(name)), name), nullptr);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

xcb_window_t X11TestClient::selectionOwner(const char* selection) {
    if (!isConnected())
        return XCB_WINDOW_NONE;
    xcb_get_selection_owner_reply_t* reply = xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, atom(selection)), nullptr);
    const xcb_window_t owner = reply ? reply->owner : xcb_window_t(XCB_WINDOW_NONE);
    std::free(reply);
    return owner;
}

bool X11TestClient::takeSelection(const char* selection) {
    if (!isConnected())
        return false;
    if (m_window == XCB_WINDOW_NONE) {
        m_window = xcb_generate_id(m_connection);
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    }
    xcb_set_selection_owner(m_connection, m_window, atom(selection), XCB_CURRENT_TIME);
    return ownsSelection(selection);
}

} // namespace scrivel::test
