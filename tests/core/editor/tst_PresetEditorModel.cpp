#include "dummy/InMemorySettingsStore.h"
#include "editor/PresetEditorModel.h"
#include "editor/PresetModelListCache.h"
#include "presets/PresetStore.h"
#include "providers/ProviderCatalog.h"
#include "support/FakeKeyStore.h"

#include <QSignalSpy>
#include <QtTest>

using namespace scrivel;
using test::FakeKeyStore;
using Op = FakeKeyStore::Operation::Kind;

Q_DECLARE_METATYPE(PresetEditorModel::TestResult)

namespace {

constexpr int debounceMs = 40;
// Long enough for any pause of the model to have ended.
constexpr int settleMs = debounceMs * 4;

Preset makePreset(const QString& name, const QString& providerID, const QString& model = {},
                  const std::optional<QString>& baseURL = std::nullopt) {
    Preset preset;
    preset.id = QUuid::createUuid();
    preset.name = name;
    preset.providerID = providerID;
    preset.model = model;
    preset.customBaseURL = baseURL;
    preset.instructions = QStringLiteral("Fix it.");
    return preset;
}

QString accountOf(const Preset& preset) {
    return credentialAccount(*resolveEndpoint(preset.providerID, preset.customBaseURL));
}

const QString localURL = QStringLiteral("http://127.0.0.1:11434/v1");
const QString otherURL = QStringLiteral("http://127.0.0.1:8080/v1");

} // namespace

class PresetEditorModelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void burstOfEditsSavesOnceWithTheLastState();
    void providerSwitchClearsAtOnceAndSavesEmptyModel();
    void baseURLEditResetsAfterThePauseAndLoadsThatAddressKey();
    void invalidBaseURLNeverConnects();
    void lateModelListForAnOldProviderIsDropped();
    void cachedListShowsBeforeTheFreshFetchEnds();
    void failedModelListShowsItsSentence();
    void canRunTest_data();
    void canRunTest();
    void testOutcomes_data();
    void testOutcomes();
    void testWithoutModelNeedsNoRequest();
    void testWaitsForTheKeyJustTyped();
    void keyCommitTrimsAndReconnects();
    void failedKeySaveKeepsTheSavedKey();
    void sharedKeyRemovalAsksFirst_data();
    void sharedKeyRemovalAsksFirst();
    void confirmedRemovalClearsEveryTrace();
    void unsharedKeyIsRemovedAfterThePause();
    void removalMessage_data();
    void removalMessage();
    void pendingSaveIsWrittenWhenTheEditorGoesAway();

private:
    struct Load {
        ProviderEndpoint endpoint;
        std::optional<QString> key;
        Promise<PresetEditorModel::ModelsResult> promise;
    };
    struct Test {
        Preset preset;
        QString text;
        Promise<PresetEditorModel::TestResult> promise;
    };

    std::unique_ptr<PresetEditorModel> open(const Preset& preset);
    Preset addToStore(const Preset& preset) {
        m_store->add(preset);
        return preset;
    }

    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    FakeKeyStore m_keys;
    PresetModelListCache m_cache;
    QList<Load> m_loads;
    QList<Test> m_tests;
    int m_changes = 0;
};

void PresetEditorModelTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_store = std::make_unique<PresetStore>(*m_settings);
    m_keys = FakeKeyStore();
    m_cache.clear();
    m_loads.clear();
    m_tests.clear();
    m_changes = 0;
}

std::unique_ptr<PresetEditorModel> PresetEditorModelTest::open(const Preset& preset) {
    auto loader = [this](const ProviderEndpoint& endpoint, const std::optional<QString>& key) {
        Load load{endpoint, key, {}};
        auto future = load.promise.future();
        m_loads.append(load);
        return future;
    };
    auto tester = [this](const Preset& snapshot, const QString& text) {
        Test test{snapshot, text, {}};
        auto future = test.promise.future();
        m_tests.append(test);
        return future;
    };
    return std::make_unique<PresetEditorModel>(
        preset, *m_store, [this] { ++m_changes; }, m_keys, loader, tester,
        PresetEditorModel::Options{std::chrono::milliseconds(debounceMs), &m_cache});
}

void PresetEditorModelTest::burstOfEditsSavesOnceWithTheLastState() {
    const Preset preset = addToStore(makePreset(QStringLiteral("Draft"), QStringLiteral("openai")));
    auto model = open(preset);
    const QString typed = QStringLiteral("Hello");
    for (qsizetype i = 1; i <= typed.size(); ++i) {
        model->setName(typed.left(i));
        QTest::qWait(debounceMs / 5);
    }
    QCOMPARE(m_changes, 0);
    QCOMPARE(m_store->preset(preset.id)->name, QStringLiteral("Draft"));
    QTRY_COMPARE_WITH_TIMEOUT(m_changes, 1, settleMs);
    QTest::qWait(settleMs);
    QCOMPARE(m_changes, 1);
    QCOMPARE(m_store->preset(preset.id)->name, typed);
}

void PresetEditorModelTest::providerSwitchClearsAtOnceAndSavesEmptyModel() {
    const Preset preset = addToStore(
        makePreset(QStringLiteral("P"), QStringLiteral("openai"), QStringLiteral("gpt")));
    m_keys.keys.insert(QStringLiteral("openai"), QStringLiteral("sk-one"));
    m_keys.keys.insert(QStringLiteral("groq"), QStringLiteral("gsk-two"));
    auto model = open(preset);
    QTRY_COMPARE(m_loads.size(), 1);
    m_loads.first().promise.resolve(QStringList{QStringLiteral("gpt")});
    QTRY_COMPARE(model->connectionState().kind(), PresetConnectionState::Kind::connected);
    QCOMPARE(model->apiKey(), QStringLiteral("sk-one"));

    model->setProviderID(QStringLiteral("groq"));
    QCOMPARE(model->draft().model, QString());
    QVERIFY(model->availableModels().isEmpty());
    QCOMPARE(model->apiKey(), QString());
    QVERIFY(!model->hasStoredCredential());
    QCOMPARE(model->connectionState().kind(), PresetConnectionState::Kind::disconnected);

    // The new provider's own key arrives, then its model list is asked for.
    QTRY_COMPARE(model->apiKey(), QStringLiteral("gsk-two"));
    QTRY_COMPARE(m_loads.size(), 2);
    QCOMPARE(m_loads.last().endpoint.id, QStringLiteral("groq"));
    QTRY_COMPARE_WITH_TIMEOUT(m_changes, 1, settleMs);
    QCOMPARE(m_store->preset(preset.id)->providerID, QStringLiteral("groq"));
    QCOMPARE(m_store->preset(preset.id)->model, QString());
}

void PresetEditorModelTest::baseURLEditResetsAfterThePauseAndLoadsThatAddressKey() {
    const Preset preset = addToStore(
        makePreset(QStringLiteral("Local"), customProviderID(), QStringLiteral("llama"), localURL));
    Preset moved = preset;
    moved.customBaseURL = otherURL;
    m_keys.keys.insert(accountOf(moved), QStringLiteral("other-key"));
    auto model = open(preset);
    QTRY_COMPARE(m_loads.size(), 1);

    model->setCustomBaseURL(QStringLiteral("http://127.0.0.1:8080/v"));
    model->setCustomBaseURL(otherURL);
    QVERIFY(model->hasPendingBaseURLReset());
    QCOMPARE(model->draft().model, QStringLiteral("llama"));
    QTRY_VERIFY_WITH_TIMEOUT(!model->hasPendingBaseURLReset(), settleMs);
    QCOMPARE(model->draft().model, QString());
    QTRY_COMPARE(model->apiKey(), QStringLiteral("other-key"));
    QVERIFY(model->hasStoredCredential());
    // One reconnection for the whole burst, to the new address.
    QTRY_COMPARE(m_loads.size(), 2);
    QTest::qWait(settleMs);
    QCOMPARE(m_loads.size(), 2);
    QCOMPARE(m_loads.last().endpoint.baseURL, QUrl(otherURL));
    QCOMPARE(m_store->preset(preset.id)->customBaseURL, otherURL);
    QCOMPARE(m_store->preset(preset.id)->model, QString());
}

void PresetEditorModelTest::invalidBaseURLNeverConnects() {
    const Preset preset = addToStore(
        makePreset(QStringLiteral("Local"), customProviderID(), {}, QStringLiteral("not a url")));
    auto model = open(preset);
    model->setCustomBaseURL(QStringLiteral("ftp://example.com/v1"));
    QTest::qWait(settleMs);
    QVERIFY(m_loads.isEmpty());
    QVERIFY(m_keys.log.isEmpty());
    QCOMPARE(model->connectionState().kind(), PresetConnectionState::Kind::disconnected);
    QVERIFY(model->presetsSharingKey().isEmpty());
}

void PresetEditorModelTest::lateModelListForAnOldProviderIsDropped() {
    const Preset preset = addToStore(makePreset(QStringLiteral("P"), QStringLiteral("openai")));
    m_keys.keys.insert(QStringLiteral("openai"), QStringLiteral("sk"));
    auto model = open(preset);
    QTRY_COMPARE(m_loads.size(), 1);
    const Load old = m_loads.first();
    model->setProviderID(customProviderID());
    model->setCustomBaseURL(localURL);
    old.promise.resolve(QStringList{QStringLiteral("gpt-4o")});
    QTest::qWait(settleMs);
    QVERIFY(!model->availableModels().contains(QStringLiteral("gpt-4o")));
    QVERIFY(!m_cache.lookup(QStringLiteral("openai")));
    QVERIFY(model->connectionState().kind() != PresetConnectionState::Kind::connected);
}

void PresetEditorModelTest::cachedListShowsBeforeTheFreshFetchEnds() {
    const Preset preset = addToStore(makePreset(QStringLiteral("P"), QStringLiteral("openai")));
    m_keys.keys.insert(QStringLiteral("openai"), QStringLiteral("sk"));
    m_cache.store(QStringLiteral("openai"),
                  {QStringLiteral("cached-a"), QStringLiteral("cached-b")});
    auto model = open(preset);
    QTRY_COMPARE(m_loads.size(), 1);
    QCOMPARE(model->availableModels(),
             QStringList({QStringLiteral("cached-a"), QStringLiteral("cached-b")}));
    QCOMPARE(model->connectionState().kind(), PresetConnectionState::Kind::connecting);
    m_loads.first().promise.resolve(QStringList{QStringLiteral("fresh")});
    QTRY_COMPARE(model->availableModels(), QStringList{QStringLiteral("fresh")});
    QCOMPARE(model->connectionState().kind(), PresetConnectionState::Kind::connected);
    QCOMPARE(m_cache.lookup(QStringLiteral("openai")), QStringList{QStringLiteral("fresh")});
}

void PresetEditorModelTest::failedModelListShowsItsSentence() {
    const Preset preset =
        addToStore(makePreset(QStringLiteral("P"), customProviderID(), {}, localURL));
    auto model = open(preset);
    QTRY_COMPARE(m_loads.size(), 1);
    QCOMPARE(m_loads.first().key, std::nullopt);
    m_loads.first().promise.resolve(
        std::unexpected(ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::notFound)));
    QTRY_COMPARE(model->connectionState().kind(), PresetConnectionState::Kind::failed);
    QCOMPARE(model->connectionState().message(),
             ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::notFound).message());
}

void PresetEditorModelTest::canRunTest_data() {
    QTest::addColumn<QString>("providerID");
    QTest::addColumn<QString>("modelName");
    QTest::addColumn<bool>("storedKey");
    QTest::addColumn<QString>("typedKey");
    QTest::addColumn<bool>("expected");

    const QString openai = QStringLiteral("openai");
    const QString onDevice = Preset::onDeviceProviderID();
    const QString custom = customProviderID();
    const QString gpt = QStringLiteral("gpt");
    QTest::newRow("cloud, no model") << openai << QString() << true << QString() << false;
    QTest::newRow("cloud, model, stored key") << openai << gpt << true << QString() << true;
    QTest::newRow("cloud, model, typed key") << openai << gpt << false << "sk-new" << true;
    QTest::newRow("cloud, model, blank typed key") << openai << gpt << false << " \n " << false;
    QTest::newRow("on device, no model") << onDevice << QString() << false << QString() << true;
    QTest::newRow("custom, model, no key") << custom << gpt << false << QString() << true;
    QTest::newRow("custom, no model") << custom << QString() << false << QString() << false;
}

void PresetEditorModelTest::canRunTest() {
    QFETCH(QString, providerID);
    QFETCH(QString, modelName);
    QFETCH(bool, storedKey);
    QFETCH(QString, typedKey);
    QFETCH(bool, expected);

    const Preset preset = addToStore(
        makePreset(QStringLiteral("P"), providerID, modelName,
                   providerID == customProviderID() ? std::optional(localURL) : std::nullopt));
    if (storedKey)
        m_keys.keys.insert(accountOf(preset), QStringLiteral("sk"));
    auto model = open(preset);
    QTest::qWait(10);
    if (!typedKey.isEmpty())
        model->setAPIKey(typedKey);
    QCOMPARE(model->canRunTest(), expected);
}

void PresetEditorModelTest::testOutcomes_data() {
    using Result = PresetEditorModel::TestResult;
    QTest::addColumn<Result>("result");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("succeeded");

    auto failure = [](const RewriteError& error) {
        return Result(std::unexpected(TransformFailure::rewrite(error)));
    };
    QTest::newRow("any reply") << Result(QStringLiteral("This sentence has a typo.")) << "Works"
                               << true;
    QTest::newRow("timeout") << failure(RewriteError::timeout()) << "The provider timed out."
                             << false;
    QTest::newRow("unavailable") << failure(RewriteError::modelUnavailable(
                                        UnavailableReason::missingAPIKey()))
                                 << UnavailableReason::missingAPIKey().message() << false;
    QTest::newRow("model failed") << failure(RewriteError::modelFailed(
                                         "The provider returned error 500."))
                                  << "The provider returned error 500." << false;
    QTest::newRow("empty input") << failure(RewriteError::emptyInput()) << "Nothing to test."
                                 << false;
    QTest::newRow("too large") << failure(RewriteError::inputTooLarge())
                               << "Test input was too large." << false;
    QTest::newRow("cancelled") << Result(std::unexpected(TransformFailure::cancelled()))
                               << "Test cancelled." << false;
    QTest::newRow("unclassified") << Result(std::unexpected(TransformFailure::other("reset")))
                                  << "Couldn’t reach the provider." << false;
}

void PresetEditorModelTest::testOutcomes() {
    QFETCH(PresetEditorModel::TestResult, result);
    QFETCH(QString, text);
    QFETCH(bool, succeeded);

    const Preset preset = addToStore(
        makePreset(QStringLiteral("P"), customProviderID(), QStringLiteral("llama"), localURL));
    auto model = open(preset);
    model->runTest();
    QVERIFY(model->isTesting());
    QVERIFY(!model->canRunTest());
    QTRY_COMPARE(m_tests.size(), 1);
    QCOMPARE(m_tests.first().text, QStringLiteral("This sentense has a typo."));
    m_tests.first().promise.resolve(result);
    QTRY_VERIFY(!model->isTesting());
    QVERIFY(model->testStatus().has_value());
    QCOMPARE(model->testStatus()->text(), text);
    QCOMPARE(model->testStatus()->succeeded(), succeeded);
}

void PresetEditorModelTest::testWithoutModelNeedsNoRequest() {
    const Preset preset = addToStore(makePreset(QStringLiteral("P"), QStringLiteral("openai")));
    m_keys.keys.insert(QStringLiteral("openai"), QStringLiteral("sk"));
    auto model = open(preset);
    model->runTest();
    QTRY_VERIFY(!model->isTesting());
    QCOMPARE(model->testStatus()->text(), QStringLiteral("Choose a model before testing."));
    QVERIFY(m_tests.isEmpty());
}

void PresetEditorModelTest::testWaitsForTheKeyJustTyped() {
    const Preset preset = addToStore(
        makePreset(QStringLiteral("P"), QStringLiteral("openai"), QStringLiteral("gpt")));
    auto model = open(preset);
    QTest::qWait(10);
    model->setAPIKey(QStringLiteral("  sk-typed\n"));
    model->runTest();
    QTRY_COMPARE(m_tests.size(), 1);
    // The key reached the store before the test started, trimmed.
    QCOMPARE(m_keys.keys.value(QStringLiteral("openai")), QStringLiteral("sk-typed"));
    QCOMPARE(m_keys.operations(Op::save).size(), 1);
    QCOMPARE(m_tests.first().preset.model, QStringLiteral("gpt"));
}

void PresetEditorModelTest::keyCommitTrimsAndReconnects() {
    const Preset preset = addToStore(makePreset(QStringLiteral("P"), QStringLiteral("groq")));
    auto model = open(preset);
    QTest::qWait(10);
    QVERIFY(m_loads.isEmpty()); // no key yet: nothing to connect with
    model->setAPIKey(QStringLiteral(" gsk"));
    model->setAPIKey(QStringLiteral(" gsk-1 "));
    QCOMPARE(m_keys.operations(Op::save).size(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_keys.operations(Op::save).size(), 1, settleMs);
    QCOMPARE(m_keys.operations(Op::save).first().key, QStringLiteral("gsk-1"));
    QTRY_VERIFY(model->hasStoredCredential());
    QCOMPARE(model->committedKey(), QStringLiteral("gsk-1"));
    QTRY_COMPARE(m_loads.size(), 1);
    QCOMPARE(m_loads.first().key, QStringLiteral("gsk-1"));
}

void PresetEditorModelTest::failedKeySaveKeepsTheSavedKey() {
    const Preset preset = addToStore(makePreset(QStringLiteral("P"), QStringLiteral("groq")));
    m_keys.keys.insert(QStringLiteral("groq"), QStringLiteral("old"));
    auto model = open(preset);
    QTRY_COMPARE(model->committedKey(), QStringLiteral("old"));
    m_keys.failSaves = true;
    model->setAPIKey(QStringLiteral("new"));
    QTRY_COMPARE_WITH_TIMEOUT(model->connectionState().kind(), PresetConnectionState::Kind::failed,
                              settleMs);
    QVERIFY(model->connectionState().savedKeyUnchanged());
    QVERIFY(model->connectionState().message().endsWith(
        QStringLiteral(" The saved API key is unchanged.")));
    QCOMPARE(model->committedKey(), QStringLiteral("old"));
    QCOMPARE(m_keys.keys.value(QStringLiteral("groq")), QStringLiteral("old"));

    // A key the store refuses as malformed says why instead.
    m_keys.failSaves = false;
    model->setAPIKey(QStringLiteral("gsk-a\nb"));
    QTRY_VERIFY_WITH_TIMEOUT(
        model->connectionState().message().startsWith(KeychainError::invalidKey().saveMessage()),
        settleMs);
    QVERIFY(model->connectionState().message().endsWith(
        QStringLiteral(" The saved API key is unchanged.")));
}

void PresetEditorModelTest::sharedKeyRemovalAsksFirst_data() {
    QTest::addColumn<bool>("confirm");
    QTest::newRow("cancel") << false;
    QTest::newRow("remove") << true;
}

void PresetEditorModelTest::sharedKeyRemovalAsksFirst() {
    QFETCH(bool, confirm);
    const Preset preset = addToStore(makePreset(QStringLiteral("A"), QStringLiteral("openai")));
    addToStore(makePreset(QStringLiteral("B"), QStringLiteral("openai")));
    m_keys.keys.insert(QStringLiteral("openai"), QStringLiteral("sk"));
    auto model = open(preset);
    QTRY_VERIFY(model->hasStoredCredential());
    QSignalSpy asked(model.get(), &PresetEditorModel::keyRemovalConfirmationRequested);
    model->setAPIKey(QStringLiteral(" "));
    QCOMPARE(asked.size(), 1);
    QVERIFY(model->isAwaitingKeyRemovalConfirmation());
    QTest::qWait(settleMs);
    QVERIFY(m_keys.operations(Op::remove).isEmpty());
    QVERIFY(m_keys.operations(Op::save).isEmpty());
    if (confirm) {
        model->confirmKeyRemoval();
        QTRY_VERIFY(!model->hasStoredCredential());
        QVERIFY(!m_keys.keys.contains(QStringLiteral("openai")));
    } else {
        model->cancelKeyRemoval();
        QCOMPARE(model->apiKey(), QStringLiteral("sk"));
        QTest::qWait(settleMs);
        QVERIFY(m_keys.keys.contains(QStringLiteral("openai")));
        QVERIFY(model->hasStoredCredential());
    }
}

void PresetEditorModelTest::confirmedRemovalClearsEveryTrace() {
    const Preset preset = addToStore(makePreset(QStringLiteral("A"), QStringLiteral("openai")));
    m_keys.keys.insert(QStringLiteral("openai"), QStringLiteral("sk"));
    auto model = open(preset);
    QTRY_COMPARE(m_loads.size(), 1);
    const Load pending = m_loads.first();
    model->removeStoredKey();
    QTRY_VERIFY(!model->hasStoredCredential());
    pending.promise.resolve(QStringList{QStringLiteral("late")});
    QTest::qWait(20);
    QVERIFY(model->availableModels().isEmpty());
    QCOMPARE(model->apiKey(), QString());
    QCOMPARE(model->committedKey(), QString());
    QVERIFY(!m_cache.lookup(QStringLiteral("openai")));
    QCOMPARE(model->connectionState().kind(), PresetConnectionState::Kind::disconnected);
}

void PresetEditorModelTest::unsharedKeyIsRemovedAfterThePause() {
    const Preset preset = addToStore(makePreset(QStringLiteral("A"), QStringLiteral("openai")));
    addToStore(makePreset(QStringLiteral("Other provider"), QStringLiteral("groq")));
    m_keys.keys.insert(QStringLiteral("openai"), QStringLiteral("sk"));
    auto model = open(preset);
    QTRY_VERIFY(model->hasStoredCredential());
    QSignalSpy asked(model.get(), &PresetEditorModel::keyRemovalConfirmationRequested);
    model->setAPIKey({});
    QCOMPARE(asked.size(), 0);
    QVERIFY(m_keys.keys.contains(QStringLiteral("openai")));
    QTRY_VERIFY_WITH_TIMEOUT(!m_keys.keys.contains(QStringLiteral("openai")), settleMs);
    QTRY_VERIFY(!model->hasStoredCredential());
}

void PresetEditorModelTest::removalMessage_data() {
    QTest::addColumn<QStringList>("otherNames");
    QTest::addColumn<QString>("message");
    QTest::newRow("none") << QStringList() << "No other preset uses this key.";
    QTest::newRow("one") << QStringList{"Fix Grammar"}
                         << "“Fix Grammar” also uses this key and will stop working.";
    QTest::newRow("two") << QStringList{"Fix Grammar", "Make Concise"}
                         << "2 other presets use this key and will stop working: Fix Grammar, "
                            "Make Concise.";
}

void PresetEditorModelTest::removalMessage() {
    QFETCH(QStringList, otherNames);
    QFETCH(QString, message);

    const Preset preset = addToStore(makePreset(QStringLiteral("Mine"), QStringLiteral("openai")));
    // Presets of another provider or another address never count.
    addToStore(makePreset(QStringLiteral("Groq"), QStringLiteral("groq")));
    addToStore(makePreset(QStringLiteral("Local"), customProviderID(), {}, localURL));
    for (const QString& name : otherNames)
        addToStore(makePreset(name, QStringLiteral("openai")));
    auto model = open(preset);
    QStringList sharing;
    for (const Preset& other : model->presetsSharingKey())
        sharing.append(other.name);
    QCOMPARE(sharing, otherNames);
    QCOMPARE(PresetEditorModel::keyRemovalMessage(model->presetsSharingKey()), message);
}

void PresetEditorModelTest::pendingSaveIsWrittenWhenTheEditorGoesAway() {
    const Preset preset = addToStore(makePreset(QStringLiteral("Draft"), QStringLiteral("openai")));
    auto model = open(preset);
    model->setInstructions(QStringLiteral("New instructions"));
    model.reset();
    QCOMPARE(m_store->preset(preset.id)->instructions, QStringLiteral("New instructions"));
    QCOMPARE(m_changes, 1);
}

QTEST_GUILESS_MAIN(PresetEditorModelTest)
#include "tst_PresetEditorModel.moc"
