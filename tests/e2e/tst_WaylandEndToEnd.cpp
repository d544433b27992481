#include "core/shortcuts/ShortcutName.h"
#include "platform/linux/QSettingsStore.h"
#include "support/FakeShortcutPortal.h"
#include "support/ProcessRun.h"
#include "support/ScriptedHttpServer.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using test::FakeShortcutPortal;
using test::ScriptedHttpServer;
using test::xdotool;

namespace {

const QString shortcutId = ShortcutName::rewriteFocusedField().rawValue;

} // namespace

// The real scrivel in Wayland sessions: natively on a weston compositor
// (its X11 backend on the test's Xvfb gives it a seat, so xdotool types into
// it and wl-paste reads its clipboard), and on X11 in a Wayland session as
// under XWayland. The shortcut comes from a GlobalShortcuts portal double on
// the test's session bus; the panel's state is read from the app's own
// com.scrivel.State, since Wayland shows no window list to outsiders.
class WaylandEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void nativeWaylandTogglesAndCopies();
    void portalShortcutTogglesThePanel_data();
    void portalShortcutTogglesThePanel();
    void withoutAPortalTheAppSaysSo_data();
    void withoutAPortalTheAppSaysSo();

private:
    // The app's environment for a native Wayland client, or for an X11
    // client in a Wayland session.
    QProcessEnvironment environment(bool native) const;
    void startApp(bool native);
    QVariant state(const char* name) const;
    QByteArray paste() const {
        return test::runProcess(QStringLiteral("wl-paste"), {"--no-newline"}, environment(true), {},
                                5000)
            .out;
    }

    QTemporaryDir m_runtime;
    QString m_socket;
    QProcess m_weston;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QProcess> m_app;
    QByteArray m_appErrors;
};

void WaylandEndToEndTest::initTestCase() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display for weston's X11 backend (scripts/test provides Xvfb)");
    if (!test::hasPrograms({"weston", "wl-paste", "xdotool", "dbus-send"}))
        QSKIP("needs weston, wl-clipboard and xdotool (scripts/install-deps)");
    if (!QDBusConnection::sessionBus().isConnected())
        QSKIP("needs a session bus (scripts/test runs one)");
    // No on-screen keyboard over the panel.
    const QString config = m_runtime.filePath(QStringLiteral("weston.ini"));
    QFile ini(config);
    QVERIFY(ini.open(QIODevice::WriteOnly));
    ini.write("[input-method]\npath=/bin/true\n");
    ini.close();
    m_socket = QStringLiteral("scrivel-test-%1").arg(QCoreApplication::applicationPid());
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtime.path());
    m_weston.setProcessEnvironment(env);
    m_weston.start(QStringLiteral("weston"),
                   {"--backend=x11-backend.so", "--use-pixman", "--width=1024", "--height=700",
                    "--socket=" + m_socket, "--idle-time=0", "--config=" + config});
    QVERIFY(m_weston.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_runtime.filePath(m_socket)), 10000);
}

void WaylandEndToEndTest::cleanupTestCase() {
    test::stopProcess(m_weston);
}

void WaylandEndToEndTest::init() {
    m_home = std::make_unique<QTemporaryDir>();
    m_appErrors.clear();
}

void WaylandEndToEndTest::cleanup() {
    if (m_app)
        test::stopProcess(*m_app);
    m_app.reset();
}

QProcessEnvironment WaylandEndToEndTest::environment(bool native) const {
    QProcessEnvironment env = test::scrivelEnvironment(m_home->path());
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtime.path());
    env.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    if (native) {
        env.insert(QStringLiteral("WAYLAND_DISPLAY"), m_socket);
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland"));
        env.remove(QStringLiteral("DISPLAY"));
    } else {
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    }
    return env;
}

void WaylandEndToEndTest::startApp(bool native) {
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(environment(native));
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(state("WindowSystem").isValid(), 10000);
    QCOMPARE(state("WindowSystem").toString(), native ? QStringLiteral("wayland") : "xcb");
}

QVariant WaylandEndToEndTest::state(const char* name) const {
    QDBusInterface app(QStringLiteral("com.scrivel.app"), QStringLiteral("/com/scrivel/State"),
                       QStringLiteral("com.scrivel.State"));
    return app.isValid() ? app.property(name) : QVariant();
}

void WaylandEndToEndTest::nativeWaylandTogglesAndCopies() {
    ScriptedHttpServer server;
    QVERIFY(server.start());
    server.setHandler([](const auto&) {
        return ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("The cat ") +
                                                   ScriptedHttpServer::dataLine("sat.") +
                                                   ScriptedHttpServer::doneLine(),
                                               true, 16, 30);
    });
    const QProcessEnvironment env = environment(true);
    const QString pack = test::writeLocalPresetPack(m_home->path(), server.url("/v1").toString());
    QCOMPARE(test::runProcess(SCRIVEL_CLI_PATH, {"presets", "import", pack}, env).exitCode, 0);
    QCOMPARE(test::runProcess(SCRIVEL_CLI_PATH, {"presets", "use", "Local"}, env).exitCode, 0);

    startApp(true);
    // The first launch shows the panel, centred, and it takes what is typed
    // on the compositor's keyboard.
    QTRY_VERIFY_WITH_TIMEOUT(state("PanelVisible").toBool(), 10000);
    xdotool({"mousemove", "512", "350"});
    QTest::qWait(300); // paces weston: it takes keys once it has seen the pointer come in
    xdotool({"key", "ctrl+a", "BackSpace"});
    xdotool({"type", "--delay", "5", "teh cat sat"});
    xdotool({"key", "Return"});
    QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, 10000);
    QVERIFY(server.requests()[0].body.contains("teh cat sat"));
    // The result on the Wayland clipboard, still served once the panel is
    // hidden. Read only once the run is done: the reader takes the keyboard
    // (which may hide the panel, as a click elsewhere does), and a Wayland
    // client may set the clipboard only while it has the keyboard.
    QDBusInterface tray(QStringLiteral("com.scrivel.app"),
                        QStringLiteral("/com/scrivel/StatusItem"),
                        QStringLiteral("com.scrivel.StatusItem"));
    QTRY_COMPARE_WITH_TIMEOUT(tray.property("Look").toString(), QStringLiteral("checkMark"), 10000);
    QTRY_COMPARE_WITH_TIMEOUT(paste(), QByteArray("The cat sat."), 10000);
    if (state("PanelVisible").toBool())
        QCOMPARE(test::runProcess(SCRIVEL_APP_PATH, {"--toggle"}, env).exitCode, 0);
    QTRY_VERIFY(!state("PanelVisible").toBool());
    QCOMPARE(paste(), QByteArray("The cat sat."));

    // `scrivel --toggle` with a launcher's token shows it again, and hides it.
    QProcessEnvironment launcher = env;
    launcher.insert(QStringLiteral("XDG_ACTIVATION_TOKEN"), QStringLiteral("test-token"));
    QCOMPARE(test::runProcess(SCRIVEL_APP_PATH, {"--toggle"}, launcher).exitCode, 0);
    QTRY_VERIFY(state("PanelVisible").toBool());
    QCOMPARE(test::runProcess(SCRIVEL_APP_PATH, {"--toggle"}, env).exitCode, 0);
    QTRY_VERIFY(!state("PanelVisible").toBool());
    QCOMPARE(m_app->state(), QProcess::Running);
}

void WaylandEndToEndTest::portalShortcutTogglesThePanel_data() {
    QTest::addColumn<bool>("native");
    QTest::newRow("native Wayland") << true;
    QTest::newRow("X11 client in a Wayland session") << false;
}

void WaylandEndToEndTest::portalShortcutTogglesThePanel() {
    QFETCH(bool, native);
    FakeShortcutPortal portal(QDBusConnection::sessionBus(), FakeShortcutPortal::Behaviour{});
    QVERIFY(portal.isServing());
    QSettingsStore(m_home->filePath(QStringLiteral("config/Scrivel/Scrivel.conf")))
        .setBoolean(QStringLiteral("scrivel.panel.has-seen"), true);
    startApp(native);
    QTRY_COMPARE_WITH_TIMEOUT(state("ShortcutDelivery").toString(), QStringLiteral("desktopBound"),
                              10000);
    QCOMPARE(portal.registeredAppId, QStringLiteral("com.scrivel.app"));
    QCOMPARE(portal.boundShortcuts.size(), 1);
    QCOMPARE(portal.boundShortcuts[0].id, shortcutId);
    QCOMPARE(portal.boundShortcuts[0].properties.value("description").toString(),
             QStringLiteral("Open or close the Scrivel panel"));
    QCOMPARE(portal.boundShortcuts[0].properties.value("preferred_trigger").toString(),
             QStringLiteral("CTRL+ALT+Return"));
    QCOMPARE(state("ShortcutText").toString(), QStringLiteral("Ctrl+Alt+Return"));
    QCOMPARE(state("ShortcutHint").toString(),
             QStringLiteral("Press Ctrl+Alt+Return anywhere to open Scrivel."));

    // The panel toggles on release, as with key grabs.
    QVERIFY(!state("PanelVisible").toBool());
    portal.activate(shortcutId);
    QVERIFY(!QTest::qWaitFor([&] { return state("PanelVisible").toBool(); }, 300));
    portal.deactivate(shortcutId);
    QTRY_VERIFY(state("PanelVisible").toBool());
    portal.activate(shortcutId);
    portal.deactivate(shortcutId);
    QTRY_VERIFY(!state("PanelVisible").toBool());
}

void WaylandEndToEndTest::withoutAPortalTheAppSaysSo_data() {
    QTest::addColumn<bool>("present");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("no portal") << false
                               << QStringLiteral("This desktop offers apps no global shortcut.");
    QTest::newRow("declined") << true
                              << QStringLiteral("The desktop declined Scrivel’s global shortcut.");
}

void WaylandEndToEndTest::withoutAPortalTheAppSaysSo() {
    QFETCH(bool, present);
    QFETCH(QString, sentence);
    FakeShortcutPortal::Behaviour declines;
    declines.bindResponse = 1;
    std::unique_ptr<FakeShortcutPortal> portal;
    if (present)
        portal = std::make_unique<FakeShortcutPortal>(QDBusConnection::sessionBus(), declines);
    startApp(true);
    QTRY_COMPARE_WITH_TIMEOUT(state("ShortcutDelivery").toString(), QStringLiteral("unavailable"),
                              10000);
    const QString bind = QStringLiteral("“scrivel --toggle”");
    QCOMPARE(state("ShortcutText").toString(),
             sentence + QStringLiteral(" Bind the command ") + bind +
                 QStringLiteral(" to a shortcut in your desktop’s keyboard settings."));
    // The first launch's hint gives the command, and promises no keys.
    QTRY_VERIFY(state("PanelVisible").toBool());
    QCOMPARE(state("ShortcutHint").toString(),
             QStringLiteral("To open Scrivel from anywhere, bind ") + bind +
                 QStringLiteral(" to a shortcut in your desktop’s keyboard settings."));
}

QTEST_GUILESS_MAIN(WaylandEndToEndTest)
#include "tst_WaylandEndToEnd.moc"
