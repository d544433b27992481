#pragma once

#include "core/shortcuts/ShortcutRecorderModel.h"

#include <QLineEdit>

class QAction;

namespace scrivel {

class KeyboardShortcuts;

// The shortcut field of the settings screen: shows the current shortcut with
// a clear button; clicking or tabbing into it records the next combination
// pressed. Escape and Tab end recording, Delete and Backspace clear. While it
// records, the global shortcut stays silent.
class ShortcutRecorder : public QLineEdit {
    Q_OBJECT

public:
    ShortcutRecorder(KeyboardShortcuts& shortcuts, const ShortcutName& name,
                     ShortcutRecorderModel::MenuItemLookup menuItemUsing,
                     QWidget* parent = nullptr);

    ShortcutRecorderModel& model() { return m_model; }
    QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void handle(QKeyEvent* event);
    void render();
    void showMenuItemAlert(const QString& title);
    void showSystemAlert(const Shortcut& shortcut);

    ShortcutRecorderModel m_model;
    QAction* m_clearAction;
    bool m_restyling = false;
};

} // namespace scrivel
