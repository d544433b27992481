#include "support/FakeShortcutPortal.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QTimer>

namespace scrivel::test {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString shortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");

class ShortcutsAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.GlobalShortcuts")
    Q_PROPERTY(uint version READ version)

public:
    ShortcutsAdaptor(QObject* holder, FakeShortcutPortal& portal)
        : QDBusAbstractAdaptor(holder), m_portal(portal) {}
    uint version() const { return m_portal.version(); }

public Q_SLOTS:
    QDBusObjectPath CreateSession(const QVariantMap& options, const QDBusMessage& message) {
        return m_portal.createSession(options, message.service());
    }
    QDBusObjectPath BindShortcuts(const QDBusObjectPath& session,
                                  const scrivel::PortalShortcutList& shortcuts,
                                  const QString& parentWindow, const QVariantMap& options,
                                  const QDBusMessage& message) {
        Q_UNUSED(parentWindow);
        return m_portal.bindShortcuts(session, shortcuts, options, message.service());
    }
    void ConfigureShortcuts(const QDBusObjectPath& session, const QString& parentWindow,
                            const QVariantMap& options) {
        Q_UNUSED(parentWindow);
        m_portal.configureShortcuts(session, options);
    }

private:
    FakeShortcutPortal& m_portal;
};

class RegistryAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.host.portal.Registry")
    Q_PROPERTY(uint version READ version)

public:
    RegistryAdaptor(QObject* holder, FakeShortcutPortal& portal)
        : QDBusAbstractAdaptor(holder), m_portal(portal) {}
    uint version() const { return 1; }

public Q_SLOTS:
    void Register(const QString& appId, const QVariantMap& options) {
        Q_UNUSED(options);
        m_portal.registerApp(appId);
    }

private:
    FakeShortcutPortal& m_portal;
};

} // namespace

FakeShortcutPortal::FakeShortcutPortal(QDBusConnection bus, Behaviour behaviour, QObject* parent)
    : QObject(parent), m_bus(std::move(bus)), m_behaviour(std::move(behaviour)) {
    PortalShortcutEntry::registerDBusTypes();
    auto* holder = new QObject(this);
    if (m_behaviour.hasGlobalShortcuts)
        new ShortcutsAdaptor(holder, *this);
    if (m_behaviour.hasRegistry)
        new RegistryAdaptor(holder, *this);
    m_serving = m_bus.registerObject(portalPath, holder, QDBusConnection::ExportAdaptors) &&
                m_bus.registerService(portalService);
}

FakeShortcutPortal::~FakeShortcutPortal() {
    m_bus.unregisterService(portalService);
    m_bus.unregisterObject(portalPath);
}

QString FakeShortcutPortal::requestPath(const QString& sender, const QVariantMap& options) const {
    QString name = sender.mid(1);
    name.replace(QLatin1Char('.'), QLatin1Char('_'));
    return QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2")
        .arg(name, options.value(QStringLiteral("handle_token")).toString());
}

void FakeShortcutPortal::respond(const QString& path, uint response, const QVariantMap& results) {
    // After the method's reply, as the portal does.
    QTimer::singleShot(0, this, [this, path, response, results] {
        QDBusMessage signal = QDBusMessage::createSignal(
            path, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
        signal << response << results;
        m_bus.send(signal);
    });
}

QDBusObjectPath FakeShortcutPortal::createSession(const QVariantMap& options,
                                                  const QString& sender) {
    calls << QStringLiteral("CreateSession");
    QString name = sender.mid(1);
    name.replace(QLatin1Char('.'), QLatin1Char('_'));
    sessionHandle =
        QStringLiteral("/org/freedesktop/portal/desktop/session/%1/%2")
            .arg(name, options.value(QStringLiteral("session_handle_token")).toString());
    const QString path = requestPath(sender, options);
    QVariantMap results;
    if (m_behaviour.sessionResponse == 0)
        results.insert(QStringLiteral("session_handle"), sessionHandle);
    respond(path, m_behaviour.sessionResponse, results);
    return QDBusObjectPath(path);
}

QDBusObjectPath FakeShortcutPortal::bindShortcuts(const QDBusObjectPath& session,
                                                  const PortalShortcutList& shortcuts,
                                                  const QVariantMap& options,
                                                  const QString& sender) {
    calls << QStringLiteral("BindShortcuts");
    const QString path = requestPath(sender, options);
    if (session.path() != sessionHandle) {
        respond(path, 2, {});
        return QDBusObjectPath(path);
    }
    boundShortcuts = shortcuts;
    QVariantMap results;
    if (m_behaviour.bindResponse == 0)
        results.insert(QStringLiteral("shortcuts"), QVariant::fromValue(reported()));
    respond(path, m_behaviour.bindResponse, results);
    return QDBusObjectPath(path);
}

void FakeShortcutPortal::configureShortcuts(const QDBusObjectPath& session,
                                            const QVariantMap& options) {
    if (session.path() != sessionHandle)
        return;
    calls << QStringLiteral("ConfigureShortcuts");
    configureOptions = options;
}

void FakeShortcutPortal::registerApp(const QString& appId) {
    calls << QStringLiteral("Register");
    registeredAppId = appId;
}

PortalShortcutList FakeShortcutPortal::reported() const {
    PortalShortcutList list;
    if (m_behaviour.triggerDescription.isEmpty())
        return list;
    for (const PortalShortcutEntry& bound : boundShortcuts) {
        PortalShortcutEntry entry;
        entry.id = bound.id;
        entry.properties.insert(QStringLiteral("description"),
                                bound.properties.value(QStringLiteral("description")));
        entry.properties.insert(QStringLiteral("trigger_description"),
                                m_behaviour.triggerDescription);
        list.append(entry);
    }
    return list;
}

void FakeShortcutPortal::changeTrigger(const QString& triggerDescription) {
    m_behaviour.triggerDescription = triggerDescription;
    QDBusMessage signal = QDBusMessage::createSignal(portalPath, shortcutsInterface,
                                                     QStringLiteral("ShortcutsChanged"));
    signal << QVariant::fromValue(QDBusObjectPath(sessionHandle))
           << QVariant::fromValue(reported());
    m_bus.send(signal);
}

void FakeShortcutPortal::emitShortcutSignal(const char* name, const QString& shortcutId,
                                            const QVariantMap& options) {
    QDBusMessage signal =
        QDBusMessage::createSignal(portalPath, shortcutsInterface, QString::fromLatin1(name));
    signal << QVariant::fromValue(QDBusObjectPath(sessionHandle)) << shortcutId
           << QVariant::fromValue(qulonglong(m_timestamp += 10)) << options;
    m_bus.send(signal);
}

void FakeShortcutPortal::activate(const QString& shortcutId, const QVariantMap& options) {
    emitShortcutSignal("Activated", shortcutId, options);
}

void FakeShortcutPortal::deactivate(const QString& shortcutId, const QVariantMap& options) {
    emitShortcutSignal("Deactivated", shortcutId, options);
}

} // namespace scrivel::test

#include "FakeShortcutPortal.moc"
