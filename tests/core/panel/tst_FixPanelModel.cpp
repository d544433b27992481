#include "dummy/InMemorySettingsStore.h"
#include "panel/FixPanelModel.h"
#include "presets/BuiltInPresets.h"
#include "presets/PresetStore.h"
#include "support/FakeTransformer.h"

#include <QSignalSpy>
#include <QtTest>

using namespace scrivel;
using test::FakeTransformer;

Q_DECLARE_METATYPE(TransformFailure)
Q_DECLARE_METATYPE(PanelStage)

class FixPanelModelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void runNeedsTextAPresetAndNoRunningJob();
    void partialTextReplacesTheEditorText();
    void fixedResultIsCopied_data();
    void fixedResultIsCopied();
    void alreadyCleanRestoresTheOriginal();
    void failures_data();
    void failures();
    void cancelRestoresAndIgnoresTheLateCompletion();
    void supersededRunChangesNothing();
    void editingAfterAResultForgetsTheOriginal();
    void revertRestoresTheOriginal();
    void selectPresetReturnsToInputAndPrewarms();
    void activePresetIDWrites();
    void resetClearsEverything();
    void notificationsOnlyOnChange();

private:
    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_presets;
    std::unique_ptr<FakeTransformer> m_fake;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    std::unique_ptr<FixPanelModel> m_model;
    QStringList m_copied;
    bool m_copySucceeds = true;
};

void FixPanelModelTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_presets = std::make_unique<PresetStore>(*m_settings);
    m_presets->seedIfEmpty(false);
    m_presets->activate(m_presets->presets()[1].id); // "Make Concise": no edit validation
    m_fake = std::make_unique<FakeTransformer>();
    m_coordinator = std::make_unique<RewriteCoordinator>(*m_fake);
    m_copied.clear();
    m_copySucceeds = true;
    m_model = std::make_unique<FixPanelModel>(
        *m_presets, *m_coordinator, [] {},
        [this](const QString& text) {
            m_copied << text;
            return m_copySucceeds;
        });
}

void FixPanelModelTest::runNeedsTextAPresetAndNoRunningJob() {
    m_model->setText(QStringLiteral("  \n\t"));
    QVERIFY(!m_model->canRun());
    m_model->run();
    QCOMPARE(m_model->stage(), PanelStage::input());
    QVERIFY(m_fake->calls.isEmpty());

    m_model->setText(QStringLiteral("teh text"));
    QVERIFY(m_model->canRun());
    m_model->run();
    QCOMPARE(m_model->stage(), PanelStage::working());
    QCOMPARE(m_model->originalText(), std::optional<QString>(QStringLiteral("teh text")));
    QCOMPARE(m_model->runGeneration(), 1);
    QVERIFY(!m_model->canRun());
    m_model->run(); // a second run while working does nothing
    QCOMPARE(m_fake->calls.size(), 1);
    QCOMPARE(m_model->runGeneration(), 1);

    InMemorySettingsStore empty;
    PresetStore noPresets(empty);
    FixPanelModel model(noPresets, *m_coordinator, {}, {});
    model.setText(QStringLiteral("text"));
    QVERIFY(!model.canRun());
}

void FixPanelModelTest::partialTextReplacesTheEditorText() {
    m_model->setText(QStringLiteral("teh text"));
    m_model->run();
    m_fake->partials({QStringLiteral("the")});
    QTRY_COMPARE(m_model->text(), QStringLiteral("the"));
    m_model->textDidChange(); // the editor reports the model's own change
    QCOMPARE(m_model->stage(), PanelStage::working());

    m_model->setText(QStringLiteral("user typing")); // overwritten by the next partial
    m_model->textDidChange();
    QCOMPARE(m_model->stage(), PanelStage::working());
    m_fake->last().writer.push(
        TransformStreamEvent::partial(TextSnapshot(QStringLiteral("the text"))));
    QTRY_COMPARE(m_model->text(), QStringLiteral("the text"));
}

void FixPanelModelTest::fixedResultIsCopied_data() {
    QTest::addColumn<bool>("copySucceeds");
    QTest::addColumn<PanelStage>("stage");
    QTest::newRow("copied") << true << PanelStage::copied();
    QTest::newRow("copy failed")
        << false
        << PanelStage::failure(
               QStringLiteral("Couldn\u2019t copy the result. Select and copy it manually."),
               false);
}

void FixPanelModelTest::fixedResultIsCopied() {
    QFETCH(bool, copySucceeds);
    QFETCH(PanelStage, stage);
    m_copySucceeds = copySucceeds;
    m_model->setText(QStringLiteral("teh text"));
    m_model->run();
    m_fake->partials({QStringLiteral("the")});
    m_fake->complete(QStringLiteral("the text\n"));
    QTRY_COMPARE(m_model->stage(), stage);
    QCOMPARE(m_model->text(), QStringLiteral("the text"));
    QCOMPARE(m_copied, QStringList{QStringLiteral("the text")});
    QCOMPARE(m_model->originalText(), std::optional<QString>(QStringLiteral("teh text")));
}

void FixPanelModelTest::alreadyCleanRestoresTheOriginal() {
    m_model->setText(QStringLiteral("Clean text."));
    m_model->run();
    m_fake->partials({QStringLiteral("Clean")});
    QTRY_COMPARE(m_model->text(), QStringLiteral("Clean"));
    m_fake->complete(QStringLiteral("Clean text."));
    QTRY_COMPARE(m_model->stage(), PanelStage::alreadyClean());
    QCOMPARE(m_model->text(), QStringLiteral("Clean text."));
    QVERIFY(m_copied.isEmpty());
}

void FixPanelModelTest::failures_data() {
    QTest::addColumn<TransformFailure>("failure");
    QTest::addColumn<PanelStage>("stage");

    const auto unavailable = [](const UnavailableReason& reason) {
        return TransformFailure::rewrite(RewriteError::modelUnavailable(reason));
    };
    QTest::newRow("missing key") << unavailable(UnavailableReason::missingAPIKey())
                                 << PanelStage::failure(
                                        "Connect this preset to a provider in Presets", true);
    QTest::newRow("rejected key") << unavailable(UnavailableReason::rejectedAPIKey())
                                  << PanelStage::failure(
                                         "API key was rejected. Check it in Presets.", true);
    QTest::newRow("keychain error is not a key problem")
        << unavailable(UnavailableReason::keychainError())
        << PanelStage::failure(QStringLiteral("Couldn\u2019t access the API key in Keychain"),
                               false);
    QTest::newRow("unsafe edit")
        << TransformFailure::rewrite(RewriteError::outputRejected("line-breaks"))
        << PanelStage::failure("The provider returned an unsafe edit. Try again.", false);
    QTest::newRow("too large") << TransformFailure::rewrite(RewriteError::inputTooLarge())
                               << PanelStage::failure("This text is too long for the provider.",
                                                      false);
    QTest::newRow("cancelled below") << TransformFailure::cancelled() << PanelStage::input();
}

void FixPanelModelTest::failures() {
    QFETCH(TransformFailure, failure);
    QFETCH(PanelStage, stage);
    m_model->setText(QStringLiteral("original"));
    m_model->run();
    m_fake->partials({QStringLiteral("partial")});
    QTRY_COMPARE(m_model->text(), QStringLiteral("partial"));
    m_fake->fail(failure);
    QTRY_COMPARE(m_model->stage(), stage);
    QCOMPARE(m_model->text(), QStringLiteral("original"));
}

void FixPanelModelTest::cancelRestoresAndIgnoresTheLateCompletion() {
    m_model->setText(QStringLiteral("original"));
    m_model->run();
    m_fake->partials({QStringLiteral("part")});
    QTRY_COMPARE(m_model->text(), QStringLiteral("part"));
    m_model->cancel();
    QCOMPARE(m_model->stage(), PanelStage::input());
    QCOMPARE(m_model->text(), QStringLiteral("original"));
    QVERIFY(m_fake->last().writer.isCancelled());

    m_fake->last().writer.push(TransformStreamEvent::partial(TextSnapshot(QStringLiteral("late"))));
    m_fake->complete(QStringLiteral("late result"));
    QTest::qWait(20);
    QCOMPARE(m_model->text(), QStringLiteral("original"));
    QCOMPARE(m_model->stage(), PanelStage::input());
    QVERIFY(m_copied.isEmpty());
}

void FixPanelModelTest::supersededRunChangesNothing() {
    m_model->setText(QStringLiteral("first"));
    m_model->run();
    // The first run's stream stays open while the user cancels and starts over.
    TransformStreamWriter first = m_fake->last().writer;
    m_model->cancel();
    m_model->setText(QStringLiteral("second"));
    m_model->run();
    QCOMPARE(m_model->runGeneration(), 3);
    first.push(TransformStreamEvent::completed(QStringLiteral("FIRST")));
    first.finish();
    m_fake->complete(QStringLiteral("SECOND"));
    QTRY_COMPARE(m_model->stage(), PanelStage::copied());
    QCOMPARE(m_model->text(), QStringLiteral("SECOND"));
    QCOMPARE(m_copied, QStringList{QStringLiteral("SECOND")});
}

void FixPanelModelTest::editingAfterAResultForgetsTheOriginal() {
    m_model->setText(QStringLiteral("teh"));
    m_model->run();
    m_fake->complete(QStringLiteral("the"));
    QTRY_COMPARE(m_model->stage(), PanelStage::copied());
    m_model->textDidChange(); // the result itself arriving in the editor
    QCOMPARE(m_model->stage(), PanelStage::copied());

    m_model->setText(QStringLiteral("the!"));
    m_model->textDidChange();
    QCOMPARE(m_model->stage(), PanelStage::input());
    QCOMPARE(m_model->originalText(), std::nullopt);
    m_model->revert();
    QCOMPARE(m_model->text(), QStringLiteral("the!"));
}

void FixPanelModelTest::revertRestoresTheOriginal() {
    m_model->setText(QStringLiteral("teh"));
    m_model->run();
    m_fake->complete(QStringLiteral("the"));
    QTRY_COMPARE(m_model->stage(), PanelStage::copied());
    m_model->revert();
    QCOMPARE(m_model->text(), QStringLiteral("teh"));
    QCOMPARE(m_model->stage(), PanelStage::input());
    QCOMPARE(m_model->originalText(), std::nullopt);
    m_model->textDidChange(); // the restored text is the model's own change
    QCOMPARE(m_model->programmaticText().has_value(), true);
}

void FixPanelModelTest::selectPresetReturnsToInputAndPrewarms() {
    m_model->setText(QStringLiteral("teh"));
    m_model->run();
    m_fake->complete(QStringLiteral("the"));
    QTRY_COMPARE(m_model->stage(), PanelStage::copied());

    const QUuid third = m_presets->presets()[2].id;
    m_model->selectPreset(third);
    QCOMPARE(m_presets->activePresetID(), third);
    QCOMPARE(m_model->stage(), PanelStage::input());
    QTRY_COMPARE(m_fake->prewarmed.size(), 1);
    QCOMPARE(m_fake->prewarmed.first().id, third);

    m_model->selectPreset(QUuid::createUuid()); // unknown: the store keeps its choice
    QCOMPARE(m_presets->activePresetID(), third);
}

void FixPanelModelTest::activePresetIDWrites() {
    const QUuid active = *m_model->activePresetID();
    m_model->setActivePresetID(active); // same: nothing, not even a prewarm
    m_model->setActivePresetID(std::nullopt);
    m_model->setActivePresetID(QUuid::createUuid());
    QTest::qWait(5);
    QVERIFY(m_fake->prewarmed.isEmpty());
    QCOMPARE(m_model->activePresetID(), active);

    const QUuid first = m_presets->presets()[0].id;
    m_model->setActivePresetID(first);
    QCOMPARE(m_model->activePresetID(), first);
    QTRY_COMPARE(m_fake->prewarmed.size(), 1);
}

void FixPanelModelTest::resetClearsEverything() {
    m_model->setShowsShortcutHint(true);
    m_model->setText(QStringLiteral("teh"));
    m_model->run();
    m_fake->partials({QStringLiteral("t")});
    QTRY_COMPARE(m_model->text(), QStringLiteral("t"));
    m_model->reset();
    QCOMPARE(m_model->text(), QString());
    QCOMPARE(m_model->stage(), PanelStage::input());
    QCOMPARE(m_model->originalText(), std::nullopt);
    QVERIFY(!m_model->programmaticText());
    QVERIFY(!m_model->showsShortcutHint());
    QVERIFY(m_fake->last().writer.isCancelled());
    m_fake->complete(QStringLiteral("late"));
    QTest::qWait(10);
    QCOMPARE(m_model->text(), QString());
}

void FixPanelModelTest::notificationsOnlyOnChange() {
    QSignalSpy text(m_model.get(), &FixPanelModel::textChanged);
    QSignalSpy stage(m_model.get(), &FixPanelModel::stageChanged);
    QSignalSpy hint(m_model.get(), &FixPanelModel::showsShortcutHintChanged);
    m_model->setText(QStringLiteral("a"));
    m_model->setText(QStringLiteral("a"));
    m_model->setShowsShortcutHint(false);
    m_model->cancel(); // already input, no original
    QCOMPARE(text.count(), 1);
    QCOMPARE(stage.count(), 0);
    QCOMPARE(hint.count(), 0);
    const QUuid before = m_model->presentationID();
    m_model->beginPresentation();
    QVERIFY(m_model->presentationID() != before);
}

QTEST_GUILESS_MAIN(FixPanelModelTest)
#include "tst_FixPanelModel.moc"
