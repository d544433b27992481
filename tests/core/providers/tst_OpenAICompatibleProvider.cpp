#include "core/providers/APIKeyStore.h"
#include "core/providers/ChatCompletionRequest.h"
#include "core/providers/OpenAICompatibleProvider.h"
#include "core/providers/ProviderCatalog.h"
#include "support/InMemorySecretStore.h"
#include "support/ScriptedHttpServer.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;
using test::ScriptedHttpServer;
using Response = ScriptedHttpServer::Response;

using Responses = QList<Response>; // in turn, the last one repeated

// Table rows take one response or several.
struct Script : Responses {
    Script(const Response& response) : Responses{response} {}
    Script(const Responses& responses) : Responses(responses) {}
    Script(std::initializer_list<Response> responses) : Responses(responses) {}
};

Q_DECLARE_METATYPE(Response)

namespace {

struct StreamRun {
    QStringList partials;
    std::optional<QString> completed;
    std::optional<std::optional<TransformFailure>> end; // outer: ended

    // The completed text, the message of a failed rewrite, "key missing",
    // "key rejected" or "dropped" (the connection ended mid-reply).
    QString outcome() const {
        if (!end || !*end)
            return completed.value_or(QStringLiteral("no text"));
        const std::optional<RewriteError>& error = (*end)->error();
        if (!error)
            return QStringLiteral("dropped");
        if (error->kind() != RewriteError::Kind::modelUnavailable)
            return error->text();
        const UnavailableReason::Kind reason = error->reason()->kind();
        return reason == UnavailableReason::Kind::missingAPIKey    ? QStringLiteral("key missing")
               : reason == UnavailableReason::Kind::rejectedAPIKey ? QStringLiteral("key rejected")
                                                                   : QStringLiteral("unavailable");
    }
};

// The models joined by commas, or the failure's kind.
QString rendered(const std::optional<OpenAICompatibleProvider::ModelsResult>& models) {
    if (!models)
        return QStringLiteral("no answer");
    return *models ? models->value().join(QLatin1Char(',')) : models->error().logDescription();
}

// Data lines of the pieces, without an end.
QByteArray unfinished(const QStringList& pieces, const QByteArray& lineEnd = "\n") {
    QByteArray body;
    for (const QString& piece : pieces)
        body += ScriptedHttpServer::dataLine(piece, lineEnd);
    return body;
}

// A whole reply: the pieces, then "[DONE]".
QByteArray sse(const QStringList& pieces, const QByteArray& lineEnd = "\n") {
    return unfinished(pieces, lineEnd) + ScriptedHttpServer::doneLine(lineEnd);
}

// A body that ends when the server closes the connection: no length, no
// chunks, so the end of the body looks like any other.
Response closedAfter(const QByteArray& body) {
    return {{{"HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nConnection: close\r\n\r\n", 0},
             {body, 5}}};
}

} // namespace

class OpenAICompatibleProviderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void streams_data();
    void streams();
    void requestsCarryTheKey_data();
    void requestsCarryTheKey();
    void cancellingClosesTheConnection();
    void modelLists_data();
    void modelLists();
    void timeoutsFollowTheSessionTimeout_data();
    void timeoutsFollowTheSessionTimeout();
    void refusedMaxTokensIsResentOnce_data();
    void refusedMaxTokensIsResentOnce();

private:
    ProviderEndpoint
    endpoint(EndpointAuthenticationPolicy policy = EndpointAuthenticationPolicy::optional,
             const QString& id = QStringLiteral("custom")) const;
    StreamRun run(OpenAICompatibleProvider& provider, const QString& text = QStringLiteral("in"));
    // Serves the responses in turn, the last one again and again, with
    // "http://this.server" standing for the server's own address.
    void serve(Script responses) {
        for (Response& response : responses) {
            for (ScriptedHttpServer::Write& write : response.writes)
                write.bytes.replace("http://this.server", m_server->url({}).toEncoded());
        }
        auto calls = std::make_shared<qsizetype>(0);
        m_server->setHandler([responses, calls](const auto&) {
            return responses[qMin((*calls)++, responses.size() - 1)];
        });
    }

    std::unique_ptr<ScriptedHttpServer> m_server;
    std::unique_ptr<InMemorySecretStore> m_modern;
    std::unique_ptr<InMemorySecretStore> m_legacy;
    std::unique_ptr<APIKeyStore> m_keys;
};

void OpenAICompatibleProviderTest::init() {
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
    m_modern = std::make_unique<InMemorySecretStore>();
    m_legacy = std::make_unique<InMemorySecretStore>();
    m_keys = std::make_unique<APIKeyStore>(*m_modern, *m_legacy,
                                           [] { return Future<bool>::ready(true); });
}

ProviderEndpoint OpenAICompatibleProviderTest::endpoint(EndpointAuthenticationPolicy policy,
                                                        const QString& id) const {
    ProviderEndpoint endpoint =
        *resolveEndpoint(customProviderID(), m_server->url(QStringLiteral("/v1")).toString());
    endpoint.id = id;
    endpoint.authenticationPolicy = policy;
    return endpoint;
}

StreamRun OpenAICompatibleProviderTest::run(OpenAICompatibleProvider& provider,
                                            const QString& text) {
    StreamRun result;
    TransformStream stream =
        provider.streamCompletion({QStringLiteral("m"), QStringLiteral("i"), text, {}, {}});
    QObject context;
    stream.subscribe(
        &context,
        [&](const TransformStreamEvent& event) {
            if (event.kind() == TransformStreamEvent::Kind::partial)
                result.partials << event.text().toString();
            else
                result.completed = event.text().toString();
        },
        [&](std::optional<TransformFailure> failure) { result.end = failure; });
    (void)QTest::qWaitFor([&] { return result.end.has_value(); }, 10000);
    return result;
}

void OpenAICompatibleProviderTest::streams_data() {
    QTest::addColumn<Responses>("responses");
    QTest::addColumn<QString>("outcome");
    QTest::addColumn<QString>("firstPartial"); // null: not checked
    const auto row = [](const char* name, const Script& responses, const QString& outcome,
                        const QString& firstPartial = {}) {
        QTest::newRow(name) << Responses(responses) << outcome << firstPartial;
    };
    const auto stream = [](const QByteArray& body) {
        return ScriptedHttpServer::eventStream(body, true, 5, 1);
    };

    row("chunked, LF, small pieces", stream(sse({"Hel", "lo, w\u00f6rld", "!"})),
        "Hello, w\u00f6rld!");
    row("announced length, CR LF, pieces of three bytes",
        ScriptedHttpServer::eventStream(sse({"Hel", "lo, w\u00f6rld", "!"}, "\r\n"), false, 3),
        "Hello, w\u00f6rld!");
    row("comments, roles, reasoning, usage, done",
        stream(": keep-alive\n\nevent: message\nid: 7\n"
               "data: {\"choices\":[{\"delta\":{\"role\":\"assistant\"}}]}\n\n"
               "data: {\"choices\":[{\"delta\":{\"reasoning_content\":\"hard\"}}]}\n\n"
               "data:{\"choices\":[{\"delta\":{\"content\":\"  Answer\"}}]}\n\n"
               "data: not json\n\n"
               "data: {\"choices\":[],\"usage\":{\"total_tokens\":3}}\n\n"
               "data: [DONE]\n\n" +
               sse({" after done\n"})),
        "Answer after done");
    // The stream must say that the reply ended: "[DONE]", a finish reason,
    // or both. A body that ends without either was cut off, however it ends.
    const QByteArray stop = "data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"stop\"}]}\n\n";
    const QString closedEarly =
        QStringLiteral("The connection closed before the reply was complete. Try again.");
    row("finish reason and [DONE]",
        stream(unfinished({"Done."}) + stop + ScriptedHttpServer::doneLine()), "Done.");
    row("finish reason only", stream(unfinished({"Done."}) + stop), "Done.");
    row("finish reason beside the last text",
        stream("data: {\"choices\":[{\"delta\":{\"content\":\"Done.\"},\"finish_reason\":"
               "\"stop\"}]}\n\n"),
        "Done.");
    row("[DONE] only, closed by the server", closedAfter(sse({"Do", "ne."})), "Done.");
    row("neither, chunked", stream(unfinished({"The cat ", "sat"})), closedEarly, "The cat ");
    row("neither, announced length",
        ScriptedHttpServer::eventStream(unfinished({"The cat ", "sat"}), false), closedEarly);
    row("neither, closed by the server", closedAfter(unfinished({"The cat ", "sat"})), closedEarly);
    row("a null finish reason is none",
        stream(unfinished({"The cat"}) +
               "data: {\"choices\":[{\"delta\":{},\"finish_reason\":null}]}\n\n"),
        closedEarly);
    row("[DONE] in a line cut off at the end",
        closedAfter(unfinished({"The cat"}) + "data: [DONE]"), closedEarly);
    row("nothing at all", closedAfter({}), closedEarly);
    row("only empty deltas", stream(sse({"", " \n "})), "Empty model response");
    // A piece that cannot be read would leave a hole in the text.
    row("a data line that is not UTF-8",
        stream(unfinished({"The "}) +
               "data: {\"choices\":[{\"delta\":{\"content\":\"c\xff"
               "at\"}}]}\n\n" +
               sse({" sat."})),
        QStringLiteral("The provider\u2019s reply contained text that isn\u2019t valid UTF-8. "
                       "Try again."),
        "The ");
    row("invalid UTF-8 in a comment is ignored", stream(": \xff\xfe\n\n" + sse({"The cat sat."})),
        "The cat sat.");

    // A leading think block never shows, nor the space after it.
    row("think block, then the text",
        stream(sse({"<think>", "reasoning about it", "</think>", "\n\n", "The ", "cat."})),
        "The cat.", "The ");
    row("think tags cut into pieces",
        stream(sse({"\n<th", "ink>reasoning</th", "ink>  Fixed", " text"})), "Fixed text", "Fixed");
    row("think block never closed", stream(sse({"<think>", "reasoning forever"})),
        "Empty model response");
    row("a think block later on stays", stream(sse({"Keep ", "<think>this</think>"})),
        "Keep <think>this</think>", "Keep ");
    row("a look-alike start stays", stream(sse({"<thin", "g> tag"})), "<thing> tag", "<thing> tag");

    row("401", ScriptedHttpServer::status(401, "{}"), "key rejected");
    row("403", ScriptedHttpServer::status(403), "key rejected");
    row("404", ScriptedHttpServer::status(404),
        "Models weren\u2019t found. Check that the base URL includes the API version, such as "
        "/v1.");
    row("429", ScriptedHttpServer::status(429, "{\"error\":\"slow down\"}"),
        "The provider returned error 429.");

    Response announced;
    announced.writes = {{"HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n"
                         "Content-Length: 524289\r\n\r\n",
                         0},
                        {sse({"x"}), 50}};
    announced.stall = true;
    row("announced length over the limit", announced, "Custom response was too large");
    const QStringList big(129, QString(4096, QLatin1Char('y')));
    row("streamed text over the limit", ScriptedHttpServer::eventStream(sse(big), true, 65536),
        "Custom response was too large");
    row("error object after text",
        stream(sse({"The cat sat"}) +
               "data: {\"error\":{\"message\":\"Upstream error\",\"code\":502}}\n\n" +
               sse({" on the mat."})),
        "The provider stopped with an error. Try again.");
    row("cut at the token budget",
        stream(sse({"The cat sat"}) +
               "data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"length\"}]}\n\n"),
        "The reply was cut short by the provider\u2019s length limit. Try a shorter text.");
    Response cut = ScriptedHttpServer::eventStream(sse({"partial"}), true);
    cut.writes.removeLast(); // no terminating chunk: the connection just closes
    row("dropped mid-reply", cut, "dropped");
    Response silent;
    silent.stall = true;
    row("stalled before the response head", silent, "The provider timed out. Try again.");
    Response stalled = ScriptedHttpServer::eventStream(sse({"so far"}), true);
    stalled.writes.removeLast();
    stalled.stall = true;
    row("stalled in the middle of the body", stalled, "dropped", "so far");

    // Redirects within the endpoint are followed; the POST goes again.
    row("307",
        {ScriptedHttpServer::redirect(307, "http://this.server/v1/chat/completions"),
         stream(sse({"moved"}))},
        "moved");
    row("302 to another server is the final response",
        {ScriptedHttpServer::redirect(302, "http://127.0.0.1:1/v1/chat/completions")},
        "The provider returned error 302.");
}

void OpenAICompatibleProviderTest::streams() {
    QFETCH(Responses, responses);
    QFETCH(QString, outcome);
    QFETCH(QString, firstPartial);
    serve(responses);
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    provider.setTimeouts({std::chrono::milliseconds(300), std::chrono::milliseconds(5000)});
    const StreamRun result = run(provider);
    QCOMPARE(result.outcome(), outcome);
    if (result.completed)
        QVERIFY(!result.partials.isEmpty());
    for (qsizetype i = 0; i < result.partials.size(); ++i) {
        // Every partial is the whole visible text so far.
        QVERIFY2(!result.partials[i].contains(QStringLiteral("reasoning")),
                 qPrintable(result.partials[i]));
        QVERIFY(i == 0 || result.partials[i].startsWith(result.partials[i - 1]));
    }
    if (!firstPartial.isNull())
        QCOMPARE(result.partials.value(0), firstPartial);
    for (const auto& request : m_server->requests())
        QCOMPARE(request.method + request.body,
                 m_server->requests().first().method + m_server->requests().first().body);
}

void OpenAICompatibleProviderTest::requestsCarryTheKey_data() {
    QTest::addColumn<QString>("endpointID");
    QTest::addColumn<bool>("required");
    // Under the "current" or the "legacy" account, or "unreadable": stored,
    // but the key store cannot read it (a locked keyring).
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("call");
    // The second of two requests, each answered with a cookie: "<method>
    // <path> | <authorization> | <x-api-key> | <anthropic-version> | <cookie>";
    // "none": nothing was sent.
    QTest::addColumn<QString>("request");
    const auto row = [](const char* name, const char* id, bool required, const char* stored,
                        const char* call, const char* request) {
        QTest::newRow(name) << QString::fromLatin1(id) << required << QString::fromLatin1(stored)
                            << QString::fromLatin1(call) << QString::fromLatin1(request);
    };
    row("stream, optional key absent", "custom", false, "", "stream",
        "POST /v1/chat/completions | - | - | - | -");
    row("stream, stored key", "custom", true, "current", "stream",
        "POST /v1/chat/completions | Bearer sk | - | - | -");
    row("stream, legacy key moved on first read", "custom", true, "legacy", "stream",
        "POST /v1/chat/completions | Bearer sk | - | - | -");
    row("stream, anthropic", "anthropic", true, "current", "stream",
        "POST /v1/chat/completions | Bearer sk | sk | 2023-06-01 | -");
    row("stream, required key absent", "custom", true, "", "stream", "none");
    // A key that cannot be read is not "no key": nothing goes out without it.
    row("stream, optional key unreadable", "custom", false, "unreadable", "stream", "none");
    row("model list, optional key unreadable", "custom", false, "unreadable", "models", "none");
    row("model list, stored key", "custom", true, "current", "models",
        "GET /v1/models | Bearer sk | - | - | -");
    row("model list, required key absent", "custom", true, "", "models", "none");
}

void OpenAICompatibleProviderTest::requestsCarryTheKey() {
    QFETCH(QString, endpointID);
    QFETCH(bool, required);
    QFETCH(QString, stored);
    QFETCH(QString, call);
    QFETCH(QString, request);
    const ProviderEndpoint target = endpoint(required ? EndpointAuthenticationPolicy::required
                                                      : EndpointAuthenticationPolicy::optional,
                                             endpointID);
    const QString account = stored == QLatin1String("legacy") ? *legacyCredentialAccount(target)
                                                              : credentialAccount(target);
    if (!stored.isEmpty())
        QVERIFY(test::waitFor(m_keys->saveKey(QStringLiteral("sk"), account))->has_value());
    const bool unreadable = stored == QLatin1String("unreadable");
    if (unreadable) {
        m_modern->readFailure = -25315;
        // A new process: nothing remembered from the save.
        m_keys = std::make_unique<APIKeyStore>(*m_modern, *m_legacy,
                                               [] { return Future<bool>::ready(true); });
    }
    OpenAICompatibleProvider provider(target, *m_keys);
    const bool sent = request != QLatin1String("none");
    const QString text = QStringLiteral("caf\u00e9");
    Response answer = call == QLatin1String("stream")
                          ? ScriptedHttpServer::eventStream(sse({"ok"}), true)
                          : ScriptedHttpServer::status(200, R"({"data":[{"id":"m1"}]})");
    answer.writes.first().bytes.replace("\r\n\r\n", "\r\nSet-Cookie: session=abc; Path=/\r\n\r\n");
    serve(answer);
    for (int time = 0; time < 2; ++time) {
        if (call == QLatin1String("stream"))
            QCOMPARE(run(provider, text).outcome(), sent         ? "ok"
                                                    : unreadable ? "unavailable"
                                                                 : "key missing");
        else
            QCOMPARE(rendered(test::waitFor(provider.fetchModels(EndpointCredential::stored()))),
                     sent         ? "m1"
                     : unreadable ? "keychain"
                                  : "missingCredential");
    }
    // Each call has ended: a request it made has been answered, so the server
    // has it.
    QString seen = QStringLiteral("none");
    if (!m_server->requests().isEmpty()) {
        const auto& made = m_server->requests().last();
        seen = QString::fromUtf8(made.method + ' ' + made.path);
        QCOMPARE(m_server->requests().size(), 2);
        for (const QByteArray header :
             {"authorization", "x-api-key", "anthropic-version", "cookie"})
            seen += QStringLiteral(" | ") + QString::fromUtf8(made.headers.value(header, "-"));
        if (call == QLatin1String("stream")) {
            QCOMPARE(made.headers.value("content-type"), QByteArray("application/json"));
            QCOMPARE(made.body, ChatCompletionRequest::make({"m", "i", text, {}, {}})->encode());
        }
    }
    QCOMPARE(seen, request);
    if (stored == QLatin1String("legacy")) {
        QCOMPARE(m_modern->items.value(credentialAccount(target)), QByteArray("sk"));
        QVERIFY(!m_modern->items.contains(account));
    }
}

void OpenAICompatibleProviderTest::cancellingClosesTheConnection() {
    serve(ScriptedHttpServer::eventStream(sse({"one", "two", "three"}), true, 20, 300));
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    auto stream =
        std::make_unique<TransformStream>(provider.streamCompletion({"m", "i", "text", {}, {}}));
    QStringList partials;
    QObject context;
    stream->subscribe(
        &context, [&](const TransformStreamEvent& event) { partials << event.text().toString(); },
        [](std::optional<TransformFailure>) { QFAIL("a cancelled stream must not end"); });
    QTRY_VERIFY_WITH_TIMEOUT(!partials.isEmpty(), 5000);
    stream.reset();
    QTRY_COMPARE_WITH_TIMEOUT(m_server->connectionsClosedByClient(), 1, 5000);
}

void OpenAICompatibleProviderTest::modelLists_data() {
    QTest::addColumn<Responses>("responses");
    QTest::addColumn<QString>("models"); // or the failure
    const auto row = [](const char* name, const Script& responses, const QString& models) {
        QTest::newRow(name) << Responses(responses) << models;
    };
    const auto list = [](const QByteArray& body) { return ScriptedHttpServer::status(200, body); };
    row("filtered and sorted",
        list(
            R"({"data":[{"id":"whisper-1"},{"id":"gpt-4o"},{"id":"text-embedding-3"},)"
            R"({"id":"tts-1"},{"id":"dall-e-3"},{"id":"Gpt-4o"},{"id":"gpt-4o"},{"id":"gpt-4"}]})"),
        "Gpt-4o,gpt-4,gpt-4o,gpt-4o");
    row("empty list", list(R"({"data":[]})"), "emptyModels");
    row("nothing left after filtering", list(R"({"data":[{"id":"whisper-1"}]})"), "emptyModels");
    row("no data", list(R"({"models":[]})"), "invalidResponse");
    const QByteArray head = R"({"data":[{"id":"gpt-4o"}],"pad":")";
    const QByteArray exact = head + QByteArray(524288 - head.size() - 2, 'p') + "\"}";
    row("exactly the limit", list(exact), "gpt-4o");
    const QByteArray over = head + QByteArray(524289 - head.size() - 2, 'p') + "\"}";
    row("one byte over", list(over), "responseTooLarge");
    row("one byte over without a length", {ScriptedHttpServer::eventStream(over, true, 65536)},
        "responseTooLarge");
    const Response list1 = list(R"({"data":[{"id":"m1"}]})");
    const Response again = ScriptedHttpServer::redirect(307, "http://this.server/v1/models");
    row("303", {ScriptedHttpServer::redirect(303, "http://this.server/v1/models"), list1}, "m1");
    row("303 to a path on the same server",
        {ScriptedHttpServer::redirect(303, "/v1/models"), list1}, "m1");
    row("ten redirects are followed", Responses(10, again) << list1, "m1");
    row("the eleventh is the final response", Responses(11, again) << list1, "status(307)");
}

void OpenAICompatibleProviderTest::modelLists() {
    QFETCH(Responses, responses);
    QFETCH(QString, models);
    serve(responses);
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    const auto result = test::waitFor(provider.fetchModels(EndpointCredential::candidate(" k ")));
    QCOMPARE(m_server->requests().last().headers.value("authorization"), QByteArray("Bearer k"));
    QCOMPARE(rendered(result), models);
}

void OpenAICompatibleProviderTest::timeoutsFollowTheSessionTimeout_data() {
    QTest::addColumn<int>("session");
    QTest::addColumn<int>("inactivity");
    QTest::addColumn<int>("deadline");
    // Without data: max(t, 8) s, but never more than the 60 s of one request;
    // in all: max(t + 2, 10) s.
    QTest::newRow("the hub's 120 s") << 120 << 60 << 122;
    QTest::newRow("30 s") << 30 << 30 << 32;
    QTest::newRow("8 s") << 8 << 8 << 10;
    QTest::newRow("3 s") << 3 << 8 << 10;
}

void OpenAICompatibleProviderTest::timeoutsFollowTheSessionTimeout() {
    QFETCH(int, session);
    QFETCH(int, inactivity);
    QFETCH(int, deadline);
    OpenAICompatibleProvider provider(endpoint(), *m_keys, std::chrono::seconds(session));
    QCOMPARE(provider.timeouts().inactivity, std::chrono::milliseconds(inactivity * 1000));
    QCOMPARE(provider.timeouts().deadline, std::chrono::milliseconds(deadline * 1000));
}

void OpenAICompatibleProviderTest::refusedMaxTokensIsResentOnce_data() {
    QTest::addColumn<QByteArray>("refusal"); // the 400 body
    QTest::addColumn<bool>("refusesBoth");   // the server refuses the resend too
    QTest::addColumn<int>("requests");       // for the first run
    const QByteArray maxTokens =
        R"({"error":{"message":"Unsupported parameter: 'max_tokens' is not supported with this )"
        R"(model. Use 'max_completion_tokens' instead.","type":"invalid_request_error",)"
        R"("param":"max_tokens","code":"unsupported_parameter"}})";
    QTest::newRow("refused once") << maxTokens << false << 2;
    QTest::newRow("refused again: no loop") << maxTokens << true << 2;
    QTest::newRow("another parameter")
        << QByteArray(R"({"error":{"param":"temperature","code":"unsupported_parameter"}})")
        << false << 1;
    QTest::newRow("not JSON") << QByteArray("max_tokens unsupported_parameter") << false << 1;
}

void OpenAICompatibleProviderTest::refusedMaxTokensIsResentOnce() {
    QFETCH(QByteArray, refusal);
    QFETCH(bool, refusesBoth);
    QFETCH(int, requests);
    m_server->setHandler([&](const ScriptedHttpServer::Request& request) {
        if (request.body.contains("\"max_tokens\"") || refusesBoth)
            return ScriptedHttpServer::status(400, refusal);
        return ScriptedHttpServer::eventStream(sse({"Fixed."}), true);
    });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    const bool completes = requests == 2 && !refusesBoth;
    QCOMPARE(run(provider).outcome(), completes
                                          ? QStringLiteral("Fixed.")
                                          : QStringLiteral("The provider returned error 400."));
    QCOMPARE(m_server->requests().size(), requests);
    if (!completes)
        return;
    const QJsonObject resent = QJsonDocument::fromJson(m_server->requests()[1].body).object();
    QVERIFY(!resent.contains(QStringLiteral("max_tokens")));
    QCOMPARE(resent.value(QStringLiteral("max_completion_tokens")).toInt(), 4096);
    // The endpoint remembers the choice for this model: one request now.
    QCOMPARE(run(provider).outcome(), QStringLiteral("Fixed."));
    QCOMPARE(m_server->requests().size(), 3);
}

QTEST_GUILESS_MAIN(OpenAICompatibleProviderTest)
#include "tst_OpenAICompatibleProvider.moc"
