#pragma once

#include <QObject>
#include <QString>

namespace scrivel {

class AppDelegate;

// Publishes what a user would see of the panel and the global shortcut on
// the session bus at /com/scrivel/State (interface com.scrivel.State), for
// scripts, tests and assistive tools where no window list shows it (Wayland
// hides other clients' windows).
class AppStateExport : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.scrivel.State")
    Q_PROPERTY(bool PanelVisible READ panelVisible)
    Q_PROPERTY(QString ShortcutDelivery READ shortcutDelivery)
    Q_PROPERTY(QString ShortcutText READ shortcutText)
    Q_PROPERTY(QString ShortcutHint READ shortcutHint)
    Q_PROPERTY(QString WindowSystem READ windowSystem)

public:
    static QString objectPath() { return QStringLiteral("/com/scrivel/State"); }

    explicit AppStateExport(AppDelegate& delegate, QObject* parent = nullptr);
    ~AppStateExport() override;

    bool panelVisible() const;
    // keyGrabs, desktopPending, desktopBound or unavailable.
    QString shortcutDelivery() const;
    // What the settings row shows: the stored shortcut where keys are
    // grabbed, the desktop's keys or the sentence otherwise.
    QString shortcutText() const;
    // The panel's hint about the shortcut (empty when it has none).
    QString shortcutHint() const;
    // Qt's platform: "xcb" (X11 or XWayland) or "wayland".
    QString windowSystem() const;

private:
    AppDelegate& m_delegate;
    bool m_registered = false;
};

} // namespace scrivel
