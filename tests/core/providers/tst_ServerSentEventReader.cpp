#include "core/providers/ServerSentEventReader.h"
#include "support/ReferenceEventReader.h"
#include "support/ScriptedHttpServer.h"

#include <QDir>
#include <QRandomGenerator>
#include <QtTest>

using namespace scrivel;
using test::ReferenceEventReader;
using test::ScriptedHttpServer;

namespace {

struct Reading {
    QString reply;
    ServerSentEventReader::State state = ServerSentEventReader::State::reading;
    QString serverMessage;
    std::optional<QString> finishReason;
    bool sawDone = false;
    int texts = 0;

    // The reply, then " | too large", " | error: <message>", " | not UTF-8",
    // " | finish: <reason>" and " | done" when they apply.
    QString rendered() const {
        QString shown = reply;
        if (state == ServerSentEventReader::State::tooLarge)
            shown += QStringLiteral(" | too large");
        if (state == ServerSentEventReader::State::serverError)
            shown += QStringLiteral(" | error: ") + serverMessage;
        if (state == ServerSentEventReader::State::invalidText)
            shown += QStringLiteral(" | not UTF-8");
        if (finishReason)
            shown += QStringLiteral(" | finish: ") + *finishReason;
        if (sawDone)
            shown += QStringLiteral(" | done");
        return shown;
    }
};

Reading readInPieces(const QByteArray& body, const QList<qsizetype>& cuts,
                     qsizetype limit = ServerSentEventReader::defaultReplyLimit,
                     qsizetype lineLimit = -1) {
    ServerSentEventReader reader(limit, lineLimit);
    Reading reading;
    qsizetype at = 0;
    for (const qsizetype cut : cuts + QList<qsizetype>{body.size()}) {
        reader.feed(QByteArrayView(body).sliced(at, cut - at), [&] { ++reading.texts; });
        at = cut;
    }
    reader.finish();
    reading.reply = reader.reply().view().toString();
    reading.state = reader.state();
    reading.serverMessage = reader.serverMessage();
    reading.finishReason = reader.finishReason();
    reading.sawDone = reader.sawDone();
    return reading;
}

QByteArray chunkLine(const QByteArray& json) {
    return "data: " + json + "\n";
}

} // namespace

class ServerSentEventReaderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everySplitReadsTheSame_data();
    void everySplitReadsTheSame();
    void randomBodiesMatchTheReference();
    void limits();
    void regressionInputs();
};

void ServerSentEventReaderTest::everySplitReadsTheSame_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("reading");
    const auto row = [](const char* name, const QByteArray& body, const QString& reading) {
        QTest::newRow(name) << body << reading;
    };

    const QByteArray hi = R"({"choices":[{"delta":{"content":"Hi"}}]})";
    row("LF", chunkLine(hi), "Hi");
    row("CR LF", "data: " + hi + "\r\n", "Hi");
    row("no space after the colon", "data:" + hi + "\n", "Hi");
    row("tabs and no-break spaces around", "\t data:\xc2\xa0 " + hi + " \t\n", "Hi");
    row("[DONE] does not end the reading", "data: [DONE]\n" + chunkLine(hi), "Hi | done");
    row("[DONE] with a CR and spaces", chunkLine(hi) + " data:  [DONE] \r\n", "Hi | done");
    row("[DONE] must be the whole payload", "data: [DONE] x\ndata: [done]\n", "");
    row("comment and event lines", ": ping\nevent: delta\nid: 3\nretry: 10\n\n" + chunkLine(hi),
        "Hi");
    row("DATA in capitals is not data", "DATA: " + hi + "\n", "");
    row("bad JSON ignored", "data: {oops\n" + chunkLine(hi), "Hi");
    // A data line that is not UTF-8 would leave a hole in the text.
    row("invalid UTF-8 data line ends the reading",
        chunkLine(hi) + "data: {\"choices\":[{\"delta\":{\"content\":\"\xff\"}}]}\n" +
            chunkLine(hi) + "data: [DONE]\n",
        "Hi | not UTF-8");
    row("a truncated character in a data line",
        "data: {\"choices\":[{\"delta\":{\"content\":\"\xe2\x82\"}}]}\r\n", " | not UTF-8");
    row("an overlong form in a data line", "data: \xc0\xaf\n" + chunkLine(hi), " | not UTF-8");
    row("invalid UTF-8 outside data lines is ignored",
        ": \xff\nevent: \xc3\nDATA: \xff\n" + chunkLine(hi), "Hi");
    row("no final line feed", chunkLine(hi) + "data: " + hi, "Hi");
    row("white space kept inside the text",
        chunkLine(R"({"choices":[{"delta":{"content":" a \n"}}]})"), " a \n");
    row("line separator escaped in JSON only",
        chunkLine(R"({"choices":[{"delta":{"content":"\u00e9\u2028"}}]})"),
        QStringLiteral("\u00e9\u2028"));
    row("multi-byte text, CR LF",
        ScriptedHttpServer::dataLine(QStringLiteral("K\u00f6ln \u20ac \U0001F600"), "\r\n") +
            ": keep-alive\r\n" + ScriptedHttpServer::dataLine(QStringLiteral("!"), "\r\n"),
        QStringLiteral("K\u00f6ln \u20ac \U0001F600!"));

    // A reported failure ends the reading, whatever came before it.
    const QByteArray cat = ScriptedHttpServer::dataLine(QStringLiteral("The cat sat"));
    const QByteArray later = ScriptedHttpServer::dataLine(QStringLiteral(" on the mat"));
    row("error object after text",
        cat + chunkLine(R"({"error":{"message":"Upstream overloaded","code":502}})") + later,
        "The cat sat | error: Upstream overloaded");
    row("error object alone", chunkLine(R"({"error":{"message":"Bad key","type":"auth"}})"),
        " | error: Bad key");
    row("error as a bare text", chunkLine(R"({"error":"rate limited"})"), " | error: rate limited");
    row("error beside choices, as some routers send it",
        cat + chunkLine(R"({"id":"x","choices":[{"delta":{"content":""},"finish_reason":)"
                        R"("error"}],"error":{"code":500,"message":"Provider disconnected"}})"),
        "The cat sat | error: Provider disconnected");
    row("error response object without a wrapper",
        chunkLine(R"({"object":"error","message":"context too long","code":400})"),
        " | error: context too long");
    row("null error is no error",
        chunkLine(R"({"error":null,"choices":[{"delta":{"content":"ok"}}]})"), "ok");
    row("cut at the token budget",
        cat + chunkLine(R"({"choices":[{"delta":{},"finish_reason":"length"}]})"),
        "The cat sat | finish: length");
    row("finish reason beside the last text",
        chunkLine(R"({"choices":[{"delta":{"content":"Hi"},"finish_reason":"stop"}]})"),
        "Hi | finish: stop");
    row("a later finish reason wins; null names none",
        chunkLine(R"({"choices":[{"delta":{},"finish_reason":"length"}]})") +
            chunkLine(R"({"choices":[{"delta":{},"finish_reason":"stop"}]})") +
            chunkLine(R"({"choices":[{"delta":{"content":"x"},"finish_reason":null}]})"),
        "x | finish: stop");
    row("only the first choice's reason counts",
        chunkLine(R"({"choices":[{"delta":{"content":"a"}},{"finish_reason":"length"}]})"), "a");
}

void ServerSentEventReaderTest::everySplitReadsTheSame() {
    QFETCH(QByteArray, body);
    QFETCH(QString, reading);
    // Lines cut anywhere, and the fast path and the general decoder, must agree.
    for (qsizetype cut = 0; cut <= body.size(); ++cut)
        QCOMPARE(readInPieces(body, {cut}).rendered(), reading);
}

void ServerSentEventReaderTest::randomBodiesMatchTheReference() {
    // Bodies assembled from fragments that exercise every rule, cut at
    // random places, against the literal procedure.
    const QList<QByteArray> fragments = {
        "data: ",
        "data:",
        R"({"choices":[{"delta":{"content":"x\u00e9"}}]})",
        R"({"choices":[{"message":{"content":"m"}}]})",
        R"({"choices":[]})",
        "[DONE]",
        "\n",
        "\r\n",
        "\r",
        ": c",
        " ",
        "\t",
        "\xc3\xa9",
        "\xe2\x82",
        "\xac",
        "\xff",
        "{",
        "event: x",
        R"({"error":{"message":"overloaded"}})",
        R"({"choices":[{"delta":{"content":"y"},"finish_reason":"length"}]})",
        R"({"choices":[{"delta":{},"finish_reason":"stop"}]})"};
    QRandomGenerator random(20261123);
    for (int round = 0; round < 300; ++round) {
        QByteArray body;
        const int parts = random.bounded(1, 60);
        for (int i = 0; i < parts; ++i)
            body += fragments[random.bounded(int(fragments.size()))];
        QList<qsizetype> cuts;
        for (qsizetype at = 0; at < body.size(); at += random.bounded(1, 9))
            cuts << at;
        ReferenceEventReader reference;
        reference.limit = random.bounded(1, 40);
        reference.lineLimit = random.bounded(2) ? -1 : random.bounded(20, 120);
        reference.feed(body);
        const Reading reading = readInPieces(body, cuts, reference.limit, reference.lineLimit);
        QCOMPARE(reading.state == ServerSentEventReader::State::tooLarge, reference.exceeded);
        QCOMPARE(reading.state == ServerSentEventReader::State::serverError, reference.serverError);
        QCOMPARE(reading.state == ServerSentEventReader::State::invalidText, reference.invalidText);
        QCOMPARE(reading.sawDone, reference.sawDone);
        QCOMPARE(reading.finishReason, reference.finishReason);
        if (!reference.exceeded)
            QCOMPARE(reading.reply, reference.reply);
        QCOMPARE(reading.texts, reference.texts);
    }
}

void ServerSentEventReaderTest::limits() {
    // The reply may hold exactly 524,288 UTF-8 bytes: two-byte characters,
    // then ASCII to land on the size.
    QByteArray body;
    for (int i = 0; i < 262; ++i)
        body += ScriptedHttpServer::dataLine(QString(1000, QChar(0x00e9)));
    body += ScriptedHttpServer::dataLine(QString(288, QLatin1Char('a')));
    const Reading exact = readInPieces(body, {});
    QCOMPARE(exact.state, ServerSentEventReader::State::reading);
    QCOMPARE(exact.reply.toUtf8().size(), 524288);
    const Reading over = readInPieces(body + ScriptedHttpServer::dataLine("b"), {});
    QCOMPARE(over.state, ServerSentEventReader::State::tooLarge);

    // A line may hold the whole reply limit plus its framing, and no more,
    // however the bytes arrive.
    ServerSentEventReader reader(100);
    QCOMPARE(reader.lineLimit(), 100 + ServerSentEventReader::lineFraming);
    const QByteArray piece(4096, 'x');
    qsizetype fed = 0;
    while (reader.feed(piece))
        fed += piece.size();
    QVERIFY(reader.exceededLimit());
    QVERIFY(fed <= reader.lineLimit());
    QVERIFY(fed + piece.size() > reader.lineLimit());
    QVERIFY(!reader.feed(ScriptedHttpServer::dataLine(QStringLiteral("late"))));
    QCOMPARE(reader.reply().view(), QStringView());

    // Exactly at the limit a line is still read; one byte more is too large.
    const QByteArray line = ScriptedHttpServer::dataLine(QStringLiteral("fits")).trimmed();
    QCOMPARE(readInPieces(line + "\n", {3}, 100, line.size()).rendered(), QStringLiteral("fits"));
    QCOMPARE(readInPieces(" " + line + "\n", {}, 100, line.size()).rendered(),
             QStringLiteral(" | too large"));
}

void ServerSentEventReaderTest::regressionInputs() {
    // Inputs that once broke a fuzz run stay here as tests.
    const QDir dir(QStringLiteral(SCRIVEL_TEST_DATA_DIR "/ServerSentEventReader"));
    const QFileInfoList entries = dir.entryInfoList(QDir::Files);
    QVERIFY(!entries.isEmpty());
    for (const QFileInfo& entry : entries) {
        QFile file(entry.filePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray body = file.readAll();
        ReferenceEventReader reference;
        reference.feed(body);
        QCOMPARE(readInPieces(body, {body.size() / 2}).reply, reference.reply);
    }
}

QTEST_GUILESS_MAIN(ServerSentEventReaderTest)
#include "tst_ServerSentEventReader.moc"
