#include "core/panel/FixPanelControlsState.h"

#include <QCoreApplication>

namespace scrivel {

namespace {

// The texts of this file, under the context they have always had.
struct PanelText {
    Q_DECLARE_TR_FUNCTIONS(FixPanelView)
};

} // namespace

FixPanelControlsState FixPanelControlsState::of(const FixPanelModel& model) {
    return of(model.stage(), model.originalText().has_value(), model.canRun());
}

FixPanelControlsState FixPanelControlsState::of(const PanelStage& stage, bool holdsOriginalText,
                                                bool canRun) {
    using Kind = PanelStage::Kind;
    FixPanelControlsState state;
    const bool working = stage.kind == Kind::working;
    state.editorEnabled = !working;
    state.pinsScrollToEnd = working;
    state.pickerEnabled = !working;
    state.showsRun = !working;
    state.runEnabled = !working && canRun;
    state.showsProgress = working;
    switch (stage.kind) {
    case Kind::copied:
        state.outcome =
            SettingsStatus::success(PanelText::tr("Copied. Press Ctrl+V to replace your text."));
        break;
    case Kind::alreadyClean:
        state.outcome =
            SettingsStatus::neutral(PanelText::tr("No change needed. Nothing was copied."));
        break;
    case Kind::failure:
        state.outcome = SettingsStatus::error(stage.message);
        state.showsOpenPresets = stage.needsAPIKey;
        break;
    case Kind::input:
    case Kind::working:
        break;
    }
    state.showsRevert =
        holdsOriginalText && (stage.kind == Kind::copied || stage.kind == Kind::alreadyClean);
    return state;
}

std::optional<QString> shortcutHintText(const std::optional<QString>& displayedShortcut) {
    if (!displayedShortcut || displayedShortcut->isEmpty())
        return std::nullopt;
    return PanelText::tr("Press %1 anywhere to open Scrivel.").arg(*displayedShortcut);
}

std::optional<QString> shortcutHintText(const GlobalShortcutStatus& delivery,
                                        const std::optional<QString>& storedShortcut) {
    using Kind = GlobalShortcutStatus::Kind;
    switch (delivery.kind) {
    case Kind::keyGrabs:
        return shortcutHintText(storedShortcut);
    case Kind::desktopPending:
        return std::nullopt;
    case Kind::desktopBound:
        if (!delivery.triggerDescription.isEmpty())
            return shortcutHintText(delivery.triggerDescription);
        return PanelText::tr(
            "Choose keys for Scrivel under Settings › Keyboard shortcut to open it from "
            "anywhere.");
    case Kind::unavailable:
        break;
    }
    return PanelText::tr(
               "To open Scrivel from anywhere, bind “%1” to a shortcut in your desktop’s keyboard "
               "settings.")
        .arg(GlobalShortcutStatus::toggleCommand());
}

} // namespace scrivel
