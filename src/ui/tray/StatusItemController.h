#pragma once

#include "core/tray/StatusItemModel.h"

#include <QHash>
#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QTimer>
#include <chrono>
#include <functional>

class QAction;
class QActionGroup;
class QMenu;

namespace scrivel {

class Announcer;
class PresetStore;
class RewriteCoordinator;
class UpdaterController;

// Scrivel's item in the system tray: the icon follows the current run and the
// active preset's readiness, and its menu offers the status line, the panel,
// the presets, the settings and quitting. Where no tray is running yet (the
// desktop is still starting at login) it keeps looking and shows the icon as
// soon as one appears; the shortcut and `scrivel --toggle` work meanwhile.
class StatusItemController : public QObject {
    Q_OBJECT

public:
    struct Actions {
        // Shows the panel centred, with the shortcut hint and no sample text.
        std::function<void()> presentPanelCentred;
        // Opens the main window on its settings.
        std::function<void(UpdaterController& updater, std::function<void()> presetsChanged)>
            showSettings;
        // Turns the global shortcut off while the menu is open, on after.
        std::function<void(bool enabled)> setShortcutEnabled;
        // Shows the global shortcut on "Open Panel" and keeps it current.
        std::function<void(QAction* openPanel)> bindOpenPanelAction;
        std::function<void()> quit;
    };

    StatusItemController(RewriteCoordinator& coordinator, PresetStore& presets,
                         UpdaterController& updater, Announcer& announcer, Actions actions,
                         QObject* parent = nullptr);
    ~StatusItemController() override;

    StatusItemModel& model() { return *m_model; }
    QSystemTrayIcon& trayIcon() { return m_tray; }
    QMenu& menu() { return *m_menu; }

    // How often to look for a tray while there is none.
    void setTrayCheckInterval(std::chrono::milliseconds interval);
    // How long a menu shown by the tray host over D-Bus counts as open when
    // the host never says it closed.
    void setExportedMenuBound(std::chrono::milliseconds bound);
    static constexpr std::chrono::milliseconds defaultExportedMenuBound{5000};

    // Whether the tray host draws the menu from its D-Bus export
    // (a StatusNotifierItem) rather than Qt showing the menu itself.
    bool isMenuExported();

    // The icon of a look, drawn to read on light and dark panels alike.
    static QIcon iconFor(StatusItemModel::Look look);
    static QString iconPath(StatusItemModel::Look look);

private:
    void buildMenu();
    void renderButton();
    void renderMenu();
    void checkForTray();
    void menuOpened();
    void menuClosed();

    UpdaterController& m_updater;
    Actions m_actions;
    StatusItemModel* m_model;
    QSystemTrayIcon m_tray;
    QMenu* m_menu;
    QMenu* m_presetMenu = nullptr;
    QPointer<QActionGroup> m_presetGroup;
    QAction* m_statusLineItem = nullptr;
    QAction* m_openPanelItem = nullptr;
    QAction* m_settingsItem = nullptr;
    QAction* m_quitItem = nullptr;
    QTimer m_trayCheck;
    QTimer m_exportedMenuBound;
    bool m_trayWasAvailable = false;
};

} // namespace scrivel
