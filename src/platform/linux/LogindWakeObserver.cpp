#include "platform/linux/LogindWakeObserver.h"

#include <QDBusConnection>

namespace scrivel {

LogindWakeObserver::LogindWakeObserver(QObject* parent) : WakeObserver(parent) {
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
        return;
    m_observing = bus.connect(QStringLiteral("org.freedesktop.login1"),
                              QStringLiteral("/org/freedesktop/login1"),
                              QStringLiteral("org.freedesktop.login1.Manager"),
                              QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)));
}

void LogindWakeObserver::prepareForSleep(bool sleeping) {
    if (!sleeping)
        Q_EMIT didWake();
}

} // namespace scrivel
