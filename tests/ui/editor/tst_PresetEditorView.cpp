#include "core/editor/PresetEditorModel.h"
#include "core/editor/PresetModelListCache.h"
#include "core/presets/PresetStore.h"
#include "core/providers/ProviderCatalog.h"
#include "support/FakeKeyStore.h"
#include "support/InMemorySettingsStore.h"
#include "support/ModalScript.h"
#include "ui/editor/InstructionsEditor.h"
#include "ui/editor/PresetConnectionView.h"
#include "ui/editor/PresetEditorView.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

using namespace scrivel;

class PresetEditorViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_model.reset(); }
    void providerDependentRows_data();
    void providerDependentRows();
    void eyeToggleKeepsTheTypedKey();
    void useButtonFollowsTheActivePreset();
    void sharedKeyConfirmation_data();
    void sharedKeyConfirmation();
    void modelPickerKeepsTheChosenModel();
    void aRunningTestCanBeCancelled();
    void instructionsKeepEveryCharacterTyped();

private:
    std::unique_ptr<PresetEditorView> open(const Preset& preset, std::function<void()> onUse = {});
    Preset stored(const QString& name, const QString& providerID, const QString& model = {});

    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    test::FakeKeyStore m_keys;
    PresetModelListCache m_cache;
    std::unique_ptr<PresetEditorModel> m_model;
    // A provider that never answers.
    bool m_testsHang = false;
    QList<Promise<PresetEditorModel::TestResult>> m_pendingTests;
};

void PresetEditorViewTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_store = std::make_unique<PresetStore>(*m_settings);
    m_keys = test::FakeKeyStore();
    m_cache.clear();
    m_testsHang = false;
    m_pendingTests.clear();
}

std::unique_ptr<PresetEditorView> PresetEditorViewTest::open(const Preset& preset,
                                                             std::function<void()> onUse) {
    m_model.reset();
    m_model = std::make_unique<PresetEditorModel>(
        preset, *m_store, m_keys,
        [](const ProviderEndpoint&, const std::optional<QString>&) {
            return Future<PresetEditorModel::ModelsResult>::ready(QStringList{"model-a"});
        },
        [this](const Preset&, const QString&) {
            if (!m_testsHang)
                return Future<PresetEditorModel::TestResult>::ready(QStringLiteral("ok"));
            m_pendingTests.append(Promise<PresetEditorModel::TestResult>());
            return m_pendingTests.last().future();
        },
        PresetEditorModel::Options{std::chrono::milliseconds(20), &m_cache});
    auto view = std::make_unique<PresetEditorView>(*m_model, std::move(onUse));
    view->show();
    return view;
}

Preset PresetEditorViewTest::stored(const QString& name, const QString& providerID,
                                    const QString& model) {
    Preset preset;
    preset.id = QUuid::createUuid();
    preset.name = name;
    preset.providerID = providerID;
    preset.model = model;
    preset.instructions = QStringLiteral("Fix it.");
    if (providerID == customProviderID())
        preset.customBaseURL = QStringLiteral("http://127.0.0.1:11434/v1");
    m_store->add(preset);
    return preset;
}

void PresetEditorViewTest::providerDependentRows_data() {
    QTest::addColumn<QString>("providerID");
    QTest::addColumn<bool>("baseURLShown");
    QTest::addColumn<bool>("keyShown");
    QTest::addColumn<QString>("placeholder");
    QTest::addColumn<QString>("footerStart");
    QTest::addColumn<QString>("link");

    QTest::newRow("catalogue") << QStringLiteral("anthropic") << false << true << "Required"
                               << "One key per provider, shared by every preset that uses it."
                               << "https://console.anthropic.com/settings/keys";
    QTest::newRow("custom")
        << QStringLiteral("custom") << true << true << "Optional"
        << "OpenAI-compatible base URL. API keys are optional for local servers." << QString();
    QTest::newRow("on device") << QStringLiteral("onDevice") << false << false << "Required"
                               << "On Device is ready." << QString();
}

void PresetEditorViewTest::providerDependentRows() {
    QFETCH(QString, providerID);
    QFETCH(bool, baseURLShown);
    QFETCH(bool, keyShown);
    QFETCH(QString, placeholder);
    QFETCH(QString, footerStart);
    QFETCH(QString, link);

    // Start elsewhere and switch through the picker, as a user would.
    const Preset preset = stored(QStringLiteral("P"), QStringLiteral("openai"));
    auto view = open(preset);
    QComboBox* picker = view->providerPicker();
    const int index = picker->findData(providerID);
    QVERIFY(index >= 0);
    picker->setCurrentIndex(index);
    Q_EMIT picker->activated(index);

    QCOMPARE(view->isBaseURLRowVisible(), baseURLShown);
    QCOMPARE(view->isAPIKeyRowVisible(), keyShown);
    QCOMPARE(view->connectionView()->keyField()->placeholderText(), placeholder);
    QCOMPARE(view->baseURLField()->placeholderText(), QStringLiteral("http://127.0.0.1:11434/v1"));
    QVERIFY2(view->footer()->text().startsWith(footerStart), qPrintable(view->footer()->text()));
    QCOMPARE(view->footer()->text().contains(QStringLiteral("Get an API key")), !link.isEmpty());
    if (!link.isEmpty())
        QVERIFY(view->footer()->text().contains(link));

    if (providerID == Preset::onDeviceProviderID()) {
        view->setOnDeviceUnavailable(UnavailableReason::modelNotReady(QStringLiteral("Not yet.")));
        QCOMPARE(view->footer()->text(), QStringLiteral("Not yet."));
    }
}

void PresetEditorViewTest::eyeToggleKeepsTheTypedKey() {
    const Preset preset = stored(QStringLiteral("P"), QStringLiteral("groq"));
    auto view = open(preset);
    PresetConnectionView* connection = view->connectionView();
    QLineEdit* field = connection->keyField();
    field->setFocus();
    QTest::keyClicks(field, QStringLiteral("gsk-123"));
    QCOMPARE(field->echoMode(), QLineEdit::Password);
    QCOMPARE(connection->visibilityButton()->toolTip(), QStringLiteral("Show API key"));

    QTest::mouseClick(connection->visibilityButton(), Qt::LeftButton);
    QCOMPARE(field->echoMode(), QLineEdit::Normal);
    QCOMPARE(field->text(), QStringLiteral("gsk-123"));
    QCOMPARE(connection->visibilityButton()->toolTip(), QStringLiteral("Hide API key"));
    QCOMPARE(connection->visibilityButton()->accessibleName(), QStringLiteral("Hide API key"));

    QTest::mouseClick(connection->visibilityButton(), Qt::LeftButton);
    QCOMPARE(field->echoMode(), QLineEdit::Password);
    QCOMPARE(field->text(), QStringLiteral("gsk-123"));
    QCOMPARE(m_model->apiKey(), QStringLiteral("gsk-123"));
}

void PresetEditorViewTest::useButtonFollowsTheActivePreset() {
    const Preset preset = stored(QStringLiteral("P"), QStringLiteral("openai"));
    int used = 0;
    auto view = open(preset, [&] { ++used; });
    view->setActive(false);
    QVERIFY(view->useButton()->isVisibleTo(view.get()));
    QCOMPARE(view->useButton()->toolTip(), QStringLiteral("Run this preset from the hotkey"));
    view->useButton()->click();
    QCOMPARE(used, 1);
    view->setActive(true);
    QVERIFY(!view->useButton()->isVisibleTo(view.get()));
}

void PresetEditorViewTest::sharedKeyConfirmation_data() {
    QTest::addColumn<QString>("answer");
    QTest::newRow("cancel") << "Cancel";
    QTest::newRow("remove") << "Remove Key";
}

void PresetEditorViewTest::sharedKeyConfirmation() {
    QFETCH(QString, answer);
    const Preset preset = stored(QStringLiteral("P"), QStringLiteral("openai"));
    stored(QStringLiteral("Mail"), QStringLiteral("openai"));
    m_keys.keys.insert(QStringLiteral("openai"), QStringLiteral("sk-saved"));
    auto view = open(preset);
    QLineEdit* field = view->connectionView()->keyField();
    QTRY_COMPARE(field->text(), QStringLiteral("sk-saved"));

    test::MessageBoxSeen box;
    test::ModalScript script({test::answerMessageBox(box, answer)});
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    QTRY_VERIFY(script.done());
    QCOMPARE(box.title, QStringLiteral("Remove API Key"));
    QVERIFY(box.titleFits);
    QCOMPARE(box.text, QStringLiteral("Remove this API key?"));
    QCOMPARE(box.informative, QStringLiteral("“Mail” also uses this key and will stop working."));
    QVERIFY(box.buttons.contains(QStringLiteral("Remove Key")));
    QVERIFY(box.buttons.contains(QStringLiteral("Cancel")));
    if (answer == QStringLiteral("Cancel")) {
        QTRY_COMPARE(field->text(), QStringLiteral("sk-saved"));
        QVERIFY(m_keys.keys.contains(QStringLiteral("openai")));
    } else {
        QTRY_VERIFY(!m_keys.keys.contains(QStringLiteral("openai")));
        QCOMPARE(field->text(), QString());
    }
}

void PresetEditorViewTest::modelPickerKeepsTheChosenModel() {
    auto view = open(stored(QStringLiteral("P"), customProviderID(), QStringLiteral("not-listed")));
    QComboBox* picker = view->modelPicker();
    QTRY_COMPARE(picker->count(), 3); // "Choose a model", the chosen one, the listed one
    QCOMPARE(picker->itemText(0), QStringLiteral("Choose a model"));
    QCOMPARE(picker->currentText(), QStringLiteral("not-listed"));
    picker->setCurrentIndex(2);
    Q_EMIT picker->activated(2);
    QCOMPARE(m_model->draft().model, QStringLiteral("model-a"));
}

void PresetEditorViewTest::aRunningTestCanBeCancelled() {
    m_testsHang = true;
    auto view = open(stored(QStringLiteral("P"), customProviderID(), QStringLiteral("model-a")));
    QTRY_VERIFY(view->testButton()->isEnabled());
    QPushButton* cancel = view->testCancelButton();
    QVERIFY(!cancel->isVisible());
    view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(view.get()));
    // From the keyboard: the focus moves to Cancel and back.
    view->testButton()->setFocus();
    QTest::keyClick(view->testButton(), Qt::Key_Space);
    QTRY_COMPARE(m_pendingTests.size(), 1);
    QVERIFY(cancel->isVisible());
    QCOMPARE(cancel->text(), QStringLiteral("Cancel"));
    QCOMPARE(QApplication::focusWidget(), cancel);
    QTest::keyClick(cancel, Qt::Key_Space);
    QVERIFY(!cancel->isVisible());
    QCOMPARE(QApplication::focusWidget(), view->testButton());
    QVERIFY(view->testStatus()->isVisible());
    QCOMPARE(view->testStatus()->text(), QStringLiteral("Test cancelled."));
    QVERIFY(view->testButton()->isEnabled());
}

void PresetEditorViewTest::instructionsKeepEveryCharacterTyped() {
    auto view = open(stored(QStringLiteral("P"), QStringLiteral("openai")));
    // Longer than any prompt needs, with non-breaking spaces (French
    // punctuation) and a line break.
    QString pasted = QStringLiteral("Réponds en français\u00A0: sois bref\u00A0!\nPuis relis.");
    while (pasted.size() < 25000)
        pasted += QStringLiteral(" Garde les espaces insécables\u00A0;");
    QPlainTextEdit* editor = view->instructions()->editor();
    editor->selectAll();
    editor->insertPlainText(pasted);
    QCOMPARE(m_model->draft().instructions.size(), pasted.size());
    QCOMPARE(m_model->draft().instructions, pasted);
    QCOMPARE(view->instructions()->text(), pasted);
}

QTEST_MAIN(PresetEditorViewTest)
#include "tst_PresetEditorView.moc"
