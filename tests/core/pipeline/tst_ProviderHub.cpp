#include "core/pipeline/ProviderHub.h"
#include "core/presets/BuiltInPresets.h"
#include "core/providers/APIKeyStore.h"
#include "support/FakeOnDeviceModel.h"
#include "support/InMemorySecretStore.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;
using test::FakeOnDeviceModel;

namespace {

Preset presetFor(const QString& providerID, const std::optional<QString>& baseURL,
                 const QString& model = u"m"_s) {
    Preset preset = builtInPresets(false).at(1);
    preset.providerID = providerID;
    preset.customBaseURL = baseURL;
    preset.model = model;
    return preset;
}

} // namespace

class ProviderHubTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void reasons_data();
    void reasons();
    void keychainFailureIsReported();
    void onDeviceNeverTouchesClients();
    void equalEndpointsShareAClient();
    void unrunnablePresetFailsBeforeAnyRequest_data();
    void unrunnablePresetFailsBeforeAnyRequest();
    void onDeviceStreamIsOneCompletedEvent();

private:
    std::optional<UnavailableReason> reasonFor(const Preset& preset) {
        return *test::waitFor(m_hub->unavailableReason(preset));
    }

    FakeOnDeviceModel m_model;
    InMemorySecretStore m_modern;
    InMemorySecretStore m_legacy;
    std::unique_ptr<APIKeyStore> m_keys;
    std::unique_ptr<ProviderHub> m_hub;
};

void ProviderHubTest::init() {
    m_model = {};
    m_modern = {};
    m_legacy = {};
    m_keys =
        std::make_unique<APIKeyStore>(m_modern, m_legacy, [] { return Future<bool>::ready(true); });
    m_hub = std::make_unique<ProviderHub>(m_model, *m_keys);
}

void ProviderHubTest::reasons_data() {
    QTest::addColumn<Preset>("preset");
    QTest::addColumn<bool>("storeGroqKey");
    QTest::addColumn<std::optional<UnavailableReason>>("reason");
    using R = std::optional<UnavailableReason>;

    QTest::newRow("local server without a key is ready")
        << presetFor("custom", "http://localhost:11434/v1") << false << R();
    QTest::newRow("catalogue provider without a key")
        << presetFor("groq", std::nullopt) << false << R(UnavailableReason::missingAPIKey());
    QTest::newRow("catalogue provider with a key")
        << presetFor("groq", std::nullopt) << true << R();
    QTest::newRow("model of spaces and tabs")
        << presetFor("groq", std::nullopt, " \t ") << true
        << R(UnavailableReason::misconfigured("Choose a model in Presets"));
    QTest::newRow("a line break is a model name")
        << presetFor("custom", "http://localhost:1/v1", "\n") << false << R();
    QTest::newRow("custom without a usable base URL")
        << presetFor("custom", "ftp://example.com") << false
        << R(UnavailableReason::misconfigured("Set a custom Base URL in Presets"));
    QTest::newRow("unknown provider")
        << presetFor("OpenAI", std::nullopt) << false
        << R(UnavailableReason::misconfigured("Set a custom Base URL in Presets"));
}

void ProviderHubTest::reasons() {
    QFETCH(Preset, preset);
    QFETCH(bool, storeGroqKey);
    QFETCH(std::optional<UnavailableReason>, reason);
    if (storeGroqKey)
        m_modern.items.insert(u"groq"_s, "gsk");
    QCOMPARE(reasonFor(preset), reason);
}

void ProviderHubTest::keychainFailureIsReported() {
    m_modern.readFailure = -25293;
    QCOMPARE(reasonFor(presetFor("groq", std::nullopt)),
             std::optional(UnavailableReason::keychainError()));
}

void ProviderHubTest::onDeviceNeverTouchesClients() {
    Preset preset = presetFor("onDevice", "https://example.com/v1", "whatever");
    QCOMPARE(reasonFor(preset), std::nullopt);
    // Prewarming an available model readies a session for the instructions.
    m_hub->prewarm(preset);
    QTRY_COMPARE(m_model.sessions.size(), 1);
    QCOMPARE(m_model.sessions[0].instructions, preset.instructions);
    QCOMPARE(m_model.sessions[0].prewarms, 1);
    m_hub->prewarm(presetFor("groq", std::nullopt)); // nothing to warm for a cloud preset
    QCOMPARE(m_model.sessions.size(), 1);
    QCOMPARE(m_hub->clientCount(), 0);

    m_model.availabilityValue = {OnDeviceModel::Availability::Kind::notEnabled, {}};
    QCOMPARE(reasonFor(preset),
             std::optional(UnavailableReason::modelNotReady("The on-device model is turned off")));
    m_hub->prewarm(preset);
    QCOMPARE(m_hub->clientCount(), 0);
    QCOMPARE(m_model.sessions.size(), 1); // not warmed while unavailable
}

void ProviderHubTest::equalEndpointsShareAClient() {
    reasonFor(presetFor("custom", "http://localhost:1234/v1/"));
    reasonFor(presetFor("custom", " http://LOCALHOST:1234/v1"));
    QCOMPARE(m_hub->clientCount(), 1);
    reasonFor(presetFor("custom", "http://localhost:1234/v2"));
    QCOMPARE(m_hub->clientCount(), 2);
    m_modern.items.insert(u"groq"_s, "k");
    reasonFor(presetFor("groq", std::nullopt, "a"));
    reasonFor(presetFor("groq", std::nullopt, "b"));
    QCOMPARE(m_hub->clientCount(), 3);
}

void ProviderHubTest::unrunnablePresetFailsBeforeAnyRequest_data() {
    QTest::addColumn<Preset>("preset");
    QTest::addColumn<QString>("reason");
    const QString noModel = u"Choose a model in Presets"_s;
    QTest::newRow("no base URL") << presetFor("custom", std::nullopt)
                                 << u"Set a custom Base URL in Presets"_s;
    QTest::newRow("empty model") << presetFor("custom", "http://localhost:1/v1", "") << noModel;
    QTest::newRow("model of spaces") << presetFor("groq", std::nullopt, "  ") << noModel;
}

void ProviderHubTest::unrunnablePresetFailsBeforeAnyRequest() {
    QFETCH(Preset, preset);
    QFETCH(QString, reason);
    m_modern.items.insert(u"groq"_s, "gsk");
    TransformStream stream = m_hub->stream(preset, "text");
    std::optional<std::optional<TransformFailure>> end;
    stream.subscribe(
        this, [](const TransformStreamEvent&) {},
        [&](std::optional<TransformFailure> failure) { end = failure; });
    QTRY_VERIFY(end.has_value());
    QCOMPARE(*end, std::optional(TransformFailure::rewrite(
                       RewriteError::modelUnavailable(UnavailableReason::misconfigured(reason)))));
    // No client was made, so nothing was sent.
    QCOMPARE(m_hub->clientCount(), 0);
}

void ProviderHubTest::onDeviceStreamIsOneCompletedEvent() {
    TransformStream stream = m_hub->stream(presetFor("onDevice", std::nullopt, ""), "text");
    QList<TransformStreamEvent> events;
    bool ended = false;
    stream.subscribe(
        this, [&](const TransformStreamEvent& event) { events << event; },
        [&](std::optional<TransformFailure> failure) { ended = !failure; });
    QTRY_VERIFY(ended);
    QCOMPARE(events.size(), 1);
    QVERIFY(events.first() == TransformStreamEvent::completed("transformed"));
}

QTEST_GUILESS_MAIN(ProviderHubTest)
#include "tst_ProviderHub.moc"
