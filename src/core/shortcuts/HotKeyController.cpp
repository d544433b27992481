#include "core/shortcuts/HotKeyController.h"

#include "core/shortcuts/KeyboardShortcuts.h"

#include <QPointer>

namespace scrivel {

HotKeyController::HotKeyController(KeyboardShortcuts& shortcuts, std::function<void()> togglePanel,
                                   QObject* parent)
    : QObject(parent), m_togglePanel(std::move(togglePanel)) {
    // Actions are never detached, so the action must outlive this object
    // harmlessly: once the controller is gone it does nothing.
    shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [self = QPointer(this)] {
        if (!self)
            return;
        QMetaObject::invokeMethod(
            self.data(),
            [self] {
                if (self && self->m_togglePanel)
                    self->m_togglePanel();
            },
            Qt::QueuedConnection);
    });
}

} // namespace scrivel
