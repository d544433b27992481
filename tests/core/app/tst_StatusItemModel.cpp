#include "app/Announcer.h"
#include "app/StatusItemModel.h"
#include "dummy/InMemorySettingsStore.h"
#include "pipeline/RewriteCoordinator.h"
#include "presets/BuiltInPresets.h"
#include "presets/PresetStore.h"
#include "support/FakeTransformer.h"
#include "support/ManualClock.h"

#include <QtTest>

using namespace scrivel;
using namespace std::chrono_literals;
using Look = StatusItemModel::Look;

Q_DECLARE_METATYPE(OperationUIState)

namespace {

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

struct Fixture {
    Fixture() : store(settings), coordinator(transformer) {
        store.seedIfEmpty(false);
        model = std::make_unique<StatusItemModel>(
            coordinator, store, announcer,
            StatusItemModel::Actions{[this] { presented.append(QStringLiteral("panel")); },
                                     [this](std::function<void()> changed) {
                                         presented.append(QStringLiteral("settings"));
                                         presetsChanged = std::move(changed);
                                     },
                                     [this](bool enabled) { shortcutStates.append(enabled); }},
            clock.sleep());
        settle();
    }

    QString readinessLine() const {
        return QStringLiteral("Status: %1 · Ready").arg(store.activePreset()->name);
    }

    InMemorySettingsStore settings;
    PresetStore store;
    test::FakeTransformer transformer;
    RewriteCoordinator coordinator;
    RecordingAnnouncer announcer;
    test::ManualClock clock;
    QStringList presented;
    QList<bool> shortcutStates;
    std::function<void()> presetsChanged;
    std::unique_ptr<StatusItemModel> model;
};

} // namespace

class StatusItemModelTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startsCheckingThenShowsReadiness() {
        InMemorySettingsStore settings;
        PresetStore store(settings);
        store.seedIfEmpty(false);
        test::FakeTransformer transformer;
        transformer.reason = UnavailableReason::missingAPIKey();
        RewriteCoordinator coordinator(transformer);
        RecordingAnnouncer announcer;
        StatusItemModel model(coordinator, store, announcer, {});
        QCOMPARE(model.statusLine(), QStringLiteral("Status: Checking…"));
        QCOMPARE(model.accessibleValue(), QStringLiteral("Idle"));
        settle();
        QCOMPARE(model.statusLine(), QStringLiteral("Status: Fix · Add API key"));
        QCOMPARE(model.look(), Look::wand);
        QCOMPARE(model.toolTip(), UnavailableReason::missingAPIKey().message());
        QCOMPARE(model.accessibleValue(), QStringLiteral("Model unavailable"));
    }

    void eachStateLooksAndReturnsToRest_data() {
        QTest::addColumn<OperationUIState>("state");
        QTest::addColumn<Look>("look");
        QTest::addColumn<QString>("toolTip");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("statusLine"); // empty: the readiness line stays
        QTest::addColumn<QString>("announcement");
        QTest::addColumn<int>("restAfterMs"); // 0: stays

        const auto reason =
            UnavailableReason::misconfigured(QStringLiteral("Choose a model in Presets"));
        QTest::newRow("idle") << OperationUIState::idle() << Look::wand << "Scrivel"
                              << "Idle" << QString() << QString() << 0;
        QTest::newRow("working") << OperationUIState::working() << Look::progress << "Working"
                                 << "Working" << QString() << "Working" << 0;
        QTest::newRow("success") << OperationUIState::success() << Look::checkMark << "Complete"
                                 << "Complete"
                                 << "Status: Complete"
                                 << "Done. Copied. Press Ctrl+V to paste." << 2000;
        QTest::newRow("alreadyClean")
            << OperationUIState::alreadyClean() << Look::checkMark << "No change"
            << "No change"
            << "Status: No change"
            << "No change needed. Nothing was copied." << 3000;
        QTest::newRow("error") << OperationUIState::error(QStringLiteral("Timed out. Try again."))
                               << Look::triangle << "Timed out. Try again."
                               << "Timed out. Try again."
                               << "Status: Timed out. Try again."
                               << "Timed out. Try again." << 3000;
        QTest::newRow("modelUnavailable") << OperationUIState::modelUnavailable(reason)
                                          << Look::triangle << "Choose a model in Presets"
                                          << "Model unavailable"
                                          << "Status: Model unavailable"
                                          << "Model unavailable. Choose a model in Presets" << 3000;
    }
    void eachStateLooksAndReturnsToRest() {
        QFETCH(OperationUIState, state);
        QFETCH(Look, look);
        QFETCH(QString, toolTip);
        QFETCH(QString, value);
        QFETCH(QString, statusLine);
        QFETCH(QString, announcement);
        QFETCH(int, restAfterMs);

        Fixture f;
        QCOMPARE(f.model->statusLine(), f.readinessLine());
        f.model->applyState(state);
        QCOMPARE(f.model->look(), look);
        QCOMPARE(f.model->toolTip(), toolTip);
        QCOMPARE(f.model->accessibleValue(), value);
        QCOMPARE(f.model->statusLine(), statusLine.isEmpty() ? f.readinessLine() : statusLine);
        QCOMPARE(f.announcer.texts,
                 announcement.isEmpty() ? QStringList() : QStringList{announcement});
        QCOMPARE(f.model->isWorking(), state.kind() == OperationUIState::Kind::working);

        if (restAfterMs == 0) {
            QCOMPARE(f.clock.pendingCount(), 0);
            return;
        }
        f.clock.advance(std::chrono::milliseconds(restAfterMs - 1));
        settle();
        QCOMPARE(f.model->look(), look);
        f.clock.advance(1ms);
        settle();
        QCOMPARE(f.model->look(), Look::wand);
        QCOMPARE(f.model->toolTip(), QStringLiteral("Scrivel"));
        QCOMPARE(f.model->accessibleValue(), QStringLiteral("Ready"));
        QCOMPARE(f.model->statusLine(), f.readinessLine());
    }

    void onlyTheLatestResultReturnsToRest() {
        Fixture f;
        f.model->applyState(OperationUIState::success());
        f.clock.advance(1000ms);
        f.model->applyState(OperationUIState::error(QStringLiteral("Boom")));
        f.clock.advance(1500ms); // past the success's two seconds
        settle();
        QCOMPARE(f.model->look(), Look::triangle);
        QCOMPARE(f.model->toolTip(), QStringLiteral("Boom"));
        f.clock.advance(1499ms);
        settle();
        QCOMPARE(f.model->look(), Look::triangle);
        f.clock.advance(1ms);
        settle();
        QCOMPARE(f.model->look(), Look::wand);
        QCOMPARE(f.clock.pendingCount(), 0);
    }

    void readinessDuringARunKeepsTheWorkingLook() {
        Fixture f;
        f.model->applyState(OperationUIState::working());
        f.transformer.reason = UnavailableReason::missingAPIKey();
        f.model->menuWillOpen();
        settle();
        QCOMPARE(f.model->statusLine(), QStringLiteral("Status: Fix · Add API key"));
        QCOMPARE(f.model->look(), Look::progress);
        QCOMPARE(f.model->toolTip(), QStringLiteral("Working"));
        QCOMPARE(f.model->accessibleValue(), QStringLiteral("Working"));

        // Once the run is over the same refresh shows the reason.
        f.model->applyState(OperationUIState::idle());
        f.model->refreshReadiness();
        settle();
        QCOMPARE(f.model->toolTip(), UnavailableReason::missingAPIKey().message());
        QCOMPARE(f.model->accessibleValue(), QStringLiteral("Model unavailable"));
    }

    void runsOfTheCoordinatorDriveTheLook() {
        Fixture f;
        Preset preset = *f.store.activePreset();
        preset.validatesEdits = false;
        auto run = f.coordinator.rewrite(QStringLiteral("helo"), preset);
        settle();
        QCOMPARE(f.model->look(), Look::progress);
        f.transformer.complete(QStringLiteral("hello"));
        settle();
        QCOMPARE(f.model->look(), Look::checkMark);
        QCOMPARE(f.model->statusLine(), QStringLiteral("Status: Complete"));
    }

    void presentationsWaitForTheMenuToClose_data() {
        QTest::addColumn<QStringList>("requests");
        QTest::addColumn<QStringList>("presentedAfterClose");
        QTest::newRow("open panel") << QStringList{"openPanel"} << QStringList{"panel"};
        QTest::newRow("settings") << QStringList{"showSettings"} << QStringList{"settings"};
        QTest::newRow("newer replaces older")
            << QStringList{"openPanel", "showSettings"} << QStringList{"settings"};
        QTest::newRow("nothing asked") << QStringList{} << QStringList{};
    }
    void presentationsWaitForTheMenuToClose() {
        QFETCH(QStringList, requests);
        QFETCH(QStringList, presentedAfterClose);
        Fixture f;
        f.model->menuWillOpen();
        QVERIFY(f.model->isMenuOpen());
        QCOMPARE(f.shortcutStates, QList<bool>{false});
        for (const QString& request : requests)
            request == "openPanel" ? f.model->openPanel() : f.model->showSettings();
        settle();
        QCOMPARE(f.presented, QStringList());
        f.model->menuDidClose();
        QCOMPARE(f.shortcutStates, (QList<bool>{false, true}));
        QCOMPARE(f.presented, QStringList()); // not inside the closing itself
        settle();
        QCOMPARE(f.presented, presentedAfterClose);
        QVERIFY(!f.model->hasPendingPresentation());

        // With the menu closed, requests are served at once.
        f.presented.clear();
        f.model->openPanel();
        QCOMPARE(f.presented, QStringList{"panel"});
    }

    void presetsChangedInSettingsPrewarmAndRefresh() {
        Fixture f;
        f.model->showSettings();
        QVERIFY(f.presetsChanged);
        f.transformer.prewarmed.clear();
        Preset renamed = *f.store.activePreset();
        renamed.name = QStringLiteral("Fix Better");
        f.store.update(renamed);
        f.presetsChanged();
        settle();
        QCOMPARE(f.transformer.prewarmed.size(), 1);
        QCOMPARE(f.transformer.prewarmed.first().id, renamed.id);
        QCOMPARE(f.model->statusLine(), QStringLiteral("Status: Fix Better · Ready"));
    }

    void presetMenuChecksTheActivePreset() {
        Fixture f;
        const QList<Preset> presets = f.store.presets();
        QCOMPARE(presets.size(), 3);
        f.store.activate(presets[1].id);
        auto checks = [&] {
            QList<bool> result;
            for (const auto& item : f.model->presetMenu())
                result.append(item.checked);
            return result;
        };
        const auto menu = f.model->presetMenu();
        QCOMPARE(menu.size(), 3);
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(menu[i].title, presets[i].name);
            QCOMPARE(menu[i].representedObject, Preset::idText(presets[i].id));
        }
        QCOMPARE(checks(), (QList<bool>{false, true, false}));

        QSignalSpy menuChanged(f.model.get(), &StatusItemModel::menuChanged);
        f.transformer.prewarmed.clear();
        f.model->selectPreset(menu[2].representedObject);
        QCOMPARE(checks(), (QList<bool>{false, false, true})); // before anything runs
        QVERIFY(!menuChanged.isEmpty());
        QVERIFY(f.transformer.prewarmed.isEmpty());
        settle();
        QCOMPARE(f.transformer.prewarmed.size(), 1);
        QCOMPARE(f.transformer.prewarmed.first().id, presets[2].id);
        QCOMPARE(f.model->statusLine(), QStringLiteral("Status: %1 · Ready").arg(presets[2].name));
    }

    void presetItemsWithoutAnIdentifierAreIgnored_data() {
        QTest::addColumn<QVariant>("represented");
        QTest::newRow("missing") << QVariant();
        QTest::newRow("not text") << QVariant(2);
        QTest::newRow("not a UUID") << QVariant(QStringLiteral("Make Concise"));
        QTest::newRow("braced") << QVariant(
            QStringLiteral("{6F9619FF-8B86-D011-B42D-00C04FC964FF}"));
    }
    void presetItemsWithoutAnIdentifierAreIgnored() {
        QFETCH(QVariant, represented);
        Fixture f;
        const QUuid active = f.store.activePreset()->id;
        f.transformer.prewarmed.clear();
        f.model->selectPreset(represented);
        settle();
        QCOMPARE(f.store.activePreset()->id, active);
        QVERIFY(f.transformer.prewarmed.isEmpty());
    }
};

QTEST_GUILESS_MAIN(StatusItemModelTest)
#include "tst_StatusItemModel.moc"
