#include "core/shortcuts/KeyboardShortcuts.h"
#include "platform/linux/X11HotKeyService.h"
#include "support/InMemorySettingsStore.h"
#include "support/ProcessRun.h"
#include "support/X11TestClient.h"

#include <QGuiApplication>
#include <QStandardPaths>
#include <QWindow>
#include <QtTest>
#include <xcb/xcb.h>

using namespace scrivel;
using test::X11TestClient;
using test::xdotool;

namespace {

const Shortcut ctrlAltReturn{36, 6144};

// The modifier state the server reports right now (lock bits included).
uint16_t currentModifierState() {
    xcb_connection_t* c =
        qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    xcb_query_pointer_reply_t* reply =
        xcb_query_pointer_reply(c, xcb_query_pointer(c, root), nullptr);
    const uint16_t mask = reply ? reply->mask : 0;
    std::free(reply);
    return mask;
}

void setLock(const char* keysym, uint16_t bit, bool on) {
    if (bool(currentModifierState() & bit) != on)
        xdotool({"key", QString::fromLatin1(keysym)});
    QTRY_COMPARE(bool(currentModifierState() & bit), on);
}

// The rewrite shortcut registered through the real service, counting what
// it reports.
struct Registered {
    InMemorySettingsStore settings;
    std::unique_ptr<X11HotKeyService> service = X11HotKeyService::forApplication();
    KeyboardShortcuts shortcuts{settings, *service};
    QList<QByteArray> errorLines;
    int pressed = 0;
    int released = 0;

    // Each handler attached registers the shortcut (and reports a failure).
    explicit Registered(bool countPresses = true) {
        shortcuts.setErrorLineWriter([this](const QByteArray& line) { errorLines << line; });
        if (countPresses)
            shortcuts.onKeyDown(ShortcutName::rewriteFocusedField(), [this] { ++pressed; });
        shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [this] { ++released; });
    }
};

} // namespace

class X11HotKeyServiceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void pressAndReleaseUnderEveryLock_data();
    void pressAndReleaseUnderEveryLock();
    void holdingTheKeysReportsOnePress();
    void ourOwnFocusedWindowDoesNotSwallowTheKeys();
    void anotherClientsGrabFailsTheRegistration();
    void unknownKeyCodeGrabsNothing();
    void aWaylandSessionGetsNoGrabs_data();
    void aWaylandSessionGetsNoGrabs();
};

void X11HotKeyServiceTest::initTestCase() {
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        QSKIP("needs an X display (scripts/test provides one through xvfb-run)");
    if (QStandardPaths::findExecutable(QStringLiteral("xdotool")).isEmpty())
        QSKIP("needs xdotool (installed by scripts/install-deps)");
}

void X11HotKeyServiceTest::cleanup() {
    // A failed row must not leave a lock on for the next one.
    setLock("Num_Lock", XCB_MOD_MASK_2, false);
    setLock("Caps_Lock", XCB_MOD_MASK_LOCK, false);
}

void X11HotKeyServiceTest::pressAndReleaseUnderEveryLock_data() {
    QTest::addColumn<bool>("numLock");
    QTest::addColumn<bool>("capsLock");
    QTest::newRow("no lock") << false << false;
    QTest::newRow("Num Lock") << true << false;
    QTest::newRow("Caps Lock") << false << true;
    QTest::newRow("both") << true << true;
}

void X11HotKeyServiceTest::pressAndReleaseUnderEveryLock() {
    QFETCH(bool, numLock);
    QFETCH(bool, capsLock);
    Registered hotKey;
    QVERIFY(hotKey.shortcuts.isRegistered(ctrlAltReturn));

    setLock("Num_Lock", XCB_MOD_MASK_2, numLock);
    setLock("Caps_Lock", XCB_MOD_MASK_LOCK, capsLock);
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_COMPARE(hotKey.released, 1);
    QCOMPARE(hotKey.pressed, 1);
    // Another key with the same modifiers is not the shortcut. (The events
    // come from the X server: wait for them, bounded.)
    const auto anotherEvent = [&] { return hotKey.pressed + hotKey.released > 2; };
    xdotool({"key", "ctrl+alt+Tab"});
    QVERIFY(!QTest::qWaitFor(anotherEvent, 200));
    cleanup();

    // Unregistered on disable: the keys go by.
    hotKey.shortcuts.disable({ShortcutName::rewriteFocusedField()});
    xdotool({"key", "ctrl+alt+Return"});
    QVERIFY(!QTest::qWaitFor(anotherEvent, 200));
}

void X11HotKeyServiceTest::holdingTheKeysReportsOnePress() {
    Registered hotKey;
    // Well past the server's auto-repeat delay (660 ms by default).
    xdotool({"keydown", "ctrl+alt+Return"});
    QTRY_COMPARE(hotKey.pressed, 1);
    QVERIFY(!QTest::qWaitFor([&] { return hotKey.pressed + hotKey.released > 1; }, 1500));
    xdotool({"keyup", "Return"});
    QTRY_COMPARE(hotKey.released, 1);
    xdotool({"keyup", "ctrl+alt"});
    QVERIFY(!QTest::qWaitFor([&] { return hotKey.pressed + hotKey.released > 2; }, 100));
}

void X11HotKeyServiceTest::ourOwnFocusedWindowDoesNotSwallowTheKeys() {
    Registered hotKey;
    // The panel has the focus when the shortcut is pressed to hide it.
    QWindow window;
    window.resize(200, 100);
    window.show();
    window.requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_COMPARE(hotKey.released, 1);
}

void X11HotKeyServiceTest::anotherClientsGrabFailsTheRegistration() {
    auto other = std::make_unique<X11TestClient>();
    QVERIFY(other->grab(0xff0d, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1));

    Registered hotKey(false);
    QVERIFY(hotKey.service->isTakenByAnotherClient(ctrlAltReturn));
    QCOMPARE(hotKey.errorLines, QList{QByteArray("Error registering hotkey Ctrl+Alt+Return (key "
                                                 "code 36, modifiers 6144): 10\n")});
    QVERIFY(!hotKey.shortcuts.isRegistered(ctrlAltReturn));
    QCOMPARE(hotKey.shortcuts.shortcut(ShortcutName::rewriteFocusedField()),
             std::optional(ctrlAltReturn));

    // The trial grab left the other client's grab alone.
    QVERIFY(hotKey.service->isTakenByAnotherClient(ctrlAltReturn));
    // Once the other application lets go, enabling grabs it.
    other.reset();
    QTRY_VERIFY(!hotKey.service->isTakenByAnotherClient(ctrlAltReturn));
    hotKey.shortcuts.enable({ShortcutName::rewriteFocusedField()});
    QVERIFY(hotKey.shortcuts.isRegistered(ctrlAltReturn));
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_COMPARE(hotKey.released, 1);
    // Our own grab is not "taken", and asking does not drop it.
    QVERIFY(!hotKey.service->isTakenByAnotherClient(ctrlAltReturn));
    xdotool({"key", "ctrl+alt+Return"});
    QTRY_COMPARE(hotKey.released, 2);
}

void X11HotKeyServiceTest::unknownKeyCodeGrabsNothing() {
    auto service = X11HotKeyService::forApplication();
    // 0x66 is a Japanese-keyboard key code with no entry in the table; the
    // Fn modifier has no X equivalent.
    for (const Shortcut& shortcut : {Shortcut{0x66, 4096}, Shortcut{36, 0x20000}}) {
        const auto registered = service->registerHotKey(shortcut, 1, 1);
        QVERIFY(!registered);
        QCOMPARE(registered.error().kind, HotKeyError::Kind::unknownKey);
    }
}

void X11HotKeyServiceTest::aWaylandSessionGetsNoGrabs_data() {
    QTest::addColumn<QByteArray>("sessionType");
    QTest::addColumn<QByteArray>("waylandDisplay");
    QTest::addColumn<bool>("grabs");
    QTest::newRow("X11 session") << QByteArray("x11") << QByteArray() << true;
    QTest::newRow("Wayland session type") << QByteArray("wayland") << QByteArray() << false;
    QTest::newRow("Wayland display") << QByteArray() << QByteArray("wayland-0") << false;
}

void X11HotKeyServiceTest::aWaylandSessionGetsNoGrabs() {
    QFETCH(QByteArray, sessionType);
    QFETCH(QByteArray, waylandDisplay);
    QFETCH(bool, grabs);
    // Our X connection is XWayland's there: a grab would succeed and see
    // only the keys typed into our own windows.
    const QByteArray savedType = qgetenv("XDG_SESSION_TYPE");
    const QByteArray savedDisplay = qgetenv("WAYLAND_DISPLAY");
    auto restore = qScopeGuard([&] {
        qputenv("XDG_SESSION_TYPE", savedType);
        qputenv("WAYLAND_DISPLAY", savedDisplay);
    });
    qputenv("XDG_SESSION_TYPE", sessionType);
    qputenv("WAYLAND_DISPLAY", waylandDisplay);
    QCOMPARE(X11HotKeyService::forApplication() != nullptr, grabs);
}

int main(int argc, char* argv[]) {
    // The real display, not the offscreen platform the suites default to.
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    // The suite grabs on Xvfb, whatever session it was started from.
    qunsetenv("WAYLAND_DISPLAY");
    qputenv("XDG_SESSION_TYPE", "x11");
    QGuiApplication app(argc, argv);
    X11HotKeyServiceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_X11HotKeyService.moc"
