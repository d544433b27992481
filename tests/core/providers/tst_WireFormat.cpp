#include "core/providers/ChatCompletionRequest.h"
#include "core/providers/ChunkScanner.h"
#include "core/providers/ModelListResponse.h"
#include "core/providers/StreamChatChunk.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QtTest>

using namespace scrivel;
using test::textOfUtf8Bytes;
using S = std::optional<QString>;

namespace {

// A chunk as "invalid", "error <message>", "no text" or "text <text>", with
// ", <finish reason>" when the first choice names one.
QString rendered(const std::optional<StreamChatChunk>& chunk) {
    if (!chunk)
        return QStringLiteral("invalid");
    if (chunk->error)
        return QStringLiteral("error ") + *chunk->error;
    const S text = chunk->text();
    const QString shown = text ? QStringLiteral("text ") + *text : QStringLiteral("no text");
    return chunk->finishReason ? shown + QStringLiteral(", ") + *chunk->finishReason : shown;
}

QString rendered(const ChunkScanner::Result& scanned) {
    if (scanned.outcome == ChunkScanner::Outcome::wrongType)
        return QStringLiteral("invalid");
    const QString shown = scanned.outcome == ChunkScanner::Outcome::text
                              ? QStringLiteral("text ") + scanned.text
                              : QStringLiteral("no text");
    return scanned.finishReason ? shown + QStringLiteral(", ") + *scanned.finishReason : shown;
}

} // namespace

class WireFormatTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bodyIsByteExact_data();
    void bodyIsByteExact();
    void requestFields_data();
    void requestFields();
    void chunks_data();
    void chunks();
    void modelList_data();
    void modelList();
};

void WireFormatTest::bodyIsByteExact_data() {
    QTest::addColumn<CompletionInput>("input");
    QTest::addColumn<QByteArray>("body");

    const QByteArray prompt = "Apply your instructions to the content of <input> and return only "
                              "the result.\\n\\n<input>\\n";
    const CompletionInput bare{"llama3", "Fix it.", "abc", std::nullopt, std::nullopt};
    const QByteArray bareBody = R"({"model":"llama3","max_tokens":4096,"stream":true,"messages":[)"
                                R"({"role":"system","content":"Fix it."},)"
                                R"({"role":"user","content":")" +
                                prompt + R"(abc\n<\/input>"}]})";
    QTest::newRow("no temperature, no effort") << bare << bareBody;
    QTest::newRow("temperature, effort and escapes")
        << CompletionInput{"openai/gpt-oss-120b", "\"quoted\"\ttab", "caf\u00e9", "high", 0.7}
        << R"({"model":"openai\/gpt-oss-120b","temperature":0.7,"max_tokens":4096,"stream":true,)"
           R"("messages":[{"role":"system","content":"\"quoted\"\ttab"},)"
           R"({"role":"user","content":")" +
               prompt + "caf\xc3\xa9" + R"(\n<\/input>"}],"reasoning_effort":"high"})";
    // JSON cannot hold these; the body never carries null instead.
    for (const double odd : {qQNaN(), qInf(), -qInf()}) {
        CompletionInput unencodable = bare;
        unencodable.temperature = odd;
        QTest::newRow(qPrintable(QStringLiteral("temperature %1 is left out").arg(odd)))
            << unencodable << bareBody;
    }
}

void WireFormatTest::bodyIsByteExact() {
    QFETCH(CompletionInput, input);
    QFETCH(QByteArray, body);
    const auto request = ChatCompletionRequest::make(input);
    QVERIFY(request);
    const QByteArray actual = request->encode();
    QVERIFY2(actual == body, qPrintable(test::printable(actual)));
}

void WireFormatTest::requestFields_data() {
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("text");
    QTest::addColumn<S>("effort");
    QTest::addColumn<QString>("fields"); // "<max_tokens> <reasoning_effort or ->"
    const auto row = [](const char* name, const QString& model, const QString& text,
                        const S& effort, const QString& fields) {
        QTest::newRow(name) << model << text << effort << fields;
    };
    // The input limit counts UTF-8 bytes, not UTF-16 units.
    row("200,000 ASCII bytes", "m", textOfUtf8Bytes(200000), S(), "32768 -");
    row("200,001 ASCII bytes", "m", textOfUtf8Bytes(200001), S(), "too large");
    row("200,001 bytes of three-byte text", "m", textOfUtf8Bytes(200001, QStringLiteral("\u20AC")),
        S(), "too large");
    // The budget: twice the UTF-16 length, within 4,096 and 32,768.
    row("2,048 units", "m", QString(2048, 'a'), S(), "4096 -");
    row("2,049 units", "m", QString(2049, 'a'), S(), "4098 -");
    row("16,384 units", "m", QString(16384, 'a'), S(), "32768 -");
    row("16,385 units", "m", QString(16385, 'a'), S(), "32768 -");
    row("surrogate pairs count twice", "m", QStringLiteral("\U0001F600").repeated(1100), S(),
        "4400 -");
    // The effort goes only to reasoning models, as given.
    row("reasoning model", "openai/gpt-oss-120b", "t", "low", "4096 low");
    row("plain model", "gpt-4o", "t", "high", "4096 -");
    row("empty effort", "openai/gpt-oss-120b", "t", "", "4096 -");
    row("not trimmed", "o3", "t", " high ", "4096  high ");
}

void WireFormatTest::requestFields() {
    QFETCH(QString, model);
    QFETCH(QString, text);
    QFETCH(S, effort);
    QFETCH(QString, fields);
    const auto request = ChatCompletionRequest::make({model, "i", text, effort, std::nullopt});
    QString actual = QStringLiteral("too large");
    if (request)
        actual = QStringLiteral("%1 %2")
                     .arg(request->maxTokens)
                     .arg(request->reasoningEffort.value_or(QStringLiteral("-")));
    else
        QCOMPARE(request.error(), RewriteError::inputTooLarge());
    QCOMPARE(actual, fields);
}

void WireFormatTest::chunks_data() {
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("decoded"); // null: only the scanner's agreement is checked
    QTest::addColumn<bool>("decided");    // the fast scanner settles it itself
    const auto row = [](const char* name, const QByteArray& payload, const QString& decoded,
                        bool decided = false) {
        QTest::newRow(name) << payload << decoded << decided;
    };
    row("delta content", R"({"choices":[{"delta":{"content":"Hi"}}]})", "text Hi");
    row("role-only first chunk", R"({"choices":[{"index":0,"delta":{"role":"assistant"}}]})",
        "no text");
    row("null delta content falls back to message",
        R"({"choices":[{"delta":{"content":null},"message":{"content":"M"}}]})", "text M");
    row("message form", R"({"choices":[{"message":{"content":"M"}}]})", "text M", true);
    row("delta wins over message",
        R"({"choices":[{"delta":{"content":"D"},"message":{"content":"M"}}]})", "text D");
    row("empty delta text is text", R"({"choices":[{"delta":{"content":""}}]})", "text ");
    row("only the first choice", R"({"choices":[{"delta":{}},{"delta":{"content":"second"}}]})",
        "no text");
    row("usage chunk with empty choices", R"({"choices":[],"usage":{"total_tokens":9}})",
        "no text");
    row("no choices", R"({"id":"x"})", "no text");
    row("usual chunk",
        R"({"id":"c1","object":"chat.completion.chunk","created":1,"choices":[)"
        R"({"index":0,"delta":{"content":"Hi \"there\"\n\u00e9"},)"
        R"("finish_reason":null,"logprobs":null}],"usage":{"t":[1,2.5,-0]}})",
        QStringLiteral("text Hi \"there\"\n\u00e9"), true);
    row("finish reason", R"({"choices":[{"delta":{"content":"x"},"finish_reason":"length"}]})",
        "text x, length", true);
    row("finish reason of a later choice",
        R"({"choices":[{"delta":{}},{"finish_reason":"length"}]})", "no text", true);
    row("finish reason not a text", R"({"choices":[{"finish_reason":7,"delta":{"content":"x"}}]})",
        "text x", true);
    row("null error", R"({"error":null,"choices":[]})", "no text", true);
    row("error object", R"({"error":{"message":"m"},"choices":[]})", "error m");
    row("escaped error kind", R"({"object":"err\u006fr","message":"m"})", "error m");
    row("exponent", R"({"n":1e3,"choices":[]})", "no text");
    row("surrogate escape", R"({"choices":[{"delta":{"content":"\ud83d\ude00"}}]})",
        QStringLiteral("text \U0001F600"));
    row("duplicate choices", R"({"choices":[],"choices":[{"delta":{"content":"x"}}]})", QString());
    row("invalid UTF-8 in a key", "{\"choices\":[{\"d\":{\"c\x89\":1}}]}", QString());
    row("choices not a list", R"({"choices":{}})", "invalid");
    row("choice not an object", R"({"choices":[1]})", "invalid");
    row("delta not an object", R"({"choices":[{"delta":[]}]})", "invalid", true);
    row("content a number", R"({"choices":[{"delta":{"content":3}}]})", "invalid");
    row("bad second choice fails the chunk",
        R"({"choices":[{"delta":{"content":"a"}},{"message":[]}]})", "invalid");
    row("not JSON", "{choices", "invalid");
    row("array", "[]", "invalid");
    // Seeds and kept fuzz inputs.
    const QDir dir(QStringLiteral(SCRIVEL_TEST_DATA_DIR "/StreamChatChunk"));
    for (const QFileInfo& entry : dir.entryInfoList(QDir::Files)) {
        QFile file(entry.filePath());
        if (file.open(QIODevice::ReadOnly))
            row(qPrintable(entry.fileName()), file.readAll(), QString());
    }
}

void WireFormatTest::chunks() {
    QFETCH(QByteArray, payload);
    QFETCH(QString, decoded);
    QFETCH(bool, decided);
    const QString fromDecoder = rendered(StreamChatChunk::decode(payload));
    if (!decoded.isNull())
        QCOMPARE(fromDecoder, decoded);
    // The fast scanner decides what it can, and always as the decoder does.
    const ChunkScanner::Result scanned = ChunkScanner::scan(payload);
    if (decided)
        QVERIFY(scanned.outcome != ChunkScanner::Outcome::notHandled);
    if (scanned.outcome != ChunkScanner::Outcome::notHandled)
        QCOMPARE(rendered(scanned), fromDecoder);
}

void WireFormatTest::modelList_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<std::optional<QStringList>>("ids");
    using L = std::optional<QStringList>;
    QTest::newRow("list in the server's order")
        << QByteArray(R"({"object":"list","data":[{"id":"b","owned_by":"x"},{"id":"a"}]})")
        << L(QStringList{"b", "a"});
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
