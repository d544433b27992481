#include "core/panel/FixPanelModel.h"
#include "core/presets/PresetStore.h"
#include "support/FakeTransformer.h"
#include "support/InMemoryClipboard.h"
#include "support/InMemorySettingsStore.h"
#include "support/TestSupport.h"

#include <QSignalSpy>
#include <QtTest>
#include <variant>

using namespace scrivel;
using test::FakeTransformer;

// What the provider answers: the result's text or a failure.
using Reply = std::variant<QString, TransformFailure>;
Q_DECLARE_METATYPE(Reply)
Q_DECLARE_METATYPE(PanelStage)

class FixPanelModelTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_presets;
    std::unique_ptr<FakeTransformer> m_fake;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    InMemoryClipboard m_clipboard;
    std::unique_ptr<FixPanelModel> m_model;

    QStringList copied() const {
        QStringList texts;
        for (const ClipboardItem& item : m_clipboard.written)
            texts << item.plainText;
        return texts;
    }

    // Runs on text and waits for the partial reply to replace it.
    void startRun(const QString& text, const QString& partial) {
        m_model->setText(text);
        m_model->run();
        m_fake->partials({partial});
        QTRY_COMPARE(m_model->text(), partial);
    }
    void runToCopied(const QString& text, const QString& result) {
        m_model->setText(text);
        m_model->run();
        m_fake->complete(result);
        QTRY_COMPARE(m_model->stage(), PanelStage::copied());
    }

private Q_SLOTS:
    void init() {
        m_settings = std::make_unique<InMemorySettingsStore>();
        m_presets = std::make_unique<PresetStore>(*m_settings);
        m_presets->seedIfEmpty(false);
        m_presets->activate(m_presets->presets()[1].id); // "Make Concise": no edit validation
        m_fake = std::make_unique<FakeTransformer>();
        m_coordinator = std::make_unique<RewriteCoordinator>(*m_fake);
        m_clipboard = InMemoryClipboard();
        m_model = std::make_unique<FixPanelModel>(*m_presets, *m_coordinator, m_clipboard);
    }

    void runNeedsTextAPresetAndNoRunningJob() {
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
        QVERIFY(!m_model->canRun());
        m_model->run(); // a second run while working does nothing
        QCOMPARE(m_fake->calls.size(), 1);
        QCOMPARE(m_model->runGeneration(), 1);

        InMemorySettingsStore empty;
        PresetStore noPresets(empty);
        FixPanelModel model(noPresets, *m_coordinator, m_clipboard);
        model.setText(QStringLiteral("text"));
        QVERIFY(!model.canRun());
    }

    void partialTextReplacesTheEditorText() {
        startRun(QStringLiteral("teh text"), QStringLiteral("the"));
        QCOMPARE(m_model->stage(), PanelStage::working());

        m_model->editText(QStringLiteral("user typing")); // overwritten by the next partial
        QCOMPARE(m_model->stage(), PanelStage::working());
        m_fake->last().writer.push(
            TransformStreamEvent::partial(TextSnapshot(QStringLiteral("the text"))));
        QTRY_COMPARE(m_model->text(), QStringLiteral("the text"));
    }

    void outcomes_data() {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<bool>("copySucceeds");
        QTest::addColumn<PanelStage>("stage");
        QTest::addColumn<QString>("text");

        const auto fail = [](const TransformFailure& failure) { return Reply(failure); };
        const Reply fixed(QStringLiteral("the text\n"));
        const auto unavailable = [&](const UnavailableReason& reason) {
            return fail(TransformFailure::rewrite(RewriteError::modelUnavailable(reason)));
        };
        QTest::newRow("copied") << fixed << true << PanelStage::copied() << "the text";
        QTest::newRow("copy failed")
            << fixed << false
            << PanelStage::failure("Couldn’t copy the result. Select and copy it manually.", false)
            << "the text";
        QTest::newRow("already clean: the original back")
            << Reply(QStringLiteral("teh text")) << true << PanelStage::alreadyClean()
            << "teh text";
        // Failures bring the original back; only a key problem offers the presets.
        QTest::newRow("missing key")
            << unavailable(UnavailableReason::missingAPIKey()) << true
            << PanelStage::failure("Connect this preset to a provider in Presets", true)
            << "teh text";
        QTest::newRow("rejected key")
            << unavailable(UnavailableReason::rejectedAPIKey()) << true
            << PanelStage::failure("API key was rejected. Check it in Presets.", true)
            << "teh text";
        QTest::newRow("keychain error is not a key problem")
            << unavailable(UnavailableReason::keychainError()) << true
            << PanelStage::failure("Couldn’t access the API key in the desktop’s keyring", false)
            << "teh text";
        QTest::newRow("unsafe edit")
            << fail(TransformFailure::rewrite(RewriteError::outputRejected("line-breaks"))) << true
            << PanelStage::failure("The provider returned an unsafe edit. Try again.", false)
            << "teh text";
        QTest::newRow("cancelled below")
            << fail(TransformFailure::cancelled()) << true << PanelStage::input() << "teh text";
    }
    void outcomes() {
        QFETCH(Reply, reply);
        QFETCH(bool, copySucceeds);
        QFETCH(PanelStage, stage);
        QFETCH(QString, text);
        m_clipboard.failWrites = !copySucceeds;
        startRun(QStringLiteral("teh text"), QStringLiteral("the"));
        if (const QString* result = std::get_if<QString>(&reply))
            m_fake->complete(*result);
        else
            m_fake->fail(std::get<TransformFailure>(reply));
        QTRY_COMPARE(m_model->stage(), stage);
        QCOMPARE(m_model->text(), text);
        const bool copies =
            std::holds_alternative<QString>(reply) && text != "teh text" && copySucceeds;
        QCOMPARE(copied(), copies ? QStringList{text} : QStringList());
        if (copies)
            QVERIFY(m_clipboard.written.first().concealed);
    }

    void cancelRestoresAndLaterNewsOfTheRunIsIgnored() {
        startRun(QStringLiteral("first"), QStringLiteral("part"));
        // The first run's stream stays open while the user cancels and starts over.
        TransformStreamWriter first = m_fake->last().writer;
        m_model->cancel();
        QCOMPARE(m_model->stage(), PanelStage::input());
        QCOMPARE(m_model->text(), QStringLiteral("first"));
        QVERIFY(first.isCancelled());

        m_model->setText(QStringLiteral("second"));
        m_model->run();
        QCOMPARE(m_model->runGeneration(), 3);
        first.push(TransformStreamEvent::partial(TextSnapshot(QStringLiteral("late"))));
        first.push(TransformStreamEvent::completed(QStringLiteral("FIRST")));
        first.finish();
        test::deliverPostedEvents();
        QCOMPARE(m_model->text(), QStringLiteral("second"));
        m_fake->complete(QStringLiteral("SECOND"));
        QTRY_COMPARE(m_model->stage(), PanelStage::copied());
        QCOMPARE(m_model->text(), QStringLiteral("SECOND"));
        QCOMPARE(copied(), QStringList{QStringLiteral("SECOND")});
    }

    void revertOrAnEditLeavesTheResult() {
        runToCopied(QStringLiteral("teh"), QStringLiteral("the"));
        m_model->revert();
        QCOMPARE(m_model->text(), QStringLiteral("teh"));
        QCOMPARE(m_model->stage(), PanelStage::input());
        QCOMPARE(m_model->originalText(), std::nullopt);

        // An edit forgets the original: nothing to revert to.
        runToCopied(QStringLiteral("teh"), QStringLiteral("the"));
        m_model->editText(QStringLiteral("the!"));
        QCOMPARE(m_model->stage(), PanelStage::input());
        QCOMPARE(m_model->originalText(), std::nullopt);
        m_model->revert();
        QCOMPARE(m_model->text(), QStringLiteral("the!"));
    }

    void choosingAPresetReturnsToInputAndPrewarms() {
        const QUuid active = *m_model->activePresetID();
        m_model->setActivePresetID(active); // same: nothing, not even a prewarm
        m_model->setActivePresetID(std::nullopt);
        m_model->setActivePresetID(QUuid::createUuid());
        test::deliverPostedEvents(); // a prewarm is queued
        QVERIFY(m_fake->prewarmed.isEmpty());
        QCOMPARE(m_model->activePresetID(), active);

        runToCopied(QStringLiteral("teh"), QStringLiteral("the"));
        const Preset third = m_presets->presets()[2];
        m_model->setActivePresetID(third.id);
        QCOMPARE(m_presets->activePresetID(), third.id);
        QCOMPARE(m_model->stage(), PanelStage::input());
        QTRY_COMPARE(m_fake->prewarmed, QList{third});
    }

    void resetClearsEverything() {
        m_model->setShowsShortcutHint(true);
        startRun(QStringLiteral("teh"), QStringLiteral("t"));
        m_model->reset();
        QCOMPARE(m_model->text(), QString());
        QCOMPARE(m_model->stage(), PanelStage::input());
        QCOMPARE(m_model->originalText(), std::nullopt);
        QVERIFY(!m_model->showsShortcutHint());
        QVERIFY(m_fake->last().writer.isCancelled());
        m_fake->complete(QStringLiteral("late"));
        test::deliverPostedEvents();
        QCOMPARE(m_model->text(), QString());
    }

    void notificationsOnlyOnChange() {
        QSignalSpy text(m_model.get(), &FixPanelModel::textChanged);
        QSignalSpy replaced(m_model.get(), &FixPanelModel::textReplaced);
        QSignalSpy stage(m_model.get(), &FixPanelModel::stageChanged);
        QSignalSpy hint(m_model.get(), &FixPanelModel::showsShortcutHintChanged);
        m_model->setText(QStringLiteral("a"));
        m_model->setText(QStringLiteral("a"));
        m_model->setShowsShortcutHint(false);
        m_model->cancel(); // already input, no original
        QCOMPARE(text.count(), 1);
        QCOMPARE(replaced.count(), 1);
        // The user's edit is the field's own: it is not sent back.
        m_model->editText(QStringLiteral("ab"));
        QCOMPARE(text.count(), 2);
        QCOMPARE(replaced.count(), 1);
        QCOMPARE(stage.count(), 0);
        QCOMPARE(hint.count(), 0);
        const QUuid before = m_model->presentationID();
        m_model->beginPresentation();
        QVERIFY(m_model->presentationID() != before);
    }
};

QTEST_GUILESS_MAIN(FixPanelModelTest)
#include "tst_FixPanelModel.moc"
