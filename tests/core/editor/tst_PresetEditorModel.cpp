#include "core/editor/PresetEditorModel.h"
#include "core/editor/PresetModelListCache.h"
#include "core/presets/PresetStore.h"
#include "core/providers/ProviderCatalog.h"
#include "core/support/Translations.h"
#include "support/FakeKeyStore.h"
#include "support/InMemorySettingsStore.h"
#include "support/TestSupport.h"

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

const QString openai = QStringLiteral("openai");
const QString groq = QStringLiteral("groq");
const QString localURL = QStringLiteral("http://127.0.0.1:11434/v1");
const QString otherURL = QStringLiteral("http://127.0.0.1:8080/v1");

} // namespace

class PresetEditorModelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void burstOfEditsSavesOnceWithTheLastState();
    void pendingSaveIsWrittenWhenTheEditorGoesAway();
    void providerSwitchClearsAtOnceAndSavesEmptyModel();
    void baseURLEditResetsAfterThePauseAndLoadsThatAddressKey();
    void baseURLEditKeepsAModelTheNewListHolds_data();
    void baseURLEditKeepsAModelTheNewListHolds();
    void connectionChangeClearsTheTestResult_data();
    void connectionChangeClearsTheTestResult();
    void invalidBaseURLNeverConnects();
    void lateModelListIsDropped_data();
    void lateModelListIsDropped();
    void cachedListShowsBeforeTheFreshFetchEnds();
    void failedModelListShowsItsSentence();
    void canRunTest_data();
    void canRunTest();
    void testOutcomes_data();
    void testOutcomes();
    void testWithoutModelNeedsNoRequest();
    void testWaitsForTheKeyJustTyped();
    void testWaitsForAPendingKeyRemoval();
    void cancelEndsARunningTest();
    void aKeychainThatNeverAnswersEndsEveryWait_data();
    void aKeychainThatNeverAnswersEndsEveryWait();
    void keyCommitTrimsAndReconnects();
    void failedKeySaveKeepsTheSavedKey();
    void clearingTheKey_data();
    void clearingTheKey();
    void removalMessage_data();
    void removalMessage();

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
    // A preset added to the store, with key as its stored API key if given.
    Preset stored(const QString& name, const QString& providerID, const QString& model = {},
                  const std::optional<QString>& baseURL = std::nullopt, const QString& key = {}) {
        const Preset preset = makePreset(name, providerID, model, baseURL);
        m_store->add(preset);
        if (!key.isEmpty())
            m_keys.keys.insert(accountOf(preset), key);
        return preset;
    }

    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_store;
    FakeKeyStore m_keys;
    PresetModelListCache m_cache;
    QList<Load> m_loads;
    QList<Test> m_tests;
    int m_changes = 0;
    std::chrono::milliseconds m_keyStoreTimeout{20000};
};

void PresetEditorModelTest::initTestCase() {
    // The English plural forms ("2 other presets").
    Translations::install(*QCoreApplication::instance(), QLocale(QLocale::English));
}

void PresetEditorModelTest::init() {
    m_settings = std::make_unique<InMemorySettingsStore>();
    m_store = std::make_unique<PresetStore>(*m_settings);
    // Saves count as they reach the store.
    connect(m_store.get(), &PresetStore::presetsChanged, this, [this] { ++m_changes; });
    m_keys = FakeKeyStore();
    m_cache.clear();
    m_loads.clear();
    m_tests.clear();
    m_changes = 0;
    m_keyStoreTimeout = std::chrono::milliseconds(20000);
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
    m_changes = 0; // saves of the editor only, not the presets stored before
    return std::make_unique<PresetEditorModel>(
        preset, *m_store, m_keys, loader, tester,
        PresetEditorModel::Options{std::chrono::milliseconds(debounceMs), &m_cache,
                                   m_keyStoreTimeout});
}

void PresetEditorModelTest::burstOfEditsSavesOnceWithTheLastState() {
    const Preset preset = stored(QStringLiteral("Draft"), openai);
    auto model = open(preset);
    const QString typed = QStringLiteral("Hello");
    for (qsizetype i = 1; i <= typed.size(); ++i) {
        model->setName(typed.left(i));
        QTest::qWait(debounceMs / 5);
    }
    QCOMPARE(m_changes, 0);
    QCOMPARE(m_store->preset(preset.id)->name, QStringLiteral("Draft"));
    QTRY_COMPARE_WITH_TIMEOUT(m_changes, 1, settleMs);
    QSignalSpy anotherSave(m_store.get(), &PresetStore::presetsChanged);
    QVERIFY(!anotherSave.wait(settleMs));
    QCOMPARE(m_store->preset(preset.id)->name, typed);
}

void PresetEditorModelTest::pendingSaveIsWrittenWhenTheEditorGoesAway() {
    const Preset preset = stored(QStringLiteral("Draft"), openai);
    auto model = open(preset);
    model->setInstructions(QStringLiteral("New instructions"));
    model.reset();
    QCOMPARE(m_store->preset(preset.id)->instructions, QStringLiteral("New instructions"));
    QCOMPARE(m_changes, 1);
}

void PresetEditorModelTest::providerSwitchClearsAtOnceAndSavesEmptyModel() {
    const Preset preset = stored(QStringLiteral("P"), openai, QStringLiteral("gpt"), std::nullopt,
                                 QStringLiteral("sk-one"));
    m_keys.keys.insert(groq, QStringLiteral("gsk-two"));
    auto model = open(preset);
    QTRY_COMPARE(m_loads.size(), 1);
    m_loads.first().promise.resolve(QStringList{QStringLiteral("gpt")});
    QTRY_COMPARE(model->connectionState().kind(), PresetConnectionState::Kind::connected);
    QCOMPARE(model->apiKey(), QStringLiteral("sk-one"));

    model->setProviderID(groq);
    QCOMPARE(model->draft().model, QString());
    QVERIFY(model->availableModels().isEmpty());
    QCOMPARE(model->apiKey(), QString());
    QVERIFY(!model->hasStoredCredential());
    QCOMPARE(model->connectionState().kind(), PresetConnectionState::Kind::disconnected);

    // The new provider's own key arrives, then its model list is asked for.
    QTRY_COMPARE(model->apiKey(), QStringLiteral("gsk-two"));
    QTRY_COMPARE(m_loads.size(), 2);
    QCOMPARE(m_loads.last().endpoint.id, groq);
    QTRY_COMPARE_WITH_TIMEOUT(m_changes, 1, settleMs);
    QCOMPARE(m_store->preset(preset.id)->providerID, groq);
    QCOMPARE(m_store->preset(preset.id)->model, QString());
}

void PresetEditorModelTest::baseURLEditResetsAfterThePauseAndLoadsThatAddressKey() {
    const Preset preset =
        stored(QStringLiteral("Local"), customProviderID(), QStringLiteral("llama"), localURL);
    m_keys.keys.insert(accountOf(makePreset({}, customProviderID(), {}, otherURL)),
                       QStringLiteral("other-key"));
    auto model = open(preset);
    QTRY_COMPARE(m_loads.size(), 1);

    model->setCustomBaseURL(QStringLiteral("http://127.0.0.1:8080/v"));
    model->setCustomBaseURL(otherURL);
    QVERIFY(model->hasPendingBaseURLReset());
    QCOMPARE(model->draft().model, QStringLiteral("llama"));
    QTRY_VERIFY_WITH_TIMEOUT(!model->hasPendingBaseURLReset(), settleMs);
    QTRY_COMPARE(model->apiKey(), QStringLiteral("other-key"));
    QVERIFY(model->hasStoredCredential());
    // One reconnection for the whole burst, to the new address.
    QTRY_COMPARE(m_loads.size(), 2);
    // The address is saved after its pause; by then the burst made no other
    // load.
    QTRY_COMPARE_WITH_TIMEOUT(m_store->preset(preset.id)->customBaseURL, otherURL, settleMs);
    QCOMPARE(m_loads.size(), 2);
    QCOMPARE(m_loads.last().endpoint.baseURL, QUrl(otherURL));
}

void PresetEditorModelTest::baseURLEditKeepsAModelTheNewListHolds_data() {
    QTest::addColumn<int>("answer"); // 0: no answer yet, 1: a list, 2: a failure
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<QString>("kept");
    const QString llama = QStringLiteral("llama");
    QTest::newRow("listed again") << 1 << QStringList{QStringLiteral("qwen"), llama} << llama;
    QTest::newRow("list not loaded") << 0 << QStringList() << llama;
    QTest::newRow("list failed") << 2 << QStringList() << llama;
    QTest::newRow("not listed there") << 1 << QStringList{QStringLiteral("qwen")} << QString();
}

void PresetEditorModelTest::baseURLEditKeepsAModelTheNewListHolds() {
    QFETCH(int, answer);
    QFETCH(QStringList, listed);
    QFETCH(QString, kept);
    const Preset preset =
        stored(QStringLiteral("Local"), customProviderID(), QStringLiteral("llama"), localURL);
    auto model = open(preset);
    QTRY_COMPARE(m_loads.size(), 1);
    m_loads.first().promise.resolve(QStringList{QStringLiteral("llama")});

    // Away and back again, as when a typo in the address is corrected.
    model->setCustomBaseURL(otherURL);
    QTRY_COMPARE_WITH_TIMEOUT(m_loads.size(), 2, settleMs);
    model->setCustomBaseURL(localURL);
    QTRY_COMPARE_WITH_TIMEOUT(m_loads.size(), 3, settleMs);
    QCOMPARE(model->draft().model, QStringLiteral("llama"));
    if (answer == 1)
        m_loads.last().promise.resolve(listed);
    else if (answer == 2)
        m_loads.last().promise.resolve(std::unexpected(
            ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::network)));
    test::deliverPostedEvents();
    QCOMPARE(model->draft().model, kept);
    QTRY_COMPARE_WITH_TIMEOUT(m_store->preset(preset.id)->model, kept, settleMs);
    QCOMPARE(m_store->preset(preset.id)->customBaseURL, localURL);
}

void PresetEditorModelTest::connectionChangeClearsTheTestResult_data() {
    QTest::addColumn<QString>("change");
    QTest::newRow("provider") << "provider";
    QTest::newRow("base URL") << "base URL";
    QTest::newRow("model") << "model";
    QTest::newRow("key typed") << "key typed";
    QTest::newRow("key removed") << "key removed";
}

void PresetEditorModelTest::connectionChangeClearsTheTestResult() {
    QFETCH(QString, change);
    auto model = open(stored(QStringLiteral("Local"), customProviderID(), QStringLiteral("llama"),
                             localURL, QStringLiteral("sk")));
    QTRY_VERIFY(model->hasStoredCredential());
    model->runTest();
    QTRY_COMPARE(m_tests.size(), 1);
    m_tests.first().promise.resolve(QStringLiteral("fixed"));
    QTRY_VERIFY(model->testStatus().has_value());

    if (change == QStringLiteral("provider"))
        model->setProviderID(openai);
    else if (change == QStringLiteral("base URL"))
        model->setCustomBaseURL(otherURL);
    else if (change == QStringLiteral("model"))
        model->setModel(QStringLiteral("qwen"));
    else if (change == QStringLiteral("key typed"))
        model->setAPIKey(QStringLiteral("sk-new"));
    else
        model->removeStoredKey();
    // "Works" spoke of what was there before; it goes once the change applies.
    QTRY_VERIFY_WITH_TIMEOUT(!model->testStatus().has_value(), settleMs);
}

void PresetEditorModelTest::invalidBaseURLNeverConnects() {
    auto model =
        open(stored(QStringLiteral("Local"), customProviderID(), {}, QStringLiteral("not a url")));
    model->setCustomBaseURL(QStringLiteral("ftp://example.com/v1"));
    QTRY_VERIFY_WITH_TIMEOUT(!model->hasPendingBaseURLReset(), settleMs);
    test::deliverPostedEvents();
    QVERIFY(m_loads.isEmpty());
    QVERIFY(m_keys.log.isEmpty());
    QCOMPARE(model->connectionState().kind(), PresetConnectionState::Kind::disconnected);
    QVERIFY(model->presetsSharingKey().isEmpty());
}

void PresetEditorModelTest::lateModelListIsDropped_data() {
    QTest::addColumn<bool>("removeKey"); // otherwise: switch to another provider
    QTest::newRow("provider switched") << false;
    QTest::newRow("key removed") << true;
}

void PresetEditorModelTest::lateModelListIsDropped() {
    QFETCH(bool, removeKey);
    auto model = open(stored(QStringLiteral("P"), openai, {}, std::nullopt, QStringLiteral("sk")));
    QTRY_COMPARE(m_loads.size(), 1);
    const Load old = m_loads.first();
    if (removeKey) {
        model->removeStoredKey();
        QTRY_VERIFY(!model->hasStoredCredential());
        QCOMPARE(model->apiKey(), QString());
        QCOMPARE(model->committedKey(), QString());
    } else {
        model->setProviderID(customProviderID());
        model->setCustomBaseURL(localURL);
    }
    old.promise.resolve(QStringList{QStringLiteral("gpt-4o")});
    test::deliverPostedEvents();
    QVERIFY(!model->availableModels().contains(QStringLiteral("gpt-4o")));
    QVERIFY(!m_cache.lookup(openai));
    QCOMPARE(model->connectionState().kind(), removeKey ? PresetConnectionState::Kind::disconnected
                                                        : model->connectionState().kind());
    QVERIFY(model->connectionState().kind() != PresetConnectionState::Kind::connected);
}

void PresetEditorModelTest::cachedListShowsBeforeTheFreshFetchEnds() {
    const QStringList cached{QStringLiteral("cached-a"), QStringLiteral("cached-b")};
    m_cache.store(openai, cached);
    auto model = open(stored(QStringLiteral("P"), openai, {}, std::nullopt, QStringLiteral("sk")));
    QTRY_COMPARE(m_loads.size(), 1);
    QCOMPARE(model->availableModels(), cached);
    QCOMPARE(model->connectionState().kind(), PresetConnectionState::Kind::connecting);
    m_loads.first().promise.resolve(QStringList{QStringLiteral("fresh")});
    QTRY_COMPARE(model->availableModels(), QStringList{QStringLiteral("fresh")});
    QCOMPARE(model->connectionState().kind(), PresetConnectionState::Kind::connected);
    QCOMPARE(m_cache.lookup(openai), QStringList{QStringLiteral("fresh")});
}

void PresetEditorModelTest::failedModelListShowsItsSentence() {
    auto model = open(stored(QStringLiteral("P"), customProviderID(), {}, localURL));
    QTRY_COMPARE(m_loads.size(), 1);
    QCOMPARE(m_loads.first().key, std::nullopt);
    const auto notFound = ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::notFound);
    m_loads.first().promise.resolve(std::unexpected(notFound));
    QTRY_COMPARE(model->connectionState().kind(), PresetConnectionState::Kind::failed);
    QCOMPARE(model->connectionState().message(), notFound.message());
}

void PresetEditorModelTest::canRunTest_data() {
    QTest::addColumn<QString>("providerID");
    QTest::addColumn<QString>("modelName");
    QTest::addColumn<bool>("storedKey");
    QTest::addColumn<QString>("typedKey");
    QTest::addColumn<bool>("expected");

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

    const bool custom = providerID == customProviderID();
    auto model = open(stored(QStringLiteral("P"), providerID, modelName,
                             custom ? std::optional(localURL) : std::nullopt,
                             storedKey ? QStringLiteral("sk") : QString()));
    test::deliverPostedEvents(); // the stored key is read
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

    auto model =
        open(stored(QStringLiteral("P"), customProviderID(), QStringLiteral("llama"), localURL));
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
    auto model = open(stored(QStringLiteral("P"), openai, {}, std::nullopt, QStringLiteral("sk")));
    model->runTest();
    QTRY_VERIFY(!model->isTesting());
    QCOMPARE(model->testStatus()->text(), QStringLiteral("Choose a model before testing."));
    QVERIFY(m_tests.isEmpty());
}

void PresetEditorModelTest::testWaitsForTheKeyJustTyped() {
    auto model = open(stored(QStringLiteral("P"), openai, QStringLiteral("gpt")));
    test::deliverPostedEvents(); // the stored key is read
    model->setAPIKey(QStringLiteral("  sk-typed\n"));
    model->runTest();
    QTRY_COMPARE(m_tests.size(), 1);
    // The key reached the store before the test started, trimmed.
    QCOMPARE(m_keys.keys.value(openai), QStringLiteral("sk-typed"));
    QCOMPARE(m_keys.operations(Op::save).size(), 1);
    QCOMPARE(m_tests.first().preset.model, QStringLiteral("gpt"));
}

void PresetEditorModelTest::testWaitsForAPendingKeyRemoval() {
    const Preset preset = stored(QStringLiteral("P"), openai, QStringLiteral("gpt"), std::nullopt,
                                 QStringLiteral("sk"));
    auto model = open(preset);
    QTRY_VERIFY(model->hasStoredCredential());
    // The keyring takes its time: the removal is still on its way when Test
    // is pressed right after emptying the field.
    m_keys.holding = true;
    model->setAPIKey(QString());
    model->runTest();
    QTRY_COMPARE(m_keys.operations(Op::remove).size(), 1);
    QVERIFY(!QTest::qWaitFor([&] { return !m_tests.isEmpty(); }, settleMs));
    QVERIFY(model->isTesting());
    m_keys.releaseHeld();
    QTRY_COMPARE(m_tests.size(), 1);
    QVERIFY(!m_keys.keys.contains(openai));
}

void PresetEditorModelTest::cancelEndsARunningTest() {
    auto model =
        open(stored(QStringLiteral("P"), customProviderID(), QStringLiteral("llama"), localURL));
    model->runTest();
    QTRY_COMPARE(m_tests.size(), 1);
    bool cancelled = false;
    m_tests.first().promise.onCancel([&] { cancelled = true; });
    model->cancelTest();
    QVERIFY(cancelled);
    QVERIFY(!model->isTesting());
    QCOMPARE(model->testStatus()->text(), QStringLiteral("Test cancelled."));
    QVERIFY(model->canRunTest());
}

void PresetEditorModelTest::aKeychainThatNeverAnswersEndsEveryWait_data() {
    QTest::addColumn<QString>("wait");
    QTest::newRow("reading the key") << "read";
    QTest::newRow("saving a key") << "save";
    QTest::newRow("removing the key") << "remove";
    QTest::newRow("a test waiting for a save") << "test";
}

void PresetEditorModelTest::aKeychainThatNeverAnswersEndsEveryWait() {
    QFETCH(QString, wait);
    const QString noAnswer =
        QStringLiteral("The desktop’s keyring didn’t answer in time. Unlock it and try again.");
    const Preset preset = stored(QStringLiteral("P"), openai, QStringLiteral("gpt"), std::nullopt,
                                 QStringLiteral("sk"));
    // A dismissed unlock prompt, or a Secret Service that hangs: nothing
    // ever comes back.
    m_keys.holding = wait == QStringLiteral("read");
    m_keyStoreTimeout = std::chrono::milliseconds(150);
    auto model = open(preset);
    if (wait != QStringLiteral("read")) {
        QTRY_VERIFY(model->hasStoredCredential());
        m_keys.holding = true;
    }
    if (wait == QStringLiteral("save") || wait == QStringLiteral("test"))
        model->setAPIKey(QStringLiteral("sk-new"));
    else if (wait == QStringLiteral("remove"))
        model->removeStoredKey();
    if (wait == QStringLiteral("test"))
        model->runTest();

    QTRY_COMPARE_WITH_TIMEOUT(model->connectionState().message(), noAnswer, 2000);
    QVERIFY(m_keys.heldCount() > 0);
    if (wait == QStringLiteral("test")) {
        QTRY_VERIFY(!model->isTesting());
        QCOMPARE(model->testStatus()->text(), noAnswer);
        QVERIFY(m_tests.isEmpty());
    }
}

void PresetEditorModelTest::keyCommitTrimsAndReconnects() {
    auto model = open(stored(QStringLiteral("P"), groq));
    test::deliverPostedEvents(); // the stored key is read
    QVERIFY(m_loads.isEmpty());  // no key yet: nothing to connect with
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
    auto model = open(stored(QStringLiteral("P"), groq, {}, std::nullopt, QStringLiteral("old")));
    QTRY_COMPARE(model->committedKey(), QStringLiteral("old"));
    const QString unchanged = QStringLiteral(" The saved API key is unchanged.");
    m_keys.failSaves = true;
    model->setAPIKey(QStringLiteral("new"));
    QTRY_COMPARE_WITH_TIMEOUT(model->connectionState().kind(), PresetConnectionState::Kind::failed,
                              settleMs);
    QVERIFY(model->connectionState().savedKeyUnchanged());
    QVERIFY(model->connectionState().message().endsWith(unchanged));
    QCOMPARE(model->committedKey(), QStringLiteral("old"));
    QCOMPARE(m_keys.keys.value(groq), QStringLiteral("old"));

    // A key the store refuses as malformed says why instead.
    m_keys.failSaves = false;
    model->setAPIKey(QStringLiteral("gsk-a\nb"));
    QTRY_VERIFY_WITH_TIMEOUT(
        model->connectionState().message().startsWith(KeychainError::invalidKey().saveMessage()),
        settleMs);
    QVERIFY(model->connectionState().message().endsWith(unchanged));
}

void PresetEditorModelTest::clearingTheKey_data() {
    QTest::addColumn<bool>("shared");
    QTest::addColumn<bool>("confirm");
    QTest::addColumn<bool>("removed");
    QTest::newRow("shared, cancelled") << true << false << false;
    QTest::newRow("shared, confirmed") << true << true << true;
    // Nobody else loses it: no question, removed after the pause.
    QTest::newRow("not shared") << false << false << true;
}

void PresetEditorModelTest::clearingTheKey() {
    QFETCH(bool, shared);
    QFETCH(bool, confirm);
    QFETCH(bool, removed);
    auto model = open(stored(QStringLiteral("A"), openai, {}, std::nullopt, QStringLiteral("sk")));
    stored(QStringLiteral("B"), shared ? openai : groq);
    QTRY_VERIFY(model->hasStoredCredential());
    QSignalSpy asked(model.get(), &PresetEditorModel::keyRemovalConfirmationRequested);
    model->setAPIKey(QStringLiteral(" "));
    QCOMPARE(asked.size(), int(shared));
    QCOMPARE(model->isAwaitingKeyRemovalConfirmation(), shared);
    QVERIFY(m_keys.keys.contains(openai));
    if (shared) {
        // Nothing happens until the question is answered.
        QVERIFY(!QTest::qWaitFor(
            [&] {
                return !m_keys.operations(Op::remove).isEmpty() ||
                       !m_keys.operations(Op::save).isEmpty();
            },
            settleMs));
        confirm ? model->confirmKeyRemoval() : model->cancelKeyRemoval();
    }
    QTRY_COMPARE_WITH_TIMEOUT(m_keys.keys.contains(openai), !removed, settleMs);
    QVERIFY(!QTest::qWaitFor([&] { return m_keys.keys.contains(openai) == removed; }, settleMs));
    QCOMPARE(model->hasStoredCredential(), !removed);
    QCOMPARE(model->apiKey(), removed ? QString() : QStringLiteral("sk"));
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

    const Preset preset = stored(QStringLiteral("Mine"), openai);
    // Presets of another provider or another address never count.
    stored(QStringLiteral("Groq"), groq);
    stored(QStringLiteral("Local"), customProviderID(), {}, localURL);
    for (const QString& name : otherNames)
        stored(name, openai);
    auto model = open(preset);
    QStringList sharing;
    for (const Preset& other : model->presetsSharingKey())
        sharing.append(other.name);
    QCOMPARE(sharing, otherNames);
    QCOMPARE(PresetEditorModel::keyRemovalMessage(model->presetsSharingKey()), message);
}

QTEST_GUILESS_MAIN(PresetEditorModelTest)
#include "tst_PresetEditorModel.moc"
