#include "platform/linux/QSettingsStore.h"
#include "support/FakeStatusNotifierWatcher.h"
#include "support/ProcessRun.h"
#include "support/X11TestClient.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace scrivel;
using test::FakeStatusNotifierWatcher;
using test::X11TestClient;
using test::xdotool;

namespace {

constexpr xcb_keysym_t returnKeysym = 0xff0d;
constexpr uint16_t ctrlAlt = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;

} // namespace

// The real scrivel on the test display where the tray host is a
// StatusNotifierWatcher (a double on the test's session bus): the item
// registers with its D-Bus menu, and the menu's opening and closing, as a
// host reports them, pause the global shortcut and leave it working.
class StatusNotifierEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void trayMenuOverDBusLeavesTheShortcutWorking();

private:
    bool panelVisible() const {
        QDBusInterface state(QStringLiteral("com.scrivel.app"),
                             QStringLiteral("/com/scrivel/State"),
                             QStringLiteral("com.scrivel.State"));
        return state.property("PanelVisible").toBool();
    }

    QTemporaryDir m_home;
    std::unique_ptr<QProcess> m_app;
};

void StatusNotifierEndToEndTest::initTestCase() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("needs an X display (scripts/test provides Xvfb)");
    if (QStandardPaths::findExecutable(QStringLiteral("xdotool")).isEmpty())
        QSKIP("needs xdotool (scripts/install-deps)");
    if (!QDBusConnection::sessionBus().isConnected())
        QSKIP("needs a session bus (scripts/test runs one)");
}

void StatusNotifierEndToEndTest::cleanup() {
    if (m_app)
        test::stopProcess(*m_app);
    m_app.reset();
}

void StatusNotifierEndToEndTest::trayMenuOverDBusLeavesTheShortcutWorking() {
    FakeStatusNotifierWatcher host(QDBusConnection::sessionBus());
    QVERIFY(host.isServing());
    X11TestClient probe;
    QVERIFY(probe.isConnected());
    QSettingsStore(m_home.filePath(QStringLiteral("config/Scrivel/Scrivel.conf")))
        .setBoolean(QStringLiteral("scrivel.panel.has-seen"), true);
    m_app = std::make_unique<QProcess>();
    m_app->setProcessEnvironment(test::scrivelEnvironment(m_home.path()));
    m_app->start(QStringLiteral(SCRIVEL_APP_PATH), {});
    QVERIFY(m_app->waitForStarted());

    // The item registers, with the tray's tooltip (here the active preset's
    // readiness) and its menu.
    QTRY_COMPARE_WITH_TIMEOUT(host.items.size(), 1, 15000);
    QDBusInterface trayState(QStringLiteral("com.scrivel.app"),
                             QStringLiteral("/com/scrivel/StatusItem"),
                             QStringLiteral("com.scrivel.StatusItem"));
    QTRY_COMPARE(host.itemToolTip(),
                 QStringLiteral("Connect this preset to a provider in Presets"));
    QCOMPARE(trayState.property("ToolTip").toString(), host.itemToolTip());
    const test::DBusMenuNode menu = host.menuLayout();
    const QStringList labels = menu.childLabels();
    QVERIFY(labels.contains("Open Panel"));
    QVERIFY(labels.contains("Quit Scrivel"));
    QVERIFY(menu.child(QStringLiteral("Preset")));
    QCOMPARE(menu.child(QStringLiteral("Preset"))->childLabels(),
             (QStringList{"Fix", "Make Concise", "Improve Prompt"}));
    QTRY_VERIFY_WITH_TIMEOUT(probe.isHeldElsewhere(returnKeysym, ctrlAlt), 10000);

    // Opened: the shortcut lets go; "opened", then "closed": it is back.
    QVERIFY(host.aboutToShow(0));
    QVERIFY(host.menuEvent(0, QStringLiteral("opened")));
    QTRY_VERIFY(!probe.isHeldElsewhere(returnKeysym, ctrlAlt));
    QVERIFY(host.menuEvent(0, QStringLiteral("closed")));
    QTRY_VERIFY(probe.isHeldElsewhere(returnKeysym, ctrlAlt));
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_VERIFY_WITH_TIMEOUT(panelVisible(), 5000);
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_VERIFY_WITH_TIMEOUT(!panelVisible(), 5000);

    // "Open Panel" chosen, and the host never says "closed": the panel
    // opens and the shortcut comes back.
    QVERIFY(host.aboutToShow(0));
    QTRY_VERIFY(!probe.isHeldElsewhere(returnKeysym, ctrlAlt));
    QVERIFY(
        host.menuEvent(menu.child(QStringLiteral("Open Panel"))->id, QStringLiteral("clicked")));
    QTRY_VERIFY_WITH_TIMEOUT(panelVisible(), 5000);
    QTRY_VERIFY(probe.isHeldElsewhere(returnKeysym, ctrlAlt));
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_VERIFY_WITH_TIMEOUT(!panelVisible(), 5000);
}

QTEST_GUILESS_MAIN(StatusNotifierEndToEndTest)
#include "tst_StatusNotifierEndToEnd.moc"
