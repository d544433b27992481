#include "core/windows/WindowSession.h"

#include "core/windows/ConventionalWindowCoordinator.h"

#include <QEvent>

namespace scrivel {

WindowSession::WindowSession(QObject* window, ConventionalWindowCoordinator& coordinator,
                             CloseHandler onClose)
    : QObject(window), m_window(window), m_identity(window), m_coordinator(coordinator),
      m_onClose(std::move(onClose)) {
    window->installEventFilter(this);
}

WindowSession::~WindowSession() {
    // The window is being destroyed with us; it closes without a callback.
    if (m_coordinator.tracker().contains(m_identity))
        m_coordinator.untrack(m_identity);
}

bool WindowSession::eventFilter(QObject* watched, QEvent* event) {
    // The window manager's own hiding arrives as a spontaneous event; only
    // our showing and closing change whether the window is open.
    if (watched == m_window && !event->spontaneous()) {
        if (event->type() == QEvent::Show)
            m_coordinator.track(m_identity);
        else if (event->type() == QEvent::Hide)
            windowWillClose();
    }
    return QObject::eventFilter(watched, event);
}

void WindowSession::windowWillClose() {
    if (!m_coordinator.tracker().contains(m_identity))
        return;
    m_coordinator.untrack(m_identity);
    if (m_onClose && m_window)
        m_onClose(m_window);
}

} // namespace scrivel
