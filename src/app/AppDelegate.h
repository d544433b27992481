#pragma once

#include "panel/FixPanelController.h"

#include <QObject>
#include <functional>
#include <memory>

namespace scrivel {

class Clipboard;
class LinuxServices;
class WakeObserver;

// Creates and owns the desktop app's long-lived pieces and runs the launch
// sequence: on-device availability, seeding the presets, the panel, the wake
// observer, prewarming, and the panel shown once at the very first launch.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    static QString hasSeenPanelKey() { return QStringLiteral("scrivel.panel.has-seen"); }

    AppDelegate(LinuxServices& services, Clipboard& clipboard, WakeObserver* wakeObserver,
                PanelWindowTraits panelTraits, QObject* parent = nullptr);
    ~AppDelegate() override;

    // Starts the launch sequence on the event loop and returns at once.
    void applicationDidFinishLaunching();
    bool hasLaunched() const { return m_fixPanel != nullptr; }

    FixPanelController* fixPanel() const { return m_fixPanel.get(); }

    // The global shortcut's action: hide a visible panel, otherwise show it
    // at the pointer.
    void togglePanel();
    // A second start of the app asks the running one to come forward.
    void activate();

    // How the main window is opened; until one is wired, the panel stands in.
    void setOpenMainWindow(std::function<void(bool selectSettings)> open) {
        m_openMainWindow = std::move(open);
    }

    void prewarmActivePreset();

Q_SIGNALS:
    void launched();

private:
    void launch();
    void createFixPanel();
    void observeWake();
    void showPanelAtFirstLaunch();
    void openMainWindow(bool selectSettings);

    LinuxServices& m_services;
    Clipboard& m_clipboard;
    WakeObserver* m_wakeObserver;
    PanelWindowTraits m_panelTraits;
    std::unique_ptr<FixPanelController> m_fixPanel;
    std::function<void(bool)> m_openMainWindow;
};

} // namespace scrivel
