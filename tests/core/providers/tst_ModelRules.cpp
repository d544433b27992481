#include "core/providers/ModelRules.h"

#include <QtTest>

using namespace scrivel;

class ModelRulesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rules_data();
    void rules();
    void everyNonChatMarkerDrops();
};

void ModelRulesTest::rules_data() {
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<bool>("chat");
    QTest::addColumn<bool>("reasoning"); // takes a reasoning effort

    const auto row = [](const char* identifier, bool chat, bool reasoning) {
        QTest::newRow(identifier) << QString::fromUtf8(identifier) << chat << reasoning;
    };
    row("openai/gpt-oss-120b", true, true);
    row("Big-REASONING-Model", true, true);
    row("vendor/o4-mini-2025", true, true);
    row("gpt-4o-mini", true, false); // "4o-mini" is not "o4-mini"
    row("o3", true, true);
    row("turbo1", true, true); // "o1" anywhere in the name
    row("gemma-2-9b-o-1", true, false);
    row("deepseek-r1-distill", true, true);
    row("llama-3.3-70b-versatile", true, false);
    row("", true, false);
    row("imagegen", true, false); // "-image" needs its hyphen
    row("nottsmodel", false, false);
}

void ModelRulesTest::rules() {
    QFETCH(QString, identifier);
    QFETCH(bool, chat);
    QFETCH(bool, reasoning);
    QCOMPARE(isChatModel(identifier), chat);
    QCOMPARE(supportsReasoningEffort(identifier), reasoning);
}

void ModelRulesTest::everyNonChatMarkerDrops() {
    // Written out here, not read from the code, so that a marker lost from
    // the code's list shows; in capitals, as the match ignores case.
    const QString markers = QStringLiteral(
        "imagine-image imagine-video imagine-audio dall-e dalle stable-diffusion flux- midjourney "
        "image-generation video-generation text-embedding embedding moderation whisper tts "
        "transcri speech-to text-to-speech -image -video -audio -tts -embed");
    for (const QString& marker : markers.split(QLatin1Char(' ')))
        QVERIFY2(!isChatModel(QStringLiteral("x%1y").arg(marker.toUpper())), qPrintable(marker));
}

QTEST_GUILESS_MAIN(ModelRulesTest)
#include "tst_ModelRules.moc"
