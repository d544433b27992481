#pragma once

#include "core/panel/FixPanelModel.h"
#include "core/settings/SettingsStatus.h"
#include "core/shortcuts/GlobalShortcutStatus.h"

#include <optional>

namespace scrivel {

// What the panel shows for the model's current state: which controls exist,
// which are enabled, and the outcome line. The panel's widgets only apply it.
struct FixPanelControlsState {
    bool editorEnabled = true;
    // While a reply streams in, the end of the text stays in view.
    bool pinsScrollToEnd = false;
    bool pickerEnabled = true;
    std::optional<SettingsStatus> outcome;
    bool showsOpenPresets = false;
    bool showsRevert = false;
    bool showsRun = true;
    bool runEnabled = false;
    // The progress indicator, "Running…" and "Cancel".
    bool showsProgress = false;

    static FixPanelControlsState of(const FixPanelModel& model);
    static FixPanelControlsState of(const PanelStage& stage, bool holdsOriginalText, bool canRun);

    friend bool operator==(const FixPanelControlsState&, const FixPanelControlsState&) = default;
};

// The hint under the controls, naming the shortcut that opens the panel
// anywhere; nothing when there is no shortcut.
std::optional<QString> shortcutHintText(const std::optional<QString>& displayedShortcut);
// The same hint for how this session delivers the shortcut: the stored
// shortcut where keys are grabbed, the desktop's keys where its portal binds
// them, and the command to bind where there is no global shortcut at all.
// Nothing while the desktop is still being asked.
std::optional<QString> shortcutHintText(const GlobalShortcutStatus& delivery,
                                        const std::optional<QString>& storedShortcut);

} // namespace scrivel
