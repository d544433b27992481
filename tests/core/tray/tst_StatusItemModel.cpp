#include "core/desktop/Announcer.h"
#include "core/pipeline/RewriteCoordinator.h"
#include "core/presets/PresetStore.h"
#include "core/tray/StatusItemModel.h"
#include "support/FakeTransformer.h"
#include "support/InMemorySettingsStore.h"
#include "support/ManualClock.h"

#include <QtTest>

using namespace scrivel;
using namespace std::chrono_literals;

Q_DECLARE_METATYPE(OperationUIState)

namespace {

const QString resting = QStringLiteral("wand | Scrivel | Ready | Status: Fix · Ready");

struct RecordingAnnouncer : Announcer {
    void announce(const QString& text) override { texts.append(text); }
    QStringList texts;
};

// Lets queued work (state handlers, readiness answers, deferred
// presentations) run.
void settle() {
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents();
}

// The seeded presets, "Fix" active; nothing has run yet (call settle()).
struct Fixture {
    Fixture() : store(settings), coordinator(transformer) {
        store.seedIfEmpty(false);
        model = std::make_unique<StatusItemModel>(coordinator, store, announcer, clock.sleep());
        QObject::connect(model.get(), &StatusItemModel::panelRequested, model.get(),
                         [this] { presented.append(QStringLiteral("panel")); });
        QObject::connect(model.get(), &StatusItemModel::settingsRequested, model.get(),
                         [this] { presented.append(QStringLiteral("settings")); });
        QObject::connect(model.get(), &StatusItemModel::shortcutEnabledChanged, model.get(),
                         [this](bool enabled) { shortcutStates.append(enabled); });
        // As the app wires it: each state on the next turn, in order.
        QObject::connect(&coordinator, &RewriteCoordinator::operationStateChanged, model.get(),
                         &StatusItemModel::applyState, Qt::QueuedConnection);
    }

    // The button (look, tool tip, accessible value) and the menu's status line.
    QString shown() const {
        const char* look =
            QMetaEnum::fromType<StatusItemModel::Look>().valueToKey(int(model->look()));
        return QStringLiteral("%1 | %2 | %3 | %4")
            .arg(QLatin1String(look), model->toolTip(), model->accessibleValue(),
                 model->statusLine());
    }

    InMemorySettingsStore settings;
    PresetStore store;
    test::FakeTransformer transformer;
    RewriteCoordinator coordinator;
    RecordingAnnouncer announcer;
    test::ManualClock clock;
    QStringList presented;
    QList<bool> shortcutStates;
    std::unique_ptr<StatusItemModel> model;
};

} // namespace

class StatusItemModelTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void eachStateLooksAndReturnsToRest_data() {
        QTest::addColumn<OperationUIState>("state");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("announcement");
        QTest::addColumn<int>("restAfterMs"); // 0: stays

        const QString timedOut = QStringLiteral("Timed out. Try again.");
        const auto reason = UnavailableReason::misconfigured("Choose a model in Presets");
        QTest::newRow("idle") << OperationUIState::idle()
                              << "wand | Scrivel | Idle | Status: Fix · Ready" << QString() << 0;
        QTest::newRow("working") << OperationUIState::working()
                                 << "progress | Working | Working | Status: Fix · Ready"
                                 << "Working" << 0;
        QTest::newRow("success") << OperationUIState::success()
                                 << "checkMark | Complete | Complete | Status: Complete"
                                 << "Done. Copied. Press Ctrl+V to paste." << 2000;
        QTest::newRow("alreadyClean") << OperationUIState::alreadyClean()
                                      << "checkMark | No change | No change | Status: No change"
                                      << "No change needed. Nothing was copied." << 3000;
        QTest::newRow("error") << OperationUIState::error(timedOut)
                               << "triangle | " + timedOut + " | " + timedOut +
                                      " | Status: " + timedOut
                               << timedOut << 3000;
        QTest::newRow("modelUnavailable") << OperationUIState::modelUnavailable(reason)
                                          << "triangle | Choose a model in Presets | Model "
                                             "unavailable | Status: Model unavailable"
                                          << "Model unavailable. Choose a model in Presets" << 3000;
    }
    void eachStateLooksAndReturnsToRest() {
        QFETCH(OperationUIState, state);
        QFETCH(QString, shown);
        QFETCH(QString, announcement);
        QFETCH(int, restAfterMs);

        Fixture f;
        settle();
        f.model->applyState(state);
        QCOMPARE(f.shown(), shown);
        QCOMPARE(f.announcer.texts,
                 announcement.isEmpty() ? QStringList() : QStringList{announcement});
        QCOMPARE(f.model->isWorking(), state.kind() == OperationUIState::Kind::working);
        if (restAfterMs == 0) {
            QCOMPARE(f.clock.pendingCount(), 0);
            return;
        }
        f.clock.advance(std::chrono::milliseconds(restAfterMs - 1));
        settle();
        QCOMPARE(f.shown(), shown);
        f.clock.advance(1ms);
        settle();
        QCOMPARE(f.shown(), resting);
    }

    void onlyTheLatestResultReturnsToRest() {
        Fixture f;
        f.model->applyState(OperationUIState::success());
        f.clock.advance(1000ms);
        f.model->applyState(OperationUIState::working());
        f.clock.advance(1000ms); // the success's two seconds are up
        settle();
        QCOMPARE(f.model->look(), StatusItemModel::Look::progress);
        f.model->applyState(OperationUIState::error(QStringLiteral("Boom")));
        f.clock.advance(2999ms);
        settle();
        QCOMPARE(f.model->look(), StatusItemModel::Look::triangle);
        f.clock.advance(1ms);
        settle();
        QCOMPARE(f.model->look(), StatusItemModel::Look::wand);
        QCOMPARE(f.clock.pendingCount(), 0);
    }

    void readinessShowsUnlessARunIsUnderWay() {
        Fixture f;
        QCOMPARE(f.shown(), QStringLiteral("wand | Scrivel | Idle | Status: Checking…"));
        settle();
        QCOMPARE(f.shown(), resting);

        // Opening the menu reads readiness again; a run keeps its look.
        f.model->applyState(OperationUIState::working());
        f.transformer.reason = UnavailableReason::missingAPIKey();
        f.model->menuWillOpen();
        settle();
        QCOMPARE(f.shown(),
                 QStringLiteral("progress | Working | Working | Status: Fix · Add API key"));

        f.model->applyState(OperationUIState::idle());
        f.model->refreshReadiness();
        settle();
        QCOMPARE(f.shown(), "wand | " + UnavailableReason::missingAPIKey().message() +
                                " | Model unavailable | Status: Fix · Add API key");
    }

    void runsOfTheCoordinatorDriveTheLook() {
        Fixture f;
        Preset preset = *f.store.activePreset();
        preset.validatesEdits = false;
        auto run = f.coordinator.rewrite(QStringLiteral("helo"), preset);
        settle();
        QCOMPARE(f.model->look(), StatusItemModel::Look::progress);
        f.transformer.complete(QStringLiteral("hello"));
        settle();
        QCOMPARE(f.model->statusLine(), QStringLiteral("Status: Complete"));
    }

    void presentationsWaitForTheMenuToClose() {
        Fixture f;
        f.model->menuWillOpen();
        f.model->openPanel();
        f.model->showSettings(); // the newer request replaces the older
        settle();
        QCOMPARE(f.presented, QStringList());
        f.model->menuDidClose();
        QCOMPARE(f.shortcutStates, (QList<bool>{false, true}));
        QCOMPARE(f.presented, QStringList()); // not inside the closing itself
        settle();
        QCOMPARE(f.presented, QStringList{"settings"});

        // Nothing asked: nothing shown. With the menu closed, served at once.
        f.model->menuWillOpen();
        f.model->menuDidClose();
        settle();
        f.model->openPanel();
        QCOMPARE(f.presented, (QStringList{"settings", "panel"}));
    }

    void storeChangesReadAgain() {
        Fixture f;
        settle();
        QSignalSpy menuChanged(f.model.get(), &StatusItemModel::menuChanged);
        Preset renamed = *f.store.activePreset();
        renamed.name = QStringLiteral("Fix Better");
        f.store.update(renamed);
        QCOMPARE(menuChanged.size(), 1); // the preset list at once, readiness next
        settle();
        QCOMPARE(f.model->statusLine(), QStringLiteral("Status: Fix Better · Ready"));

        // Chosen elsewhere (the panel): the new active preset's readiness.
        f.transformer.reason = UnavailableReason::missingAPIKey();
        f.store.activate(f.store.presets()[1].id);
        settle();
        QCOMPARE(f.model->statusLine(),
                 QStringLiteral("Status: %1 · Add API key").arg(f.store.presets()[1].name));
    }

    void anUnnamedPresetIsListedAsUntitled() {
        Fixture f;
        Preset unnamed = *f.store.activePreset();
        unnamed.name = QStringLiteral("  ");
        f.store.update(unnamed);
        settle();
        QCOMPARE(f.model->presetMenu().first().title, QStringLiteral("Untitled Preset"));
        QCOMPARE(f.model->statusLine(), QStringLiteral("Status: Untitled Preset · Ready"));
        QCOMPARE(f.store.activePreset()->name, QStringLiteral("  "));
    }

    void presetMenuChecksTheActivePreset() {
        Fixture f;
        const QList<Preset> presets = f.store.presets();
        f.store.activate(presets[1].id);
        auto item = [&](int i, bool checked) {
            return StatusItemModel::PresetMenuItem{presets[i].name, Preset::idText(presets[i].id),
                                                   checked};
        };
        QCOMPARE(f.model->presetMenu(), (QList{item(0, false), item(1, true), item(2, false)}));

        QSignalSpy menuChanged(f.model.get(), &StatusItemModel::menuChanged);
        f.model->selectPreset(item(2, false).representedObject);
        QCOMPARE(f.model->presetMenu(), (QList{item(0, false), item(1, false), item(2, true)}));
        QVERIFY(!menuChanged.isEmpty());
        QVERIFY(f.transformer.prewarmed.isEmpty()); // on the next turn
        settle();
        QCOMPARE(f.transformer.prewarmed, QList{presets[2]});
        QCOMPARE(f.model->statusLine(), QStringLiteral("Status: %1 · Ready").arg(presets[2].name));

        // Items without an identifier in its standard form change nothing.
        const QString braced = QStringLiteral("{6F9619FF-8B86-D011-B42D-00C04FC964FF}");
        for (const QVariant& bad : {QVariant(2), QVariant("Make Concise"), QVariant(braced)})
            f.model->selectPreset(bad);
        settle();
        QCOMPARE(f.store.activePreset()->id, presets[2].id);
        QCOMPARE(f.transformer.prewarmed.size(), 1);
    }
};

QTEST_GUILESS_MAIN(StatusItemModelTest)
#include "tst_StatusItemModel.moc"
