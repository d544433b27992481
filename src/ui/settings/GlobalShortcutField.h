#pragma once

#include <QWidget>
#include <functional>

class QLabel;
class QPushButton;

namespace scrivel {

class KeyboardShortcuts;

// The settings page's "Keyboard shortcut" control, as this session delivers
// the shortcut: the recorder where keys are grabbed; where the desktop's
// portal binds it, the keys the desktop reports and "Change…", which opens
// the desktop's own dialog; where there is no global shortcut, the command
// to bind in the desktop's keyboard settings. Follows changes of the status.
class GlobalShortcutField : public QWidget {
    Q_OBJECT

public:
    using RecorderFactory = std::function<QWidget*(QWidget* parent)>;

    GlobalShortcutField(KeyboardShortcuts& shortcuts, RecorderFactory recorder,
                        QWidget* parent = nullptr);

    // The recorder, while it is shown.
    QWidget* recorder() const { return m_recorder; }
    QLabel* statusText() const { return m_text; }
    QPushButton* changeButton() const { return m_change; }

private:
    void render();

    KeyboardShortcuts& m_shortcuts;
    RecorderFactory m_makeRecorder;
    QWidget* m_recorder = nullptr;
    QLabel* m_text;
    QPushButton* m_change;
};

} // namespace scrivel
