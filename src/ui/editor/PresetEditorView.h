#pragma once

#include "core/transform/UnavailableReason.h"

#include <QKeySequence>
#include <QWidget>
#include <functional>
#include <optional>

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace scrivel {

class InstructionsEditor;
class LinkLabel;
class PresetConnectionView;
class PresetEditorModel;

// The form that edits one preset through its editor model.
class PresetEditorView : public QWidget {
    Q_OBJECT

public:
    PresetEditorView(PresetEditorModel& model, std::function<void()> onUse,
                     QWidget* parent = nullptr);

    // Whether this preset is the one the hotkey runs; hides "Use Preset".
    void setActive(bool active);
    // The on-device model's readiness for the footer: nothing when ready.
    void setOnDeviceUnavailable(const std::optional<UnavailableReason>& reason);

    PresetEditorModel& model() const { return m_model; }
    QLineEdit* nameField() const { return m_name; }
    QPushButton* useButton() const { return m_use; }
    QComboBox* providerPicker() const { return m_provider; }
    QLineEdit* baseURLField() const { return m_baseURL; }
    bool isBaseURLRowVisible() const;
    bool isModelsRowVisible() const;
    bool isAPIKeyRowVisible() const;
    PresetConnectionView* connectionView() const { return m_connection; }
    QComboBox* modelPicker() const { return m_modelPicker; }
    QPushButton* testButton() const { return m_test; }
    // Shown while a test runs.
    QPushButton* testCancelButton() const { return m_cancelTest; }
    QLabel* testStatus() const { return m_testStatus; }
    QLabel* footer() const;
    InstructionsEditor* instructions() const { return m_instructions; }

private:
    void render();
    void renderModels();

    PresetEditorModel& m_model;
    std::function<void()> m_onUse;
    bool m_isActive = false;
    std::optional<UnavailableReason> m_onDeviceUnavailable;

    QFormLayout* m_presetForm;
    QFormLayout* m_modelForm;
    QLineEdit* m_name;
    QPushButton* m_use;
    QWidget* m_useRow;
    QComboBox* m_provider;
    QLineEdit* m_baseURL;
    PresetConnectionView* m_connection;
    QComboBox* m_modelPicker;
    QPushButton* m_test;
    QWidget* m_testRow;
    QProgressBar* m_testProgress;
    QLabel* m_testProgressLabel;
    QPushButton* m_cancelTest;
    QLabel* m_testStatus;
    LinkLabel* m_footer;
    InstructionsEditor* m_instructions;
};

} // namespace scrivel
