#pragma once

#include "core/tray/StatusItemModel.h"

#include <QHash>
#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QTimer>
#include <chrono>

class QAction;
class QActionGroup;
class QMenu;

namespace scrivel {

class Announcer;
class PresetStore;
class RewriteCoordinator;

// Scrivel's item in the system tray: the icon follows the current run and the
// active preset's readiness, and its menu offers the status line, the panel,
// the presets, the settings and quitting. Where no tray is running yet (the
// desktop is still starting at login) it keeps looking and shows the icon as
// soon as one appears; the shortcut and `scrivel --toggle` work meanwhile.
class StatusItemController : public QObject {
    Q_OBJECT

public:
    // What the menu's items ask for comes from the model's signals; "Quit
    // Scrivel" quits the application.
    StatusItemController(RewriteCoordinator& coordinator, PresetStore& presets,
                         Announcer& announcer, QObject* parent = nullptr);
    ~StatusItemController() override;

    StatusItemModel& model() { return *m_model; }
    QSystemTrayIcon& trayIcon() { return m_tray; }
    QMenu& menu() { return *m_menu; }
    // "Open Panel", which shows the global shortcut that does the same.
    QAction* openPanelAction() const { return m_openPanelItem; }
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
