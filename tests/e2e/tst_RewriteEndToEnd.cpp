#include "dummy/InMemorySecretStore.h"
#include "pipeline/ProviderHub.h"
#include "pipeline/RewriteCoordinator.h"
#include "presets/BuiltInPresets.h"
#include "providers/APIKeyStore.h"
#include "support/FakeOnDeviceModel.h"
#include "support/ScriptedHttpServer.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;
using test::ScriptedHttpServer;

// Coordinator, hub, client and a real HTTP server on 127.0.0.1 (the CLI
// end-to-end suite covers the plain runs, failures and cancellation).
class RewriteEndToEndTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void validatingPresetCleansThePreface();
    void timeoutCancelsTheRequest();

private:
    Preset localPreset(bool validates = false) const;
    std::optional<RewriteCoordinator::Result> rewrite(const QString& input, const Preset& preset);

    std::unique_ptr<ScriptedHttpServer> m_server;
    test::FakeOnDeviceModel m_model;
    InMemorySecretStore m_modern;
    InMemorySecretStore m_legacy;
    std::unique_ptr<APIKeyStore> m_keys;
    std::unique_ptr<ProviderHub> m_hub;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    QList<OperationUIState> m_states;
};

void RewriteEndToEndTest::init() {
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
    m_keys =
        std::make_unique<APIKeyStore>(m_modern, m_legacy, [] { return Future<bool>::ready(true); });
    m_hub = std::make_unique<ProviderHub>(m_model, *m_keys);
    m_coordinator = std::make_unique<RewriteCoordinator>(*m_hub);
    m_states.clear();
    m_coordinator->setUIHandler([this](const OperationUIState& state) { m_states << state; });
}

void RewriteEndToEndTest::cleanup() {
    m_coordinator.reset();
    m_hub.reset();
}

Preset RewriteEndToEndTest::localPreset(bool validates) const {
    Preset preset = builtInPresets(false).at(validates ? 0 : 1);
    preset.providerID = QStringLiteral("custom");
    preset.customBaseURL = m_server->url(QStringLiteral("/v1")).toString();
    preset.model = QStringLiteral("local-model");
    return preset;
}

std::optional<RewriteCoordinator::Result> RewriteEndToEndTest::rewrite(const QString& input,
                                                                       const Preset& preset) {
    return test::waitFor(m_coordinator->rewrite(input, preset), 10000);
}

void RewriteEndToEndTest::validatingPresetCleansThePreface() {
    m_server->setHandler([](const auto&) {
        return ScriptedHttpServer::eventStream(
            ScriptedHttpServer::dataLine("Here is the corrected text: This sentence has a typo."),
            false);
    });
    const auto result = rewrite(QStringLiteral("This sentense has a typo."), localPreset(true));
    QCOMPARE(**result, FixResult::fixed(QStringLiteral("This sentence has a typo.")));
}

void RewriteEndToEndTest::timeoutCancelsTheRequest() {
    ScriptedHttpServer::Response stall;
    stall.stall = true;
    m_server->setHandler([&](const auto&) { return stall; });
    // 2.5 s for this input: room for the first request of the process to
    // reach the server (key store, network set-up) before the time-out.
    m_coordinator->setTimeoutScale(
        [](int seconds) { return std::chrono::milliseconds(seconds * 100); });
    const auto result = rewrite(QStringLiteral("text"), localPreset());
    QVERIFY(result && !result->has_value());
    QCOMPARE(result->error(), TransformFailure::rewrite(RewriteError::timeout()));
    QCOMPARE(m_server->requests().size(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(m_server->connectionsClosedByClient(), 1, 5000);
}

QTEST_GUILESS_MAIN(RewriteEndToEndTest)
#include "tst_RewriteEndToEnd.moc"
