#pragma once

#include <QObject>
#include <functional>

namespace scrivel {

class KeyboardShortcuts;

// Attaches the panel toggle to the release of the rewrite shortcut and marks,
// by living, that it is attached. The toggle never runs inside the hot-key
// handler: it is queued on the event loop, so the handler returns at once.
class HotKeyController : public QObject {
    Q_OBJECT

public:
    HotKeyController(KeyboardShortcuts& shortcuts, std::function<void()> togglePanel,
                     QObject* parent = nullptr);

private:
    std::function<void()> m_togglePanel;
};

} // namespace scrivel
