#include "app/SingleInstance.h"
#include "platform/linux/LocalInstanceChannel.h"
#include "support/ProcessRun.h"

#include <QDBusConnection>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;

// This process is the running Scrivel, on the session bus and on its socket;
// the real `scrivel` binary, started as a launcher would start it, hands over
// to it over either.
class SingleInstanceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (!QDBusConnection::sessionBus().isConnected())
            QSKIP("needs a session bus (scripts/test runs one)");
        // The socket a start on the offscreen platform looks for.
        m_instance = std::make_unique<SingleInstance>(
            LocalInstanceChannel::socketPath(m_runtime.path(), QStringLiteral("offscreen")));
        QCOMPARE(m_instance->claim(), SingleInstance::Role::primary);
    }

    void theLaunchersTokenReachesTheRunningInstance_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("variable");
        QTest::addColumn<QString>("token");
        QTest::addColumn<bool>("bus");
        QTest::newRow("--toggle, Wayland token")
            << QStringList{"--toggle"} << QStringLiteral("XDG_ACTIVATION_TOKEN")
            << QStringLiteral("wayland-token-1") << true;
        QTest::newRow("--toggle, X11 startup id")
            << QStringList{"--toggle"} << QStringLiteral("DESKTOP_STARTUP_ID")
            << QStringLiteral("launcher-42_TIME1234") << true;
        QTest::newRow("--toggle, no token")
            << QStringList{"--toggle"} << QString() << QString() << true;
        QTest::newRow("second start, Wayland token")
            << QStringList{} << QStringLiteral("XDG_ACTIVATION_TOKEN")
            << QStringLiteral("wayland-token-2") << true;
        QTest::newRow("--toggle over the socket, Wayland token")
            << QStringList{"--toggle"} << QStringLiteral("XDG_ACTIVATION_TOKEN")
            << QStringLiteral("wayland-token-3") << false;
        QTest::newRow("second start over the socket, X11 startup id")
            << QStringList{} << QStringLiteral("DESKTOP_STARTUP_ID")
            << QStringLiteral("launcher-43_TIME1235") << false;
    }
    void theLaunchersTokenReachesTheRunningInstance() {
        QFETCH(QStringList, arguments);
        QFETCH(QString, variable);
        QFETCH(QString, token);
        QFETCH(bool, bus);
        QSignalSpy toggled(m_instance.get(), &SingleInstance::toggleRequested);
        QSignalSpy activated(m_instance.get(), &SingleInstance::activateRequested);
        QTemporaryDir home;
        QProcessEnvironment env = test::scrivelEnvironment(home.path());
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        env.remove(QStringLiteral("XDG_ACTIVATION_TOKEN"));
        env.remove(QStringLiteral("DESKTOP_STARTUP_ID"));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtime.path());
        if (!bus)
            env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                       QStringLiteral("unix:path=") + m_runtime.filePath(QStringLiteral("no-bus")));
        if (!variable.isEmpty())
            env.insert(variable, token);
        QCOMPARE(test::runProcess(SCRIVEL_APP_PATH, arguments, env, {}, 10000).exitCode, 0);
        QSignalSpy& received = arguments.isEmpty() ? activated : toggled;
        QCOMPARE(received.size(), 1);
        QCOMPARE(received.first().first().toString(), token);
        QCOMPARE(toggled.size() + activated.size(), 1);
    }

private:
    QTemporaryDir m_runtime;
    std::unique_ptr<SingleInstance> m_instance;
};

QTEST_GUILESS_MAIN(SingleInstanceTest)
#include "tst_SingleInstance.moc"
