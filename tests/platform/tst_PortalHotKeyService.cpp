#include "core/shortcuts/KeyboardShortcuts.h"
#include "platform/linux/PortalHotKeyService.h"
#include "platform/linux/UnavailableHotKeyService.h"
#include "support/FakeShortcutPortal.h"
#include "support/InMemorySettingsStore.h"

#include <QDBusConnection>
#include <QtTest>

using namespace scrivel;
using test::FakeShortcutPortal;
using Reason = GlobalShortcutStatus::Reason;

namespace {

const QString shortcutId = ShortcutName::rewriteFocusedField().rawValue;

// The service on the session bus, the portal on a connection of its own (as
// another process would be), and the rewrite shortcut attached as the app
// attaches it.
struct Session {
    QDBusConnection portalBus;
    std::unique_ptr<FakeShortcutPortal> portal;
    PortalHotKeyService service{QDBusConnection::sessionBus(),
                                {QStringLiteral("com.scrivel.app"), shortcutId,
                                 QStringLiteral("Open or close the Scrivel panel"),
                                 std::chrono::milliseconds(3000)}};
    InMemorySettingsStore settings;
    KeyboardShortcuts shortcuts{settings, service};
    QList<QByteArray> errorLines;
    int pressed = 0;
    int released = 0;

    explicit Session(std::optional<FakeShortcutPortal::Behaviour> behaviour)
        : portalBus(QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                                  QStringLiteral("portal-%1").arg(++count))) {
        if (behaviour)
            portal = std::make_unique<FakeShortcutPortal>(portalBus, *behaviour);
        shortcuts.setErrorLineWriter([this](const QByteArray& line) { errorLines << line; });
        shortcuts.onKeyDown(ShortcutName::rewriteFocusedField(), [this] { ++pressed; });
        shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [this] { ++released; });
        service.start();
    }
    ~Session() {
        portal.reset();
        QDBusConnection::disconnectFromBus(portalBus.name());
    }
    bool settled() const {
        return service.status().kind != GlobalShortcutStatus::Kind::desktopPending;
    }

    static inline int count = 0;
};

} // namespace

class PortalHotKeyServiceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (!QDBusConnection::sessionBus().isConnected())
            QSKIP("needs a session bus (scripts/test runs one)");
    }

    void bindsTheShortcutWithItsIdDescriptionAndTrigger() {
        Session session(FakeShortcutPortal::Behaviour{});
        QVERIFY(session.portal->isServing());
        QTRY_VERIFY(session.settled());
        // The app id first: the portal takes no registration after a call.
        QCOMPARE(session.portal->calls,
                 (QStringList{"Register", "CreateSession", "BindShortcuts"}));
        QCOMPARE(session.portal->registeredAppId, QStringLiteral("com.scrivel.app"));
        QCOMPARE(session.portal->boundShortcuts.size(), 1);
        const PortalShortcutEntry bound = session.portal->boundShortcuts.first();
        QCOMPARE(bound.id, QStringLiteral("rewriteFocusedField"));
        QCOMPARE(bound.properties.value("description").toString(),
                 QStringLiteral("Open or close the Scrivel panel"));
        QCOMPARE(bound.properties.value("preferred_trigger").toString(),
                 QStringLiteral("CTRL+ALT+Return"));
        QCOMPARE(session.service.status(),
                 GlobalShortcutStatus::bound(QStringLiteral("Ctrl+Alt+Return"), true));
        QVERIFY(session.errorLines.isEmpty());
        QCOMPARE(session.service.sessionHandle(), session.portal->sessionHandle);
    }

    void activationsArriveAsPressAndRelease() {
        Session session(FakeShortcutPortal::Behaviour{});
        QTRY_VERIFY(session.settled());
        session.portal->activate(shortcutId);
        QTRY_COMPARE(session.pressed, 1);
        QCOMPARE(session.released, 0);
        session.portal->deactivate(shortcutId);
        QTRY_COMPARE(session.released, 1);

        // Someone else's shortcut is not ours.
        session.portal->activate(QStringLiteral("other"));
        session.portal->deactivate(QStringLiteral("other"));
        // Disabled (the tray menu is open): silent, until enabled again. The
        // portal's signals come over the bus: wait for them, bounded.
        const QList<ShortcutName> names{ShortcutName::rewriteFocusedField()};
        session.shortcuts.disable(names);
        session.portal->activate(shortcutId);
        session.portal->deactivate(shortcutId);
        QVERIFY(!QTest::qWaitFor([&] { return session.pressed + session.released > 2; }, 200));
        session.shortcuts.enable(names);
        session.portal->activate(shortcutId);
        session.portal->deactivate(shortcutId);
        QTRY_COMPARE(session.released, 2);
        QCOMPARE(session.pressed, 2);
    }

    void theDesktopsTriggerIsFollowedAndChangedInItsDialog_data() {
        QTest::addColumn<uint>("version");
        QTest::addColumn<QString>("trigger");
        QTest::newRow("version 2") << 2u << QStringLiteral("Ctrl+Alt+Return");
        QTest::newRow("version 1, no dialog") << 1u << QStringLiteral("Ctrl+Alt+Return");
        QTest::newRow("no keys assigned") << 2u << QString();
    }
    void theDesktopsTriggerIsFollowedAndChangedInItsDialog() {
        QFETCH(uint, version);
        QFETCH(QString, trigger);
        FakeShortcutPortal::Behaviour behaviour;
        behaviour.version = version;
        behaviour.triggerDescription = trigger;
        Session session(behaviour);
        QTRY_VERIFY(session.settled());
        const bool canConfigure = version >= 2;
        QCOMPARE(session.service.status(), GlobalShortcutStatus::bound(trigger, canConfigure));
        QCOMPARE(session.service.status().deliversKeys(), !trigger.isEmpty());

        session.shortcuts.configureInDesktop(QStringLiteral("token-1"));
        if (canConfigure) {
            QTRY_VERIFY(session.portal->calls.contains("ConfigureShortcuts"));
            QCOMPARE(session.portal->configureOptions.value("activation_token").toString(),
                     QStringLiteral("token-1"));
        }
        // The user picks other keys in the desktop's settings.
        QSignalSpy changed(&session.shortcuts, &KeyboardShortcuts::deliveryStatusChanged);
        session.portal->changeTrigger(QStringLiteral("Super+Space"));
        QTRY_COMPARE(session.shortcuts.deliveryStatus(),
                     GlobalShortcutStatus::bound(QStringLiteral("Super+Space"), canConfigure));
        QCOMPARE(changed.size(), 1);
        // Following the change asks the portal for nothing.
        const qsizetype configured = canConfigure ? 1 : 0;
        QVERIFY(!QTest::qWaitFor(
            [&] { return session.portal->calls.count("ConfigureShortcuts") != configured; }, 100));
    }

    void aPortalThatIsAbsentOrRefusesLeavesNoShortcut_data() {
        QTest::addColumn<bool>("present");
        QTest::addColumn<bool>("hasGlobalShortcuts");
        QTest::addColumn<uint>("sessionResponse");
        QTest::addColumn<uint>("bindResponse");
        QTest::addColumn<Reason>("reason");
        QTest::newRow("no portal") << false << true << 0u << 0u << Reason::noPortal;
        QTest::newRow("no shortcut interface") << true << false << 0u << 0u << Reason::noPortal;
        QTest::newRow("session refused") << true << true << 2u << 0u << Reason::failed;
        QTest::newRow("user declined") << true << true << 0u << 1u << Reason::refused;
        QTest::newRow("binding failed") << true << true << 0u << 2u << Reason::failed;
    }
    void aPortalThatIsAbsentOrRefusesLeavesNoShortcut() {
        QFETCH(bool, present);
        QFETCH(bool, hasGlobalShortcuts);
        QFETCH(uint, sessionResponse);
        QFETCH(uint, bindResponse);
        QFETCH(Reason, reason);
        FakeShortcutPortal::Behaviour behaviour;
        behaviour.hasGlobalShortcuts = hasGlobalShortcuts;
        behaviour.sessionResponse = sessionResponse;
        behaviour.bindResponse = bindResponse;
        Session session(present ? std::optional(behaviour) : std::nullopt);
        QTRY_VERIFY(session.settled());
        QCOMPARE(session.service.status(), GlobalShortcutStatus::unavailable(reason));
        QVERIFY(!session.service.status().deliversKeys());
        QVERIFY(session.service.status().settingsText().contains("“scrivel --toggle”"));
        // Nothing is registered any more, and saying so once is enough.
        const auto registered = session.service.registerHotKey(
            Shortcut{36, 6144}, KeyboardShortcuts::hotKeySignature, 9);
        QVERIFY(!registered);
        QCOMPARE(registered.error().kind, HotKeyError::Kind::unavailable);
        session.shortcuts.enable({ShortcutName::rewriteFocusedField()});
        QVERIFY(session.errorLines.isEmpty());
    }

    // Where neither grabs nor a portal exist, the stand-in refuses as well:
    // nothing is registered, and nothing claims a shortcut.
    void theStandInForNoShortcutsRefusesToo() {
        UnavailableHotKeyService service;
        InMemorySettingsStore settings;
        KeyboardShortcuts shortcuts(settings, service);
        QList<QByteArray> errorLines;
        shortcuts.setErrorLineWriter([&](const QByteArray& line) { errorLines << line; });
        shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [] {});
        QVERIFY(!shortcuts.isRegistered(Shortcut{36, 6144}));
        QCOMPARE(shortcuts.deliveryStatus(), GlobalShortcutStatus::unavailable(Reason::noPortal));
        QVERIFY(errorLines.isEmpty());
    }

    void aPortalThatRestartsIsBoundAgain() {
        Session session(FakeShortcutPortal::Behaviour{});
        QTRY_VERIFY(session.settled());
        session.portal.reset();
        QTRY_COMPARE(session.service.status(), GlobalShortcutStatus::unavailable(Reason::failed));
        session.portal = std::make_unique<FakeShortcutPortal>(session.portalBus,
                                                              FakeShortcutPortal::Behaviour{});
        QTRY_COMPARE(session.service.status(),
                     GlobalShortcutStatus::bound(QStringLiteral("Ctrl+Alt+Return"), true));
        session.portal->activate(shortcutId);
        session.portal->deactivate(shortcutId);
        QTRY_COMPARE(session.released, 1);
    }
};

QTEST_GUILESS_MAIN(PortalHotKeyServiceTest)
#include "tst_PortalHotKeyService.moc"
