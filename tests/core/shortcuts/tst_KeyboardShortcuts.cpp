#include "core/shortcuts/HotKeyController.h"
#include "core/shortcuts/KeyboardShortcuts.h"
#include "support/FakeHotKeyService.h"
#include "support/InMemorySettingsStore.h"

#include <QSignalSpy>
#include <QtTest>

using namespace scrivel;
using test::FakeHotKeyService;

namespace {

const Shortcut ctrlAltReturn{36, 6144};
const Shortcut ctrlShiftK{0x28, 4608};
const QString key = QStringLiteral("KeyboardShortcuts_rewriteFocusedField");
const ShortcutName& rewrite = ShortcutName::rewriteFocusedField();

// The component with its fake service over a settings store that outlives
// it, as the real one outlives a restart.
struct Fixture {
    explicit Fixture(InMemorySettingsStore& settings) : shortcuts(settings, service) {
        shortcuts.setErrorLineWriter([this](const QByteArray& line) { errorLines.append(line); });
    }
    FakeHotKeyService service;
    KeyboardShortcuts shortcuts;
    QList<QByteArray> errorLines;
};

} // namespace

class KeyboardShortcutsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void storage_data() {
        QTest::addColumn<bool>("withDefault");
        QTest::addColumn<bool>("clear");
        QTest::addColumn<QVariant>("expected"); // invalid: no key at all
        QTest::newRow("set") << true << false
                             << QVariant(R"({"carbonKeyCode":40,"carbonModifiers":4608})");
        QTest::newRow("cleared, defaulted name: false") << true << true << QVariant(false);
        QTest::newRow("cleared, name without default: removed") << false << true << QVariant();
    }
    void storage() {
        QFETCH(bool, withDefault);
        QFETCH(bool, clear);
        QFETCH(QVariant, expected);
        InMemorySettingsStore settings;
        Fixture f(settings);
        const ShortcutName noDefault{QStringLiteral("other"), std::nullopt};
        const ShortcutName& name = withDefault ? rewrite : noDefault;
        QSignalSpy changed(&f.shortcuts, &KeyboardShortcuts::shortcutChanged);
        f.shortcuts.setShortcut(ctrlShiftK, name);
        if (clear)
            f.shortcuts.setShortcut(std::nullopt, name);

        const QString storedKey = name.settingsKey();
        if (!expected.isValid())
            QVERIFY(!settings.contains(storedKey));
        else if (expected.typeId() == QMetaType::Bool)
            QCOMPARE(settings.boolean(storedKey), std::optional(false));
        else
            QCOMPARE(settings.text(storedKey), std::optional(expected.toString()));
        QCOMPARE(f.shortcuts.shortcut(name), clear ? std::nullopt : std::optional(ctrlShiftK));
        QCOMPARE(f.service.isRegistered(ctrlShiftK), !clear);
        QVERIFY(!changed.isEmpty());
        QCOMPARE(changed.last().at(0).toString(), name.rawValue);
    }

    // Only a key with nothing under it gets the default, written once; a
    // removed or unreadable one stays without a shortcut across a restart.
    void startup_data() {
        QTest::addColumn<QVariant>("stored"); // invalid: nothing
        QTest::addColumn<QString>("shown");   // empty: no shortcut
        QTest::newRow("nothing: the default") << QVariant() << "Ctrl+Alt+Return";
        QTest::newRow("removed") << QVariant(false) << "";
        QTest::newRow("unreadable") << QVariant("{not json") << "";
    }
    void startup() {
        QFETCH(QVariant, stored);
        QFETCH(QString, shown);
        InMemorySettingsStore settings;
        if (stored.typeId() == QMetaType::Bool)
            settings.setBoolean(key, false);
        else if (stored.isValid())
            settings.setText(key, stored.toString());
        const int writes = settings.writeCount();
        Fixture f(settings);
        f.shortcuts.onKeyUp(rewrite, [] {});
        f.shortcuts.enable({rewrite});
        QCOMPARE(f.shortcuts.displayText(rewrite),
                 shown.isEmpty() ? std::nullopt : std::optional(shown));
        QCOMPARE(f.service.registrationLog,
                 shown.isEmpty() ? QList<Shortcut>() : QList{ctrlAltReturn});
        QCOMPARE(settings.writeCount(), writes + (shown.isEmpty() ? 0 : 1));
    }

    void registrationsFollowTheShortcut() {
        InMemorySettingsStore settings;
        Fixture f(settings);
        int fired = 0;
        f.shortcuts.onKeyUp(rewrite, [&] { ++fired; });
        f.shortcuts.disable({rewrite});
        QVERIFY(f.service.registered().isEmpty());
        f.shortcuts.enable({rewrite});
        f.shortcuts.enable({rewrite});
        QCOMPARE(f.service.registered(), QList{ctrlAltReturn});

        f.shortcuts.setShortcut(ctrlShiftK, rewrite);
        QCOMPARE(f.service.registered(), QList{ctrlShiftK});
        QVERIFY(!f.service.press(ctrlAltReturn));
        QVERIFY(f.service.release(ctrlShiftK));
        QCOMPARE(fired, 1);
    }

    void refusedRegistrationKeepsTheStoredValue() {
        InMemorySettingsStore settings;
        Fixture f(settings);
        f.service.takenByOthers.insert(ctrlAltReturn);
        QSignalSpy failed(&f.shortcuts, &KeyboardShortcuts::registrationFailed);
        f.shortcuts.onKeyUp(rewrite, [] {});

        QCOMPARE(failed.size(), 1);
        QCOMPARE(f.errorLines,
                 QList{QByteArray("Error registering hotkey Ctrl+Alt+Return (key code 36, "
                                  "modifiers 6144): 10\n")});
        QCOMPARE(f.shortcuts.shortcut(rewrite), std::optional(ctrlAltReturn));
        QVERIFY(!f.shortcuts.isRegistered(ctrlAltReturn));

        // Freed by the other application: the next enable tries again.
        f.service.takenByOthers.clear();
        f.shortcuts.enable({rewrite});
        QVERIFY(f.service.isRegistered(ctrlAltReturn));
    }

    void recordingLetsTheGrabsGo() {
        InMemorySettingsStore settings;
        Fixture f(settings);
        int toggles = 0;
        f.shortcuts.onKeyUp(rewrite, [&] { ++toggles; });
        QVERIFY(f.service.isRegistered(ctrlAltReturn));

        // The recorder must see the combination in use, not its grab.
        f.shortcuts.setRecorderActive(true);
        QVERIFY(f.service.registered().isEmpty());
        QVERIFY(f.shortcuts.isRegistered(ctrlAltReturn)); // still ours
        QVERIFY(!f.shortcuts.isTakenByAnotherClient(ctrlAltReturn));
        f.shortcuts.setShortcut(ctrlShiftK, rewrite); // what it recorded
        QVERIFY(f.service.registered().isEmpty());
        f.shortcuts.setRecorderActive(false);
        QCOMPARE(f.service.registered(), QList{ctrlShiftK});
        QVERIFY(f.service.release(ctrlShiftK));
        QCOMPARE(toggles, 1);

        // Recording that ends without a change takes the same grab again; one
        // that cleared the shortcut takes none.
        f.shortcuts.setRecorderActive(true);
        f.shortcuts.setRecorderActive(false);
        QCOMPARE(f.service.registered(), QList{ctrlShiftK});
        f.shortcuts.setRecorderActive(true);
        f.shortcuts.setShortcut(std::nullopt, rewrite);
        f.shortcuts.setRecorderActive(false);
        QVERIFY(f.service.registered().isEmpty());

        // Taken by another client meanwhile: reported as at any registration.
        f.shortcuts.setShortcut(ctrlAltReturn, rewrite);
        f.shortcuts.setRecorderActive(true);
        f.service.takenByOthers.insert(ctrlAltReturn);
        QSignalSpy failed(&f.shortcuts, &KeyboardShortcuts::registrationFailed);
        f.shortcuts.setRecorderActive(false);
        QCOMPARE(failed.size(), 1);
        QVERIFY(!f.shortcuts.isRegistered(ctrlAltReturn));
    }

    void dispatch_data() {
        QTest::addColumn<quint32>("signature");
        QTest::addColumn<int>("idOffset"); // added to the registered identifier
        QTest::addColumn<bool>("recording");
        QTest::addColumn<bool>("handled");
        QTest::addColumn<QString>("pressLog"); // after one press and one release
        const quint32 ours = KeyboardShortcuts::hotKeySignature;
        QTest::newRow("ours") << ours << 0 << false << true << "down:a down:b up:a up:a2 up:b";
        // While a recorder records, nothing is grabbed: the event is not ours.
        QTest::newRow("recorder active") << ours << 0 << true << false << "";
        QTest::newRow("other signature") << quint32(0x41424344) << 0 << false << false << "";
        QTest::newRow("unknown identifier") << ours << 7 << false << false << "";
    }
    void dispatch() {
        QFETCH(quint32, signature);
        QFETCH(int, idOffset);
        QFETCH(bool, recording);
        QFETCH(bool, handled);
        QFETCH(QString, pressLog);
        InMemorySettingsStore settings;
        Fixture f(settings);
        const ShortcutName a{QStringLiteral("a"), ctrlShiftK};
        const ShortcutName b{QStringLiteral("b"), ctrlShiftK};
        const ShortcutName elsewhere{QStringLiteral("c"), ctrlAltReturn};
        QStringList log;
        // Names in a hash: the order between names is not fixed, within one it is.
        f.shortcuts.onKeyDown(a, [&] { log << "down:a"; });
        f.shortcuts.onKeyUp(a, [&] { log << "up:a"; });
        f.shortcuts.onKeyUp(a, [&] { log << "up:a2"; });
        f.shortcuts.onKeyDown(b, [&] { log << "down:b"; });
        f.shortcuts.onKeyUp(b, [&] { log << "up:b"; });
        f.shortcuts.onKeyUp(elsewhere, [&] { log << "up:c"; });
        QCOMPARE(f.service.registrationLog, (QList{ctrlShiftK, ctrlAltReturn}));
        f.shortcuts.setRecorderActive(recording);

        const quint32 id = 1 + quint32(idOffset);
        QCOMPARE(f.shortcuts.dispatch(signature, id, HotKeyService::EventKind::pressed), handled);
        QCOMPARE(f.shortcuts.dispatch(signature, id, HotKeyService::EventKind::released), handled);
        log.sort();
        QCOMPARE(log.join(' '), pressLog);
    }

    void controllerQueuesTheToggle() {
        InMemorySettingsStore settings;
        Fixture f(settings);
        auto controller = std::make_unique<HotKeyController>(f.shortcuts);
        QSignalSpy toggles(controller.get(), &HotKeyController::togglePanelRequested);
        QVERIFY(f.service.press(ctrlAltReturn));
        QVERIFY(f.service.release(ctrlAltReturn));
        QCOMPARE(toggles.size(), 0); // not inside the handler
        QVERIFY(toggles.wait());

        // A release just before the controller goes away: its queued toggle
        // is delivered to nobody (and touches nothing freed).
        QVERIFY(f.service.release(ctrlAltReturn));
        controller.reset();
        QCoreApplication::sendPostedEvents();
        QCOMPARE(toggles.size(), 1);
    }
};

QTEST_GUILESS_MAIN(KeyboardShortcutsTest)
#include "tst_KeyboardShortcuts.moc"
