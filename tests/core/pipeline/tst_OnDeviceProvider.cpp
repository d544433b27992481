#include "core/pipeline/OnDeviceProvider.h"
#include "platform/linux/UnavailableOnDeviceModel.h"
#include "support/FakeOnDeviceModel.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;
using namespace Qt::StringLiterals;
using test::FakeOnDeviceModel;

Q_DECLARE_METATYPE(OnDeviceModel::GenerationError)
Q_DECLARE_METATYPE(TransformFailure)

class OnDeviceProviderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void inputLimit_data();
    void inputLimit();
    void unavailableModel_data();
    void unavailableModel();
    void warmSessionServesTheNextRequestWithTheSameInstructions();
    void otherInstructionsGetTheirOwnSession();
    void generationErrors_data();
    void generationErrors();
    void linuxHasNoModel();
};

void OnDeviceProviderTest::inputLimit_data() {
    QTest::addColumn<qsizetype>("bytes");
    QTest::addColumn<bool>("available");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("12,000 bytes") << qsizetype(12000) << true << true;
    QTest::newRow("12,001 bytes") << qsizetype(12001) << true << false;
    // The size is judged first: an unavailable model still says "too long".
    QTest::newRow("12,001 bytes, model unavailable") << qsizetype(12001) << false << false;
}

void OnDeviceProviderTest::inputLimit() {
    QFETCH(qsizetype, bytes);
    QFETCH(bool, available);
    QFETCH(bool, accepted);
    FakeOnDeviceModel model;
    if (!available)
        model.availabilityValue = {OnDeviceModel::Availability::Kind::modelNotReady, {}};
    OnDeviceProvider provider(model);
    const auto result =
        test::waitFor(provider.transform(test::textOfUtf8Bytes(bytes, u"\u00e9"_s), "i"));
    QVERIFY(result);
    QCOMPARE(result->has_value(), accepted);
    if (!accepted) {
        QCOMPARE(result->error(), TransformFailure::rewrite(RewriteError::inputTooLarge()));
        QVERIFY(model.sessions.isEmpty()); // refused before the model is asked
    }
}

void OnDeviceProviderTest::unavailableModel_data() {
    using K = OnDeviceModel::Availability::Kind;
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("message");
    QTest::newRow("not eligible") << int(K::deviceNotEligible)
                                  << "This device can’t run the on-device model";
    QTest::newRow("not enabled") << int(K::notEnabled) << "The on-device model is turned off";
    QTest::newRow("not ready") << int(K::modelNotReady) << "Model not ready";
    QTest::newRow("other") << int(K::other) << "Downloading";
}

void OnDeviceProviderTest::unavailableModel() {
    QFETCH(int, kind);
    QFETCH(QString, message);
    FakeOnDeviceModel model;
    model.availabilityValue = {OnDeviceModel::Availability::Kind(kind), "Downloading"};
    OnDeviceProvider provider(model);
    const auto result = test::waitFor(provider.transform("text", "i"));
    QCOMPARE(result->error(), TransformFailure::rewrite(RewriteError::modelUnavailable(
                                  UnavailableReason::modelNotReady(message))));
    provider.prewarm("i");
    QVERIFY(model.sessions.isEmpty());
}

void OnDeviceProviderTest::warmSessionServesTheNextRequestWithTheSameInstructions() {
    FakeOnDeviceModel model;
    OnDeviceProvider provider(model);
    const auto first = test::waitFor(provider.transform("a b", "Fix it."));
    QCOMPARE(first->value(), u"transformed"_s);
    QCOMPARE(model.sessions[0].prompts,
             QStringList{"Apply your instructions to the content of <input> and return only the "
                         "result.\n\n<input>\na b\n</input>"});
    // Guided generation of one text property, at temperature 0.
    const OnDeviceModel::GenerationRequest& request = model.sessions[0].requests.at(0);
    QCOMPARE(request.typeName, u"TransformedCopy"_s);
    QCOMPARE(
        request.properties,
        (QList<OnDeviceModel::SchemaProperty>{
            {"transformedText", "The full transformed text only. No preface, no commentary."}}));
    QVERIFY(request.includeSchemaInPrompt && !request.greedySampling);
    QCOMPARE(request.temperature, std::optional(0.0));
    QCOMPARE(request.maximumResponseTokens, std::nullopt);
    // After every request a fresh session is warmed for the same instructions.
    QTRY_VERIFY(provider.hasWarmSession("Fix it."));
    QCOMPARE(model.sessions.size(), 2);
    QCOMPARE(model.sessions[1].prewarms, 1);

    QVERIFY(test::waitFor(provider.transform("c", "Fix it."))->has_value());
    QCOMPARE(model.sessions[1].prompts.size(), 1); // the warm one answered
    QCOMPARE(model.sessions[0].prompts.size(), 1);
}

void OnDeviceProviderTest::otherInstructionsGetTheirOwnSession() {
    FakeOnDeviceModel model;
    OnDeviceProvider provider(model);
    provider.prewarm("A");
    QVERIFY(test::waitFor(provider.transform("x", "B"))->has_value());
    QVERIFY(model.sessions.size() >= 2);
    QCOMPARE(model.sessions[1].prompts.size(), 1);
    QCOMPARE(model.sessions[1].instructions, u"B"_s);
    QCOMPARE(model.sessions[1].prewarms, 1);
    QVERIFY(model.sessions[0].prompts.isEmpty());
}

void OnDeviceProviderTest::generationErrors_data() {
    QTest::addColumn<OnDeviceModel::GenerationError>("error");
    QTest::addColumn<TransformFailure>("failure");
    using E = OnDeviceModel::GenerationError;
    const auto failed = [](const QString& message) {
        return TransformFailure::rewrite(RewriteError::modelFailed(message));
    };
    QTest::newRow("context window") << E::contextWindowExceeded << failed(u"Text is too long"_s);
    QTest::newRow("language") << E::unsupportedLanguage << failed(u"Unsupported language"_s);
    QTest::newRow("guardrail") << E::guardrailViolation << failed(u"Couldn\u2019t fix this text"_s);
    QTest::newRow("other") << E::otherFailure << failed(u"Couldn\u2019t fix this text"_s);
    QTest::newRow("the model's own cancellation") << E::cancelled << TransformFailure::cancelled();
}

void OnDeviceProviderTest::generationErrors() {
    QFETCH(OnDeviceModel::GenerationError, error);
    QFETCH(TransformFailure, failure);
    FakeOnDeviceModel model;
    model.reply = std::unexpected(error);
    OnDeviceProvider provider(model);
    QCOMPARE(test::waitFor(provider.transform("x", "i"))->error(), failure);
    QTRY_VERIFY(provider.hasWarmSession("i")); // re-warmed after a failure too
}

void OnDeviceProviderTest::linuxHasNoModel() {
    UnavailableOnDeviceModel model;
    OnDeviceProvider provider(model);
    QVERIFY(!model.availability().isAvailable());
    const auto result = test::waitFor(provider.transform("x", "i"));
    QCOMPARE(result->error(), TransformFailure::rewrite(
                                  RewriteError::modelUnavailable(UnavailableReason::modelNotReady(
                                      u"No on-device model is available on this system"_s))));
}

QTEST_GUILESS_MAIN(OnDeviceProviderTest)
#include "tst_OnDeviceProvider.moc"
