#include "core/shortcuts/KeyboardShortcuts.h"
#include "core/shortcuts/ShortcutRecorderModel.h"
#include "support/FakeHotKeyService.h"
#include "support/InMemorySettingsStore.h"

#include <QtTest>

using namespace scrivel;
using test::FakeHotKeyService;
using Outcome = ShortcutRecorderModel::Outcome;

Q_DECLARE_METATYPE(Outcome)

namespace {
const Shortcut ctrlAltReturn{36, 6144};
const Shortcut ctrlQ{0x0C, 4096};    // the app's own "Quit" in this test
const Shortcut ctrlAltT{0x11, 6144}; // held by another client in this test
} // namespace

class ShortcutRecorderModelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keyPresses_data() {
        QTest::addColumn<int>("qtKey");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<Outcome>("outcome");
        QTest::addColumn<bool>("stillRecording");
        QTest::addColumn<QString>("stored"); // displayed form afterwards

        const int ctrl = int(Qt::ControlModifier);
        const int ctrlAlt = int(Qt::ControlModifier | Qt::AltModifier);
        const QString kept = QStringLiteral("Ctrl+Alt+Return");
        QTest::newRow("Escape keeps")
            << int(Qt::Key_Escape) << 0 << Outcome::cancelled << false << kept;
        QTest::newRow("Tab moves on")
            << int(Qt::Key_Tab) << 0 << Outcome::focusMovedOn << false << kept;
        QTest::newRow("Backspace clears")
            << int(Qt::Key_Backspace) << 0 << Outcome::cleared << false << "";
        QTest::newRow("Delete clears")
            << int(Qt::Key_Delete) << 0 << Outcome::cleared << false << "";
        QTest::newRow("Ctrl+Escape is a shortcut")
            << int(Qt::Key_Escape) << ctrl << Outcome::stored << false << "Ctrl+Esc";
        QTest::newRow("lone modifier")
            << int(Qt::Key_Control) << ctrl << Outcome::ignored << true << kept;
        QTest::newRow("plain letter")
            << int(Qt::Key_K) << 0 << Outcome::needsModifier << true << kept;
        QTest::newRow("Shift+letter")
            << int(Qt::Key_K) << int(Qt::ShiftModifier) << Outcome::needsModifier << true << kept;
        QTest::newRow("plain F6") << int(Qt::Key_F6) << 0 << Outcome::stored << false << "F6";
        QTest::newRow("menu item's")
            << int(Qt::Key_Q) << ctrl << Outcome::usedByMenuItem << true << kept;
        QTest::newRow("another client's")
            << int(Qt::Key_T) << ctrlAlt << Outcome::usedBySystem << true << kept;
        QTest::newRow("our own current one")
            << int(Qt::Key_Return) << ctrlAlt << Outcome::stored << false << kept;
    }
    void keyPresses() {
        QFETCH(int, qtKey);
        QFETCH(int, modifiers);
        QFETCH(Outcome, outcome);
        QFETCH(bool, stillRecording);
        QFETCH(QString, stored);
        InMemorySettingsStore settings;
        FakeHotKeyService service;
        KeyboardShortcuts shortcuts(settings, service);
        shortcuts.setErrorLineWriter([](const QByteArray&) {});
        shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [] {});
        service.takenByOthers.insert(ctrlAltT);
        // Another client would also hold our own combination if we let go of it.
        service.takenByOthers.insert(ctrlAltReturn);
        ShortcutRecorderModel model(
            shortcuts, ShortcutName::rewriteFocusedField(),
            [](const Shortcut& s) -> std::optional<QString> {
                if (s == ctrlQ)
                    return QStringLiteral("Quit Scrivel");
                return std::nullopt;
            },
            [&](const Shortcut& s) { return service.isTakenByAnotherClient(s); });

        model.startRecording();
        QVERIFY(shortcuts.isRecorderActive());
        QCOMPARE(model.handleKeyPress(qtKey, Qt::KeyboardModifiers(modifiers)), outcome);
        QCOMPARE(model.isRecording(), stillRecording);
        QCOMPARE(shortcuts.isRecorderActive(), stillRecording);
        QCOMPARE(model.text(), stored);
        if (outcome == Outcome::usedByMenuItem)
            QCOMPARE(model.menuItemTitle(), QStringLiteral("Quit Scrivel"));
        if (outcome == Outcome::usedByMenuItem || outcome == Outcome::usedBySystem)
            QVERIFY(model.pending());
    }

    void recordingLetsGoOfTheHotKeys() {
        InMemorySettingsStore settings;
        FakeHotKeyService service;
        KeyboardShortcuts shortcuts(settings, service);
        int fired = 0;
        shortcuts.onKeyUp(ShortcutName::rewriteFocusedField(), [&] { ++fired; });
        {
            ShortcutRecorderModel model(shortcuts, ShortcutName::rewriteFocusedField(), {}, {});
            model.startRecording();
            // Nothing grabbed: the combination reaches the recorder.
            QVERIFY(!service.release(ctrlAltReturn));
            QVERIFY(shortcuts.isRegistered(ctrlAltReturn)); // still ours
            // Destroyed while recording.
        }
        QVERIFY(!shortcuts.isRecorderActive());
        QVERIFY(service.release(ctrlAltReturn));
        QCOMPARE(fired, 1);
    }
};

QTEST_GUILESS_MAIN(ShortcutRecorderModelTest)
#include "tst_ShortcutRecorderModel.moc"
