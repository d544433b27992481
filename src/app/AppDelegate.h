#pragma once

#include "core/presets/PresetStoreProblem.h"
#include "core/selection/SelectionHandoff.h"
#include "core/selection/SelectionPreferences.h"
#include "core/settings/UpdaterController.h"
#include "core/shortcuts/HotKeyController.h"
#include "core/shortcuts/KeyboardShortcuts.h"
#include "core/shortcuts/ShortcutRecorderModel.h"
#include "core/windows/ConventionalWindowCoordinator.h"
#include "platform/linux/StatusAreaActivationPolicy.h"
#include "ui/editor/MainWindowController.h"
#include "ui/panel/FixPanelController.h"
#include "ui/settings/SettingsView.h"

#include <QObject>
#include <memory>

namespace scrivel {

class Announcer;
class Clipboard;
class DBusStatusItemExport;
class HotKeyService;
class LinuxServices;
class LoginItemService;
class SelectionDesktop;
class StatusItemController;
class StorageAlerts;

// Creates and owns the desktop app's long-lived pieces, runs the launch
// sequence (seeding the presets, the panel, the tray item, the updater, the
// global shortcut, the panel shown once at the very first launch) and
// connects the pieces: the path of a run from the shortcut to the tray is in
// connectRun().
class AppDelegate : public QObject {
    Q_OBJECT

public:
    static QString hasSeenPanelKey() { return QStringLiteral("scrivel.panel.has-seen"); }

    AppDelegate(LinuxServices& services, Clipboard& clipboard, HotKeyService& hotKeys,
                PanelWindowTraits panelTraits, QObject* parent = nullptr);
    ~AppDelegate() override;

    // Where the panel takes the selected text from and hands results back
    // to; none (the default) where the session allows neither. Set before
    // the launch.
    void setSelectionDesktop(SelectionDesktop* desktop) { m_selectionDesktop = desktop; }

    // Starts the launch sequence on the event loop and returns at once.
    void applicationDidFinishLaunching();

    // The panel, once launched.
    FixPanelController* fixPanel() const { return m_fixPanel.get(); }
    MainWindowController& mainWindow() const { return *m_mainWindow; }
    // The tray item, once launched.
    StatusItemController* statusItem() const { return m_statusItem.get(); }
    // The global shortcuts: the tray's "Open Panel" item binds to it and
    // disables it while its menu is open; the settings page records into it.
    KeyboardShortcuts& shortcuts() { return m_shortcuts; }

    // The global shortcut's action: hide a visible panel, otherwise show it
    // at the pointer.
    void togglePanel();
    // A second start of the app asks the running one to come forward.
    void activate();

Q_SIGNALS:
    void launched();

private:
    void launch();
    void createFixPanel();
    void connectSelection();
    void createStatusItem();
    void setGlobalShortcutEnabled(bool enabled);
    void showShortcutHint();
    void connectRun();
    void followChanges();
    void showPanelAtFirstLaunch();
    void createStorageAlerts(const std::optional<PresetStoreProblem>& presetProblem);
    void openMainWindow(bool selectSettings);
    void prewarmActivePreset();
    // The main window's settings page, over this session's login items and
    // the updater, with the recorder of the global shortcut.
    SettingsView* makeSettingsView(QWidget* parent);
    // What the shortcut recorder asks before it stores a combination: the
    // title of an item in any of the app's menus that already uses it.
    static ShortcutRecorderModel::MenuItemLookup menuItemLookup();

    LinuxServices& m_services;
    Clipboard& m_clipboard;
    PanelWindowTraits m_panelTraits;
    KeyboardShortcuts m_shortcuts;
    UpdaterController m_updater;
    std::unique_ptr<LoginItemService> m_loginItems;
    SettingsView::RecorderFactory m_shortcutRecorder;
    std::unique_ptr<Announcer> m_announcer;
    std::unique_ptr<FixPanelController> m_fixPanel;
    SelectionDesktop* m_selectionDesktop = nullptr;
    std::unique_ptr<SelectionPreferences> m_selectionPreferences;
    std::unique_ptr<SelectionHandoff> m_selection;
    std::unique_ptr<StatusItemController> m_statusItem;
    std::unique_ptr<DBusStatusItemExport> m_statusItemExport;
    std::unique_ptr<HotKeyController> m_hotKey;
    std::unique_ptr<StorageAlerts> m_storageAlerts;
    // While the main window is open Scrivel is an ordinary app; the windows
    // outlive their sessions with the coordinator.
    StatusAreaActivationPolicy m_activationPolicy;
    ConventionalWindowCoordinator m_windows{m_activationPolicy};
    std::unique_ptr<MainWindowController> m_mainWindow;
};

} // namespace scrivel
