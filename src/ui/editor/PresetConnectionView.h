#pragma once

#include <QObject>

class QLabel;
class QLineEdit;
class QProgressBar;
class QToolButton;
class QWidget;

namespace scrivel {

class PresetEditorModel;

// The API key and Models rows of the editor. It owns two row widgets that the
// editor places in its form, and asks before a key shared with other presets
// is removed.
class PresetConnectionView : public QObject {
    Q_OBJECT

public:
    PresetConnectionView(PresetEditorModel& model, QWidget* parent);

    // The key field with its show/hide button.
    QWidget* apiKeyRow() const { return m_apiKeyRow; }
    // The progress indicator or the failure sentence.
    QWidget* modelsRow() const { return m_modelsRow; }

    QLineEdit* keyField() const { return m_keyField; }
    QToolButton* visibilityButton() const { return m_visibility; }
    QLabel* modelsMessage() const { return m_modelsMessage; }
    QProgressBar* modelsProgress() const { return m_modelsProgress; }
    bool isKeyVisible() const { return m_isKeyVisible; }
    void setKeyVisible(bool visible);

    // Whether the Models row has anything to show.
    bool hasModelsStatus() const;

Q_SIGNALS:
    // The Models row appeared or went away.
    void modelsStatusChanged();

private:
    void render();
    void askToRemoveKey();

    PresetEditorModel& m_model;
    QWidget* m_apiKeyRow;
    QLineEdit* m_keyField;
    QToolButton* m_visibility;
    QWidget* m_modelsRow;
    QProgressBar* m_modelsProgress;
    QLabel* m_modelsMessage;
    bool m_isKeyVisible = false;
};

} // namespace scrivel
