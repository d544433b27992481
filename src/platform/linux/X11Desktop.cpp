#include "platform/linux/X11Desktop.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace scrivel::X11Desktop {

namespace {

xcb_connection_t* connection() {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t* c, const char* name) {
    xcb_intern_atom_reply_t* reply =
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(strlen(name)), name), nullptr);
    const xcb_atom_t result = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return result;
}

} // namespace

bool compositorRunning() {
    xcb_connection_t* c = connection();
    if (!c)
        return false;
    // The default screen's number is not exposed; a compositor on any screen
    // of this display counts.
    const int screens = xcb_setup_roots_length(xcb_get_setup(c));
    for (int n = 0; n < screens; ++n) {
        const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(n);
        const xcb_atom_t selection = atom(c, name.constData());
        if (selection == XCB_ATOM_NONE)
            continue;
        xcb_get_selection_owner_reply_t* owner =
            xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, selection), nullptr);
        const bool owned = owner && owner->owner != XCB_NONE;
        std::free(owner);
        if (owned)
            return true;
    }
    return false;
}

void markAsFloatingPanel(quintptr windowId) {
    xcb_connection_t* c = connection();
    if (!c || !windowId)
        return;
    const auto id = xcb_window_t(windowId);
    const uint32_t allDesktops = 0xFFFFFFFF;
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, id, atom(c, "_NET_WM_DESKTOP"), XCB_ATOM_CARDINAL,
                        32, 1, &allDesktops);
    // Qt keeps states it does not manage itself when it maps the window.
    const std::vector<xcb_atom_t> states = {atom(c, "_NET_WM_STATE_SKIP_TASKBAR"),
                                            atom(c, "_NET_WM_STATE_SKIP_PAGER"),
                                            atom(c, "_NET_WM_STATE_STICKY")};
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, id, atom(c, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32,
                        uint32_t(states.size()), states.data());
    xcb_flush(c);
}

} // namespace scrivel::X11Desktop
