#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

namespace scrivel {

class ConventionalWindowCoordinator;

// Ties one conventional window to the window coordinator for as long as the
// window lives: showing it tracks it, closing it (hidden by the program or by
// its close button, or destroyed) untracks it and then calls onClose. A
// window the window manager hides (minimised, on another workspace) stays
// open. The window may be shown and closed any number of times.
class WindowSession : public QObject {
    Q_OBJECT

public:
    using CloseHandler = std::function<void(QObject* window)>;

    // Becomes a child of the window; the window needs to be shown (or
    // tracked) for a close to count.
    WindowSession(QObject* window, ConventionalWindowCoordinator& coordinator,
                  CloseHandler onClose = {});
    ~WindowSession() override;

    QObject* window() const { return m_window; }
    // The window closed; does nothing when it is not tracked.
    void windowWillClose();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QObject> m_window;
    const QObject* m_identity;
    ConventionalWindowCoordinator& m_coordinator;
    CloseHandler m_onClose;
};

} // namespace scrivel
