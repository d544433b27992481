#pragma once

#include <QObject>

namespace scrivel {

class KeyboardShortcuts;

// Turns the release of the rewrite shortcut into togglePanelRequested, and
// marks, by living, that the panel toggle is attached. The signal is never
// emitted inside the hot-key handler: it is queued on the event loop, so the
// handler returns at once.
class HotKeyController : public QObject {
    Q_OBJECT

public:
    explicit HotKeyController(KeyboardShortcuts& shortcuts, QObject* parent = nullptr);

Q_SIGNALS:
    void togglePanelRequested();
};

} // namespace scrivel
