#include "providers/ChatCompletionRequest.h"
#include "providers/ChunkScanner.h"
#include "providers/ModelListResponse.h"
#include "providers/StreamChatChunk.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace scrivel;
using test::textOfUtf8Bytes;

class WireFormatTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bodyIsByteExact_data();
    void bodyIsByteExact();
    void inputLimit_data();
    void inputLimit();
    void tokenBudget_data();
    void tokenBudget();
    void reasoningEffort_data();
    void reasoningEffort();
    void chunkText_data();
    void chunkText();
    void fastScannerAgreesWithTheDecoder_data();
    void fastScannerAgreesWithTheDecoder();
    void modelList_data();
    void modelList();
};

void WireFormatTest::bodyIsByteExact_data() {
    QTest::addColumn<CompletionInput>("input");
    QTest::addColumn<QByteArray>("body");

    CompletionInput bare{"llama3", "Fix it.", "abc", std::nullopt, std::nullopt};
    QTest::newRow("no temperature, no effort")
        << bare
        << QByteArray(R"({"model":"llama3","max_tokens":4096,"stream":true,"messages":[)"
                      R"({"role":"system","content":"Fix it."},)"
                      R"({"role":"user","content":"Apply your instructions to the content of )"
                      R"(<input> and return only the result.\n\n<input>\nabc\n<\/input>"}]})");
    CompletionInput full{"openai/gpt-oss-120b", "", "x", QStringLiteral("high"), 0.0};
    QTest::newRow("temperature and effort")
        << full
        << QByteArray(R"({"model":"openai\/gpt-oss-120b","temperature":0,"max_tokens":4096,)"
                      R"("stream":true,"messages":[{"role":"system","content":""},)"
                      R"({"role":"user","content":"Apply your instructions to the content of )"
                      R"(<input> and return only the result.\n\n<input>\nx\n<\/input>"}],)"
                      R"("reasoning_effort":"high"})");
    CompletionInput fraction{"m", "\"quoted\"\ttab", "caf\u00e9", std::nullopt, 0.7};
    QTest::newRow("fractional temperature and escapes")
        << fraction
        << QByteArray("{\"model\":\"m\",\"temperature\":0.7,\"max_tokens\":4096,\"stream\":true,"
                      "\"messages\":[{\"role\":\"system\",\"content\":\"\\\"quoted\\\"\\ttab\"},"
                      "{\"role\":\"user\",\"content\":\"Apply your instructions to the content of "
                      "<input> and return only the result.\\n\\n<input>\\ncaf\xc3\xa9\\n<\\/"
                      "input>\"}]}");
    // JSON cannot hold these; the body never carries null instead.
    for (const double odd : {qQNaN(), qInf(), -qInf()}) {
        CompletionInput unencodable = bare;
        unencodable.temperature = odd;
        QTest::newRow(qPrintable(QStringLiteral("temperature %1 is left out").arg(odd)))
            << unencodable
            << QByteArray(R"({"model":"llama3","max_tokens":4096,"stream":true,"messages":[)"
                          R"({"role":"system","content":"Fix it."},)"
                          R"({"role":"user","content":"Apply your instructions to the content of )"
                          R"(<input> and return only the result.\n\n<input>\nabc\n<\/input>"}]})");
    }
}

void WireFormatTest::bodyIsByteExact() {
    QFETCH(CompletionInput, input);
    QFETCH(QByteArray, body);
    const auto request = ChatCompletionRequest::make(input);
    QVERIFY(request);
    const QByteArray actual = request->encode();
    QVERIFY2(actual == body, qPrintable(test::printable(actual)));
    QVERIFY(QJsonDocument::fromJson(actual).isObject());
}

void WireFormatTest::inputLimit_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("200,000 ASCII bytes") << textOfUtf8Bytes(200000) << true;
    QTest::newRow("200,001 ASCII bytes") << textOfUtf8Bytes(200001) << false;
    // Three-byte characters: 200,001 bytes in about 66,667 UTF-16 units.
    QTest::newRow("200,000 bytes of three-byte text")
        << textOfUtf8Bytes(200000, QStringLiteral("\u20AC")) << true;
    QTest::newRow("200,001 bytes of three-byte text")
        << textOfUtf8Bytes(200001, QStringLiteral("\u20AC")) << false;
    QTest::newRow("200,001 bytes of four-byte text")
        << textOfUtf8Bytes(200001, QStringLiteral("\U0001F600")) << false;
}

void WireFormatTest::inputLimit() {
    QFETCH(QString, text);
    QFETCH(bool, accepted);
    const auto request = ChatCompletionRequest::make({"m", "i", text, std::nullopt, std::nullopt});
    QCOMPARE(request.has_value(), accepted);
    if (!accepted)
        QVERIFY(request.error() == RewriteError::inputTooLarge());
}

void WireFormatTest::tokenBudget_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("maxTokens");
    QTest::newRow("empty") << QString() << qint64(4096);
    QTest::newRow("2,048 units") << QString(2048, 'a') << qint64(4096);
    QTest::newRow("2,049 units") << QString(2049, 'a') << qint64(4098);
    QTest::newRow("3,000 units") << QString(3000, 'a') << qint64(6000);
    QTest::newRow("16,383 units") << QString(16383, 'a') << qint64(32766);
    QTest::newRow("16,384 units") << QString(16384, 'a') << qint64(32768);
    QTest::newRow("20,000 units") << QString(20000, 'a') << qint64(32768);
    // UTF-16 units, not characters: 1,100 emoji are 2,200 units.
    QString emoji;
    for (int i = 0; i < 1100; ++i)
        emoji += QStringLiteral("\U0001F600");
    QTest::newRow("surrogate pairs count twice") << emoji << qint64(4400);
}

void WireFormatTest::tokenBudget() {
    QFETCH(QString, text);
    QFETCH(qint64, maxTokens);
    QCOMPARE(ChatCompletionRequest::make({"m", "i", text, std::nullopt, std::nullopt})->maxTokens,
             maxTokens);
}

void WireFormatTest::reasoningEffort_data() {
    QTest::addColumn<QString>("model");
    QTest::addColumn<std::optional<QString>>("effort");
    QTest::addColumn<std::optional<QString>>("sent");
    using S = std::optional<QString>;
    QTest::newRow("reasoning model") << "openai/gpt-oss-120b" << S("low") << S("low");
    QTest::newRow("o4-mini") << "o4-mini" << S("medium") << S("medium");
    QTest::newRow("plain model") << "gpt-4o" << S("high") << S();
    QTest::newRow("empty effort") << "openai/gpt-oss-120b" << S("") << S();
    QTest::newRow("not trimmed") << "o3" << S(" high ") << S(" high ");
    QTest::newRow("absent") << "o3" << S() << S();
}

void WireFormatTest::reasoningEffort() {
    QFETCH(QString, model);
    QFETCH(std::optional<QString>, effort);
    QFETCH(std::optional<QString>, sent);
    const auto request = ChatCompletionRequest::make({model, "i", "t", effort, std::nullopt});
    QCOMPARE(request->reasoningEffort, sent);
    const QJsonObject body = QJsonDocument::fromJson(request->encode()).object();
    QCOMPARE(body.contains(QStringLiteral("reasoning_effort")), sent.has_value());
}


void WireFormatTest::chunkText_data() {
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<bool>("decodes");
    QTest::addColumn<std::optional<QString>>("text");
    using S = std::optional<QString>;

    QTest::newRow("delta content")
        << QByteArray(R"({"choices":[{"delta":{"content":"Hi"}}]})") << true << S("Hi");
    QTest::newRow("role-only first chunk")
        << QByteArray(R"({"choices":[{"index":0,"delta":{"role":"assistant"}}]})") << true << S();
    QTest::newRow("empty delta object")
        << QByteArray(R"({"choices":[{"delta":{}}]})") << true << S();
    QTest::newRow("null delta content falls back to message")
        << QByteArray(R"({"choices":[{"delta":{"content":null},"message":{"content":"M"}}]})")
        << true << S("M");
    QTest::newRow("message form") << QByteArray(R"({"choices":[{"message":{"content":"M"}}]})")
                                  << true << S("M");
    QTest::newRow("delta wins over message")
        << QByteArray(R"({"choices":[{"delta":{"content":"D"},"message":{"content":"M"}}]})")
        << true << S("D");
    QTest::newRow("empty delta text is text")
        << QByteArray(R"({"choices":[{"delta":{"content":""}}]})") << true << S("");
    QTest::newRow("only the first choice")
        << QByteArray(R"({"choices":[{"delta":{}},{"delta":{"content":"second"}}]})") << true
        << S();
    QTest::newRow("usage chunk with empty choices")
        << QByteArray(R"({"choices":[],"usage":{"total_tokens":9}})") << true << S();
    QTest::newRow("no choices") << QByteArray(R"({"id":"x"})") << true << S();
    QTest::newRow("null choices") << QByteArray(R"({"choices":null})") << true << S();
    QTest::newRow("reasoning is not text")
        << QByteArray(R"({"choices":[{"delta":{"reasoning":"hmm","reasoning_content":"hmm"}}]})")
        << true << S();
    QTest::newRow("choices not a list") << QByteArray(R"({"choices":{}})") << false << S();
    QTest::newRow("choice not an object") << QByteArray(R"({"choices":[1]})") << false << S();
    QTest::newRow("delta not an object")
        << QByteArray(R"({"choices":[{"delta":"x"}]})") << false << S();
    QTest::newRow("content a number")
        << QByteArray(R"({"choices":[{"delta":{"content":3}}]})") << false << S();
    QTest::newRow("bad second choice fails the chunk")
        << QByteArray(R"({"choices":[{"delta":{"content":"a"}},{"message":[]}]})") << false << S();
    QTest::newRow("not JSON") << QByteArray("{choices") << false << S();
    QTest::newRow("array") << QByteArray("[]") << false << S();
}

void WireFormatTest::chunkText() {
    QFETCH(QByteArray, payload);
    QFETCH(bool, decodes);
    QFETCH(std::optional<QString>, text);
    const auto chunk = StreamChatChunk::decode(payload);
    QCOMPARE(chunk.has_value(), decodes);
    if (chunk)
        QCOMPARE(chunk->text(), text);
}

void WireFormatTest::fastScannerAgreesWithTheDecoder_data() {
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<bool>("decided"); // whether the scanner settles it itself
    QTest::newRow("usual chunk")
        << QByteArray(R"({"id":"c1","object":"chat.completion.chunk","created":1,"choices":[)"
                      R"({"index":0,"delta":{"content":"Hi \"there\"\n\u00e9"},)"
                      R"("finish_reason":null,"logprobs":null}],"usage":{"t":[1,2.5,-0]}})")
        << true;
    QTest::newRow("message form") << QByteArray(R"({"choices":[{"message":{"content":"M"}}]})")
                                  << true;
    QTest::newRow("wrong type") << QByteArray(R"({"choices":[{"delta":[]}]})") << true;
    QTest::newRow("duplicate choices")
        << QByteArray(R"({"choices":[],"choices":[{"delta":{"content":"x"}}]})") << false;
    QTest::newRow("exponent") << QByteArray(R"({"n":1e3,"choices":[]})") << false;
    QTest::newRow("surrogate escape")
        << QByteArray(R"({"choices":[{"delta":{"content":"\ud83d\ude00"}}]})") << false;
    QTest::newRow("invalid UTF-8 in a key")
        << QByteArray("{\"choices\":[{\"d\":{\"c\x89\":1}}]}") << false;
    QTest::newRow("finish reason")
        << QByteArray(R"({"choices":[{"delta":{"content":"x"},"finish_reason":"length"}]})")
        << true;
    QTest::newRow("finish reason of a later choice")
        << QByteArray(R"({"choices":[{"delta":{}},{"finish_reason":"length"}]})") << true;
    QTest::newRow("finish reason not a text")
        << QByteArray(R"({"choices":[{"finish_reason":7,"delta":{"content":"x"}}]})") << true;
    QTest::newRow("null error") << QByteArray(R"({"error":null,"choices":[]})") << true;
    QTest::newRow("error object") << QByteArray(R"({"error":{"message":"m"},"choices":[]})")
                                  << false;
    QTest::newRow("escaped error kind")
        << QByteArray(R"({"object":"err\u006fr","message":"m"})") << false;
    // Seeds and kept fuzz inputs.
    const QDir dir(QStringLiteral(SCRIVEL_TEST_DATA_DIR "/StreamChatChunk"));
    for (const QFileInfo& entry : dir.entryInfoList(QDir::Files)) {
        QFile file(entry.filePath());
        if (file.open(QIODevice::ReadOnly))
            QTest::newRow(qPrintable(entry.fileName())) << file.readAll() << false;
    }
}

void WireFormatTest::fastScannerAgreesWithTheDecoder() {
    QFETCH(QByteArray, payload);
    QFETCH(bool, decided);
    const auto chunk = StreamChatChunk::decode(payload);
    const auto scanned = ChunkScanner::scan(payload);
    using Outcome = ChunkScanner::Outcome;
    if (decided)
        QVERIFY(scanned.outcome != Outcome::notHandled);
    switch (scanned.outcome) {
    case Outcome::notHandled:
        break;
    case Outcome::wrongType:
        QVERIFY(!chunk);
        break;
    case Outcome::noText:
        QVERIFY(chunk && !chunk->text() && !chunk->error);
        QCOMPARE(chunk->finishReason, scanned.finishReason);
        break;
    case Outcome::text:
        QVERIFY(chunk && !chunk->error);
        QCOMPARE(chunk->text(), std::optional<QString>(scanned.text));
        QCOMPARE(chunk->finishReason, scanned.finishReason);
        break;
    }
}

void WireFormatTest::modelList_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<std::optional<QStringList>>("ids");
    using L = std::optional<QStringList>;
    QTest::newRow("list")
        << QByteArray(R"({"object":"list","data":[{"id":"b","owned_by":"x"},{"id":"a"}]})")
        << L(QStringList{"b", "a"});
    QTest::newRow("empty") << QByteArray(R"({"data":[]})") << L(QStringList{});
    QTest::newRow("missing data") << QByteArray(R"({"models":[]})") << L();
    QTest::newRow("element without id")
        << QByteArray(R"({"data":[{"id":"a"},{"name":"b"}]})") << L();
    QTest::newRow("numeric id") << QByteArray(R"({"data":[{"id":1}]})") << L();
    QTest::newRow("not JSON") << QByteArray("<html>") << L();
}

void WireFormatTest::modelList() {
    QFETCH(QByteArray, body);
    QFETCH(std::optional<QStringList>, ids);
    const auto decoded = ModelListResponse::decode(body);
    QCOMPARE(decoded.has_value(), ids.has_value());
    if (decoded)
        QCOMPARE(decoded->ids, *ids);
}

QTEST_GUILESS_MAIN(WireFormatTest)
#include "tst_WireFormat.moc"
