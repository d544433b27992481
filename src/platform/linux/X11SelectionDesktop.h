#pragma once

#include "core/selection/SelectionDesktop.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <memory>
#include <xcb/xcb.h>

class QSocketNotifier;
struct _XCBKeySymbols;

namespace scrivel {

// The selection flow on X11, on a connection of its own (Qt's stays free of
// our waits):
//
// - the scene: the input focus (or _NET_ACTIVE_WINDOW when the focus is
//   nowhere) and the owner of PRIMARY, each walked up to its top-level
//   window with xcb_query_tree and to the client window that carries
//   WM_STATE;
// - reading: ConvertSelection to UTF8_STRING (then STRING) into a property
//   of a fresh, unmapped window, read when SelectionNotify arrives,
//   including INCR transfers, which large selections use; reading stops at
//   the byte limit, and a cancelled read destroys its window so a late
//   answer lands nowhere;
// - handing back: _NET_ACTIVE_WINDOW (as a pager asks, which window
//   managers honour) or, without a window manager, SetInputFocus; the keys
//   go through XTEST.
class X11SelectionDesktop : public QObject, public SelectionDesktop {
    Q_OBJECT

public:
    // The adapter where the flow can work: Qt on X11 in an X11 session with
    // XTEST. Nothing on Wayland (also under XWayland, which shows other
    // applications' windows to no X client) and on other platforms.
    static std::unique_ptr<X11SelectionDesktop> forSession(QObject* parent = nullptr);

    // Connects to the display (the default one for an empty name).
    explicit X11SelectionDesktop(const QByteArray& displayName = {}, QObject* parent = nullptr);
    ~X11SelectionDesktop() override;

    bool isConnected() const;
    bool hasXTest() const { return m_hasXTest; }

    SelectionScene scene() override;
    Future<PrimarySelection> readPrimary(qsizetype byteLimit) override;
    bool isAlive(const DesktopWindow& window) override;
    QStringList windowClass(const DesktopWindow& window) override;
    void activate(const DesktopWindow& window) override;
    bool hasFocus(const DesktopWindow& window) override;
    void typePaste(PasteKeys keys) override;

private:
    struct Transfer {
        Promise<PrimarySelection> promise;
        xcb_atom_t target = XCB_ATOM_NONE;
        qsizetype byteLimit = 0;
        bool incremental = false;
        QByteArray bytes;
    };

    void internAtoms();
    std::optional<DesktopWindow> describe(xcb_window_t window);
    // The window and its ancestors up to the one just below the root.
    QList<xcb_window_t> ancestry(xcb_window_t window);
    xcb_window_t topLevelOf(xcb_window_t window);
    bool hasWmState(xcb_window_t window);
    QStringList classOf(xcb_window_t window);
    std::optional<xcb_window_t> activeWindow();
    bool supportsActiveWindowRequests();

    void convert(xcb_window_t requestor, xcb_atom_t target);
    void readEvents();
    void scheduleRead();
    void onSelectionNotify(const xcb_selection_notify_event_t& event);
    void onPropertyNotify(const xcb_property_notify_event_t& event);
    void finish(xcb_window_t requestor, const PrimarySelection& result);
    void drop(xcb_window_t requestor);
    PrimarySelection decoded(const Transfer& transfer, xcb_atom_t type) const;

    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    uint32_t m_resourceMask = 0;
    bool m_hasXTest = false;
    _XCBKeySymbols* m_keySymbols = nullptr;
    std::unique_ptr<QSocketNotifier> m_notifier;
    bool m_readScheduled = false;

    xcb_atom_t m_utf8String = XCB_ATOM_NONE;
    xcb_atom_t m_incr = XCB_ATOM_NONE;
    xcb_atom_t m_wmState = XCB_ATOM_NONE;
    xcb_atom_t m_netActiveWindow = XCB_ATOM_NONE;
    xcb_atom_t m_netSupported = XCB_ATOM_NONE;
    xcb_atom_t m_property = XCB_ATOM_NONE;

    // Keyed by each read's own requestor window.
    QHash<xcb_window_t, Transfer> m_transfers;
};

} // namespace scrivel
