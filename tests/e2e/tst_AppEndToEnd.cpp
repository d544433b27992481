#include "presets/PresetPackDocument.h"
#include "support/ScriptedHttpServer.h"

#include <QProcess>
#include <QRect>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using test::ScriptedHttpServer;

// The real scrivel on the test's X display and session bus, driven from the
// outside as a user would: xdotool for keys and the pointer, xclip for the
// clipboard, a second scrivel for --toggle and the second start.
class AppEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void firstLaunchShowsTheCentredPanelOnce();
    void toggleHidesAndShowsThePanel();
    void rewriteStreamsAndCopiesTheResult();
    void secondStartLeavesOneInstance();
    void noDisplayIsOneClearLine();

private:
    QProcessEnvironment environment() const;
    void startApp();
    void stopApp();
    QByteArray tool(const QString& program, const QStringList& arguments, int* exitCode = nullptr);
    // The visible panel window's geometry, or an empty rectangle.
    QRect visiblePanel();
    // Whether a visible "Scrivel" window is at least as wide as the main
    // window's minimum (the panel is narrower).
    bool mainWindowVisible();
    void addLocalPreset();

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<ScriptedHttpServer> m_server;
    std::unique_ptr<QProcess> m_app;
};

void AppEndToEndTest::initTestCase() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display (scripts/test provides Xvfb)");
    for (const char* program : {"xdotool", "xclip"}) {
        if (QStandardPaths::findExecutable(QString::fromLatin1(program)).isEmpty())
            QSKIP("needs xdotool and xclip");
    }
}

void AppEndToEndTest::init() {
    m_home = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
}

void AppEndToEndTest::cleanup() {
    stopApp();
}

QProcessEnvironment AppEndToEndTest::environment() const {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home->filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), m_home->filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("SCRIVEL_SECRET_STORE"), QStringLiteral("file"));
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    env.remove(QStringLiteral("http_proxy"));
    env.remove(QStringLiteral("HTTP_PROXY"));
    return env;
}

void AppEndToEndTest::startApp() {
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(environment());
    m_app->setProcessChannelMode(QProcess::ForwardedChannels);
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());
    // Up once it owns its name on the session bus.
    QVERIFY(QTest::qWaitFor(
        [this] {
            int code = -1;
            tool(QStringLiteral("dbus-send"),
                 {"--session", "--print-reply", "--dest=org.freedesktop.DBus",
                  "/org/freedesktop/DBus", "org.freedesktop.DBus.GetNameOwner",
                  "string:com.scrivel.app"},
                 &code);
            return code == 0;
        },
        10000));
}

void AppEndToEndTest::stopApp() {
    if (!m_app || m_app->state() == QProcess::NotRunning)
        return;
    m_app->terminate();
    if (!QTest::qWaitFor([this] { return m_app->state() == QProcess::NotRunning; }, 5000))
        m_app->kill();
    m_app->waitForFinished(2000);
}

QByteArray AppEndToEndTest::tool(const QString& program, const QStringList& arguments,
                                 int* exitCode) {
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(program, arguments);
    // The loopback server lives in this process: keep the event loop turning.
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 10000))
        process.kill();
    process.waitForFinished(1000);
    if (exitCode)
        *exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return process.readAllStandardOutput();
}

QRect AppEndToEndTest::visiblePanel() {
    const QByteArray ids =
        tool(QStringLiteral("xdotool"), {"search", "--onlyvisible", "--name", "^Scrivel$"});
    const QByteArray id = ids.trimmed().split('\n').value(0);
    if (id.isEmpty())
        return {};
    const QByteArray shell =
        tool(QStringLiteral("xdotool"), {"getwindowgeometry", "--shell", QString::fromLatin1(id)});
    QHash<QByteArray, int> values;
    for (const QByteArray& line : shell.split('\n')) {
        const QList<QByteArray> pair = line.split('=');
        if (pair.size() == 2)
            values.insert(pair[0], pair[1].toInt());
    }
    return QRect(values.value("X"), values.value("Y"), values.value("WIDTH"),
                 values.value("HEIGHT"));
}

bool AppEndToEndTest::mainWindowVisible() {
    const QByteArray ids =
        tool(QStringLiteral("xdotool"), {"search", "--onlyvisible", "--name", "^Scrivel$"});
    for (const QByteArray& id : ids.trimmed().split('\n')) {
        if (id.isEmpty())
            continue;
        const QByteArray shell = tool(QStringLiteral("xdotool"),
                                      {"getwindowgeometry", "--shell", QString::fromLatin1(id)});
        for (const QByteArray& line : shell.split('\n')) {
            if (line.startsWith("WIDTH=") && line.mid(6).toInt() >= 720)
                return true;
        }
    }
    return false;
}

void AppEndToEndTest::addLocalPreset() {
    PresetPackDocument pack;
    pack.name = QStringLiteral("Local");
    PresetPackItem item;
    item.name = QStringLiteral("Local");
    item.providerID = QStringLiteral("custom");
    item.customBaseURL = m_server->url(QStringLiteral("/v1")).toString();
    item.model = QStringLiteral("local-model");
    item.instructions = QStringLiteral("Fix it.");
    pack.presets = {item};
    const QString path = m_home->filePath(QStringLiteral("local.scrivel.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(*pack.encode());
    file.close();
    int code = -1;
    tool(QStringLiteral(SCRIVEL_CLI_PATH), {"presets", "import", path}, &code);
    QCOMPARE(code, 0);
    tool(QStringLiteral(SCRIVEL_CLI_PATH), {"presets", "use", "Local"}, &code);
    QCOMPARE(code, 0);
}

void AppEndToEndTest::firstLaunchShowsTheCentredPanelOnce() {
    startApp();
    QRect panel;
    QVERIFY(QTest::qWaitFor([&] { return !(panel = visiblePanel()).isEmpty(); }, 10000));
    // Centred: 24 px left of the middle, 12 px below a line 15 % of the
    // screen's height above the middle (scripts/test's screen is 1280 × 800).
    QCOMPARE(panel.x(), 1280 / 2 - 24);
    QCOMPARE(panel.y(), 800 / 2 - 120 + 12);
    QCOMPARE(panel.width(), 440);
    // The sample text is in the focused field.
    tool(QStringLiteral("xdotool"), {"key", "ctrl+a", "ctrl+c"});
    QTRY_COMPARE(tool(QStringLiteral("xclip"), {"-o", "-selection", "clipboard"}),
                 QByteArray("This sentense has a typo."));

    stopApp();
    startApp();
    QTest::qWait(1500);
    QVERIFY(visiblePanel().isEmpty());
}

void AppEndToEndTest::toggleHidesAndShowsThePanel() {
    startApp();
    QVERIFY(QTest::qWaitFor([&] { return !visiblePanel().isEmpty(); }, 10000));
    int code = -1;
    tool(QStringLiteral(SCRIVEL_APP_PATH), {"--toggle"}, &code);
    QCOMPARE(code, 0);
    QTRY_VERIFY(visiblePanel().isEmpty());

    tool(QStringLiteral("xdotool"), {"mousemove", "300", "200"});
    tool(QStringLiteral(SCRIVEL_APP_PATH), {"--toggle"}, &code);
    QCOMPARE(code, 0);
    QRect panel;
    QVERIFY(QTest::qWaitFor([&] { return !(panel = visiblePanel()).isEmpty(); }, 5000));
    QCOMPARE(panel.topLeft(), QPoint(300 - 24, 200 + 12));
}

void AppEndToEndTest::rewriteStreamsAndCopiesTheResult() {
    addLocalPreset();
    m_server->setHandler([](const auto&) {
        return ScriptedHttpServer::eventStream(ScriptedHttpServer::dataLine("The cat ") +
                                                   ScriptedHttpServer::dataLine("sat."),
                                               true, 16, 30);
    });
    startApp();
    QVERIFY(QTest::qWaitFor([&] { return !visiblePanel().isEmpty(); }, 10000));
    tool(QStringLiteral("xdotool"), {"key", "ctrl+a", "BackSpace"});
    tool(QStringLiteral("xdotool"), {"type", "--delay", "5", "teh cat sat"});
    tool(QStringLiteral("xdotool"), {"key", "Return"});
    QTRY_COMPARE_WITH_TIMEOUT(m_server->requests().size(), 1, 10000);
    QVERIFY(m_server->requests()[0].body.contains("teh cat sat"));
    QTRY_COMPARE_WITH_TIMEOUT(tool(QStringLiteral("xclip"), {"-o", "-selection", "clipboard"}),
                              QByteArray("The cat sat."), 10000);
    // Concealed from clipboard history.
    const QByteArray targets =
        tool(QStringLiteral("xclip"), {"-o", "-selection", "clipboard", "-t", "TARGETS"});
    QVERIFY(targets.contains("x-kde-passwordManagerHint"));
    QVERIFY(!visiblePanel().isEmpty());
}

void AppEndToEndTest::secondStartLeavesOneInstance() {
    startApp();
    int code = -1;
    QElapsedTimer clock;
    clock.start();
    tool(QStringLiteral(SCRIVEL_APP_PATH), {}, &code);
    QCOMPARE(code, 0);
    QVERIFY(clock.elapsed() < 5000);
    QCOMPARE(m_app->state(), QProcess::Running);
    // The running one answers by opening its main window on the presets.
    QTRY_VERIFY_WITH_TIMEOUT(mainWindowVisible(), 5000);
}

void AppEndToEndTest::noDisplayIsOneClearLine() {
    QProcess process;
    QProcessEnvironment env = environment();
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(process.waitForFinished(5000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    const QByteArray err = process.readAllStandardError();
    QCOMPARE(err.count('\n'), 1);
    QVERIFY(err.startsWith("scrivel: no display found"));
    // Nothing written: no settings were created.
    QVERIFY(!QFile::exists(m_home->filePath(QStringLiteral("config/Scrivel/Scrivel.conf"))));
}

QTEST_GUILESS_MAIN(AppEndToEndTest)
#include "tst_AppEndToEnd.moc"
