#include "providers/ModelRules.h"

#include <QtTest>

using namespace scrivel;

class ModelRulesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void reasoningEffort_data();
    void reasoningEffort();
    void chatModel_data();
    void chatModel();
    void everyNonChatMarkerDrops();
    void chatModelsKeepsOrderAndDuplicates();
};

void ModelRulesTest::reasoningEffort_data() {
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<bool>("supported");

    QTest::newRow("gpt-oss") << "openai/gpt-oss-120b" << true;
    QTest::newRow("plain gpt-4o") << "gpt-4o" << false;
    QTest::newRow("gpt-4o-mini") << "gpt-4o-mini" << false;
    QTest::newRow("o4-mini inside a name") << "vendor/o4-mini-2025" << true;
    QTest::newRow("o3") << "o3" << true;
    QTest::newRow("digits apart from the letters") << "gemma-2-9b-o-1" << false;
    QTest::newRow("o1 as a substring of a longer word") << "turbo1" << true;
    QTest::newRow("r1 family") << "deepseek-r1-distill" << true;
    QTest::newRow("r1 inside a version") << "model-v2r1" << true;
    QTest::newRow("reasoning in capitals") << "Big-REASONING-Model" << true;
    QTest::newRow("GPT-OSS in capitals") << "OPENAI/GPT-OSS-20B" << true;
    QTest::newRow("llama") << "llama-3.3-70b-versatile" << false;
    QTest::newRow("empty") << "" << false;
}

void ModelRulesTest::reasoningEffort() {
    QFETCH(QString, identifier);
    QFETCH(bool, supported);
    QCOMPARE(supportsReasoningEffort(identifier), supported);
}

void ModelRulesTest::chatModel_data() {
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<bool>("chat");

    QTest::newRow("chat model") << "gpt-4o" << true;
    QTest::newRow("DALL-E in capitals") << "DALL-E-3" << false;
    QTest::newRow("tts inside a longer word") << "nottsmodel" << false;
    QTest::newRow("whisper") << "whisper-large-v3" << false;
    QTest::newRow("embedding") << "text-embedding-3-small" << false;
    QTest::newRow("-embed suffix") << "nomic-embed-text" << false;
    QTest::newRow("-image inside") << "gpt-image-1" << false;
    QTest::newRow("image without hyphen stays") << "imagegen" << true;
    QTest::newRow("flux- prefix") << "black-forest/FLUX-1" << false;
    QTest::newRow("transcription") << "gpt-4o-transcribe" << false;
    QTest::newRow("guard model stays") << "llama-guard-4" << true;
    QTest::newRow("empty") << "" << true;
}

void ModelRulesTest::chatModel() {
    QFETCH(QString, identifier);
    QFETCH(bool, chat);
    QCOMPARE(isChatModel(identifier), chat);
}

void ModelRulesTest::everyNonChatMarkerDrops() {
    // Written out here, not read from the code, so that a marker lost from
    // the code's list shows.
    for (const char* marker : {"imagine-image",
                               "imagine-video",
                               "imagine-audio",
                               "dall-e",
                               "dalle",
                               "stable-diffusion",
                               "flux-",
                               "midjourney",
                               "image-generation",
                               "video-generation",
                               "text-embedding",
                               "embedding",
                               "moderation",
                               "whisper",
                               "tts",
                               "transcri",
                               "speech-to",
                               "text-to-speech",
                               "-image",
                               "-video",
                               "-audio",
                               "-tts",
                               "-embed"}) {
        const QString identifier =
            QStringLiteral("x%1y").arg(QLatin1String(marker).toString().toUpper());
        QVERIFY2(!isChatModel(identifier), marker);
    }
}

void ModelRulesTest::chatModelsKeepsOrderAndDuplicates() {
    const QStringList identifiers = {
        QStringLiteral("zeta"), QStringLiteral("whisper-1"), QStringLiteral("alpha"),
        QStringLiteral("zeta"), QStringLiteral("tts-1-hd"),  QStringLiteral("Alpha"),
    };
    QCOMPARE(chatModels(identifiers),
             QStringList({QStringLiteral("zeta"), QStringLiteral("alpha"), QStringLiteral("zeta"),
                          QStringLiteral("Alpha")}));
}

QTEST_GUILESS_MAIN(ModelRulesTest)
#include "tst_ModelRules.moc"
