#include "platform/linux/SecretServiceProbe.h"

#include "core/support/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace scrivel {

SecretServiceProbe::SecretServiceProbe(QObject* parent) : QObject(parent) {}

Future<bool> SecretServiceProbe::isAvailable() {
    if (m_answer)
        return Future<bool>::ready(*m_answer);
    Promise<bool> promise;
    auto future = promise.future();
    m_waiting.append(promise);
    if (m_asking)
        return future;

    QDBusConnection bus = QDBusConnection::sessionBus();
    auto answer = [this](bool available) {
        m_answer = available;
        m_asking = false;
        qCDebug(rewriteLog) << "secret service available=" << available;
        const auto waiting = std::exchange(m_waiting, {});
        for (const auto& waiter : waiting)
            waiter.resolve(available);
    };
    if (!bus.isConnected()) {
        answer(false);
        return future;
    }
    m_asking = true;
    const QDBusMessage ping = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
        QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(ping, 5000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [answer](QDBusPendingCallWatcher* call) {
                answer(!call->isError());
                call->deleteLater();
            });
    return future;
}

} // namespace scrivel
