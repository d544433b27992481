#include "core/editor/PresetEditorModel.h"

#include "core/editor/PresetModelListCache.h"
#include "core/pipeline/OutputCleaning.h"
#include "core/pipeline/ProviderHub.h"
#include "core/presets/PresetStore.h"
#include "core/providers/ProviderCatalog.h"
#include "core/support/Sleep.h"

#include <memory>

namespace scrivel {

namespace {

QString trimmed(const QString& text) {
    return trimmedWhitespaceAndNewlines(text);
}

bool isOnDevice(const Preset& preset) {
    return preset.providerID == Preset::onDeviceProviderID();
}

// The key store's answer, or onSilence once limit has passed without one (the
// request itself is then dropped). The stores have time-outs of their own;
// this bound holds whatever store the editor is given.
template <typename T>
Future<T> answerWithin(Future<T> request, QObject* context, std::chrono::milliseconds limit,
                       T onSilence) {
    Promise<T> promise;
    Future<T> answer = promise.future();
    auto held = std::make_shared<Future<T>>(std::move(request));
    auto deadline = std::make_shared<SleepFuture>(timerSleep(limit));
    promise.onCancel([held, deadline] {
        held->cancel();
        deadline->cancel();
    });
    held->then(context, [promise, deadline](T value) {
        deadline->cancel();
        promise.resolve(std::move(value));
    });
    deadline->then(context, [promise, held, onSilence](std::monostate) {
        held->cancel();
        promise.resolve(onSilence);
    });
    return answer;
}

} // namespace

QString PresetEditorModel::testInput() {
    return tr("This sentense has a typo.");
}

PresetEditorModel::LoadModels PresetEditorModel::hubModelLoader(ProviderHub& hub) {
    return [&hub](const ProviderEndpoint& endpoint, const std::optional<QString>& key) {
        return hub.client(endpoint).fetchModels(key ? EndpointCredential::candidate(*key)
                                                    : EndpointCredential::stored());
    };
}

PresetEditorModel::RunTestTransform PresetEditorModel::hubTestTransform(ProviderHub& hub) {
    return [&hub](const Preset& preset, const QString& text) {
        Promise<TestResult> promise;
        Future<TestResult> future = promise.future();
        auto stream = std::make_shared<TransformStream>(hub.stream(preset, text));
        auto reply = std::make_shared<QString>();
        promise.onCancel([stream] { stream->cancel(); });
        stream->subscribe(
            &hub, [reply](const TransformStreamEvent& event) { *reply = event.text().toString(); },
            [promise, reply, stream](const std::optional<TransformFailure>& failure) {
                if (failure)
                    promise.resolve(std::unexpected(*failure));
                else
                    promise.resolve(*reply);
            });
        return future;
    };
}

PresetEditorModel::PresetEditorModel(const Preset& preset, PresetStore& store,
                                     APIKeyProviding& keys, LoadModels loadModels,
                                     RunTestTransform runTestTransform, Options options,
                                     QObject* parent)
    : QObject(parent), m_draft(preset), m_store(store), m_keys(keys),
      m_loadModels(std::move(loadModels)), m_runTestTransform(std::move(runTestTransform)),
      m_options(options) {
    for (QTimer* timer : {&m_saveTimer, &m_baseURLResetTimer, &m_apiKeyTimer}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        timer->setInterval(m_options.debounce);
    }
    QObject::connect(&m_saveTimer, &QTimer::timeout, this, &PresetEditorModel::writeSnapshot);
    QObject::connect(&m_baseURLResetTimer, &QTimer::timeout, this,
                     &PresetEditorModel::resetForBaseURL);
    QObject::connect(&m_apiKeyTimer, &QTimer::timeout, this, &PresetEditorModel::commitKey);
    loadStoredKeyAndConnect();
}

PresetEditorModel::~PresetEditorModel() {
    if (m_saveTimer.isActive())
        writeSnapshot();
    // A key typed just before the editor goes away is still kept; nobody is
    // left to show the outcome, so the store outlives the request instead.
    const std::optional<ProviderEndpoint> current = endpoint();
    const QString key = trimmed(m_apiKey);
    if (m_apiKeyTimer.isActive() && current) {
        const QString account = credentialAccount(*current);
        if (!key.isEmpty() && key != m_committedKey)
            m_keys.saveKey(key, account).detach(&m_store, [](APIKeyProviding::VoidResult) {});
        else if (key.isEmpty() && m_hasStoredCredential && !m_awaitingRemovalConfirmation)
            m_keys.deleteKey(account).detach(&m_store, [](APIKeyProviding::VoidResult) {});
    }
    if (m_keyCommit.isValid() && !m_keyCommit.isDelivered() && !m_keyCommit.isCancelled())
        std::move(m_keyCommit).detach(&m_store, [](APIKeyProviding::VoidResult) {});
    if (m_keyRemoval.isValid() && !m_keyRemoval.isDelivered() && !m_keyRemoval.isCancelled())
        std::move(m_keyRemoval).detach(&m_store, [](APIKeyProviding::VoidResult) {});
}

PresetModelListCache& PresetEditorModel::cache() const {
    return m_options.cache ? *m_options.cache : PresetModelListCache::shared();
}

std::optional<ProviderEndpoint> PresetEditorModel::endpoint() const {
    return resolveEndpoint(m_draft.providerID, m_draft.customBaseURL);
}

// Draft edits

void PresetEditorModel::setDraft(const Preset& draft) {
    if (draft == m_draft)
        return;
    const bool providerChanged = draft.providerID != m_draft.providerID;
    const bool baseURLChanged = draft.customBaseURL != m_draft.customBaseURL;
    const bool modelChanged = draft.model != m_draft.model;
    m_draft = draft;
    Q_EMIT draftChanged();
    if (modelChanged)
        clearStaleTestStatus();
    if (providerChanged) {
        providerDidChange();
        return;
    }
    if (baseURLChanged)
        baseURLDidChange();
    scheduleSave();
}

void PresetEditorModel::setName(const QString& name) {
    setDraftField(&Preset::name, name);
}

void PresetEditorModel::setProviderID(const QString& providerID) {
    setDraftField(&Preset::providerID, providerID);
}

void PresetEditorModel::setCustomBaseURL(const QString& baseURL) {
    setDraftField(&Preset::customBaseURL, baseURL);
}

void PresetEditorModel::setModel(const QString& model) {
    setDraftField(&Preset::model, model);
}

void PresetEditorModel::setInstructions(const QString& instructions) {
    setDraftField(&Preset::instructions, instructions);
}

void PresetEditorModel::scheduleSave() {
    // The snapshot is taken now: the save carries the draft as it is at this
    // edit, whatever happens during the pause.
    m_saveSnapshot = m_draft;
    m_saveTimer.start();
}

void PresetEditorModel::writeSnapshot() {
    m_saveTimer.stop();
    if (!m_saveSnapshot)
        return;
    const Preset snapshot = *std::exchange(m_saveSnapshot, std::nullopt);
    m_lastSaved = snapshot;
    m_store.update(snapshot);
}

void PresetEditorModel::providerDidChange() {
    m_baseURLResetTimer.stop();
    m_hasPendingBaseURLReset = false;
    m_modelAwaitsNewList = false;
    m_apiKeyTimer.stop();
    m_awaitingRemovalConfirmation = false;
    invalidateConnection(true);
    m_committedKey.clear();
    setAPIKeyField({});
    setHasStoredCredential(false);
    scheduleSave();
    loadStoredKeyAndConnect();
}

void PresetEditorModel::baseURLDidChange() {
    m_hasPendingBaseURLReset = true;
    m_baseURLResetTimer.start();
}

void PresetEditorModel::resetForBaseURL() {
    m_baseURLResetTimer.stop();
    // The chosen model stays until the new address lists its models: a
    // corrected typo, or another server of the same models, keeps it.
    invalidateConnection(false);
    m_modelAwaitsNewList = true;
    scheduleSave();
    m_hasPendingBaseURLReset = false;
    m_committedKey.clear();
    setAPIKeyField({});
    setHasStoredCredential(false);
    loadStoredKeyAndConnect();
}

void PresetEditorModel::invalidateConnection(bool clearModel) {
    ++m_connectionGeneration;
    m_modelsLoad.cancel();
    setAvailableModels({});
    setConnectionState(PresetConnectionState::disconnected());
    clearStaleTestStatus();
    if (clearModel && !m_draft.model.isEmpty()) {
        m_draft.model.clear();
        Q_EMIT draftChanged();
    }
}

// Connection

void PresetEditorModel::loadStoredKeyAndConnect() {
    const std::optional<ProviderEndpoint> current = endpoint();
    m_keyLoad.cancel();
    if (!current)
        return;
    const QString account = credentialAccount(*current);
    m_keyLoad = answerWithin(m_keys.readKey(account), this, m_options.keyStoreTimeout,
                             APIKeyProviding::KeyResult(std::unexpected(
                                 KeychainError::readFailed(KeychainError::noAnswer))));
    m_keyLoad.then(this, [this, account](APIKeyProviding::KeyResult result) {
        const std::optional<ProviderEndpoint> now = endpoint();
        if (!now || credentialAccount(*now) != account)
            return;
        if (!result) {
            setConnectionState(PresetConnectionState::keyStoreFailed(result.error()));
            return;
        }
        const QString stored = result->value_or(QString());
        m_committedKey = stored;
        setAPIKeyField(stored);
        setHasStoredCredential(result->has_value());
        if (const std::optional<QStringList> cached = cache().lookup(account))
            setAvailableModels(*cached);
        if (canConnect())
            connectToProvider();
    });
}

bool PresetEditorModel::canConnect() const {
    if (isOnDevice(m_draft))
        return false;
    if (!endpoint())
        return false;
    if (m_draft.providerID == customProviderID())
        return true;
    return m_hasStoredCredential || !trimmed(m_apiKey).isEmpty();
}

void PresetEditorModel::connectToProvider() {
    const std::optional<ProviderEndpoint> used = endpoint();
    if (!used)
        return;
    const QString key = trimmed(m_apiKey);
    const qint64 generation = m_connectionGeneration;
    setConnectionState(PresetConnectionState::connecting());
    const QString account = credentialAccount(*used);
    if (const std::optional<QStringList> cached = cache().lookup(account))
        setAvailableModels(*cached);
    m_modelsLoad = m_loadModels(*used, key.isEmpty() ? std::nullopt : std::optional(key));
    m_modelsLoad.then(this, [this, generation, used, account](ModelsResult result) {
        if (generation != m_connectionGeneration || endpoint() != used)
            return;
        const bool checkModel = std::exchange(m_modelAwaitsNewList, false);
        if (!result) {
            setConnectionState(PresetConnectionState::failed(result.error()));
            return;
        }
        cache().store(account, *result);
        setAvailableModels(*result);
        setConnectionState(PresetConnectionState::connected());
        // After a new base URL, a model the new server does not list belonged
        // to the old one.
        if (checkModel && !m_draft.model.isEmpty() && !result->contains(m_draft.model))
            setModel(QString());
    });
}

// API key

void PresetEditorModel::setAPIKey(const QString& key) {
    if (key == m_apiKey && !m_awaitingRemovalConfirmation)
        return;
    m_apiKey = key;
    Q_EMIT apiKeyChanged();
    if (trimmed(key).isEmpty() && m_hasStoredCredential && !presetsSharingKey().isEmpty()) {
        m_apiKeyTimer.stop();
        m_awaitingRemovalConfirmation = true;
        Q_EMIT keyRemovalConfirmationRequested();
        return;
    }
    m_awaitingRemovalConfirmation = false;
    m_apiKeyTimer.start();
}

void PresetEditorModel::confirmKeyRemoval() {
    m_awaitingRemovalConfirmation = false;
    removeStoredKey();
}

void PresetEditorModel::cancelKeyRemoval() {
    m_awaitingRemovalConfirmation = false;
    setAPIKeyField(m_committedKey);
}

void PresetEditorModel::commitKey() {
    m_apiKeyTimer.stop();
    const std::optional<ProviderEndpoint> current = endpoint();
    if (!current)
        return;
    const QString key = trimmed(m_apiKey);
    if (key.isEmpty()) {
        if (m_hasStoredCredential)
            removeStoredKey();
        return;
    }
    if (key == m_committedKey)
        return;
    const QString account = credentialAccount(*current);
    m_keyCommit = answerWithin(m_keys.saveKey(key, account), this, m_options.keyStoreTimeout,
                               APIKeyProviding::VoidResult(std::unexpected(
                                   KeychainError::saveFailed(KeychainError::noAnswer))));
    m_keyCommit.then(this, [this, key, account](APIKeyProviding::VoidResult result) {
        const std::optional<ProviderEndpoint> now = endpoint();
        if (now && credentialAccount(*now) == account) {
            if (result) {
                m_committedKey = key;
                setHasStoredCredential(true);
                invalidateConnection(false);
                connectToProvider();
            } else {
                setConnectionState(PresetConnectionState::keyNotSaved(result.error()));
            }
        }
        startWaitingTest(result.has_value());
    });
}

void PresetEditorModel::removeStoredKey() {
    m_apiKeyTimer.stop();
    const std::optional<ProviderEndpoint> current = endpoint();
    if (!current)
        return;
    ++m_connectionGeneration;
    m_modelsLoad.cancel();
    clearStaleTestStatus();
    const QString account = credentialAccount(*current);
    m_keyRemoval = answerWithin(m_keys.deleteKey(account), this, m_options.keyStoreTimeout,
                                APIKeyProviding::VoidResult(std::unexpected(
                                    KeychainError::deleteFailed(KeychainError::noAnswer))));
    m_keyRemoval.then(this, [this, account](APIKeyProviding::VoidResult result) {
        const std::optional<ProviderEndpoint> now = endpoint();
        const bool sameAccount = now && credentialAccount(*now) == account;
        if (!result) {
            if (sameAccount)
                setConnectionState(PresetConnectionState::keyStoreFailed(result.error()));
        } else {
            cache().remove(account);
            if (sameAccount) {
                setHasStoredCredential(false);
                m_committedKey.clear();
                setAPIKeyField({});
                setAvailableModels({});
                setConnectionState(PresetConnectionState::disconnected());
            }
        }
        startWaitingTest(result.has_value());
    });
}

// Test run

bool PresetEditorModel::canRunTest() const {
    if (m_isTesting)
        return false;
    if (isOnDevice(m_draft))
        return true;
    if (m_draft.model.isEmpty())
        return false;
    if (m_hasStoredCredential)
        return true;
    if (!trimmed(m_apiKey).isEmpty())
        return true;
    return m_draft.providerID == customProviderID();
}

namespace {

template <typename T>
bool isPending(const Future<T>& future) {
    return future.isValid() && !future.isDelivered() && !future.isCancelled();
}

} // namespace

void PresetEditorModel::runTest() {
    m_test.cancel();
    m_testWaitsForKeyStore = false;
    setTestStatus(std::nullopt);
    setIsTesting(true);
    // The test runs with what the user typed last: a pause still running ends
    // now, and a key on its way to (or out of) the store is waited for, so
    // the provider is not asked with the key that was there before.
    if (m_baseURLResetTimer.isActive())
        resetForBaseURL();
    if (m_apiKeyTimer.isActive())
        commitKey();
    if (isPending(m_keyCommit) || isPending(m_keyRemoval)) {
        m_testWaitsForKeyStore = true;
        return;
    }
    startTest();
}

void PresetEditorModel::startWaitingTest(bool keyStoreSucceeded) {
    if (!m_testWaitsForKeyStore)
        return;
    if (!keyStoreSucceeded) {
        // Testing now would use whichever key the store still holds, not the
        // one the user just typed or removed; the test says what went wrong.
        m_testWaitsForKeyStore = false;
        setTestStatus(PresetTestStatus::failed(
            TransformFailure::rewrite(RewriteError::modelFailed(m_connectionState.message()))));
        setIsTesting(false);
        return;
    }
    if (isPending(m_keyCommit) || isPending(m_keyRemoval))
        return;
    m_testWaitsForKeyStore = false;
    startTest();
}

void PresetEditorModel::cancelTest() {
    if (!m_isTesting)
        return;
    m_test.cancel();
    m_testWaitsForKeyStore = false;
    setTestStatus(PresetTestStatus::failed(TransformFailure::cancelled()));
    setIsTesting(false);
}

void PresetEditorModel::startTest() {
    const Preset snapshot = m_draft;
    if (!isOnDevice(snapshot) && snapshot.model.isEmpty()) {
        setTestStatus(PresetTestStatus::noModel());
        setIsTesting(false);
        return;
    }
    m_test = m_runTestTransform(snapshot, testInput());
    m_test.then(this, [this](TestResult result) {
        setTestStatus(result ? PresetTestStatus::works()
                             : PresetTestStatus::failed(result.error()));
        setIsTesting(false);
    });
}

QList<Preset> PresetEditorModel::presetsSharingKey() const {
    const std::optional<ProviderEndpoint> own = endpoint();
    if (!own)
        return {};
    const QString account = credentialAccount(*own);
    QList<Preset> sharing;
    for (const Preset& preset : m_store.presets()) {
        if (preset.id == m_draft.id)
            continue;
        const std::optional<ProviderEndpoint> other =
            resolveEndpoint(preset.providerID, preset.customBaseURL);
        if (other && credentialAccount(*other) == account)
            sharing.append(preset);
    }
    return sharing;
}

QString PresetEditorModel::keyRemovalTitle() {
    return tr("Remove this API key?");
}

QString PresetEditorModel::keyRemovalMessage(const QList<Preset>& sharing) {
    if (sharing.isEmpty())
        return tr("No other preset uses this key.");
    if (sharing.size() == 1)
        return tr("“%1” also uses this key and will stop working.")
            .arg(sharing.first().displayName());
    QStringList names;
    for (const Preset& preset : sharing)
        names.append(preset.displayName());
    return tr("%n other preset(s) use this key and will stop working: %1.", nullptr,
              int(sharing.size()))
        .arg(names.join(QStringLiteral(", ")));
}

QString PresetEditorModel::apiKeyPlaceholder(const QString& providerID) {
    return providerID == customProviderID() ? tr("Optional") : tr("Required");
}

QString
PresetEditorModel::modelFooter(const QString& providerID,
                               const std::optional<UnavailableReason>& onDeviceUnavailable) {
    if (providerID == Preset::onDeviceProviderID())
        return onDeviceUnavailable ? onDeviceUnavailable->message() : tr("On Device is ready.");
    if (providerID == customProviderID())
        return tr("OpenAI-compatible base URL. API keys are optional for local servers.");
    return tr("One key per provider, shared by every preset that uses it.");
}

// Observable fields

void PresetEditorModel::setAvailableModels(const QStringList& models) {
    if (models == m_availableModels)
        return;
    m_availableModels = models;
    Q_EMIT availableModelsChanged();
}

void PresetEditorModel::setConnectionState(const PresetConnectionState& state) {
    if (state == m_connectionState)
        return;
    m_connectionState = state;
    Q_EMIT connectionStateChanged();
}

void PresetEditorModel::setAPIKeyField(const QString& key) {
    if (key == m_apiKey)
        return;
    m_apiKey = key;
    Q_EMIT apiKeyChanged();
}

void PresetEditorModel::setHasStoredCredential(bool stored) {
    if (stored == m_hasStoredCredential)
        return;
    m_hasStoredCredential = stored;
    Q_EMIT hasStoredCredentialChanged();
}

void PresetEditorModel::setTestStatus(const std::optional<PresetTestStatus>& status) {
    if (status == m_testStatus)
        return;
    m_testStatus = status;
    Q_EMIT testStatusChanged();
}

void PresetEditorModel::clearStaleTestStatus() {
    // A running test reports on what it was started with; only a finished
    // one's result goes stale.
    if (!m_isTesting)
        setTestStatus(std::nullopt);
}

void PresetEditorModel::setIsTesting(bool testing) {
    if (testing == m_isTesting)
        return;
    m_isTesting = testing;
    Q_EMIT isTestingChanged();
}

} // namespace scrivel
