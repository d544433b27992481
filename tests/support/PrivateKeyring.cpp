#include "support/PrivateKeyring.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDir>
#include <QStandardPaths>
#include <QTest>
#include <csignal>

namespace scrivel::test {

namespace {

const QString connectionName = QStringLiteral("scrivel-private-keyring");

QDBusMessage serviceCall(const QString& method) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.secrets"),
                                          QStringLiteral("/org/freedesktop/secrets"),
                                          QStringLiteral("org.freedesktop.Secret.Service"), method);
}

} // namespace

PrivateKeyring::~PrivateKeyring() {
    QDBusConnection::disconnectFromBus(connectionName);
    setPaused(false);
    for (QProcess* process : {&m_keyring, &m_bus}) {
        if (process->state() == QProcess::NotRunning)
            continue;
        process->terminate();
        if (!process->waitForFinished(3000)) {
            process->kill();
            process->waitForFinished(1000);
        }
    }
}

QString PrivateKeyring::start() {
    const QString busProgram = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
    const QString keyringProgram =
        QStandardPaths::findExecutable(QStringLiteral("gnome-keyring-daemon"));
    if (busProgram.isEmpty() || keyringProgram.isEmpty())
        return QStringLiteral("needs dbus-daemon and gnome-keyring-daemon (scripts/install-deps)");
    if (!m_dir.isValid())
        return QStringLiteral("no temporary folder");
    const QDir dir(m_dir.path());
    dir.mkpath(QStringLiteral("run"));
    QFile::setPermissions(dir.filePath(QStringLiteral("run")),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS",
                             "GNOME_KEYRING_CONTROL", "SSH_AUTH_SOCK"})
        environment.remove(QString::fromLatin1(name));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), dir.filePath(QStringLiteral("run")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));

    m_bus.setProcessEnvironment(environment);
    m_bus.start(busProgram, {QStringLiteral("--session"), QStringLiteral("--nofork"),
                             QStringLiteral("--nosyslog"), QStringLiteral("--print-address=1")});
    if (!m_bus.waitForStarted(5000))
        return QStringLiteral("dbus-daemon did not start");
    QByteArray printed;
    for (int wait = 0; wait < 50 && !printed.contains('\n'); ++wait) {
        m_bus.waitForReadyRead(100);
        printed += m_bus.readAllStandardOutput();
    }
    m_address = QString::fromUtf8(printed).trimmed();
    if (m_address.isEmpty())
        return QStringLiteral("dbus-daemon gave no address");

    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_address);
    m_keyring.setProcessEnvironment(environment);
    // Its complaints about prompts it cannot show are expected: kept aside.
    const QString log = dir.filePath(QStringLiteral("keyring.log"));
    m_keyring.setStandardErrorFile(log);
    const auto failed = [&](const QString& what) {
        QFile written(log);
        return written.open(QIODevice::ReadOnly)
                   ? what + QStringLiteral(": ") + QString::fromUtf8(written.readAll()).trimmed()
                   : what;
    };
    m_keyring.start(keyringProgram, {QStringLiteral("--foreground"), QStringLiteral("--unlock"),
                                     QStringLiteral("--components=secrets")});
    if (!m_keyring.waitForStarted(5000))
        return failed(QStringLiteral("gnome-keyring-daemon did not start"));
    // The login collection, unlocked with this password.
    m_keyring.write("scrivel-private-keyring");
    m_keyring.closeWriteChannel();

    QDBusConnection bus = QDBusConnection::connectToBus(m_address, connectionName);
    if (!bus.isConnected())
        return QStringLiteral("cannot connect to the private bus");
    const auto owned = [&] {
        return bus.interface()
            ->isServiceRegistered(QStringLiteral("org.freedesktop.secrets"))
            .value();
    };
    if (!QTest::qWaitFor(owned, 10000))
        return failed(QStringLiteral("the keyring never took the Secret Service name"));
    return {};
}

bool PrivateKeyring::lockDefaultCollection() {
    QDBusConnection bus = QDBusConnection::connectToBus(m_address, connectionName);
    QDBusMessage alias = serviceCall(QStringLiteral("ReadAlias"));
    alias << QStringLiteral("default");
    const QDBusReply<QDBusObjectPath> collection = bus.call(alias);
    if (!collection.isValid() || collection.value().path() == QLatin1String("/"))
        return false;
    QDBusMessage lock = serviceCall(QStringLiteral("Lock"));
    lock << QVariant::fromValue(QList<QDBusObjectPath>{collection.value()});
    const QDBusMessage reply = bus.call(lock);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return false;
    const auto locked = qdbus_cast<QList<QDBusObjectPath>>(reply.arguments().first());
    return locked.contains(collection.value());
}

void PrivateKeyring::setPaused(bool paused) {
    if (paused == m_paused || m_keyring.state() != QProcess::Running)
        return;
    ::kill(pid_t(m_keyring.processId()), paused ? SIGSTOP : SIGCONT);
    m_paused = paused;
}

} // namespace scrivel::test
