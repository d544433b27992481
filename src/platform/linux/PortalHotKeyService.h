#pragma once

#include "core/shortcuts/HotKeyService.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QHash>
#include <QTimer>
#include <chrono>
#include <functional>
#include <optional>

class QDBusMessage;
class QDBusPendingCallWatcher;
class QDBusServiceWatcher;

namespace scrivel {

// Global shortcuts through the desktop's GlobalShortcuts portal
// (org.freedesktop.portal.GlobalShortcuts), for Wayland sessions where key
// grabs see nothing outside our own windows.
//
// The app's one shortcut is bound under a fixed id: the desktop chooses its
// keys (the stored shortcut is only offered as the preferred trigger) and
// reports them as a trigger description. Activated and Deactivated arrive as
// the registered hot key's press and release. Unregistering (the tray menu
// is open) only silences the events; the desktop keeps the binding.
//
// Start-up, all asynchronous: register the app id with the host registry
// where the portal offers one, read the interface's version, create a
// session, and bind at the first registration. Bound again on every start:
// the desktop remembers what the user chose. A portal that is absent or
// refuses turns the status to unavailable, and registrations then fail.
class PortalHotKeyService : public HotKeyService {
    Q_OBJECT

public:
    struct Options {
        // The app id the desktop knows from the installed .desktop file.
        QString appId;
        // The portal's id of the shortcut, stable across versions.
        QString shortcutId;
        // What the desktop shows beside the keys.
        QString description;
        // How long the portal may take to create the session before it counts
        // as failed (binding may wait for the user and has no bound).
        std::chrono::milliseconds sessionBound{std::chrono::seconds(25)};
    };

    static QString serviceName() { return QStringLiteral("org.freedesktop.portal.Desktop"); }
    static QString objectPath() { return QStringLiteral("/org/freedesktop/portal/desktop"); }
    static QString interfaceName() {
        return QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
    }
    static QString registryInterfaceName() {
        return QStringLiteral("org.freedesktop.host.portal.Registry");
    }

    PortalHotKeyService(QDBusConnection bus, Options options, QObject* parent = nullptr);
    ~PortalHotKeyService() override;

    // Begins talking to the portal; the status stays pending until it has
    // answered.
    void start();

    std::expected<void, HotKeyError> registerHotKey(const Shortcut& shortcut, quint32 signature,
                                                    quint32 id) override;
    void unregisterHotKey(quint32 signature, quint32 id) override;
    // The desktop arbitrates its own shortcuts: nothing to try here.
    bool isTakenByAnotherClient(const Shortcut&) override { return false; }
    GlobalShortcutStatus status() const override { return m_status; }
    void configureInDesktop(const QString& activationToken) override;

    // The portal's session, once created (tests).
    QString sessionHandle() const { return m_session; }

private Q_SLOTS:
    void onResponse(const QDBusMessage& message);
    void onActivated(const QDBusMessage& message);
    void onDeactivated(const QDBusMessage& message);
    void onShortcutsChanged(const QDBusMessage& message);
    void onSessionClosed(const QDBusMessage& message);

private:
    struct Registration {
        quint32 signature = 0;
        quint32 id = 0;
    };
    using ResponseHandler = std::function<void(uint response, const QVariantMap& results)>;

    void readVersion();
    void createSession();
    void bindIfReady();
    void setStatus(const GlobalShortcutStatus& status);
    void fail(GlobalShortcutStatus::Reason reason);
    void reset();
    // Calls a portal method that answers through a Request object; the
    // handler runs once with its Response.
    void request(const QString& method, QList<QVariant> arguments, QVariantMap options,
                 ResponseHandler handler);
    QString nextToken();
    QString requestPath(const QString& token) const;
    void takeShortcuts(const QList<QVariant>& shortcuts, bool complete);
    bool isOurEvent(const QDBusMessage& message) const;
    void forward(const QDBusMessage& message, EventKind kind);

    QDBusConnection m_bus;
    Options m_options;
    GlobalShortcutStatus m_status = GlobalShortcutStatus::pending();
    uint m_version = 0;
    QString m_session;
    bool m_bindRequested = false;
    std::optional<QString> m_preferredTrigger;
    std::optional<Registration> m_registration;
    QHash<QString, ResponseHandler> m_pending;
    quint64 m_tokenCounter = 0;
    quint64 m_generation = 0;
    QTimer m_sessionBound;
    QDBusServiceWatcher* m_watcher = nullptr;
};

} // namespace scrivel
