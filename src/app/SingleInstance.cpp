#include "app/SingleInstance.h"

#include "platform/linux/LocalInstanceChannel.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QGuiApplication>
#include <QRegularExpression>

namespace scrivel {

namespace {

// The object the running instance exports; its two slots are the methods a
// later start calls.
class InstanceEndpoint : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.scrivel.app.Instance")

public:
    explicit InstanceEndpoint(SingleInstance* owner) : QObject(owner), m_owner(owner) {}

public Q_SLOTS:
    void Activate() { Q_EMIT m_owner->activateRequested(); }
    void Toggle() { Q_EMIT m_owner->toggleRequested(); }

private:
    SingleInstance* m_owner;
};

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
            bus.registerObject(objectPath(), new InstanceEndpoint(this),
                               QDBusConnection::ExportAllSlots);
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
                if (request.command == commandName(Command::toggle))
                    Q_EMIT toggleRequested();
                else if (request.command == commandName(Command::activate))
                    Q_EMIT activateRequested();
                else
                    return false;
                return true;
            });
            break;
        case LocalInstanceChannel::Claim::failed:
            m_localProblem = QStringLiteral("the socket %1 cannot be used (%2)")
                                 .arg(m_local->path(), m_local->errorString());
            m_local.reset();
            break;
        }
    }
    return ownsName || listening ? Role::primary : Role::standalone;
}

bool SingleInstance::forward(Command command) {
    if (!m_forwardOnBus)
        return m_local && m_local->send(InstanceRequest{commandName(command), {}});
    QDBusMessage call = QDBusMessage::createMethodCall(
        serviceName(), objectPath(), interfaceName(),
        command == Command::toggle ? QStringLiteral("Toggle") : QStringLiteral("Activate"));
    const QDBusMessage answer = QDBusConnection::sessionBus().call(call, QDBus::Block, 5000);
    return answer.type() == QDBusMessage::ReplyMessage;
}

QString SingleInstance::standaloneReason() const {
    return QStringLiteral("no session bus, and ") + m_localProblem;
}

} // namespace scrivel

#include "SingleInstance.moc"
