#pragma once

#include "core/shortcuts/Shortcut.h"
#include "core/shortcuts/ShortcutName.h"

#include <QObject>
#include <functional>
#include <optional>

namespace scrivel {

class KeyboardShortcuts;

// The rules of the shortcut recorder on the settings screen: which key
// presses end recording, clear the shortcut, are refused or are stored.
// While recording, the component's hot keys stay silent.
class ShortcutRecorderModel : public QObject {
    Q_OBJECT

public:
    // The title of the application's own menu item that uses the shortcut,
    // if any (supplied by the composition root, which knows the menus).
    using MenuItemLookup = std::function<std::optional<QString>(const Shortcut&)>;
    // Whether another application holds the shortcut.
    using TakenCheck = std::function<bool(const Shortcut&)>;

    enum class Outcome {
        // Nothing happens; recording goes on (a lone modifier, a key that
        // cannot be a shortcut).
        ignored,
        // A letter, digit or the like without Ctrl, Alt or Meta: refused, as
        // it would swallow ordinary typing everywhere.
        needsModifier,
        // Escape: recording ends, the shortcut stays.
        cancelled,
        // Tab: recording ends and the focus moves on.
        focusMovedOn,
        // Delete or Backspace: the shortcut is removed.
        cleared,
        // One of the application's menu items uses it; see menuItemTitle().
        usedByMenuItem,
        // Another application holds it; forceStore(pending()) stores it anyway.
        usedBySystem,
        // Stored with setShortcut; recording ends.
        stored,
    };

    ShortcutRecorderModel(KeyboardShortcuts& shortcuts, ShortcutName name,
                          MenuItemLookup menuItemUsing, TakenCheck isTaken,
                          QObject* parent = nullptr);
    ~ShortcutRecorderModel() override;

    const ShortcutName& name() const { return m_name; }
    std::optional<Shortcut> shortcut() const;
    // The shortcut's displayed form, empty when there is none.
    QString text() const;

    bool isRecording() const { return m_recording; }
    void startRecording();
    void stopRecording();

    // One key press while recording (Qt key and modifiers of the event).
    Outcome handleKeyPress(int qtKey, Qt::KeyboardModifiers modifiers);
    // The combination the last refusal was about.
    const std::optional<Shortcut>& pending() const { return m_pending; }
    const QString& menuItemTitle() const { return m_menuItemTitle; }

    // The clear button; also what Delete and Backspace do.
    void clear();
    // "Use Anyway" in the alert about a combination another application
    // holds.
    void forceStore(const Shortcut& shortcut);

Q_SIGNALS:
    void recordingChanged(bool recording);
    // The stored shortcut (and so text()) changed.
    void shortcutChanged();

private:
    void store(const Shortcut& shortcut);

    KeyboardShortcuts& m_shortcuts;
    ShortcutName m_name;
    MenuItemLookup m_menuItemUsing;
    TakenCheck m_isTaken;
    bool m_recording = false;
    std::optional<Shortcut> m_pending;
    QString m_menuItemTitle;
};

} // namespace scrivel
