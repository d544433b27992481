#pragma once

#include "platform/linux/PortalShortcutEntry.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace scrivel::test {

// A desktop's GlobalShortcuts portal on the test's session bus, as the
// portal documentation describes it: it owns org.freedesktop.portal.Desktop,
// answers CreateSession and BindShortcuts through Request objects whose
// Response it emits, and emits Activated, Deactivated and ShortcutsChanged
// on request. It can also offer the host app registry, lack the shortcuts
// interface, or refuse.
class FakeShortcutPortal : public QObject {
    Q_OBJECT

public:
    struct Behaviour {
        // Without it the portal answers only the registry (an older portal, or
        // a desktop without the shortcut backend).
        bool hasGlobalShortcuts = true;
        bool hasRegistry = true;
        uint version = 2;
        // The Response code of CreateSession and of BindShortcuts: 0 granted,
        // 1 cancelled by the user, 2 failed.
        uint sessionResponse = 0;
        uint bindResponse = 0;
        // What the desktop reports for every bound shortcut; empty leaves the
        // shortcuts out of the bound set (no keys assigned).
        QString triggerDescription = QStringLiteral("Ctrl+Alt+Return");
    };

    FakeShortcutPortal(QDBusConnection bus, Behaviour behaviour, QObject* parent = nullptr);
    ~FakeShortcutPortal() override;

    // Whether it owns the portal's name.
    bool isServing() const { return m_serving; }

    // What the app did, in order: "Register", "CreateSession",
    // "BindShortcuts", "ConfigureShortcuts".
    QStringList calls;
    QString registeredAppId;
    QString sessionHandle;
    PortalShortcutList boundShortcuts;
    QVariantMap configureOptions;

    // The desktop reports the keys of the bound shortcuts changed.
    void changeTrigger(const QString& triggerDescription);
    void activate(const QString& shortcutId, const QVariantMap& options = {});
    void deactivate(const QString& shortcutId, const QVariantMap& options = {});

    // Called by the exported interfaces.
    QDBusObjectPath createSession(const QVariantMap& options, const QString& sender);
    QDBusObjectPath bindShortcuts(const QDBusObjectPath& session,
                                  const PortalShortcutList& shortcuts, const QVariantMap& options,
                                  const QString& sender);
    void configureShortcuts(const QDBusObjectPath& session, const QVariantMap& options);
    void registerApp(const QString& appId);
    uint version() const { return m_behaviour.version; }

private:
    QString requestPath(const QString& sender, const QVariantMap& options) const;
    void respond(const QString& path, uint response, const QVariantMap& results);
    PortalShortcutList reported() const;
    void emitShortcutSignal(const char* name, const QString& shortcutId,
                            const QVariantMap& options);

    QDBusConnection m_bus;
    Behaviour m_behaviour;
    bool m_serving = false;
    quint64 m_timestamp = 1000;
};

} // namespace scrivel::test
