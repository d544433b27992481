#pragma once

#include "core/editor/PresetEditorModel.h"
#include "core/presets/PresetPackDocument.h"
#include "core/support/Future.h"
#include "core/transform/UnavailableReason.h"

#include <QList>
#include <functional>
#include <optional>

class QWidget;

namespace scrivel {

class APIKeyProviding;
class PresetStore;
class SettingsStore;

// What the main window needs from the rest of the application; the
// composition root fills it in.
struct MainWindowServices {
    PresetStore* store = nullptr;
    APIKeyProviding* keys = nullptr;
    // Where the window's frame is remembered.
    SettingsStore* settings = nullptr;
    PresetEditorModel::LoadModels loadModels;
    PresetEditorModel::RunTestTransform runTestTransform;
    // Why the on-device model cannot run, or nothing when it is ready.
    std::function<Future<std::optional<UnavailableReason>>()> onDeviceUnavailable;
    // The settings page shown for the sidebar's Settings entry.
    std::function<QWidget*(QWidget* parent)> settingsPage;
    // The packs offered by the pack picker; the shipped ones by default.
    std::function<QList<PresetPackDocument>()> packs;
    std::chrono::milliseconds editorDebounce{350};
    // Where settings and presets are kept, and the private key file used
    // where no keyring runs, for the About box.
    QString settingsFile;
    QString keyFile;
};

} // namespace scrivel
