#include "app/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

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

} // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {}

SingleInstance::Role SingleInstance::claim() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface())
        return Role::standalone;
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
        bus.interface()->registerService(serviceName(), QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid())
        return Role::standalone;
    if (reply.value() != QDBusConnectionInterface::ServiceRegistered)
        return Role::secondary;
    bus.registerObject(objectPath(), new InstanceEndpoint(this), QDBusConnection::ExportAllSlots);
    return Role::primary;
}

bool SingleInstance::forward(const QString& method) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(serviceName(), objectPath(), interfaceName(), method);
    const QDBusMessage answer = QDBusConnection::sessionBus().call(call, QDBus::Block, 5000);
    return answer.type() == QDBusMessage::ReplyMessage;
}

} // namespace scrivel

#include "SingleInstance.moc"
