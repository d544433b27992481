#pragma once

#include "core/support/TextSnapshot.h"

#include <QElapsedTimer>
#include <QList>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <optional>

class QAction;
class QLabel;
class QSpacerItem;

namespace scrivel {

class FixPanelControlsRow;
class FixPanelModel;
class PanelTextEditor;
class PresetStore;
class SettingsStatusLabel;

// The panel's content: the text field with its icon, a divider, the outcome
// of the last run, the controls row and the shortcut hint. It shows the model
// and forwards what the user does to it; Escape is left to its owner
// (exitRequested).
class FixPanelView : public QWidget {
    Q_OBJECT

public:
    FixPanelView(FixPanelModel& model, PresetStore& presets, QWidget* parent = nullptr);

    // The hint's sentence about the global shortcut, or nothing.
    void setShortcutHint(const std::optional<QString>& shortcutHint);
    // Shows the model's newest text at once instead of at the next frame.
    void flushText();
    // Selects the whole text, so that typing or pasting replaces it.
    void selectAllText();

    PanelTextEditor* editor() const { return m_editor; }
    FixPanelControlsRow* controls() const { return m_controls; }
    SettingsStatusLabel* outcome() const { return m_outcome; }
    QLabel* hint() const { return m_hint; }
    const QList<QAction*>& presetKeys() const { return m_presetKeys; }

Q_SIGNALS:
    // Escape: cancel a run, or else hide the panel.
    void exitRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void refreshShortcutHint();
    void onModelTextReplaced();
    void showModelText();
    void onEditorTextChanged();
    void applyState();
    void rebuildPresetKeys();
    void focusText();

    FixPanelModel& m_model;
    PresetStore& m_presets;
    std::optional<QString> m_shortcutHint;

    PanelTextEditor* m_editor;
    SettingsStatusLabel* m_outcome;
    FixPanelControlsRow* m_controls;
    QLabel* m_hint;
    QList<QAction*> m_presetKeys;
    QPixmap m_icon;
    QSpacerItem* m_iconSpace;

    // A streamed reply changes the text thousands of times; the editor is
    // brought up to date at most once a frame.
    QTimer m_frameTimer;
    bool m_textPending = false;
    TextSnapshot m_shownText;
    // Set while the field is given the model's text: the field's own change
    // signal is then not a user's edit.
    bool m_applyingModelText = false;
};

} // namespace scrivel
