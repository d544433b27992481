#include "app/KeyboardShortcuts.h"
#include "dummy/InMemorySettingsStore.h"
#include "linux/X11HotKeyService.h"
#include "support/X11TestClient.h"

#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QWindow>
#include <QtTest>
#include <xcb/xcb.h>

using namespace scrivel;
using test::X11TestClient;

namespace {

const Shortcut ctrlAltReturn{36, 6144};

void xdotool(const QStringList& arguments) {
    QProcess::execute(QStringLiteral("xdotool"), arguments);
}

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
        xdotool({QStringLiteral("key"), QString::fromLatin1(keysym)});
    QTRY_COMPARE(bool(currentModifierState() & bit), on);
}

struct Counter {
    int pressed = 0;
    int released = 0;
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

private:
    std::unique_ptr<X11HotKeyService> m_service;
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
    InMemorySettingsStore settings;
    auto service = X11HotKeyService::forApplication();
    QVERIFY(service);
    KeyboardShortcuts shortcuts(settings, *service);
    Counter counter;
    shortcuts.onKeyDown(ShortcutName::rewriteFocusedField(), [&] { ++counter.pressed; });
    shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [&] { ++counter.released; });
    QVERIFY(shortcuts.isRegistered(ctrlAltReturn));

    setLock("Num_Lock", XCB_MOD_MASK_2, numLock);
    setLock("Caps_Lock", XCB_MOD_MASK_LOCK, capsLock);
    xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+Return")});
    QTRY_COMPARE(counter.released, 1);
    QCOMPARE(counter.pressed, 1);
    // Another key with the same modifiers is not the shortcut.
    xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+Tab")});
    QTest::qWait(200);
    QCOMPARE(counter.pressed, 1);
    QCOMPARE(counter.released, 1);
    cleanup();

    // Unregistered on disable: the keys go by.
    shortcuts.disable({ShortcutName::rewriteFocusedField()});
    xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+Return")});
    QTest::qWait(200);
    QCOMPARE(counter.released, 1);
}

void X11HotKeyServiceTest::holdingTheKeysReportsOnePress() {
    InMemorySettingsStore settings;
    auto service = X11HotKeyService::forApplication();
    KeyboardShortcuts shortcuts(settings, *service);
    Counter counter;
    shortcuts.onKeyDown(ShortcutName::rewriteFocusedField(), [&] { ++counter.pressed; });
    shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [&] { ++counter.released; });

    // Well past the server's auto-repeat delay (660 ms by default).
    xdotool({QStringLiteral("keydown"), QStringLiteral("ctrl+alt+Return")});
    QTest::qWait(1500);
    QCOMPARE(counter.pressed, 1);
    QCOMPARE(counter.released, 0);
    xdotool({QStringLiteral("keyup"), QStringLiteral("Return")});
    QTRY_COMPARE(counter.released, 1);
    xdotool({QStringLiteral("keyup"), QStringLiteral("ctrl+alt")});
    QTest::qWait(100);
    QCOMPARE(counter.pressed, 1);
    QCOMPARE(counter.released, 1);
}

void X11HotKeyServiceTest::ourOwnFocusedWindowDoesNotSwallowTheKeys() {
    InMemorySettingsStore settings;
    auto service = X11HotKeyService::forApplication();
    KeyboardShortcuts shortcuts(settings, *service);
    int released = 0;
    shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [&] { ++released; });
    // The panel has the focus when the shortcut is pressed to hide it.
    QWindow window;
    window.resize(200, 100);
    window.show();
    window.requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+Return")});
    QTRY_COMPARE(released, 1);
}

void X11HotKeyServiceTest::anotherClientsGrabFailsTheRegistration() {
    auto other = std::make_unique<X11TestClient>();
    QVERIFY(other->grab(0xff0d, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1));

    InMemorySettingsStore settings;
    auto service = X11HotKeyService::forApplication();
    KeyboardShortcuts shortcuts(settings, *service);
    QList<QByteArray> lines;
    shortcuts.setErrorLineWriter([&](const QByteArray& line) { lines << line; });
    int released = 0;
    QVERIFY(service->isTakenByAnotherClient(ctrlAltReturn));
    shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [&] { ++released; });
    QCOMPARE(lines, QList{QByteArray("Error registering hotkey Ctrl+Alt+Return (key code 36, "
                                     "modifiers 6144): 10\n")});
    QVERIFY(!shortcuts.isRegistered(ctrlAltReturn));
    QCOMPARE(shortcuts.shortcut(ShortcutName::rewriteFocusedField()), std::optional(ctrlAltReturn));

    // The trial grab left the other client's grab alone.
    QVERIFY(service->isTakenByAnotherClient(ctrlAltReturn));
    // Once the other application lets go, enabling grabs it.
    other.reset();
    QTRY_VERIFY(!service->isTakenByAnotherClient(ctrlAltReturn));
    shortcuts.enable({ShortcutName::rewriteFocusedField()});
    QVERIFY(shortcuts.isRegistered(ctrlAltReturn));
    xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+Return")});
    QTRY_COMPARE(released, 1);
    // Our own grab is not "taken", and asking does not drop it.
    QVERIFY(!service->isTakenByAnotherClient(ctrlAltReturn));
    xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+Return")});
    QTRY_COMPARE(released, 2);
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

int main(int argc, char* argv[]) {
    // The real display, not the offscreen platform the suites default to.
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication app(argc, argv);
    X11HotKeyServiceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_X11HotKeyService.moc"
