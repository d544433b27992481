#include "core/presets/PresetStore.h"
#include "platform/linux/QSettingsStore.h"
#include "support/ProcessRun.h"
#include "support/ScriptedHttpServer.h"
#include "support/X11TestClient.h"

#include <QDBusInterface>
#include <QLocalSocket>
#include <QProcess>
#include <QRect>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;
using test::ScriptedHttpServer;
using test::xdotool;

// The real scrivel on the test's X display and session bus, driven from the
// outside as a user would: xdotool for keys and the pointer, xclip for the
// clipboard, a second scrivel for --toggle and the second start.
class AppEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void panelOpensCentredOnceThenFollowsThePointer();
    void secondStartLeavesOneInstance();
    void oneInstanceWithoutASessionBus_data();
    void oneInstanceWithoutASessionBus();
    void toggleThatReachesNoInstanceStartsNothing_data();
    void toggleThatReachesNoInstanceStartsNothing();
    void withoutADisplay_data();
    void withoutADisplay();
    void aDayWithTheTray();
    void damagedPresetsAreToldWhenAWindowFirstShows();
    void unwritableSettingsAreOneAlert();

private:
    void startApp();
    // Starts the app with its own environment and output kept, and waits
    // for the panel the very first launch shows.
    void startAppShowingWelcome(const QProcessEnvironment& environment);
    void stopApp();
    // A runtime folder private to the user (or with the given mode).
    QString runtimeFolder(QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner |
                                                           QFile::ExeOwner);
    test::ProcessRun run(const QString& program, const QStringList& arguments) {
        return test::runProcess(program, arguments, m_env, {}, 10000);
    }
    QByteArray clipboard(const QString& target = QStringLiteral("UTF8_STRING")) {
        return run("xclip", {"-o", "-selection", "clipboard", "-t", target}).out;
    }
    void typeAndSend(const QString& text);
    // The visible panel window's geometry, or an empty rectangle.
    QRect visiblePanel() {
        return test::visibleWindows({"--name", "^Scrivel Panel$"}).value(0).geometry;
    }
    // Whether a visible "Scrivel" window is at least as wide as the main
    // window's minimum (the panel is narrower).
    bool mainWindowVisible();
    // Whether an alert (a "Scrivel" window narrower than the main window) is
    // visible.
    bool alertVisible();
    // The tray item's state as the app publishes it on the session bus.
    QString trayProperty(const char* name);
    // Opens the tray menu and walks it with the keyboard.
    void chooseFromTrayMenu(const QStringList& keys);

    // Xvfb starts over when its last client leaves, and an app that connects
    // meanwhile finds no display: this client stays for the whole suite.
    std::unique_ptr<test::X11TestClient> m_display;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<ScriptedHttpServer> m_server;
    std::unique_ptr<QProcess> m_app;
    QProcessEnvironment m_env;
    QElapsedTimer m_lastTrayClick;
};

void AppEndToEndTest::initTestCase() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display (scripts/test provides Xvfb)");
    if (!test::hasPrograms({"xdotool", "xclip"}))
        QSKIP("needs xdotool and xclip");
    m_display = std::make_unique<test::X11TestClient>();
    QVERIFY(m_display->isConnected());
}

void AppEndToEndTest::init() {
    m_home = std::make_unique<QTemporaryDir>();
    m_env = test::scrivelEnvironment(m_home->path());
    m_lastTrayClick.invalidate();
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
}

void AppEndToEndTest::cleanup() {
    stopApp();
}

void AppEndToEndTest::startApp() {
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(m_env);
    m_app->setProcessChannelMode(QProcess::ForwardedChannels);
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());
    // Up once it owns its name on the session bus.
    QVERIFY(QTest::qWaitFor(
        [this] {
            return run("dbus-send", {"--session", "--print-reply", "--dest=org.freedesktop.DBus",
                                     "/org/freedesktop/DBus", "org.freedesktop.DBus.GetNameOwner",
                                     "string:com.scrivel.app"})
                       .exitCode == 0;
        },
        10000));
}

void AppEndToEndTest::startAppShowingWelcome(const QProcessEnvironment& environment) {
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(environment);
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());
    QVERIFY2(QTest::qWaitFor([this] { return !visiblePanel().isEmpty(); }, 10000),
             m_app->readAllStandardError().constData());
}

QString AppEndToEndTest::runtimeFolder(QFile::Permissions permissions) {
    const QString folder = m_home->filePath(QStringLiteral("run"));
    if (!QDir().mkpath(folder) || !QFile::setPermissions(folder, permissions))
        return {};
    return folder;
}

void AppEndToEndTest::stopApp() {
    if (m_app)
        test::stopProcess(*m_app);
}

void AppEndToEndTest::typeAndSend(const QString& text) {
    xdotool({"key", "ctrl+a", "BackSpace"});
    xdotool({"type", "--delay", "5", text});
    xdotool({"key", "Return"});
}

bool AppEndToEndTest::mainWindowVisible() {
    const auto windows = test::visibleWindows({"--name", "^Scrivel$"});
    return std::ranges::any_of(windows, [](const auto& w) { return w.geometry.width() >= 720; });
}

bool AppEndToEndTest::alertVisible() {
    const auto windows = test::visibleWindows({"--name", "^Scrivel$"});
    return std::ranges::any_of(windows, [](const auto& w) {
        return w.geometry.width() >= 200 && w.geometry.width() < 720;
    });
}

QString AppEndToEndTest::trayProperty(const char* name) {
    QDBusInterface item(QStringLiteral("com.scrivel.app"),
                        QStringLiteral("/com/scrivel/StatusItem"),
                        QStringLiteral("com.scrivel.StatusItem"));
    return item.property(name).toString();
}

void AppEndToEndTest::chooseFromTrayMenu(const QStringList& keys) {
    const QStringList ofTheApp{"--pid", QString::number(m_app->processId())};
    // The icon is the app's small window docked in the tray.
    QString icon;
    QStringList shown;
    for (const auto& window : test::visibleWindows(ofTheApp)) {
        shown.append(window.id);
        if (window.geometry.width() < 64 && window.geometry.height() < 64)
            icon = window.id;
    }
    QVERIFY2(!icon.isEmpty(), "no tray icon");
    // A menu is open, and holds the keyboard, once a window of the app shows
    // that was not there before.
    QStringList menus;
    const auto menuOpened = [&] {
        for (const auto& window : test::visibleWindows(ofTheApp)) {
            if (!shown.contains(window.id) && !menus.contains(window.id)) {
                menus.append(window.id);
                return true;
            }
        }
        return false;
    };
    // Paces the clicks: one within the double-click interval of the last is
    // a double click, which closes the menu the click opened.
    if (m_lastTrayClick.isValid())
        QTest::qWait(int(std::max<qint64>(0, 500 - m_lastTrayClick.elapsed())));
    xdotool({"mousemove", "--window", icon, "10", "10", "click", "1"});
    m_lastTrayClick.start();
    QVERIFY2(QTest::qWaitFor(menuOpened, 5000), "the tray menu did not open");
    for (const QString& key : keys) {
        xdotool({"key", key});
        if (key == QLatin1String("Right"))
            QVERIFY2(QTest::qWaitFor(menuOpened, 5000), "the submenu did not open");
    }
    // Until its menus have closed, a click on the icon would only close them.
    QTRY_VERIFY_WITH_TIMEOUT(
        std::ranges::none_of(test::visibleWindows(ofTheApp),
                             [&](const auto& w) { return menus.contains(w.id); }),
        5000);
}

void AppEndToEndTest::panelOpensCentredOnceThenFollowsThePointer() {
    startApp();
    QRect panel;
    QVERIFY(QTest::qWaitFor([&] { return !(panel = visiblePanel()).isEmpty(); }, 10000));
    // Centred: 24 px left of the middle, 12 px below a line 15 % of the
    // screen's height above the middle (scripts/test's screen is 1280 × 800).
    QCOMPARE(panel, QRect(1280 / 2 - 24, 800 / 2 - 120 + 12, 440, panel.height()));
    // The sample text is in the focused field.
    xdotool({"key", "ctrl+a", "ctrl+c"});
    QTRY_COMPARE(clipboard(), QByteArray("This sentense has a typo."));

    QCOMPARE(run(SCRIVEL_APP_PATH, {"--toggle"}).exitCode, 0);
    QTRY_VERIFY(visiblePanel().isEmpty());
    xdotool({"mousemove", "300", "200"});
    QCOMPARE(run(SCRIVEL_APP_PATH, {"--toggle"}).exitCode, 0);
    QVERIFY(QTest::qWaitFor([&] { return !(panel = visiblePanel()).isEmpty(); }, 5000));
    QCOMPARE(panel.topLeft(), QPoint(300 - 24, 200 + 12));

    // The welcome is shown once: not on the next start. The launch is done
    // (and would have shown it) once the tray item answers on the bus.
    stopApp();
    startApp();
    QTRY_COMPARE_WITH_TIMEOUT(trayProperty("Look"), QStringLiteral("wand"), 10000);
    QDBusInterface state(QStringLiteral("com.scrivel.app"), QStringLiteral("/com/scrivel/State"),
                         QStringLiteral("com.scrivel.State"));
    QCOMPARE(state.property("PanelVisible"), QVariant(false));
}

void AppEndToEndTest::secondStartLeavesOneInstance() {
    startApp();
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(run(SCRIVEL_APP_PATH, {}).exitCode, 0);
    QVERIFY(clock.elapsed() < 5000);
    QCOMPARE(m_app->state(), QProcess::Running);
    // The running one answers by opening its main window on the presets.
    QTRY_VERIFY_WITH_TIMEOUT(mainWindowVisible(), 5000);
}

void AppEndToEndTest::oneInstanceWithoutASessionBus_data() {
    QTest::addColumn<bool>("appHasBus");
    QTest::addColumn<bool>("laterStartsHaveBus");
    QTest::newRow("no bus anywhere") << false << false;
    QTest::newRow("later starts without the app's bus") << true << false;
    QTest::newRow("app without the later starts' bus") << false << true;
}

// Six toggles without a session bus once left six resident instances, each
// printing the X error of the hot key the first one held.
void AppEndToEndTest::oneInstanceWithoutASessionBus() {
    QFETCH(bool, appHasBus);
    QFETCH(bool, laterStartsHaveBus);
    const QString runtime = runtimeFolder();
    QVERIFY(!runtime.isEmpty());
    m_env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
    // "disabled:" also keeps libdbus from launching a bus of its own.
    QProcessEnvironment noBus = m_env;
    noBus.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("disabled:"));
    const QProcessEnvironment later = laterStartsHaveBus ? m_env : noBus;
    auto runAgain = [&later](const QStringList& arguments) {
        return test::runProcess(SCRIVEL_APP_PATH, arguments, later, {}, 10000);
    };
    auto answered = [](const test::ProcessRun& run) {
        return run.exitCode == 0 && run.out.isEmpty() && run.err.isEmpty();
    };

    startAppShowingWelcome(appHasBus ? m_env : noBus);
    // Each later start hands over and ends (a resident one would be killed
    // by runProcess and report -1) without a word.
    QVERIFY(answered(runAgain({"--toggle"})));
    QTRY_VERIFY(visiblePanel().isEmpty());
    xdotool({"mousemove", "300", "200"});
    QVERIFY(answered(runAgain({"--toggle"})));
    QTRY_COMPARE(visiblePanel().topLeft(), QPoint(300 - 24, 200 + 12));
    QVERIFY(answered(runAgain({})));
    QTRY_VERIFY_WITH_TIMEOUT(mainWindowVisible(), 5000);
    QCOMPARE(m_app->state(), QProcess::Running);
    QVERIFY(!m_app->readAllStandardOutput().contains("Error registering hotkey"));

    if (appHasBus)
        return;
    // An instance that was killed leaves its socket; the next one takes it
    // over and is reached as before.
    m_app->kill();
    QVERIFY(m_app->waitForFinished(5000));
    QCOMPARE(QDir(runtime).entryList({"*.socket"}, QDir::System).size(), 1);
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(noBus);
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());
    const QString socket =
        QDir(runtime).filePath(QDir(runtime).entryList({"*.socket"}, QDir::System).value(0));
    QTRY_VERIFY_WITH_TIMEOUT(
        [&socket] {
            QLocalSocket probe;
            probe.connectToServer(socket);
            return probe.waitForConnected(500);
        }(),
        10000);
    QVERIFY(answered(runAgain({"--toggle"})));
    QTRY_VERIFY(!visiblePanel().isEmpty());
    QCOMPARE(m_app->state(), QProcess::Running);
}

void AppEndToEndTest::toggleThatReachesNoInstanceStartsNothing_data() {
    QTest::addColumn<QString>("runtime"); // "unset" or "shared"
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("runtime folder unset") << "unset" << QByteArray("XDG_RUNTIME_DIR is unset.\n");
    QTest::newRow("runtime folder open to others")
        << "shared" << QByteArray("is not private to this user.\n");
}

void AppEndToEndTest::toggleThatReachesNoInstanceStartsNothing() {
    QFETCH(QString, runtime);
    QFETCH(QByteArray, reason);
    m_env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("disabled:"));
    if (runtime == QLatin1String("unset"))
        m_env.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    else
        m_env.insert(QStringLiteral("XDG_RUNTIME_DIR"),
                     runtimeFolder(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                   QFile::ReadOther | QFile::ExeOther));
    const test::ProcessRun toggled = run(SCRIVEL_APP_PATH, {"--toggle"});
    QCOMPARE(toggled.exitCode, 1);
    QCOMPARE(toggled.err.count('\n'), 1);
    QVERIFY2(toggled.err.startsWith(
                 "scrivel: --toggle cannot reach a running Scrivel: no session bus, and "),
             toggled.err.constData());
    QVERIFY2(toggled.err.endsWith(reason), toggled.err.constData());
    QVERIFY(toggled.out.isEmpty());
    // Nothing started: no settings were written, no window shown.
    QVERIFY(!QFile::exists(m_home->filePath(QStringLiteral("config/Scrivel/Scrivel.conf"))));
    QVERIFY(visiblePanel().isEmpty());
}

void AppEndToEndTest::withoutADisplay_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("out"); // a pattern
    QTest::addColumn<QString>("err");
    const QString noDisplay = QStringLiteral("^scrivel: no display found[^\n]*\n$");
    QTest::newRow("start") << QStringList{} << 1 << u"^$"_s << noDisplay;
    QTest::newRow("toggle") << QStringList{"--toggle"} << 1 << u"^$"_s << noDisplay;
    // A package check asks the installed binary for its version on a
    // machine without a desktop.
    QTest::newRow("version") << QStringList{"--version"} << 0 << u"^Scrivel \\d+\\.\\d+\\.\\d+\n$"_s
                             << u"^$"_s;
    QTest::newRow("version after toggle")
        << QStringList{"--toggle", "-v"} << 0 << u"^Scrivel \\d"_s << u"^$"_s;
    QTest::newRow("help") << QStringList{"--help"} << 0 << u"Usage: .*--toggle"_s << u"^$"_s;
}

void AppEndToEndTest::withoutADisplay() {
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, out);
    QFETCH(QString, err);
    m_env.remove(QStringLiteral("DISPLAY"));
    m_env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    const test::ProcessRun started = run(SCRIVEL_APP_PATH, arguments);
    QCOMPARE(started.exitCode, exitCode);
    const auto matches = [](const QByteArray& text, const QString& pattern) {
        return QRegularExpression(pattern, QRegularExpression::DotMatchesEverythingOption)
            .match(QString::fromUtf8(text))
            .hasMatch();
    };
    QVERIFY2(matches(started.out, out), started.out.constData());
    QVERIFY2(matches(started.err, err), started.err.constData());
    // Nothing written: no settings were created.
    QVERIFY(!QFile::exists(m_home->filePath(QStringLiteral("config/Scrivel/Scrivel.conf"))));
}

void AppEndToEndTest::aDayWithTheTray() {
    if (QStandardPaths::findExecutable(QStringLiteral("trayer")).isEmpty())
        QSKIP("needs trayer as the tray host");
    QProcess tray;
    tray.start(QStringLiteral("trayer"), {"--edge", "top", "--align", "right", "--widthtype",
                                          "request", "--height", "24", "--SetDockType", "false"});
    QVERIFY(tray.waitForStarted());
    auto stopTray = qScopeGuard([&tray] {
        tray.kill();
        tray.waitForFinished(2000);
    });
    const QString pack =
        test::writeLocalPresetPack(m_home->path(), m_server->url("/v1").toString());
    QCOMPARE(run(SCRIVEL_CLI_PATH, {"presets", "import", pack}).exitCode, 0);
    QCOMPARE(run(SCRIVEL_CLI_PATH, {"presets", "use", "Local"}).exitCode, 0);
    int calls = 0;
    m_server->setHandler([&calls](const auto&) {
        if (++calls > 1) // cut off: no [DONE], no finish reason
            return ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("The dog"), true);
        return ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("The cat ") +
                                                   ScriptedHttpServer::dataLine("sat.") +
                                                   ScriptedHttpServer::doneLine(),
                                               true, 16, 30);
    });
    startApp();
    QTRY_COMPARE_WITH_TIMEOUT(trayProperty("Look"), QStringLiteral("wand"), 10000);
    QVERIFY(QTest::qWaitFor([&] { return !visiblePanel().isEmpty(); }, 10000));

    // A streamed rewrite: the result on the clipboard, concealed from
    // clipboard history, "Complete" in the tray, then rest.
    typeAndSend(QStringLiteral("teh cat sat"));
    QTRY_COMPARE_WITH_TIMEOUT(trayProperty("ToolTip"), QStringLiteral("Complete"), 10000);
    QVERIFY(m_server->requests()[0].body.contains("teh cat sat"));
    QCOMPARE(trayProperty("Look"), QStringLiteral("checkMark"));
    QCOMPARE(trayProperty("StatusLine"), QStringLiteral("Status: Complete"));
    QCOMPARE(clipboard(), QByteArray("The cat sat."));
    QVERIFY(clipboard(QStringLiteral("TARGETS")).contains("x-kde-passwordManagerHint"));
    QVERIFY(!visiblePanel().isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(trayProperty("Look"), QStringLiteral("wand"), 5000);
    QTRY_COMPARE_WITH_TIMEOUT(trayProperty("ToolTip"), QStringLiteral("Scrivel"), 5000);

    // A reply cut off: the triangle and its sentence, and nothing copied.
    typeAndSend(QStringLiteral("teh dog"));
    QTRY_COMPARE_WITH_TIMEOUT(trayProperty("Look"), QStringLiteral("triangle"), 10000);
    const QString message = trayProperty("ToolTip");
    QCOMPARE(message,
             QStringLiteral("The connection closed before the reply was complete. Try again."));
    QCOMPARE(trayProperty("StatusLine"), QStringLiteral("Status: ") + message);
    QCOMPARE(clipboard(), QByteArray("The cat sat."));
    xdotool({"key", "Escape"});
    QTRY_VERIFY(visiblePanel().isEmpty());

    // The preset submenu: Fix, Make Concise, Improve Prompt, Local.
    chooseFromTrayMenu({"Down", "Down", "Right", "Down", "Return"});
    QTRY_VERIFY(
        run(SCRIVEL_CLI_PATH, {"presets"}).out.split('\n').value(1).startsWith("* Make Concise"));

    // "Settings…" opens the main window.
    chooseFromTrayMenu({"Down", "Down", "Down", "Return"});
    QTRY_VERIFY_WITH_TIMEOUT(mainWindowVisible(), 5000);

    // "Quit Scrivel" ends the process.
    xdotool({"key", "Escape"});
    chooseFromTrayMenu({"Down", "Down", "Down", "Down", "Return"});
    QVERIFY(QTest::qWaitFor([this] { return m_app->state() == QProcess::NotRunning; }, 5000));
    QCOMPARE(m_app->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_app->exitCode(), 0);
}

void AppEndToEndTest::damagedPresetsAreToldWhenAWindowFirstShows() {
    QCOMPARE(run(SCRIVEL_CLI_PATH, {"presets"}).exitCode, 0);
    {
        QSettingsStore settings(m_home->filePath(QStringLiteral("config/Scrivel/Scrivel.conf")));
        QByteArray list = settings.data(PresetStore::presetsKey()).value_or(QByteArray());
        list.replace("\"name\":\"Make Concise\"", "\"name\":7");
        QVERIFY(settings.setData(PresetStore::presetsKey(), list));
        QVERIFY(settings.setBoolean(QStringLiteral("scrivel.panel.has-seen"), true));
    }
    startApp();
    // The tray says it until a window has shown the alert.
    QTRY_VERIFY_WITH_TIMEOUT(
        trayProperty("StatusLine")
            .startsWith(u"Status: Presets couldn’t be read: copy in presets-backup-"_s),
        10000);
    QVERIFY(!QTest::qWaitFor([this] { return alertVisible(); }, 500));

    QCOMPARE(run(SCRIVEL_APP_PATH, {"--toggle"}).exitCode, 0);
    QTRY_VERIFY_WITH_TIMEOUT(alertVisible(), 5000);
    xdotool({"key", "Return"});
    // Closed, the panel it stood in front of comes back, and the notice is
    // gone from the tray.
    QTRY_VERIFY_WITH_TIMEOUT(!visiblePanel().isEmpty(), 5000);
    QVERIFY(!alertVisible());
    QVERIFY(!trayProperty("StatusLine").contains(u"presets-backup"_s));

    // Told once: neither the panel nor the main window shows it again.
    QCOMPARE(run(SCRIVEL_APP_PATH, {"--toggle"}).exitCode, 0);
    QTRY_VERIFY(visiblePanel().isEmpty());
    QCOMPARE(run(SCRIVEL_APP_PATH, {}).exitCode, 0);
    QTRY_VERIFY_WITH_TIMEOUT(mainWindowVisible(), 5000);
    QVERIFY(!QTest::qWaitFor([this] { return alertVisible(); }, 500));
}

void AppEndToEndTest::unwritableSettingsAreOneAlert() {
    // A file where the settings folder belongs: every write of the launch
    // (the shortcut, the built-in presets, the first-launch flag) fails.
    QVERIFY(QDir().mkpath(m_home->filePath(QStringLiteral("config"))));
    QFile blocker(m_home->filePath(QStringLiteral("config/Scrivel")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    startApp();
    QTRY_VERIFY_WITH_TIMEOUT(alertVisible(), 10000);
    // One alert for all the failed writes: no other comes.
    QVERIFY(!QTest::qWaitFor(
        [] {
            return test::visibleWindows({"--name", "^Scrivel$"}).size() != 1;
        },
        500));
    xdotool({"key", "Return"});
    QTRY_VERIFY(!alertVisible());
    // The presets are held in memory: the app runs on.
    QCOMPARE(run(SCRIVEL_APP_PATH, {"--toggle"}).exitCode, 0);
    QTRY_VERIFY_WITH_TIMEOUT(!visiblePanel().isEmpty(), 5000);
    QCOMPARE(m_app->state(), QProcess::Running);
}

QTEST_GUILESS_MAIN(AppEndToEndTest)
#include "tst_AppEndToEnd.moc"
