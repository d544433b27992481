#include "linux/SleepWatcher.h"

#include "support/Log.h"

#include <QDBusConnection>

namespace scrivel {

SleepWatcher::SleepWatcher(QObject* parent) : QObject(parent) {
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
        return;
    bus.connect(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
                this, SLOT(onPrepareForSleep(bool)));
}

void SleepWatcher::onPrepareForSleep(bool sleeping) {
    if (sleeping)
        return;
    qCDebug(rewriteLog) << "woke from sleep";
    Q_EMIT resumed();
}

} // namespace scrivel
