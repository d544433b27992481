#include "core/shortcuts/Shortcut.h"
#include "core/shortcuts/ShortcutName.h"
#include "platform/linux/QSettingsStore.h"
#include "support/ProcessRun.h"
#include "support/ScriptedHttpServer.h"
#include "support/X11TestClient.h"

#include <QProcess>
#include <QRect>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using test::ScriptedHttpServer;
using test::X11TestClient;
using test::xdotool;

namespace {

constexpr xcb_keysym_t returnKeysym = 0xff0d;
constexpr uint16_t ctrlAlt = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;

// scripts/test's screen; openbox reserves none of it.
const QRect screen(0, 0, 1280, 800);
constexpr int margin = 8;

} // namespace

// The real scrivel under a real window manager (openbox, started here on
// the test display), which decides what gets the keyboard and where windows
// go: the panel must take the keyboard from the window the user was in, and
// stay on screen wherever it opens.
class WindowManagerEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void panelTakesTheKeyboardFromAnotherWindow_data();
    void panelTakesTheKeyboardFromAnotherWindow();
    void panelAtTheBottomEdgeStaysOnScreenAsAReplyStreams();
    void recorderRecordsTheShortcutInUse();

private:
    void startApp();
    test::ProcessRun run(const QString& program, const QStringList& arguments) {
        return test::runProcess(program, arguments, m_env, {}, 10000);
    }
    QRect visiblePanel() {
        return test::visibleWindows({"--name", "^Scrivel Panel$"}).value(0).geometry;
    }
    QByteArray clipboard() {
        return run("xclip", {"-o", "-selection", "clipboard", "-t", "UTF8_STRING"}).out;
    }
    std::optional<QString> storedShortcut() const {
        return QSettingsStore(m_home->filePath(QStringLiteral("config/Scrivel/Scrivel.conf")))
            .text(ShortcutName::rewriteFocusedField().settingsKey());
    }

    std::unique_ptr<QProcess> m_windowManager;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<ScriptedHttpServer> m_server;
    std::unique_ptr<QProcess> m_app;
    QProcessEnvironment m_env;
};

void WindowManagerEndToEndTest::initTestCase() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display (scripts/test provides Xvfb)");
    if (!test::hasPrograms({"openbox", "xdotool", "xclip", "xev", "xprop"}))
        QSKIP("needs openbox, xdotool, xclip, xev and xprop (scripts/install-deps)");
    m_windowManager = test::startWindowManager();
    QVERIFY2(m_windowManager, "openbox did not start (is another window manager running?)");
}

void WindowManagerEndToEndTest::cleanupTestCase() {
    if (m_windowManager)
        test::stopProcess(*m_windowManager);
}

void WindowManagerEndToEndTest::init() {
    m_home = std::make_unique<QTemporaryDir>();
    m_env = test::scrivelEnvironment(m_home->path());
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
    const QString pack =
        test::writeLocalPresetPack(m_home->path(), m_server->url("/v1").toString());
    QCOMPARE(run(SCRIVEL_CLI_PATH, {"presets", "import", pack}).exitCode, 0);
    QCOMPARE(run(SCRIVEL_CLI_PATH, {"presets", "use", "Local"}).exitCode, 0);
}

void WindowManagerEndToEndTest::cleanup() {
    if (!m_app)
        return;
    test::stopProcess(*m_app);
    m_app.reset();
    // The next start must not find this one's name still taken on the bus,
    // or it hands over to it and leaves.
    QTRY_VERIFY(run("dbus-send", {"--session", "--print-reply", "--dest=org.freedesktop.DBus",
                                  "/org/freedesktop/DBus", "org.freedesktop.DBus.GetNameOwner",
                                  "string:com.scrivel.app"})
                    .exitCode != 0);
}

void WindowManagerEndToEndTest::startApp() {
    X11TestClient probe;
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(m_env);
    m_app->setProcessChannelMode(QProcess::ForwardedChannels);
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());
    // Ready once it holds the global shortcut.
    QTRY_VERIFY_WITH_TIMEOUT(probe.isHeldElsewhere(returnKeysym, ctrlAlt), 15000);
}

void WindowManagerEndToEndTest::panelTakesTheKeyboardFromAnotherWindow_data() {
    QTest::addColumn<bool>("byShortcut");
    QTest::newRow("global shortcut") << true;
    QTest::newRow("scrivel --toggle") << false;
}

void WindowManagerEndToEndTest::panelTakesTheKeyboardFromAnotherWindow() {
    QFETCH(bool, byShortcut);
    QSettingsStore(m_home->filePath(QStringLiteral("config/Scrivel/Scrivel.conf")))
        .setBoolean(QStringLiteral("scrivel.panel.has-seen"), true);
    startApp();

    // The user works in another application's window.
    QProcess other;
    other.start(QStringLiteral("xev"), {"-geometry", "400x300+700+100"});
    QVERIFY(other.waitForStarted());
    auto stopOther = qScopeGuard([&other] { test::stopProcess(other); });
    QString otherWindow;
    QTRY_VERIFY_WITH_TIMEOUT(
        !(otherWindow = test::visibleWindows({"--name", "^Event Tester$"}).value(0).id).isEmpty(),
        10000);
    xdotool({"windowactivate", "--sync", otherWindow});
    QTRY_COMPARE(xdotool({"getactivewindow"}).trimmed(), otherWindow.toLatin1());

    xdotool({"mousemove", "300", "200"});
    if (byShortcut)
        xdotool({"key", "ctrl+alt+Return"});
    else
        QCOMPARE(run(SCRIVEL_APP_PATH, {"--toggle"}).exitCode, 0);
    QTRY_VERIFY_WITH_TIMEOUT(!visiblePanel().isEmpty(), 10000);

    // What the user types next lands in the panel.
    xdotool({"type", "--delay", "5", "typed into the panel"});
    xdotool({"key", "ctrl+a", "ctrl+c"});
    QTRY_COMPARE(clipboard(), QByteArray("typed into the panel"));
}

void WindowManagerEndToEndTest::panelAtTheBottomEdgeStaysOnScreenAsAReplyStreams() {
    QByteArray reply;
    for (int i = 1; i <= 24; ++i)
        reply += ScriptedHttpServer::dataLine(
            QStringLiteral("Line %1 of a long reply that keeps the panel growing.\n").arg(i));
    reply += ScriptedHttpServer::doneLine();
    m_server->setHandler(
        [&reply](const auto&) { return ScriptedHttpServer::eventStream(reply, true, 120, 40); });
    startApp();
    // The first start shows the welcome panel, taller with its hint.
    QTRY_VERIFY_WITH_TIMEOUT(!visiblePanel().isEmpty(), 10000);
    const int welcomeHeight = visiblePanel().height();
    xdotool({"key", "Escape"});
    QTRY_VERIFY(visiblePanel().isEmpty());

    // Opened at the bottom edge, without the hint: the panel's own height
    // sets it just above the edge.
    xdotool({"mousemove", "300", QString::number(screen.height() - 5)});
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_VERIFY_WITH_TIMEOUT(!visiblePanel().isEmpty(), 10000);
    QTRY_COMPARE(visiblePanel().bottom() + 1, screen.height() - margin);
    QRect panel = visiblePanel();
    QVERIFY(panel.height() < welcomeHeight);

    // A long reply streams in: the panel grows and moves up, all of it on
    // screen whenever it is looked at.
    xdotool({"type", "--delay", "5", "teh cat"});
    xdotool({"key", "Return"});
    const QRect inside = screen.adjusted(margin, margin, -margin, -margin);
    int samples = 0;
    while (!clipboard().startsWith("Line 1") && samples < 400) {
        panel = visiblePanel();
        QVERIFY2(inside.contains(panel), qPrintable(QStringLiteral("sample %1: %2,%3 %4×%5")
                                                        .arg(samples)
                                                        .arg(panel.x())
                                                        .arg(panel.y())
                                                        .arg(panel.width())
                                                        .arg(panel.height())));
        ++samples;
    }
    QVERIFY(clipboard().startsWith("Line 1 of a long reply"));
    QTRY_COMPARE(visiblePanel().bottom() + 1, screen.height() - margin);
    QVERIFY(visiblePanel().height() > welcomeHeight);
}

void WindowManagerEndToEndTest::recorderRecordsTheShortcutInUse() {
    QSettingsStore(m_home->filePath(QStringLiteral("config/Scrivel/Scrivel.conf")))
        .setBoolean(QStringLiteral("scrivel.panel.has-seen"), true);
    startApp();
    X11TestClient probe;
    // A second start opens the main window; End selects Settings in its
    // sidebar, and tabbing into the shortcut field starts recording, which
    // lets go of the shortcut's grab.
    QCOMPARE(run(SCRIVEL_APP_PATH, {}).exitCode, 0);
    QString mainWindow;
    QTRY_VERIFY_WITH_TIMEOUT(
        !(mainWindow = test::visibleWindows({"--name", "^Scrivel$"}).value(0).id).isEmpty(), 10000);
    QTRY_COMPARE(xdotool({"getactivewindow"}).trimmed(), mainWindow.toLatin1());
    xdotool({"key", "End"});
    bool recording = false;
    for (int tabs = 0; tabs < 12 && !recording; ++tabs) {
        xdotool({"key", "Tab"});
        recording =
            QTest::qWaitFor([&] { return !probe.isHeldElsewhere(returnKeysym, ctrlAlt); }, 300);
    }
    QVERIFY2(recording, "the recorder never let go of the shortcut's grab");

    // The shortcut in use is recorded, not fired: recording ends (the grab
    // is taken again), the panel stays hidden, the shortcut is stored.
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_VERIFY_WITH_TIMEOUT(probe.isHeldElsewhere(returnKeysym, ctrlAlt), 5000);
    QVERIFY(visiblePanel().isEmpty());
    QCOMPARE(storedShortcut(), std::optional(QString::fromUtf8(Shortcut{36, 6144}.toJson())));
}

QTEST_GUILESS_MAIN(WindowManagerEndToEndTest)
#include "tst_WindowManagerEndToEnd.moc"
