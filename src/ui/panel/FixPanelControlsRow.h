#pragma once

#include "core/panel/FixPanelControlsState.h"

#include <QWidget>

class QComboBox;
class QLabel;
class QPushButton;

namespace scrivel {

class BusyIndicator;
class FixPanelModel;
class PresetStore;

// The row under the panel's text: the preset picker and the buttons of the
// current stage ("Open Presets…", "Revert", "Run", or progress with "Cancel").
class FixPanelControlsRow : public QWidget {
    Q_OBJECT

public:
    FixPanelControlsRow(FixPanelModel& model, PresetStore& presets, QWidget* parent = nullptr);

    void apply(const FixPanelControlsState& state);

    QComboBox* picker() const { return m_picker; }
    QPushButton* runButton() const { return m_run; }

private:
    void rebuildPicker();
    void selectActivePreset();

    FixPanelModel& m_model;
    PresetStore& m_presets;
    QComboBox* m_picker;
    QPushButton* m_openPresets;
    QPushButton* m_revert;
    QPushButton* m_run;
    BusyIndicator* m_busy;
    QLabel* m_running;
    QPushButton* m_cancel;
};

} // namespace scrivel
