#include "ui/widgets/WindowCommandKeys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace scrivel {

namespace {

bool isEditableText(const QWidget* widget) {
    if (const auto* line = qobject_cast<const QLineEdit*>(widget))
        return !line->isReadOnly();
    if (const auto* plain = qobject_cast<const QPlainTextEdit*>(widget))
        return !plain->isReadOnly();
    if (const auto* rich = qobject_cast<const QTextEdit*>(widget))
        return !rich->isReadOnly();
    return false;
}

} // namespace

WindowCommandKeys::WindowCommandKeys(QWidget* window) : QObject(window), m_window(window) {
    // A field's claim is an event sent to the field itself; only the
    // application sees every field's, including those made later.
    qApp->installEventFilter(this);
}

WindowCommandKeys::~WindowCommandKeys() {
    qApp->removeEventFilter(this);
}

void WindowCommandKeys::add(const QKeySequence& keys) {
    if (!keys.isEmpty() && !m_keys.contains(keys))
        m_keys.append(keys);
}

bool WindowCommandKeys::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride || !watched->isWidgetType() || !m_window)
        return false;
    auto* widget = static_cast<QWidget*>(watched);
    if (widget->window() != m_window || !isEditableText(widget))
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (!m_keys.contains(QKeySequence(key->keyCombination())))
        return false;
    // Declined: the shortcut map goes on to the window's shortcut.
    event->ignore();
    return true;
}

} // namespace scrivel
