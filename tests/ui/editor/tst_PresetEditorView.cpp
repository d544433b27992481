#include "dummy/InMemorySettingsStore.h"
#include "editor/InstructionsEditor.h"
#include "editor/PresetConnectionView.h"
#include "editor/PresetEditorModel.h"
#include "editor/PresetEditorView.h"
#include "editor/PresetModelListCache.h"
#include "presets/PresetStore.h"
#include "providers/ProviderCatalog.h"
#include "support/FakeKeyStore.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

using namespace scrivel;

namespace {

Preset makePreset(const QString& name, const QString& providerID) {
    Preset preset;
    preset.id = QUuid::createUuid();
    preset.name = name;
    preset.providerID = providerID;
    preset.instructions = QStringLiteral("Fix it.");
    if (providerID == customProviderID())
        preset.customBaseURL = QStringLiteral("http://127.0.0.1:11434/v1");
    return preset;
}

// Answers the next modal message box with the button of the given text and
// records what it said.
struct MessageBoxAnswer {
    QString title;
    QString informative;
    QStringList buttons;

    void answerWith(const QString& buttonText) {
        // The box opens on a later turn of the event loop; look until it is up.
        auto* poll = new QTimer();
        poll->setInterval(10);
        QObject::connect(poll, &QTimer::timeout, poll, [this, poll, buttonText] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            poll->deleteLater();
            poll->stop();
            title = box->text();
            informative = box->informativeText();
            for (QAbstractButton* button : box->buttons())
                buttons.append(button->text());
            for (QAbstractButton* button : box->buttons())
                if (button->text() == buttonText)
                    button->click();
        });
        poll->start();
    }
};

} // namespace

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

private:
    std::unique_ptr<PresetEditorView> open(const Preset& preset, std::function<void()> onUse = {});

    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    test::FakeKeyStore m_keys;
    PresetModelListCache m_cache;
    std::unique_ptr<PresetEditorModel> m_model;
};

void PresetEditorViewTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_store = std::make_unique<PresetStore>(*m_settings);
    m_keys = test::FakeKeyStore();
    m_cache.clear();
}

std::unique_ptr<PresetEditorView> PresetEditorViewTest::open(const Preset& preset,
                                                             std::function<void()> onUse) {
    m_model.reset();
    m_model = std::make_unique<PresetEditorModel>(
        preset, *m_store, [] {}, m_keys,
        [](const ProviderEndpoint&, const std::optional<QString>&) {
            return Future<PresetEditorModel::ModelsResult>::ready(QStringList{"model-a"});
        },
        [](const Preset&, const QString&) {
            return Future<PresetEditorModel::TestResult>::ready(QStringLiteral("ok"));
        },
        PresetEditorModel::Options{std::chrono::milliseconds(20), &m_cache});
    auto view = std::make_unique<PresetEditorView>(*m_model, std::move(onUse));
    view->show();
    return view;
}

void PresetEditorViewTest::providerDependentRows_data() {
    QTest::addColumn<QString>("providerID");
    QTest::addColumn<bool>("baseURLShown");
    QTest::addColumn<bool>("keyShown");
    QTest::addColumn<QString>("placeholder");
    QTest::addColumn<QString>("footerStart");
    QTest::addColumn<QString>("link");

    QTest::newRow("catalogue") << "anthropic" << false << true << "Required"
                               << "One key per provider, shared by every preset that uses it."
                               << "https://console.anthropic.com/settings/keys";
    QTest::newRow("custom")
        << "custom" << true << true << "Optional"
        << "OpenAI-compatible base URL. API keys are optional for local servers."
        << "";
    QTest::newRow("on device") << "onDevice" << false << false << "Required"
                               << "On Device is ready."
                               << "";
}

void PresetEditorViewTest::providerDependentRows() {
    QFETCH(QString, providerID);
    QFETCH(bool, baseURLShown);
    QFETCH(bool, keyShown);
    QFETCH(QString, placeholder);
    QFETCH(QString, footerStart);
    QFETCH(QString, link);

    // Start elsewhere and switch through the picker, as a user would.
    const Preset preset = makePreset(QStringLiteral("P"), QStringLiteral("openai"));
    m_store->add(preset);
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
    const Preset preset = makePreset(QStringLiteral("P"), QStringLiteral("groq"));
    m_store->add(preset);
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
    const Preset preset = makePreset(QStringLiteral("P"), QStringLiteral("openai"));
    m_store->add(preset);
    int used = 0;
    auto view = open(preset, [&] { ++used; });
    view->setActive(false);
    QVERIFY(view->useButton()->isVisibleTo(view.get()));
    QCOMPARE(view->useButton()->toolTip(), QStringLiteral("Run this preset from the hotkey"));
    view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(view.get()));
    QTest::keyClick(view.get(), Qt::Key_U, Qt::ControlModifier);
    QCOMPARE(used, 1);
    view->setActive(true);
    QVERIFY(!view->useButton()->isVisibleTo(view.get()));
    QTest::keyClick(view.get(), Qt::Key_U, Qt::ControlModifier);
    QCOMPARE(used, 1);
}

void PresetEditorViewTest::sharedKeyConfirmation_data() {
    QTest::addColumn<QStringList>("others");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("answer");
    QTest::newRow("one, cancel") << QStringList{"Mail"}
                                 << "“Mail” also uses this key and will stop working."
                                 << "Cancel";
    QTest::newRow("two, remove") << QStringList{"Mail", "Notes"}
                                 << "2 other presets use this key and will stop working: Mail, "
                                    "Notes."
                                 << "Remove Key";
}

void PresetEditorViewTest::sharedKeyConfirmation() {
    QFETCH(QStringList, others);
    QFETCH(QString, message);
    QFETCH(QString, answer);

    const Preset preset = makePreset(QStringLiteral("P"), QStringLiteral("openai"));
    m_store->add(preset);
    for (const QString& name : others)
        m_store->add(makePreset(name, QStringLiteral("openai")));
    m_keys.keys.insert(QStringLiteral("openai"), QStringLiteral("sk-saved"));
    auto view = open(preset);
    QLineEdit* field = view->connectionView()->keyField();
    QTRY_COMPARE(field->text(), QStringLiteral("sk-saved"));

    MessageBoxAnswer box;
    box.answerWith(answer);
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    QTRY_VERIFY(!box.buttons.isEmpty());
    QCOMPARE(box.title, QStringLiteral("Remove this API key?"));
    QCOMPARE(box.informative, message);
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
    Preset preset = makePreset(QStringLiteral("P"), customProviderID());
    preset.model = QStringLiteral("not-listed");
    m_store->add(preset);
    auto view = open(preset);
    QComboBox* picker = view->modelPicker();
    QTRY_COMPARE(picker->count(), 3); // "Choose a model", the chosen one, the listed one
    QCOMPARE(picker->itemText(0), QStringLiteral("Choose a model"));
    QCOMPARE(picker->currentText(), QStringLiteral("not-listed"));
    picker->setCurrentIndex(2);
    Q_EMIT picker->activated(2);
    QCOMPARE(m_model->draft().model, QStringLiteral("model-a"));
}

QTEST_MAIN(PresetEditorViewTest)
#include "tst_PresetEditorView.moc"
