#include "core/shortcuts/Shortcut.h"
#include "core/shortcuts/ShortcutName.h"
#include "platform/linux/QSettingsStore.h"
#include "support/ProcessRun.h"
#include "support/X11TestClient.h"

#include <QProcess>
#include <QRect>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using test::X11TestClient;
using test::xdotool;

namespace {

constexpr xcb_keysym_t returnKeysym = 0xff0d;
constexpr xcb_keysym_t kKeysym = 0x6b;
constexpr uint16_t ctrlAlt = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;
constexpr uint16_t ctrlShift = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT;

} // namespace

// The real scrivel under the test display: the global shortcut opens the
// panel next to the pointer from anywhere and closes it again, and a
// shortcut changed in the settings file takes over after a restart.
class ShortcutEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void shortcutTogglesThePanelNearThePointer();
    void changedShortcutWorksAfterARestart();
    void combinationHeldElsewhereIsReported();

private:
    void startApp();
    void stopApp();
    QList<test::VisibleWindow> visibleWindows() {
        return test::visibleWindows({"--pid", QString::number(m_app->processId())});
    }
    std::optional<QString> storedShortcut() const;

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QProcess> m_app;
    std::unique_ptr<QSettingsStore> m_settings;
};

void ShortcutEndToEndTest::initTestCase() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display (scripts/test provides one through xvfb-run)");
    if (QStandardPaths::findExecutable(QStringLiteral("xdotool")).isEmpty())
        QSKIP("needs xdotool (installed by scripts/install-deps)");
}

void ShortcutEndToEndTest::init() {
    m_home = std::make_unique<QTemporaryDir>();
    m_settings = std::make_unique<QSettingsStore>(m_home->path() +
                                                  QStringLiteral("/config/Scrivel/Scrivel.conf"));
    // Not the first launch: no welcome panel in the way.
    m_settings->setBoolean(QStringLiteral("scrivel.panel.has-seen"), true);
}

void ShortcutEndToEndTest::cleanup() {
    stopApp();
}

void ShortcutEndToEndTest::startApp() {
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(test::scrivelEnvironment(m_home->path()));
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());
}

void ShortcutEndToEndTest::stopApp() {
    if (!m_app)
        return;
    test::stopProcess(*m_app);
    m_app.reset();
}

std::optional<QString> ShortcutEndToEndTest::storedShortcut() const {
    // A fresh reader: the app wrote the file after ours was opened.
    return QSettingsStore(m_settings->fileName())
        .text(ShortcutName::rewriteFocusedField().settingsKey());
}

void ShortcutEndToEndTest::shortcutTogglesThePanelNearThePointer() {
    X11TestClient probe;
    QVERIFY(probe.isConnected());
    startApp();
    // Ready once the app holds the grab.
    QTRY_VERIFY_WITH_TIMEOUT(probe.isHeldElsewhere(returnKeysym, ctrlAlt), 15000);
    QCOMPARE(storedShortcut(), std::optional(QString::fromUtf8(Shortcut{36, 6144}.toJson())));
    QVERIFY(visibleWindows().isEmpty());

    xdotool({"mousemove", "500", "300"});
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_COMPARE_WITH_TIMEOUT(visibleWindows().size(), 1, 10000);
    const QRect panel = visibleWindows().first().geometry;
    // Top-left corner 24 px left of and 12 px below the pointer.
    QVERIFY2(qAbs(panel.x() - 476) <= 4 && qAbs(panel.y() - 312) <= 4,
             qPrintable(QStringLiteral("panel at %1,%2").arg(panel.x()).arg(panel.y())));

    xdotool({"key", "ctrl+alt+Return"});
    QTRY_VERIFY_WITH_TIMEOUT(visibleWindows().isEmpty(), 10000);

    // Again, somewhere else: it follows the pointer.
    xdotool({"mousemove", "800", "500"});
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_COMPARE_WITH_TIMEOUT(visibleWindows().size(), 1, 10000);
    QVERIFY(qAbs(visibleWindows().first().geometry.x() - 776) <= 4);
}

void ShortcutEndToEndTest::changedShortcutWorksAfterARestart() {
    X11TestClient probe;
    QVERIFY(probe.isConnected());
    m_settings->setText(ShortcutName::rewriteFocusedField().settingsKey(),
                        QString::fromUtf8(Shortcut{0x28, 4608}.toJson())); // Ctrl+Shift+K
    startApp();
    QTRY_VERIFY_WITH_TIMEOUT(probe.isHeldElsewhere(kKeysym, ctrlShift), 15000);
    QVERIFY(!probe.isHeldElsewhere(returnKeysym, ctrlAlt));

    xdotool({"key", "ctrl+alt+Return"});
    QVERIFY(!QTest::qWaitFor([&] { return !visibleWindows().isEmpty(); }, 1000));
    xdotool({"key", "ctrl+shift+k"});
    QTRY_COMPARE_WITH_TIMEOUT(visibleWindows().size(), 1, 10000);
}

void ShortcutEndToEndTest::combinationHeldElsewhereIsReported() {
    X11TestClient other;
    QVERIFY(other.grab(returnKeysym, ctrlAlt));
    startApp();
    QByteArray output;
    QTRY_VERIFY_WITH_TIMEOUT((output += m_app->readAllStandardOutput())
                                 .contains("Error registering hotkey Ctrl+Alt+Return"),
                             15000);
    QSignalSpy ended(m_app.get(), &QProcess::finished);
    QVERIFY(!ended.wait(500));
    // The stored shortcut stays for the next start.
    QCOMPARE(storedShortcut(), std::optional(QString::fromUtf8(Shortcut{36, 6144}.toJson())));
}

QTEST_GUILESS_MAIN(ShortcutEndToEndTest)
#include "tst_ShortcutEndToEnd.moc"
