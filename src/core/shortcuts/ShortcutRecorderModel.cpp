#include "core/shortcuts/ShortcutRecorderModel.h"

#include "core/shortcuts/KeyboardShortcuts.h"
#include "core/shortcuts/ShortcutKey.h"

namespace scrivel {

namespace {

bool isModifierKey(int qtKey) {
    switch (qtKey) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
        return true;
    default:
        return false;
    }
}

bool isFunctionKey(int qtKey) {
    return qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F20;
}

} // namespace

ShortcutRecorderModel::ShortcutRecorderModel(KeyboardShortcuts& shortcuts, ShortcutName name,
                                             MenuItemLookup menuItemUsing, TakenCheck isTaken,
                                             QObject* parent)
    : QObject(parent), m_shortcuts(shortcuts), m_name(std::move(name)),
      m_menuItemUsing(std::move(menuItemUsing)), m_isTaken(std::move(isTaken)) {
    connect(&m_shortcuts, &KeyboardShortcuts::shortcutChanged, this,
            [this](const QString& rawValue) {
                if (rawValue == m_name.rawValue)
                    Q_EMIT shortcutChanged();
            });
}

ShortcutRecorderModel::~ShortcutRecorderModel() {
    // A recorder that goes away mid-recording must not leave the hot keys
    // silenced.
    stopRecording();
}

std::optional<Shortcut> ShortcutRecorderModel::shortcut() const {
    return m_shortcuts.shortcut(m_name);
}

QString ShortcutRecorderModel::text() const {
    return m_shortcuts.displayText(m_name).value_or(QString());
}

void ShortcutRecorderModel::startRecording() {
    if (m_recording)
        return;
    m_recording = true;
    m_shortcuts.setRecorderActive(true);
    Q_EMIT recordingChanged(true);
}

void ShortcutRecorderModel::stopRecording() {
    if (!m_recording)
        return;
    m_recording = false;
    m_shortcuts.setRecorderActive(false);
    Q_EMIT recordingChanged(false);
}

ShortcutRecorderModel::Outcome
ShortcutRecorderModel::handleKeyPress(int qtKey, Qt::KeyboardModifiers modifiers) {
    m_pending.reset();
    m_menuItemTitle.clear();
    if (!m_recording || isModifierKey(qtKey))
        return Outcome::ignored;

    // Caps Lock never reaches Qt as a modifier; the keypad flag is not one
    // the user holds.
    const Qt::KeyboardModifiers held =
        modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier | Qt::MetaModifier);
    if (held == Qt::NoModifier) {
        switch (qtKey) {
        case Qt::Key_Escape:
            stopRecording();
            return Outcome::cancelled;
        case Qt::Key_Tab:
            stopRecording();
            return Outcome::focusMovedOn;
        case Qt::Key_Delete:
        case Qt::Key_Backspace:
            clear();
            return Outcome::cleared;
        default:
            break;
        }
    }

    const auto candidate = Shortcut::fromQtKey(qtKey, modifiers);
    if (!candidate)
        return Outcome::ignored;
    if ((held & ~Qt::ShiftModifier) == Qt::NoModifier && !isFunctionKey(qtKey))
        return Outcome::needsModifier;

    m_pending = candidate;
    if (m_menuItemUsing) {
        if (const auto title = m_menuItemUsing(*candidate)) {
            m_menuItemTitle = *title;
            return Outcome::usedByMenuItem;
        }
    }
    // Our own registrations are never "taken": re-recording the current
    // shortcut just stores it again.
    if (m_isTaken && !m_shortcuts.isRegistered(*candidate) && m_isTaken(*candidate))
        return Outcome::usedBySystem;
    m_pending.reset();
    store(*candidate);
    return Outcome::stored;
}

void ShortcutRecorderModel::clear() {
    m_shortcuts.setShortcut(std::nullopt, m_name);
    stopRecording();
}

void ShortcutRecorderModel::forceStore(const Shortcut& shortcut) {
    m_pending.reset();
    store(shortcut);
}

void ShortcutRecorderModel::store(const Shortcut& shortcut) {
    m_shortcuts.setShortcut(shortcut, m_name);
    stopRecording();
}

} // namespace scrivel
