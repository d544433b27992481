#include "providers/ServerSentEventReader.h"
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
    bool exceeded = false;
    int texts = 0;
    ServerSentEventReader::State state = ServerSentEventReader::State::reading;
    QString serverMessage;
    std::optional<QString> finishReason;
};

Reading readInPieces(const QByteArray& body, const QList<qsizetype>& cuts, qsizetype limit,
                     qsizetype lineLimit = -1) {
    ServerSentEventReader reader(limit, lineLimit);
    Reading reading;
    qsizetype at = 0;
    for (qsizetype cut : cuts) {
        reader.feed(QByteArrayView(body).sliced(at, cut - at), [&] { ++reading.texts; });
        at = cut;
    }
    reader.feed(QByteArrayView(body).sliced(at), [&] { ++reading.texts; });
    reader.finish();
    reading.reply = reader.reply().view().toString();
    reading.exceeded = reader.exceededLimit();
    reading.state = reader.state();
    reading.serverMessage = reader.serverMessage();
    reading.finishReason = reader.finishReason();
    return reading;
}

QByteArray chunkLine(const QByteArray& json) {
    return "data: " + json + "\n";
}

} // namespace

class ServerSentEventReaderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lines_data();
    void lines();
    void everySplitGivesTheSameReply_data();
    void everySplitGivesTheSameReply();
    void randomBodiesMatchTheReference();
    void limit_data();
    void limit();
    void serverFailuresAndFinishReasons_data();
    void serverFailuresAndFinishReasons();
    void lineWithoutLineFeedIsBounded();
    void regressionInputs();
};

void ServerSentEventReaderTest::lines_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("reply");

    const QByteArray hi = R"({"choices":[{"delta":{"content":"Hi"}}]})";
    QTest::newRow("LF") << chunkLine(hi) << "Hi";
    QTest::newRow("CR LF") << "data: " + hi + "\r\n"
                           << "Hi";
    QTest::newRow("only one CR is dropped") << "data: " + hi + "\r\r\n"
                                            << "Hi";
    QTest::newRow("no space after the colon") << "data:" + hi + "\n"
                                              << "Hi";
    QTest::newRow("tabs and no-break spaces around") << "\t data:\xc2\xa0 " + hi + " \t\n"
                                                     << "Hi";
    QTest::newRow("[DONE] does not end the reading") << "data: [DONE]\n" + chunkLine(hi) << "Hi";
    QTest::newRow("[DONE] with spaces") << QByteArray("data:  [DONE]  \n") << "";
    QTest::newRow("comment and event lines")
        << ": ping\nevent: delta\nid: 3\nretry: 10\n\n" + chunkLine(hi) << "Hi";
    QTest::newRow("DATA in capitals is not data") << "DATA: " + hi + "\n"
                                                  << "";
    QTest::newRow("bad JSON ignored") << "data: {oops\n" + chunkLine(hi) << "Hi";
    QTest::newRow("invalid UTF-8 line ignored")
        << QByteArray("data: {\"choices\":[{\"delta\":{\"content\":\"\xff\"}}]}\n") + chunkLine(hi)
        << "Hi";
    QTest::newRow("no final line feed") << chunkLine(hi) + "data: " + hi << "Hi";
    QTest::newRow("message form") << chunkLine(R"({"choices":[{"message":{"content":"M"}}]})")
                                  << "M";
    QTest::newRow("reasoning never in the text")
        << chunkLine(R"({"choices":[{"delta":{"reasoning_content":"x","reasoning":"y"}}]})") << "";
    QTest::newRow("white space kept inside the text")
        << chunkLine(R"({"choices":[{"delta":{"content":" a \n"}}]})") << " a \n";
    QTest::newRow("line break escaped in JSON only")
        << chunkLine(R"({"choices":[{"delta":{"content":"\u00e9\u2028"}}]})")
        << QStringLiteral("\u00e9\u2028");
}

void ServerSentEventReaderTest::lines() {
    QFETCH(QByteArray, body);
    QFETCH(QString, reply);
    QCOMPARE(readInPieces(body, {}, 524288).reply, reply);
}

void ServerSentEventReaderTest::everySplitGivesTheSameReply_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("multi-byte text, CR LF")
        << ScriptedHttpServer::dataLine(QStringLiteral("K\u00f6ln \u20ac \U0001F600"), "\r\n") +
               ": keep-alive\r\n" + ScriptedHttpServer::dataLine(QStringLiteral("!"), "\r\n");
    QTest::newRow("done in the middle") << ScriptedHttpServer::dataLine(QStringLiteral("a")) +
                                               "data: [DONE]\n\n" +
                                               ScriptedHttpServer::dataLine(QStringLiteral("b"));
}

void ServerSentEventReaderTest::everySplitGivesTheSameReply() {
    QFETCH(QByteArray, body);
    ReferenceEventReader reference;
    reference.feed(body);
    for (qsizetype cut = 0; cut <= body.size(); ++cut) {
        for (qsizetype second = cut; second <= body.size(); second += 7) {
            const Reading reading = readInPieces(body, {cut, second}, 524288);
            QCOMPARE(reading.reply, reference.reply);
            QCOMPARE(reading.texts, reference.texts);
        }
    }
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
        R"({"choices":[{"delta":{},"finish_reason":"stop"}]})",
    };
    QRandomGenerator random(20261123);
    for (int round = 0; round < 300; ++round) {
        QByteArray body;
        const int parts = random.bounded(1, 60);
        for (int i = 0; i < parts; ++i)
            body += fragments[random.bounded(int(fragments.size()))];
        QList<qsizetype> cuts;
        for (qsizetype at = 0; at < body.size(); at += random.bounded(1, 9))
            cuts << at;
        const qsizetype limit = random.bounded(1, 40);
        const qsizetype lineLimit = random.bounded(2) ? -1 : random.bounded(20, 120);
        ReferenceEventReader reference;
        reference.limit = limit;
        reference.lineLimit = lineLimit;
        reference.feed(body);
        const Reading reading = readInPieces(body, cuts, limit, lineLimit);
        QCOMPARE(reading.exceeded, reference.exceeded);
        QCOMPARE(reading.state == ServerSentEventReader::State::serverError, reference.serverError);
        QCOMPARE(reading.finishReason, reference.finishReason);
        if (!reference.exceeded)
            QCOMPARE(reading.reply, reference.reply);
        QCOMPARE(reading.texts, reference.texts);
    }
}

void ServerSentEventReaderTest::limit_data() {
    QTest::addColumn<qsizetype>("bytes");
    QTest::addColumn<bool>("exceeded");
    QTest::newRow("exactly 524,288") << qsizetype(524288) << false;
    QTest::newRow("524,289") << qsizetype(524289) << true;
}

void ServerSentEventReaderTest::limit() {
    QFETCH(qsizetype, bytes);
    QFETCH(bool, exceeded);
    // Two-byte characters, then ASCII to land on the exact size.
    QByteArray body;
    qsizetype total = 0;
    const QString piece = QString(1000, QChar(0x00e9));
    while (total + 2000 <= bytes) {
        body += ScriptedHttpServer::dataLine(piece);
        total += 2000;
    }
    body += ScriptedHttpServer::dataLine(QString(bytes - total, QLatin1Char('a')));
    const Reading reading = readInPieces(body, {}, 524288);
    QCOMPARE(reading.exceeded, exceeded);
    if (!exceeded)
        QCOMPARE(reading.reply.toUtf8().size(), bytes);
}

void ServerSentEventReaderTest::serverFailuresAndFinishReasons_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("serverError");
    QTest::addColumn<QString>("serverMessage");
    QTest::addColumn<QString>("finishReason"); // null: none named

    const QByteArray cat = ScriptedHttpServer::dataLine(QStringLiteral("The cat sat"));
    const QByteArray later = ScriptedHttpServer::dataLine(QStringLiteral(" on the mat"));
    QTest::newRow("error object after text ends the reading")
        << cat + chunkLine(R"({"error":{"message":"Upstream overloaded","code":502}})") + later
        << "The cat sat" << true << "Upstream overloaded" << QString();
    QTest::newRow("error object alone")
        << chunkLine(R"({"error":{"message":"Bad key","type":"auth"}})") << "" << true << "Bad key"
        << QString();
    QTest::newRow("error as a bare text")
        << chunkLine(R"({"error":"rate limited"})") << "" << true << "rate limited" << QString();
    QTest::newRow("error beside choices, as some routers send it")
        << cat + chunkLine(
                     R"({"id":"x","choices":[{"delta":{"content":""},"finish_reason":"error"}],)"
                     R"("error":{"code":500,"message":"Provider disconnected"}})")
        << "The cat sat" << true << "Provider disconnected" << QString();
    QTest::newRow("error response object without a wrapper")
        << chunkLine(R"({"object":"error","message":"context too long","code":400})") << "" << true
        << "context too long" << QString();
    QTest::newRow("error after an event line")
        << cat + "event: error\n" + chunkLine(R"({"error":{"message":"boom"}})") << "The cat sat"
        << true << "boom" << QString();
    QTest::newRow("null error is no error")
        << chunkLine(R"({"error":null,"choices":[{"delta":{"content":"ok"}}]})") << "ok" << false
        << "" << QString();
    QTest::newRow("cut at the token budget")
        << cat + chunkLine(R"({"choices":[{"delta":{},"finish_reason":"length"}]})")
        << "The cat sat" << false << ""
        << "length";
    QTest::newRow("finish reason beside the last text")
        << chunkLine(R"({"choices":[{"delta":{"content":"Hi"},"finish_reason":"stop"}]})") << "Hi"
        << false << ""
        << "stop";
    QTest::newRow("a later finish reason wins; null names none")
        << chunkLine(R"({"choices":[{"delta":{},"finish_reason":"length"}]})") +
               chunkLine(R"({"choices":[{"delta":{},"finish_reason":"stop"}]})") +
               chunkLine(R"({"choices":[{"delta":{"content":"x"},"finish_reason":null}]})")
        << "x" << false << ""
        << "stop";
    QTest::newRow("only the first choice's reason counts")
        << chunkLine(R"({"choices":[{"delta":{"content":"a"}},{"finish_reason":"length"}]})") << "a"
        << false << "" << QString();
}

void ServerSentEventReaderTest::serverFailuresAndFinishReasons() {
    QFETCH(QByteArray, body);
    QFETCH(QString, reply);
    QFETCH(bool, serverError);
    QFETCH(QString, serverMessage);
    QFETCH(QString, finishReason);
    // The fast path and the general decoder must agree, so every split is read.
    for (qsizetype cut = 0; cut <= body.size(); ++cut) {
        const Reading reading = readInPieces(body, {cut}, 524288);
        QCOMPARE(reading.reply, reply);
        QCOMPARE(reading.state == ServerSentEventReader::State::serverError, serverError);
        QCOMPARE(reading.serverMessage, serverMessage);
        QCOMPARE(reading.finishReason,
                 finishReason.isNull() ? std::nullopt : std::optional(finishReason));
    }
}

void ServerSentEventReaderTest::lineWithoutLineFeedIsBounded() {
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
    QCOMPARE(readInPieces(line + "\n", {3}, 100, line.size()).reply, QStringLiteral("fits"));
    const Reading over = readInPieces(" " + line + "\n", {}, 100, line.size());
    QVERIFY(over.exceeded);
    QCOMPARE(over.reply, QString());
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
        const Reading reading = readInPieces(body, {body.size() / 2}, 524288);
        QCOMPARE(reading.reply, reference.reply);
    }
}

QTEST_GUILESS_MAIN(ServerSentEventReaderTest)
#include "tst_ServerSentEventReader.moc"
