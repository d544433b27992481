#include "core/shortcuts/HotKeyController.h"

#include "core/shortcuts/KeyboardShortcuts.h"

#include <QPointer>

namespace scrivel {

HotKeyController::HotKeyController(KeyboardShortcuts& shortcuts, QObject* parent)
    : QObject(parent) {
    // Actions are never detached, so the action must outlive this object
    // harmlessly: once the controller is gone it does nothing.
    shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [self = QPointer(this)] {
        if (!self)
            return;
        QMetaObject::invokeMethod(
            self.data(), [self] { Q_EMIT self->togglePanelRequested(); }, Qt::QueuedConnection);
    });
}

} // namespace scrivel
