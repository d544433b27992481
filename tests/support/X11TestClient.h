#pragma once

#include <QString>
#include <xcb/xcb.h>

namespace scrivel::test {

// A separate X client, as another application would be: it can hold a key
// grab or a selection of its own, and asks the server who holds one.
class X11TestClient {
public:
    // Connects to $DISPLAY; isConnected() says whether that worked.
    X11TestClient();
    ~X11TestClient();
    X11TestClient(const X11TestClient&) = delete;
    X11TestClient& operator=(const X11TestClient&) = delete;

    bool isConnected() const;
    // Grabs the key of the keysym with exactly these X modifiers on the root
    // window; false when the server refuses (another client holds it).
    bool grab(xcb_keysym_t keysym, uint16_t modifiers);
    // Whether another client holds the combination now (our trial grab is
    // refused; a granted trial grab is released at once).
    bool isHeldElsewhere(xcb_keysym_t keysym, uint16_t modifiers);
    // The window that owns the named selection ("PRIMARY", "CLIPBOARD") now,
    // as the server says without asking the owner; XCB_WINDOW_NONE if none.
    xcb_window_t selectionOwner(const char* selection);
    // Takes the named selection with a window of its own, which answers no
    // request: once it owns the selection no more, another client took it.
    bool takeSelection(const char* selection);
    bool ownsSelection(const char* selection) {
        return m_window != XCB_WINDOW_NONE && selectionOwner(selection) == m_window;
    }

private:
    bool tryGrab(xcb_keysym_t keysym, uint16_t modifiers, bool keep);
    xcb_atom_t atom(const char* name);

    xcb_connection_t* m_connection;
    xcb_window_t m_window = XCB_WINDOW_NONE;
};

} // namespace scrivel::test
