#include "core/panel/FixPanelControlsState.h"

#include <QtTest>

using namespace scrivel;

Q_DECLARE_METATYPE(PanelStage)
Q_DECLARE_METATYPE(GlobalShortcutStatus)

class FixPanelControlsStateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void perStage_data() {
        QTest::addColumn<PanelStage>("stage");
        QTest::addColumn<bool>("holdsOriginal");
        QTest::addColumn<bool>("canRun");
        // Editor, Picker, Run shown, run enabled, Working progress, Open
        // presets, reVert; '.' where absent or disabled.
        QTest::addColumn<QString>("flags");
        QTest::addColumn<QString>("outcome"); // as read out: kind and sentence

        const QString copied =
            QStringLiteral("Success. Copied. Press Ctrl+V to replace your text.");
        QTest::newRow("input, empty") << PanelStage::input() << false << false << "EPR...."
                                      << "";
        QTest::newRow("input, runnable") << PanelStage::input() << false << true << "EPRe..."
                                         << "";
        QTest::newRow("working") << PanelStage::working() << true << false << "....W.."
                                 << "";
        QTest::newRow("copied with original")
            << PanelStage::copied() << true << true << "EPRe..V" << copied;
        QTest::newRow("copied without original")
            << PanelStage::copied() << false << true << "EPRe..." << copied;
        QTest::newRow("already clean") << PanelStage::alreadyClean() << true << true << "EPRe..V"
                                       << "No change needed. Nothing was copied.";
        QTest::newRow("missing key")
            << PanelStage::failure("Add an API key.", true) << true << true << "EPRe.O."
            << "Error. Add an API key.";
        // A failure never offers Revert: the original is already back.
        QTest::newRow("keychain error")
            << PanelStage::failure("Couldn’t access the API key in the desktop’s keyring.", false)
            << true << true << "EPRe..."
            << "Error. Couldn’t access the API key in the desktop’s keyring.";
    }
    void perStage() {
        QFETCH(PanelStage, stage);
        QFETCH(bool, holdsOriginal);
        QFETCH(bool, canRun);
        QFETCH(QString, flags);
        QFETCH(QString, outcome);

        const FixPanelControlsState state = FixPanelControlsState::of(stage, holdsOriginal, canRun);
        QString seen;
        seen += state.editorEnabled ? u'E' : u'.';
        seen += state.pickerEnabled ? u'P' : u'.';
        seen += state.showsRun ? u'R' : u'.';
        seen += state.runEnabled ? u'e' : u'.';
        seen += state.showsProgress ? u'W' : u'.';
        seen += state.showsOpenPresets ? u'O' : u'.';
        seen += state.showsRevert ? u'V' : u'.';
        QCOMPARE(seen, flags);
        QCOMPARE(state.pinsScrollToEnd, stage.kind == PanelStage::Kind::working);
        QCOMPARE(state.outcome ? state.outcome->accessibleName() : QString(), outcome);
    }

    // Only a delivered shortcut is promised; otherwise the hint names the
    // command to bind, or waits for the desktop's answer.
    void hintFollowsHowTheShortcutIsDelivered_data() {
        using Status = GlobalShortcutStatus;
        QTest::addColumn<GlobalShortcutStatus>("delivery");
        QTest::addColumn<QString>("hint");
        const QString press = QStringLiteral("Press %1 anywhere to open Scrivel.");
        const QString bind =
            QStringLiteral("To open Scrivel from anywhere, bind “scrivel --toggle” "
                           "to a shortcut in your desktop’s keyboard settings.");
        QTest::newRow("key grabs") << Status() << press.arg("Ctrl+Alt+Return");
        QTest::newRow("desktop's keys")
            << Status::bound("Super+Space", true) << press.arg("Super+Space");
        QTest::newRow("desktop, no keys")
            << Status::bound(QString(), true)
            << QStringLiteral("Choose keys for Scrivel under Settings › Keyboard shortcut to open "
                              "it from anywhere.");
        QTest::newRow("asking") << Status::pending() << QString();
        QTest::newRow("no portal") << Status::unavailable(Status::Reason::noPortal) << bind;
        QTest::newRow("refused") << Status::unavailable(Status::Reason::refused) << bind;
    }
    void hintFollowsHowTheShortcutIsDelivered() {
        QFETCH(GlobalShortcutStatus, delivery);
        QFETCH(QString, hint);
        const auto made = shortcutHintText(delivery, QStringLiteral("Ctrl+Alt+Return"));
        QCOMPARE(made.value_or(QString()), hint);
    }

    void sentences() {
        QCOMPARE(shortcutHintText(QStringLiteral("Ctrl+Alt+Return")),
                 std::optional<QString>(
                     QStringLiteral("Press Ctrl+Alt+Return anywhere to open Scrivel.")));
        QCOMPARE(shortcutHintText(std::nullopt), std::nullopt);
        QCOMPARE(SettingsStatus::warning(
                     QStringLiteral("Allow Scrivel in your desktop’s autostart settings."))
                     .accessibleName(),
                 QStringLiteral("Warning. Allow Scrivel in your desktop’s autostart settings."));
    }
};

QTEST_APPLESS_MAIN(FixPanelControlsStateTest)
#include "tst_FixPanelControlsState.moc"
