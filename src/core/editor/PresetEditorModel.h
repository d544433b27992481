#pragma once

#include "core/editor/PresetConnectionState.h"
#include "core/editor/PresetTestStatus.h"
#include "core/presets/Preset.h"
#include "core/providers/APIKeyProviding.h"
#include "core/providers/ProviderConnectionFailure.h"
#include "core/providers/ProviderEndpoint.h"
#include "core/support/Future.h"
#include "core/transform/TransformFailure.h"
#include "core/transform/UnavailableReason.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <chrono>
#include <expected>
#include <functional>
#include <optional>

namespace scrivel {

class PresetModelListCache;
class PresetStore;
class ProviderHub;

// The model behind the editor of one preset: an editable copy (the draft)
// saved back to the store after a pause, the API key field kept in step with
// the key store (one key per provider account, shared by every preset of that
// provider), the provider's model list, and a test run.
//
// Every piece of waiting is a QTimer or a Future owned here, so destroying the
// model cancels it. Results of connection attempts carry the generation and
// endpoint they were started for and are dropped when either has moved on.
class PresetEditorModel : public QObject {
    Q_OBJECT

public:
    using ModelsResult = std::expected<QStringList, ProviderConnectionFailure>;
    using LoadModels = std::function<Future<ModelsResult>(const ProviderEndpoint& endpoint,
                                                          const std::optional<QString>& key)>;
    using TestResult = std::expected<QString, TransformFailure>;
    using RunTestTransform =
        std::function<Future<TestResult>(const Preset& preset, const QString& text)>;

    struct Options {
        std::chrono::milliseconds debounce{350};
        // The process-wide cache unless a test gives its own.
        PresetModelListCache* cache = nullptr;
        // How long the editor waits for the key store before it says that
        // the keychain did not answer (beyond the store's own time-outs).
        std::chrono::milliseconds keyStoreTimeout{20000};
    };

    // The fixed input of a test run.
    static QString testInput();

    // The model list through the hub's client of the endpoint: the typed key
    // as a candidate, or the stored one when the field is empty.
    static LoadModels hubModelLoader(ProviderHub& hub);
    // One transform through the hub, collected into its final text.
    static RunTestTransform hubTestTransform(ProviderHub& hub);

    // Reads the stored key of the preset's provider and connects when it can.
    PresetEditorModel(const Preset& preset, PresetStore& store, APIKeyProviding& keys,
                      LoadModels loadModels, RunTestTransform runTestTransform, Options options,
                      QObject* parent = nullptr);
    // A save still waiting for its pause is written now, so switching presets
    // or closing the window never loses the last keystrokes.
    ~PresetEditorModel() override;

    const Preset& draft() const { return m_draft; }
    // Any edit of the draft; a new provider or base URL runs its reaction.
    void setDraft(const Preset& draft);
    void setName(const QString& name);
    void setProviderID(const QString& providerID);
    void setCustomBaseURL(const QString& baseURL);
    void setModel(const QString& model);
    void setInstructions(const QString& instructions);

    const QStringList& availableModels() const { return m_availableModels; }
    const PresetConnectionState& connectionState() const { return m_connectionState; }
    const QString& apiKey() const { return m_apiKey; }
    bool hasStoredCredential() const { return m_hasStoredCredential; }
    const std::optional<PresetTestStatus>& testStatus() const { return m_testStatus; }
    bool isTesting() const { return m_isTesting; }
    const QString& committedKey() const { return m_committedKey; }
    qint64 connectionGeneration() const { return m_connectionGeneration; }
    bool hasPendingBaseURLReset() const { return m_hasPendingBaseURLReset; }
    // The draft as this model last wrote it to the store.
    const std::optional<Preset>& lastSaved() const { return m_lastSaved; }
    bool isAwaitingKeyRemovalConfirmation() const { return m_awaitingRemovalConfirmation; }

    // A change of the key field. Emptying the field of a key that other
    // presets share asks for confirmation (keyRemovalConfirmationRequested)
    // and schedules nothing; any other change schedules a key commit.
    void setAPIKey(const QString& key);
    // The answers to that confirmation: remove the key everywhere, or put the
    // saved key back into the field.
    void confirmKeyRemoval();
    void cancelKeyRemoval();
    // Deletes the stored key of the draft's provider account.
    void removeStoredKey();

    bool canRunTest() const;
    void runTest();
    // Stops a running test (or one waiting for the key store); the result
    // reads "Test cancelled.".
    void cancelTest();

    // The other presets, in store order, that use the same stored key.
    QList<Preset> presetsSharingKey() const;
    // The key-removal confirmation's title and message, naming the presets
    // that lose their key with this one.
    static QString keyRemovalTitle();
    static QString keyRemovalMessage(const QList<Preset>& sharing);
    // The key field's placeholder for a provider.
    static QString apiKeyPlaceholder(const QString& providerID);
    // The footer of the Model section: the on-device model's readiness (its
    // unavailability when given), or how keys work for the provider.
    static QString modelFooter(const QString& providerID,
                               const std::optional<UnavailableReason>& onDeviceUnavailable);

    // The draft's endpoint, or nothing (on-device, unknown provider, unusable
    // base URL).
    std::optional<ProviderEndpoint> endpoint() const;

Q_SIGNALS:
    void draftChanged();
    void availableModelsChanged();
    void connectionStateChanged();
    void apiKeyChanged();
    void hasStoredCredentialChanged();
    void testStatusChanged();
    void isTestingChanged();
    void keyRemovalConfirmationRequested();

private:
    // One field of the draft changed; everything else stays.
    template <typename Field>
    void setDraftField(Field Preset::*field, const QString& value) {
        Preset draft = m_draft;
        draft.*field = value;
        setDraft(draft);
    }
    void scheduleSave();
    void writeSnapshot();
    void providerDidChange();
    void baseURLDidChange();
    void resetForBaseURL();
    void invalidateConnection(bool clearModel);
    void loadStoredKeyAndConnect();
    bool canConnect() const;
    void connectToProvider();
    void commitKey();
    void startTest();
    // Starts the test that waits for the key store once nothing is pending,
    // or ends it when the key store failed.
    void startWaitingTest(bool keyStoreSucceeded);

    void setAvailableModels(const QStringList& models);
    void setConnectionState(const PresetConnectionState& state);
    void setAPIKeyField(const QString& key);
    void setHasStoredCredential(bool stored);
    void setTestStatus(const std::optional<PresetTestStatus>& status);
    void setIsTesting(bool testing);
    // The last test's result no longer describes the connection.
    void clearStaleTestStatus();
    PresetModelListCache& cache() const;

    Preset m_draft;
    PresetStore& m_store;
    APIKeyProviding& m_keys;
    LoadModels m_loadModels;
    RunTestTransform m_runTestTransform;
    Options m_options;

    QStringList m_availableModels;
    PresetConnectionState m_connectionState = PresetConnectionState::disconnected();
    QString m_apiKey;
    bool m_hasStoredCredential = false;
    std::optional<PresetTestStatus> m_testStatus;
    bool m_isTesting = false;
    QString m_committedKey;
    qint64 m_connectionGeneration = 0;
    bool m_hasPendingBaseURLReset = false;
    bool m_awaitingRemovalConfirmation = false;
    // The base URL changed: the next model list decides whether the chosen
    // model is still offered.
    bool m_modelAwaitsNewList = false;

    // The pending save and its snapshot, the base-URL pause, the key pause.
    QTimer m_saveTimer;
    std::optional<Preset> m_saveSnapshot;
    std::optional<Preset> m_lastSaved;
    QTimer m_baseURLResetTimer;
    QTimer m_apiKeyTimer;

    Future<APIKeyProviding::KeyResult> m_keyLoad;
    Future<APIKeyProviding::VoidResult> m_keyCommit;
    Future<APIKeyProviding::VoidResult> m_keyRemoval;
    Future<ModelsResult> m_modelsLoad;
    Future<TestResult> m_test;
    // A test waits for the key commit or removal still on its way.
    bool m_testWaitsForKeyStore = false;
};

} // namespace scrivel
