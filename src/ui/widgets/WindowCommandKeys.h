#pragma once

#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QPointer>

class QWidget;

namespace scrivel {

// Lets a window's command keys reach their commands from inside its text
// fields. Qt gives a focused field the first claim on the keys it edits
// with, and on X11 those include Ctrl+U (clear the line) and Ctrl+E (go to
// its end): "Use Preset" and "Export Presets…" never fired from a field, and
// Ctrl+U cleared the field (and saved the cleared name, or removed the key)
// instead. For the keys given here, a field's claim is declined so that the
// window's shortcut fires. The fields keep every other key, including the
// edit commands they carry out themselves (Ctrl+C, Ctrl+Z, …), and
// read-only fields such as the shortcut recorder keep all of them.
class WindowCommandKeys : public QObject {
    Q_OBJECT

public:
    explicit WindowCommandKeys(QWidget* window);
    ~WindowCommandKeys() override;

    void add(const QKeySequence& keys);
    bool contains(const QKeySequence& keys) const { return m_keys.contains(keys); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QWidget> m_window;
    QList<QKeySequence> m_keys;
};

} // namespace scrivel
