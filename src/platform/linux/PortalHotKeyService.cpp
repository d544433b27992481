#include "platform/linux/PortalHotKeyService.h"

#include "core/shortcuts/PortalTrigger.h"
#include "core/support/Log.h"
#include "platform/linux/PortalShortcutEntry.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <cstdio>

namespace scrivel {

void PortalShortcutEntry::registerDBusTypes() {
    qDBusRegisterMetaType<PortalShortcutEntry>();
    qDBusRegisterMetaType<PortalShortcutList>();
}

namespace {

const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");

// The portal's Response codes.
constexpr uint responseSuccess = 0;
constexpr uint responseCancelled = 1;

QString pathText(const QVariant& value) {
    if (value.metaType() == QMetaType::fromType<QDBusObjectPath>())
        return value.value<QDBusObjectPath>().path();
    return value.toString();
}

// A QVariant read from a message: a vardict's values and a signal's
// arguments of compound types arrive as QDBusArgument.
QList<QVariant> shortcutsIn(const QVariant& value) {
    QList<QVariant> shortcuts;
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return shortcuts;
    for (const PortalShortcutEntry& entry : qdbus_cast<PortalShortcutList>(value))
        shortcuts.append(QVariant::fromValue(entry));
    return shortcuts;
}

} // namespace

PortalHotKeyService::PortalHotKeyService(QDBusConnection bus, Options options, QObject* parent)
    : HotKeyService(parent), m_bus(std::move(bus)), m_options(std::move(options)) {
    PortalShortcutEntry::registerDBusTypes();
    m_sessionBound.setSingleShot(true);
    m_sessionBound.setInterval(m_options.sessionBound);
    connect(&m_sessionBound, &QTimer::timeout, this, [this] {
        if (m_session.isEmpty())
            fail(GlobalShortcutStatus::Reason::failed);
    });
    if (!m_bus.isConnected())
        return;
    m_bus.connect(serviceName(), objectPath(), interfaceName(), QStringLiteral("Activated"), this,
                  SLOT(onActivated(QDBusMessage)));
    m_bus.connect(serviceName(), objectPath(), interfaceName(), QStringLiteral("Deactivated"), this,
                  SLOT(onDeactivated(QDBusMessage)));
    m_bus.connect(serviceName(), objectPath(), interfaceName(), QStringLiteral("ShortcutsChanged"),
                  this, SLOT(onShortcutsChanged(QDBusMessage)));
    // A portal that restarts has forgotten our session: bind again.
    m_watcher = new QDBusServiceWatcher(serviceName(), m_bus,
                                        QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        if (m_session.isEmpty())
            return;
        reset();
        fail(GlobalShortcutStatus::Reason::failed);
    });
    connect(m_watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] {
        if (m_status.kind == GlobalShortcutStatus::Kind::unavailable &&
            m_status.reason == GlobalShortcutStatus::Reason::failed)
            start();
    });
}

PortalHotKeyService::~PortalHotKeyService() {
    if (!m_session.isEmpty() && m_bus.isConnected()) {
        m_bus.asyncCall(QDBusMessage::createMethodCall(serviceName(), m_session, sessionInterface,
                                                       QStringLiteral("Close")));
    }
}

void PortalHotKeyService::start() {
    reset();
    setStatus(GlobalShortcutStatus::pending());
    if (!m_bus.isConnected()) {
        fail(GlobalShortcutStatus::Reason::noPortal);
        return;
    }
    m_sessionBound.start();
    // A host app is known to the portal by the app id it registers (portals
    // without the registry match it from the .desktop file, or not at all).
    // Refusals are fine: an older portal, or a second registration.
    QDBusMessage registration = QDBusMessage::createMethodCall(
        serviceName(), objectPath(), registryInterfaceName(), QStringLiteral("Register"));
    registration << m_options.appId << QVariantMap();
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(registration), this);
    connect(
        watcher, &QDBusPendingCallWatcher::finished, this,
        [this, watcher, generation = m_generation] {
            watcher->deleteLater();
            if (generation != m_generation)
                return;
            const QDBusMessage reply = watcher->reply();
            if (reply.type() == QDBusMessage::ErrorMessage &&
                (reply.errorName() == QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown") ||
                 reply.errorName() ==
                     QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner"))) {
                fail(GlobalShortcutStatus::Reason::noPortal);
                return;
            }
            readVersion();
        });
}

void PortalHotKeyService::readVersion() {
    QDBusMessage get = QDBusMessage::createMethodCall(
        serviceName(), objectPath(), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get << interfaceName() << QStringLiteral("version");
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(get), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, generation = m_generation] {
                watcher->deleteLater();
                if (generation != m_generation)
                    return;
                const QDBusPendingReply<QDBusVariant> reply = *watcher;
                // A portal without the interface: this desktop has no
                // shortcut portal.
                if (reply.isError()) {
                    fail(GlobalShortcutStatus::Reason::noPortal);
                    return;
                }
                m_version = reply.value().variant().toUInt();
                createSession();
            });
}

void PortalHotKeyService::createSession() {
    QVariantMap options;
    options.insert(QStringLiteral("session_handle_token"), nextToken());
    request(QStringLiteral("CreateSession"), {}, options,
            [this](uint response, const QVariantMap& results) {
                m_sessionBound.stop();
                if (response != responseSuccess) {
                    fail(response == responseCancelled ? GlobalShortcutStatus::Reason::refused
                                                       : GlobalShortcutStatus::Reason::failed);
                    return;
                }
                m_session = pathText(results.value(QStringLiteral("session_handle")));
                if (m_session.isEmpty()) {
                    fail(GlobalShortcutStatus::Reason::failed);
                    return;
                }
                m_bus.connect(serviceName(), m_session, sessionInterface, QStringLiteral("Closed"),
                              this, SLOT(onSessionClosed(QDBusMessage)));
                bindIfReady();
            });
}

void PortalHotKeyService::bindIfReady() {
    if (m_session.isEmpty() || m_bindRequested)
        return;
    m_bindRequested = true;
    PortalShortcutEntry entry;
    entry.id = m_options.shortcutId;
    entry.properties.insert(QStringLiteral("description"), m_options.description);
    if (m_preferredTrigger)
        entry.properties.insert(QStringLiteral("preferred_trigger"), *m_preferredTrigger);
    request(QStringLiteral("BindShortcuts"),
            {QVariant::fromValue(QDBusObjectPath(m_session)),
             QVariant::fromValue(PortalShortcutList{entry}), QString()},
            {}, [this](uint response, const QVariantMap& results) {
                if (response != responseSuccess) {
                    fail(response == responseCancelled ? GlobalShortcutStatus::Reason::refused
                                                       : GlobalShortcutStatus::Reason::failed);
                    return;
                }
                takeShortcuts(shortcutsIn(results.value(QStringLiteral("shortcuts"))), true);
            });
}

void PortalHotKeyService::request(const QString& method, QList<QVariant> arguments,
                                  QVariantMap options, ResponseHandler handler) {
    const QString token = nextToken();
    options.insert(QStringLiteral("handle_token"), token);
    // Listen before calling: the Response may overtake the method's reply.
    const QString expected = requestPath(token);
    m_pending.insert(expected, handler);
    m_bus.connect(serviceName(), expected, requestInterface, QStringLiteral("Response"), this,
                  SLOT(onResponse(QDBusMessage)));
    QDBusMessage call =
        QDBusMessage::createMethodCall(serviceName(), objectPath(), interfaceName(), method);
    arguments.append(options);
    call.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, expected, generation = m_generation] {
                watcher->deleteLater();
                if (generation != m_generation)
                    return;
                const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
                if (reply.isError()) {
                    qCDebug(rewriteLog) << "portal call failed:" << reply.error().name();
                    m_bus.disconnect(serviceName(), expected, requestInterface,
                                     QStringLiteral("Response"), this,
                                     SLOT(onResponse(QDBusMessage)));
                    if (const ResponseHandler handler = m_pending.take(expected))
                        handler(2, {});
                    return;
                }
                // Portals older than the handle_token option choose their
                // own path.
                const QString actual = reply.value().path();
                if (actual == expected || !m_pending.contains(expected))
                    return;
                m_pending.insert(actual, m_pending.take(expected));
                m_bus.connect(serviceName(), actual, requestInterface, QStringLiteral("Response"),
                              this, SLOT(onResponse(QDBusMessage)));
            });
}

void PortalHotKeyService::onResponse(const QDBusMessage& message) {
    const QString path = message.path();
    m_bus.disconnect(serviceName(), path, requestInterface, QStringLiteral("Response"), this,
                     SLOT(onResponse(QDBusMessage)));
    const ResponseHandler handler = m_pending.take(path);
    const QList<QVariant> arguments = message.arguments();
    if (!handler || arguments.size() < 2)
        return;
    handler(arguments[0].toUInt(), qdbus_cast<QVariantMap>(arguments[1]));
}

void PortalHotKeyService::takeShortcuts(const QList<QVariant>& shortcuts, bool complete) {
    for (const QVariant& value : shortcuts) {
        const auto entry = value.value<PortalShortcutEntry>();
        if (entry.id != m_options.shortcutId)
            continue;
        setStatus(GlobalShortcutStatus::bound(
            entry.properties.value(QStringLiteral("trigger_description")).toString(),
            m_version >= 2));
        return;
    }
    // Left out of the bound set: bound without keys, for the user to assign.
    if (complete)
        setStatus(GlobalShortcutStatus::bound(QString(), m_version >= 2));
}

bool PortalHotKeyService::isOurEvent(const QDBusMessage& message) const {
    const QList<QVariant> arguments = message.arguments();
    return arguments.size() >= 2 && !m_session.isEmpty() && pathText(arguments[0]) == m_session &&
           arguments[1].toString() == m_options.shortcutId;
}

void PortalHotKeyService::forward(const QDBusMessage& message, EventKind kind) {
    if (!m_registration || !isOurEvent(message))
        return;
    Q_EMIT hotKeyEvent(m_registration->signature, m_registration->id, kind);
}

void PortalHotKeyService::onActivated(const QDBusMessage& message) {
    forward(message, EventKind::pressed);
}

void PortalHotKeyService::onDeactivated(const QDBusMessage& message) {
    forward(message, EventKind::released);
}

void PortalHotKeyService::onShortcutsChanged(const QDBusMessage& message) {
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() < 2 || m_session.isEmpty() || pathText(arguments[0]) != m_session)
        return;
    takeShortcuts(shortcutsIn(arguments[1]), false);
}

void PortalHotKeyService::onSessionClosed(const QDBusMessage& message) {
    if (message.path() != m_session)
        return;
    reset();
    fail(GlobalShortcutStatus::Reason::failed);
}

std::expected<void, HotKeyError>
PortalHotKeyService::registerHotKey(const Shortcut& shortcut, quint32 signature, quint32 id) {
    if (m_status.kind == GlobalShortcutStatus::Kind::unavailable)
        return std::unexpected(HotKeyError{HotKeyError::Kind::unavailable, 0});
    m_registration = Registration{signature, id};
    // Offered once, when binding; afterwards the desktop's choice stands.
    if (!m_bindRequested)
        m_preferredTrigger = PortalTrigger::fromShortcut(shortcut);
    return {};
}

void PortalHotKeyService::unregisterHotKey(quint32 signature, quint32 id) {
    if (m_registration && m_registration->signature == signature && m_registration->id == id)
        m_registration.reset();
}

void PortalHotKeyService::configureInDesktop(const QString& activationToken) {
    if (m_session.isEmpty() || m_version < 2)
        return;
    QVariantMap options;
    if (!activationToken.isEmpty())
        options.insert(QStringLiteral("activation_token"), activationToken);
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName(), objectPath(), interfaceName(),
                                                       QStringLiteral("ConfigureShortcuts"));
    call << QVariant::fromValue(QDBusObjectPath(m_session)) << QString() << options;
    m_bus.asyncCall(call);
}

void PortalHotKeyService::setStatus(const GlobalShortcutStatus& status) {
    if (m_status == status)
        return;
    m_status = status;
    Q_EMIT statusChanged();
}

void PortalHotKeyService::fail(GlobalShortcutStatus::Reason reason) {
    m_sessionBound.stop();
    const bool first = m_status.kind != GlobalShortcutStatus::Kind::unavailable;
    setStatus(GlobalShortcutStatus::unavailable(reason));
    if (first)
        std::fputs("scrivel: the desktop gives Scrivel no global shortcut; bind \"scrivel "
                   "--toggle\" to a shortcut in your desktop’s keyboard settings instead.\n",
                   stderr);
}

void PortalHotKeyService::reset() {
    ++m_generation;
    for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it)
        m_bus.disconnect(serviceName(), it.key(), requestInterface, QStringLiteral("Response"),
                         this, SLOT(onResponse(QDBusMessage)));
    m_pending.clear();
    if (!m_session.isEmpty())
        m_bus.disconnect(serviceName(), m_session, sessionInterface, QStringLiteral("Closed"), this,
                         SLOT(onSessionClosed(QDBusMessage)));
    m_session.clear();
    m_bindRequested = false;
    m_version = 0;
}

QString PortalHotKeyService::nextToken() {
    return QStringLiteral("scrivel_%1").arg(++m_tokenCounter);
}

QString PortalHotKeyService::requestPath(const QString& token) const {
    // The caller's unique name without the colon, dots as underscores.
    QString sender = m_bus.baseService();
    if (sender.startsWith(QLatin1Char(':')))
        sender.remove(0, 1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

} // namespace scrivel
