#include "support/X11TestClient.h"

#include <cstdlib>
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

} // namespace scrivel::test
