#include "panel/FixPanelControlsState.h"

#include <QtTest>

using namespace scrivel;

Q_DECLARE_METATYPE(PanelStage)
Q_DECLARE_METATYPE(SettingsStatus)

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
        QTest::addColumn<QString>("outcome");

        QTest::newRow("input, empty") << PanelStage::input() << false << false
                                      << QStringLiteral("EPR....") << QStringLiteral("");
        QTest::newRow("input, runnable") << PanelStage::input() << false << true
                                         << QStringLiteral("EPRe...") << QStringLiteral("");
        QTest::newRow("working") << PanelStage::working() << true << false
                                 << QStringLiteral("....W..") << QStringLiteral("");
        QTest::newRow("copied with original")
            << PanelStage::copied() << true << true << QStringLiteral("EPRe..V")
            << QStringLiteral("Copied. Press Ctrl+V to replace your text.");
        QTest::newRow("copied without original")
            << PanelStage::copied() << false << true << QStringLiteral("EPRe...")
            << QStringLiteral("Copied. Press Ctrl+V to replace your text.");
        QTest::newRow("already clean")
            << PanelStage::alreadyClean() << true << true << QStringLiteral("EPRe..V")
            << QStringLiteral("No change needed. Nothing was copied.");
        QTest::newRow("missing key")
            << PanelStage::failure("Add an API key.", true) << true << true
            << QStringLiteral("EPRe.O.") << QStringLiteral("Add an API key.");
        // A failure never offers Revert: the original is already back.
        QTest::newRow("keychain error")
            << PanelStage::failure("Couldn’t access the API key in Keychain.", false) << true
            << true << QStringLiteral("EPRe...")
            << QStringLiteral("Couldn’t access the API key in Keychain.");
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
        QCOMPARE(state.outcome ? state.outcome->message : QString(), outcome);
    }

    void outcomeStatusKinds() {
        using Kind = SettingsStatus::Kind;
        QCOMPARE(FixPanelControlsState::of(PanelStage::copied(), true, true).outcome->kind,
                 Kind::success);
        QCOMPARE(FixPanelControlsState::of(PanelStage::alreadyClean(), true, true).outcome->kind,
                 Kind::neutral);
        QCOMPARE(
            FixPanelControlsState::of(PanelStage::failure("x", false), true, true).outcome->kind,
            Kind::error);
    }

    void shortcutHint() {
        QCOMPARE(shortcutHintText(QStringLiteral("Ctrl+Alt+Return")),
                 std::optional<QString>(
                     QStringLiteral("Press Ctrl+Alt+Return anywhere to open Scrivel.")));
        QCOMPARE(shortcutHintText(std::nullopt), std::nullopt);
    }

    void statusLabelsReadAsOneSentence_data() {
        QTest::addColumn<SettingsStatus>("status");
        QTest::addColumn<QString>("name");
        QTest::newRow("neutral") << SettingsStatus::neutral("Nothing.")
                                 << QStringLiteral("Nothing.");
        QTest::newRow("success") << SettingsStatus::success("Done.")
                                 << QStringLiteral("Success. Done.");
        QTest::newRow("warning") << SettingsStatus::warning("Approve Scrivel in Login Items.")
                                 << QStringLiteral("Warning. Approve Scrivel in Login Items.");
        QTest::newRow("error") << SettingsStatus::error("Failed.")
                               << QStringLiteral("Error. Failed.");
    }

    void statusLabelsReadAsOneSentence() {
        QFETCH(SettingsStatus, status);
        QFETCH(QString, name);
        QCOMPARE(status.accessibleName(), name);
    }
};

QTEST_APPLESS_MAIN(FixPanelControlsStateTest)
#include "tst_FixPanelControlsState.moc"
