#pragma once

#include <QtGlobal>

namespace scrivel {

// What the X11 desktop offers a floating window. Both do nothing useful on
// other platforms (Wayland, offscreen): no compositor is assumed and no hints
// are set.
namespace X11Desktop {

// Whether a compositing manager runs (it owns the _NET_WM_CM_S<n> selection),
// so translucent windows are blended instead of shown on black.
bool compositorRunning();

// Asks the window manager to show the window on every desktop and to keep it
// out of the taskbar and the pager. Call before the window is first shown.
void markAsFloatingPanel(quintptr windowId);

} // namespace X11Desktop

} // namespace scrivel
