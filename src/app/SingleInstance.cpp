#include "app/SingleInstance.h"

#include "platform/linux/DesktopSession.h"
#include "platform/linux/LocalInstanceChannel.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QGuiApplication>
#include <QRegularExpression>

namespace scrivel {

namespace {

// The standard interface desktops and launchers use to activate a running
// app, with the launcher's token in the platform data.
class ApplicationAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    ApplicationAdaptor(QObject* holder, SingleInstance* owner)
        : QDBusAbstractAdaptor(holder), m_owner(owner) {}

public Q_SLOTS:
    void Activate(const QVariantMap& platformData) {
        Q_EMIT m_owner->activateRequested(DesktopSession::activationToken(platformData));
    }
    void Open(const QStringList& uris, const QVariantMap& platformData) {
        Q_UNUSED(uris);
        Activate(platformData);
    }
    void ActivateAction(const QString& action, const QVariantList& parameter,
                        const QVariantMap& platformData) {
        Q_UNUSED(parameter);
        if (action == SingleInstance::toggleAction())
            Q_EMIT m_owner->toggleRequested(DesktopSession::activationToken(platformData));
    }

private:
    SingleInstance* m_owner;
};

// Scrivel's own interface, as earlier versions call it.
class InstanceAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.scrivel.app.Instance")

public:
    InstanceAdaptor(QObject* holder, SingleInstance* owner)
        : QDBusAbstractAdaptor(holder), m_owner(owner) {}

public Q_SLOTS:
    void Activate() { Q_EMIT m_owner->activateRequested(QString()); }
    void Toggle() { Q_EMIT m_owner->toggleRequested(QString()); }

private:
    SingleInstance* m_owner;
};

// The member of a socket request that carries the launcher's token.
const QString activationTokenMember = QStringLiteral("activationToken");

QString commandName(SingleInstance::Command command) {
    return command == SingleInstance::Command::toggle ? QStringLiteral("toggle")
                                                      : QStringLiteral("activate");
}

} // namespace

std::expected<QString, QString> SingleInstance::localSocketOfThisDisplay() {
    // One instance per display: an instance on another display could not
    // show its panel on this one. ":0" and ":0.0" are the same X display.
    const QString platform = QGuiApplication::platformName();
    QString display = platform;
    if (platform == QLatin1String("xcb")) {
        static const QRegularExpression screen(QStringLiteral("\\.\\d+$"));
        display = QStringLiteral("x11-") + qEnvironmentVariable("DISPLAY").remove(screen);
    } else if (platform.startsWith(QLatin1String("wayland"))) {
        display = QStringLiteral("wayland-") +
                  qEnvironmentVariable("WAYLAND_DISPLAY", QStringLiteral("wayland-0"));
    }
    return LocalInstanceChannel::socketPath(qEnvironmentVariable("XDG_RUNTIME_DIR"), display);
}

SingleInstance::SingleInstance(std::expected<QString, QString> localSocket, QObject* parent)
    : QObject(parent), m_localSocket(std::move(localSocket)) {}

SingleInstance::~SingleInstance() = default;

SingleInstance::Role SingleInstance::claim() {
    bool ownsName = false;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected() && bus.interface()) {
        const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
            bus.interface()->registerService(serviceName(),
                                             QDBusConnectionInterface::DontQueueService,
                                             QDBusConnectionInterface::DontAllowReplacement);
        if (reply.isValid() && reply.value() != QDBusConnectionInterface::ServiceRegistered) {
            m_forwardOnBus = true;
            return Role::secondary;
        }
        if (reply.isValid()) {
            ownsName = true;
            auto* endpoint = new QObject(this);
            new ApplicationAdaptor(endpoint, this);
            new InstanceAdaptor(endpoint, this);
            bus.registerObject(objectPath(), endpoint, QDBusConnection::ExportAdaptors);
        }
    }

    bool listening = false;
    if (!m_localSocket) {
        m_localProblem = m_localSocket.error();
    } else {
        m_local = std::make_unique<LocalInstanceChannel>(*m_localSocket);
        switch (m_local->claim()) {
        case LocalInstanceChannel::Claim::foundRunning:
            // An instance that has no bus, or another bus, runs on this
            // display: it is the one.
            if (ownsName) {
                bus.unregisterObject(objectPath());
                bus.interface()->unregisterService(serviceName());
            }
            return Role::secondary;
        case LocalInstanceChannel::Claim::listening:
            listening = true;
            m_local->setHandler([this](const InstanceRequest& request) {
                const QString token = request.data.value(activationTokenMember).toString();
                if (request.command == commandName(Command::toggle))
                    Q_EMIT toggleRequested(token);
                else if (request.command == commandName(Command::activate))
                    Q_EMIT activateRequested(token);
                else
                    return false;
                return true;
            });
            break;
        case LocalInstanceChannel::Claim::failed:
            m_localProblem = tr("the socket %1 cannot be used (%2)")
                                 .arg(m_local->path(), m_local->errorString());
            m_local.reset();
            break;
        }
    }
    return ownsName || listening ? Role::primary : Role::standalone;
}

bool SingleInstance::forward(Command command, const QVariantMap& platformData) {
    const QString token = DesktopSession::activationToken(platformData);
    if (!m_forwardOnBus) {
        QJsonObject data;
        if (!token.isEmpty())
            data.insert(activationTokenMember, token);
        return m_local && m_local->send(InstanceRequest{commandName(command), data});
    }
    QDBusMessage call =
        command == Command::toggle
            ? QDBusMessage::createMethodCall(serviceName(), objectPath(),
                                             applicationInterfaceName(),
                                             QStringLiteral("ActivateAction"))
                  << toggleAction() << QVariantList() << platformData
            : QDBusMessage::createMethodCall(serviceName(), objectPath(),
                                             applicationInterfaceName(), QStringLiteral("Activate"))
                  << platformData;
    QDBusMessage answer = QDBusConnection::sessionBus().call(call, QDBus::Block, 5000);
    // A running Scrivel from before the standard interface knows only its
    // own.
    if (answer.type() == QDBusMessage::ErrorMessage &&
        answer.errorName().startsWith(QLatin1String("org.freedesktop.DBus.Error.Unknown"))) {
        call = QDBusMessage::createMethodCall(
            serviceName(), objectPath(), interfaceName(),
            command == Command::toggle ? QStringLiteral("Toggle") : QStringLiteral("Activate"));
        answer = QDBusConnection::sessionBus().call(call, QDBus::Block, 5000);
    }
    return answer.type() == QDBusMessage::ReplyMessage;
}

QString SingleInstance::standaloneReason() const {
    return tr("no session bus, and %1").arg(m_localProblem);
}

} // namespace scrivel

#include "SingleInstance.moc"
