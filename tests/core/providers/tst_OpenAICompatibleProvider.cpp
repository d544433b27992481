#include "dummy/InMemorySecretStore.h"
#include "providers/APIKeyStore.h"
#include "providers/ChatCompletionRequest.h"
#include "providers/OpenAICompatibleProvider.h"
#include "providers/ProviderCatalog.h"
#include "support/ScriptedHttpServer.h"
#include "support/TestSupport.h"

#include <QtTest>

using namespace scrivel;
using test::ScriptedHttpServer;
using Response = ScriptedHttpServer::Response;

Q_DECLARE_METATYPE(Response)
Q_DECLARE_METATYPE(TransformFailure)

namespace {

struct StreamRun {
    QStringList partials;
    std::optional<QString> completed;
    std::optional<std::optional<TransformFailure>> end; // outer: ended
};

QByteArray sse(const QStringList& pieces, const QByteArray& lineEnd = "\n") {
    QByteArray body;
    for (const QString& piece : pieces)
        body += ScriptedHttpServer::dataLine(piece, lineEnd);
    return body;
}

} // namespace

class OpenAICompatibleProviderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void streams_data();
    void streams();
    void requestCarriesBodyAndHeaders();
    void anthropicHeadersAndOptionalKey();
    void missingKeyMakesNoConnection();
    void allowedRedirectIsFollowed();
    void refusedRedirectNeverReachesTheOtherHost();
    void stallTimesOut_data();
    void stallTimesOut();
    void cancellingClosesTheConnection();
    void modelLists_data();
    void modelLists();
    void legacyKeyIsMigratedOnFirstRead();
    void timeoutsFollowTheSessionTimeout_data();
    void timeoutsFollowTheSessionTimeout();
    void seeOtherAndTheRedirectLimit();
    void modelListUsesTheStoredKey();
    void cookiesAreNeverSentBack();
    void refusedMaxTokensIsResentOnce_data();
    void leadingThinkBlockIsDropped_data();
    void leadingThinkBlockIsDropped();
    void refusedMaxTokensIsResentOnce();

private:
    ProviderEndpoint
    endpoint(EndpointAuthenticationPolicy policy = EndpointAuthenticationPolicy::optional,
             const QString& id = QStringLiteral("custom")) const;
    StreamRun run(OpenAICompatibleProvider& provider, const QString& text = QStringLiteral("in"));

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
    QTest::addColumn<Response>("response");
    QTest::addColumn<QString>("completed"); // null: the stream fails
    QTest::addColumn<std::optional<TransformFailure>>("failure");
    using F = std::optional<TransformFailure>;
    const auto failed = [](const RewriteError& error) {
        return F(TransformFailure::rewrite(error));
    };

    const QByteArray hello = sse({"Hel", "lo, w\u00f6rld", "!"});
    QTest::newRow("chunked, LF, small pieces")
        << ScriptedHttpServer::eventStream(hello, true, 7, 1) << "Hello, w\u00f6rld!" << F();
    QTest::newRow("announced length, CR LF, pieces of three bytes")
        << ScriptedHttpServer::eventStream(sse({"Hel", "lo, w\u00f6rld", "!"}, "\r\n"), false, 3)
        << "Hello, w\u00f6rld!" << F();
    QTest::newRow("one byte at a time")
        << ScriptedHttpServer::eventStream(hello, true, 1) << "Hello, w\u00f6rld!" << F();
    const QByteArray noisy =
        ": keep-alive\n\nevent: message\nid: 7\n"
        "data: {\"choices\":[{\"delta\":{\"role\":\"assistant\"}}]}\n\n"
        "data: "
        "{\"choices\":[{\"delta\":{\"reasoning\":\"think\",\"reasoning_content\":\"hard\"}}]}\n\n"
        "data:{\"choices\":[{\"delta\":{\"content\":\"  Answer\"}}]}\n\n"
        "data: not json\n\n"
        "data: {\"choices\":[],\"usage\":{\"total_tokens\":3}}\n\n"
        "data: [DONE]\n\n" +
        sse({" after done\n"});
    QTest::newRow("comments, roles, reasoning, usage, done")
        << ScriptedHttpServer::eventStream(noisy, true, 5) << "Answer after done" << F();
    QTest::newRow("last line without line feed is lost")
        << ScriptedHttpServer::eventStream(
               sse({"kept"}) + "data: {\"choices\":[{\"delta\":{\"content\":\"lost\"}}]}", false)
        << "kept" << F();
    QTest::newRow("only empty deltas")
        << ScriptedHttpServer::eventStream(sse({"", " \n "}), true) << QString()
        << failed(RewriteError::modelFailed("Empty model response"));
    QTest::newRow("401") << ScriptedHttpServer::status(401, "{}") << QString()
                         << failed(RewriteError::modelUnavailable(
                                UnavailableReason::rejectedAPIKey()));
    QTest::newRow("403") << ScriptedHttpServer::status(403) << QString()
                         << failed(RewriteError::modelUnavailable(
                                UnavailableReason::rejectedAPIKey()));
    QTest::newRow("404") << ScriptedHttpServer::status(404) << QString()
                         << failed(RewriteError::modelFailed(QStringLiteral(
                                "Models weren\u2019t found. Check that the base URL includes the "
                                "API version, such as /v1.")));
    QTest::newRow("429") << ScriptedHttpServer::status(429, "{\"error\":\"slow down\"}")
                         << QString()
                         << failed(RewriteError::modelFailed("The provider returned error 429."));
    QTest::newRow("500") << ScriptedHttpServer::status(500) << QString()
                         << failed(RewriteError::modelFailed("The provider returned error 500."));
    Response announced;
    announced.writes = {{"HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n"
                         "Content-Length: 524289\r\n\r\n",
                         0},
                        {sse({"x"}), 50}};
    announced.stall = true;
    QTest::newRow("announced length over the limit")
        << announced << QString()
        << failed(RewriteError::modelFailed("Custom response was too large"));
    QByteArray big;
    const QString piece(4096, QLatin1Char('y'));
    for (int i = 0; i < 129; ++i)
        big += ScriptedHttpServer::dataLine(piece);
    QTest::newRow("streamed text over the limit")
        << ScriptedHttpServer::eventStream(big, true, 65536) << QString()
        << failed(RewriteError::modelFailed("Custom response was too large"));
    const RewriteError stoppedWithError =
        RewriteError::modelFailed("The provider stopped with an error. Try again.");
    QTest::newRow("error object after text")
        << ScriptedHttpServer::eventStream(
               sse({"The cat sat"}) +
                   "data: {\"error\":{\"message\":\"Upstream error\",\"code\":502}}\n\n" +
                   sse({" on the mat."}),
               true)
        << QString() << failed(stoppedWithError);
    QTest::newRow("only an error object")
        << ScriptedHttpServer::eventStream(
               "event: error\ndata: {\"error\":{\"message\":\"x\"}}\n\n", false)
        << QString() << failed(stoppedWithError);
    QTest::newRow("cut at the token budget")
        << ScriptedHttpServer::eventStream(
               sse({"The cat sat"}) +
                   "data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"length\"}]}\n\n",
               true)
        << QString()
        << failed(RewriteError::modelFailed(
               "The reply was cut short by the provider\u2019s length limit. Try a shorter text."));
    QTest::newRow("finished normally")
        << ScriptedHttpServer::eventStream(
               sse({"Done."}) +
                   "data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"stop\"}]}\n\n",
               true)
        << "Done." << F();
    QTest::newRow("a line that never ends")
        << ScriptedHttpServer::eventStream("data: " + QByteArray(600 * 1024, 'x'), true, 65536)
        << QString() << failed(RewriteError::modelFailed("Custom response was too large"));
    Response dropped = ScriptedHttpServer::eventStream(sse({"partial"}), true);
    dropped.writes.removeLast(); // no terminating chunk: the connection just closes
    QTest::newRow("dropped mid-reply")
        << dropped << QString() << F(TransformFailure::other(QString()));
}

void OpenAICompatibleProviderTest::streams() {
    QFETCH(Response, response);
    QFETCH(QString, completed);
    QFETCH(std::optional<TransformFailure>, failure);
    m_server->setHandler([&](const ScriptedHttpServer::Request&) { return response; });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    const StreamRun result = run(provider);
    QVERIFY(result.end.has_value());
    if (!completed.isNull()) {
        QCOMPARE(*result.end, std::optional<TransformFailure>());
        QCOMPARE(result.completed, std::optional(completed));
        QVERIFY(!result.partials.isEmpty());
        // Every partial is the whole text so far.
        for (qsizetype i = 1; i < result.partials.size(); ++i)
            QVERIFY(result.partials[i].startsWith(result.partials[i - 1]));
        return;
    }
    QVERIFY(!result.completed);
    QVERIFY(result.end->has_value());
    if (failure->kind() == TransformFailure::Kind::other)
        QCOMPARE((*result.end)->kind(), TransformFailure::Kind::other);
    else
        QCOMPARE(**result.end, *failure);
}

void OpenAICompatibleProviderTest::requestCarriesBodyAndHeaders() {
    m_server->setHandler(
        [](const auto&) { return ScriptedHttpServer::eventStream(sse({"ok"}), true); });
    QVERIFY(test::waitFor(m_keys->saveKey(QStringLiteral("sk-test"), credentialAccount(endpoint())))
                ->has_value());
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    QCOMPARE(run(provider, QStringLiteral("caf\u00e9")).completed, std::optional<QString>("ok"));
    QCOMPARE(m_server->requests().size(), 1);
    const auto& request = m_server->requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QByteArray("/v1/chat/completions"));
    QCOMPARE(request.headers.value("authorization"), QByteArray("Bearer sk-test"));
    QCOMPARE(request.headers.value("content-type"), QByteArray("application/json"));
    QCOMPARE(
        request.body,
        ChatCompletionRequest::make({"m", "i", QStringLiteral("caf\u00e9"), {}, {}})->encode());
}

void OpenAICompatibleProviderTest::anthropicHeadersAndOptionalKey() {
    m_server->setHandler(
        [](const auto&) { return ScriptedHttpServer::eventStream(sse({"ok"}), false); });
    OpenAICompatibleProvider optional(endpoint(), *m_keys);
    QVERIFY(run(optional).completed);
    QVERIFY(!m_server->requests().last().headers.contains("authorization"));

    const ProviderEndpoint anthropic =
        endpoint(EndpointAuthenticationPolicy::required, QStringLiteral("anthropic"));
    QVERIFY(test::waitFor(m_keys->saveKey(QStringLiteral("ak"), QStringLiteral("anthropic")))
                ->has_value());
    OpenAICompatibleProvider withKey(anthropic, *m_keys);
    QVERIFY(run(withKey).completed);
    const auto& headers = m_server->requests().last().headers;
    QCOMPARE(headers.value("authorization"), QByteArray("Bearer ak"));
    QCOMPARE(headers.value("x-api-key"), QByteArray("ak"));
    QCOMPARE(headers.value("anthropic-version"), QByteArray("2023-06-01"));
}

void OpenAICompatibleProviderTest::missingKeyMakesNoConnection() {
    OpenAICompatibleProvider provider(endpoint(EndpointAuthenticationPolicy::required), *m_keys);
    const StreamRun result = run(provider);
    QCOMPARE(*result.end, std::optional(TransformFailure::rewrite(
                              RewriteError::modelUnavailable(UnavailableReason::missingAPIKey()))));
    QTest::qWait(20);
    QVERIFY(m_server->requests().isEmpty());
}

void OpenAICompatibleProviderTest::allowedRedirectIsFollowed() {
    int calls = 0;
    m_server->setHandler([&](const ScriptedHttpServer::Request&) {
        return ++calls == 1
                   ? ScriptedHttpServer::redirect(
                         307,
                         m_server->url(QStringLiteral("/v1/chat/completions")).toString().toUtf8())
                   : ScriptedHttpServer::eventStream(sse({"moved"}), true);
    });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    QCOMPARE(run(provider).completed, std::optional<QString>("moved"));
    QCOMPARE(m_server->requests().size(), 2);
    QCOMPARE(m_server->requests()[1].method, QByteArray("POST"));
    QCOMPARE(m_server->requests()[1].body, m_server->requests()[0].body);
}

void OpenAICompatibleProviderTest::refusedRedirectNeverReachesTheOtherHost() {
    ScriptedHttpServer other;
    QVERIFY(other.start());
    other.setHandler([](const auto&) { return ScriptedHttpServer::eventStream(sse({"x"}), true); });
    m_server->setHandler([&](const auto&) {
        return ScriptedHttpServer::redirect(
            302, other.url(QStringLiteral("/v1/chat/completions")).toString().toUtf8());
    });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    const StreamRun result = run(provider);
    QCOMPARE(*result.end, std::optional(TransformFailure::rewrite(
                              RewriteError::modelFailed("The provider returned error 302."))));
    QTest::qWait(20);
    QVERIFY(other.requests().isEmpty());
}

void OpenAICompatibleProviderTest::stallTimesOut_data() {
    QTest::addColumn<bool>("afterHead");
    QTest::newRow("before the response head") << false;
    QTest::newRow("in the middle of the body") << true;
}

void OpenAICompatibleProviderTest::stallTimesOut() {
    QFETCH(bool, afterHead);
    Response stall;
    stall.stall = true;
    if (afterHead) {
        stall = ScriptedHttpServer::eventStream(sse({"so far"}), true);
        stall.writes.removeLast();
        stall.stall = true;
    }
    m_server->setHandler([&](const auto&) { return stall; });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    provider.setTimeouts({std::chrono::milliseconds(200), std::chrono::milliseconds(5000)});
    const StreamRun result = run(provider);
    QVERIFY(result.end && result.end->has_value());
    if (afterHead) {
        QCOMPARE((*result.end)->kind(), TransformFailure::Kind::other);
        QCOMPARE(result.partials, QStringList{"so far"});
    } else {
        QCOMPARE(**result.end, TransformFailure::rewrite(RewriteError::modelFailed(
                                   "The provider timed out. Try again.")));
    }
}

void OpenAICompatibleProviderTest::cancellingClosesTheConnection() {
    Response slow = ScriptedHttpServer::eventStream(sse({"one", "two", "three"}), true, 20, 300);
    m_server->setHandler([&](const auto&) { return slow; });
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
    QTest::addColumn<Response>("response");
    QTest::addColumn<QStringList>("models");
    QTest::addColumn<int>("failure"); // ProviderConnectionFailure::Kind, -1 for none

    using K = ProviderConnectionFailure::Kind;
    QTest::newRow("filtered and sorted")
        << ScriptedHttpServer::status(
               200,
               R"({"data":[{"id":"whisper-1"},{"id":"gpt-4o"},{"id":"text-embedding-3"},)"
               R"({"id":"tts-1"},{"id":"dall-e-3"},{"id":"Gpt-4o"},{"id":"gpt-4o"},{"id":"gpt-4"}]})")
        << QStringList{"Gpt-4o", "gpt-4", "gpt-4o", "gpt-4o"} << -1;
    QTest::newRow("empty list") << ScriptedHttpServer::status(200, R"({"data":[]})")
                                << QStringList{} << int(K::emptyModels);
    QTest::newRow("nothing left after filtering")
        << ScriptedHttpServer::status(200, R"({"data":[{"id":"whisper-1"}]})") << QStringList{}
        << int(K::emptyModels);
    QTest::newRow("no data") << ScriptedHttpServer::status(200, R"({"models":[]})") << QStringList{}
                             << int(K::invalidResponse);
    QTest::newRow("404") << ScriptedHttpServer::status(404) << QStringList{} << int(K::notFound);
    QTest::newRow("401") << ScriptedHttpServer::status(401) << QStringList{}
                         << int(K::unauthorized);
    const QByteArray head = R"({"data":[{"id":"gpt-4o"}],"pad":")";
    const QByteArray exact = head + QByteArray(524288 - head.size() - 2, 'p') + "\"}";
    QTest::newRow("exactly the limit")
        << ScriptedHttpServer::status(200, exact) << QStringList{"gpt-4o"} << -1;
    const QByteArray over = head + QByteArray(524289 - head.size() - 2, 'p') + "\"}";
    QTest::newRow("one byte over")
        << ScriptedHttpServer::status(200, over) << QStringList{} << int(K::responseTooLarge);
    Response unannounced = ScriptedHttpServer::eventStream(over, true, 65536);
    QTest::newRow("one byte over without a length")
        << unannounced << QStringList{} << int(K::responseTooLarge);
}

void OpenAICompatibleProviderTest::modelLists() {
    QFETCH(Response, response);
    QFETCH(QStringList, models);
    QFETCH(int, failure);
    m_server->setHandler([&](const auto&) { return response; });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    const auto result = test::waitFor(provider.fetchModels(EndpointCredential::candidate(" k ")));
    QVERIFY(result);
    QCOMPARE(m_server->requests().last().path, QByteArray("/v1/models"));
    QCOMPARE(m_server->requests().last().method, QByteArray("GET"));
    QCOMPARE(m_server->requests().last().headers.value("authorization"), QByteArray("Bearer k"));
    if (failure < 0) {
        QVERIFY(result->has_value());
        QCOMPARE(**result, models);
    } else {
        QVERIFY(!result->has_value());
        QCOMPARE(int(result->error().kind()), failure);
    }
}

void OpenAICompatibleProviderTest::legacyKeyIsMigratedOnFirstRead() {
    const ProviderEndpoint custom = endpoint(EndpointAuthenticationPolicy::required);
    const QString legacy = *legacyCredentialAccount(custom);
    QVERIFY(test::waitFor(m_keys->saveKey(QStringLiteral("old"), legacy))->has_value());
    OpenAICompatibleProvider provider(custom, *m_keys);
    const auto key = test::waitFor(provider.storedAPIKey());
    QCOMPARE(key->value(), std::optional<QString>("old"));
    QCOMPARE(m_modern->items.value(credentialAccount(custom)), QByteArray("old"));
    QVERIFY(!m_modern->items.contains(legacy));
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

void OpenAICompatibleProviderTest::seeOtherAndTheRedirectLimit() {
    const QByteArray models = m_server->url(QStringLiteral("/v1/models")).toString().toUtf8();
    int calls = 0;
    m_server->setHandler([&](const auto&) {
        return ++calls == 1 ? ScriptedHttpServer::redirect(303, models)
                            : ScriptedHttpServer::status(200, R"({"data":[{"id":"m1"}]})");
    });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    const auto seeOther = test::waitFor(provider.fetchModels(EndpointCredential::none()));
    QVERIFY(seeOther && seeOther->has_value());
    QCOMPARE(**seeOther, QStringList{"m1"});
    QCOMPARE(m_server->requests().size(), 2);

    // Ten redirects are followed; the eleventh is the final response.
    m_server->setHandler([&](const auto&) { return ScriptedHttpServer::redirect(307, models); });
    const auto endless = test::waitFor(provider.fetchModels(EndpointCredential::none()));
    QVERIFY(endless && !endless->has_value());
    QCOMPARE(endless->error(), ProviderConnectionFailure::status(307));
    QCOMPARE(m_server->requests().size(), 2 + 11);
}

void OpenAICompatibleProviderTest::modelListUsesTheStoredKey() {
    m_server->setHandler(
        [](const auto&) { return ScriptedHttpServer::status(200, R"({"data":[{"id":"m1"}]})"); });
    const ProviderEndpoint required = endpoint(EndpointAuthenticationPolicy::required);
    OpenAICompatibleProvider provider(required, *m_keys);
    const auto absent = test::waitFor(provider.fetchModels(EndpointCredential::stored()));
    QCOMPARE(absent->error().kind(), ProviderConnectionFailure::Kind::missingCredential);
    QTest::qWait(20);
    QVERIFY(m_server->requests().isEmpty()); // no key, no connection

    QVERIFY(test::waitFor(m_keys->saveKey(QStringLiteral("sk-stored"), credentialAccount(required)))
                ->has_value());
    const auto stored = test::waitFor(provider.fetchModels(EndpointCredential::stored()));
    QVERIFY(stored->has_value());
    QCOMPARE(m_server->requests().last().headers.value("authorization"),
             QByteArray("Bearer sk-stored"));
}

void OpenAICompatibleProviderTest::cookiesAreNeverSentBack() {
    m_server->setHandler([](const auto&) {
        Response response = ScriptedHttpServer::eventStream(sse({"ok"}), false);
        response.writes.first().bytes.replace("\r\n\r\n",
                                              "\r\nSet-Cookie: session=abc; Path=/\r\n\r\n");
        return response;
    });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    QVERIFY(run(provider).completed);
    QVERIFY(run(provider).completed);
    QCOMPARE(m_server->requests().size(), 2);
    QVERIFY(!m_server->requests()[1].headers.contains("cookie"));
}

void OpenAICompatibleProviderTest::refusedMaxTokensIsResentOnce_data() {
    QTest::addColumn<QByteArray>("refusal"); // the 400 body
    QTest::addColumn<bool>("refusesBoth");   // the server refuses the resend too
    QTest::addColumn<int>("requests");       // for the first run
    QTest::addColumn<bool>("completes");
    const QByteArray maxTokens =
        R"({"error":{"message":"Unsupported parameter: 'max_tokens' is not supported with this )"
        R"(model. Use 'max_completion_tokens' instead.","type":"invalid_request_error",)"
        R"("param":"max_tokens","code":"unsupported_parameter"}})";
    QTest::newRow("refused once") << maxTokens << false << 2 << true;
    QTest::newRow("refused again: no loop") << maxTokens << true << 2 << false;
    QTest::newRow("another parameter")
        << QByteArray(R"({"error":{"param":"temperature","code":"unsupported_parameter"}})")
        << false << 1 << false;
    QTest::newRow("not JSON") << QByteArray("max_tokens unsupported_parameter") << false << 1
                              << false;
}

void OpenAICompatibleProviderTest::refusedMaxTokensIsResentOnce() {
    QFETCH(QByteArray, refusal);
    QFETCH(bool, refusesBoth);
    QFETCH(int, requests);
    QFETCH(bool, completes);
    m_server->setHandler([&](const ScriptedHttpServer::Request& request) {
        const QJsonObject body = QJsonDocument::fromJson(request.body).object();
        if (body.contains(QStringLiteral("max_tokens")) || refusesBoth)
            return ScriptedHttpServer::status(400, refusal, {"Content-Type: application/json"});
        return ScriptedHttpServer::eventStream(sse({"Fixed."}), true);
    });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    const StreamRun first = run(provider);
    QCOMPARE(m_server->requests().size(), requests);
    if (!completes) {
        QCOMPARE(*first.end, std::optional(TransformFailure::rewrite(
                                 RewriteError::modelFailed("The provider returned error 400."))));
        return;
    }
    QCOMPARE(*first.end, std::optional<TransformFailure>());
    QCOMPARE(first.completed, std::optional<QString>("Fixed."));
    const QJsonObject resent = QJsonDocument::fromJson(m_server->requests()[1].body).object();
    QVERIFY(!resent.contains(QStringLiteral("max_tokens")));
    QCOMPARE(resent.value(QStringLiteral("max_completion_tokens")).toInt(), 4096);

    // The endpoint remembers the choice for this model: one request now.
    const StreamRun second = run(provider);
    QCOMPARE(second.completed, std::optional<QString>("Fixed."));
    QCOMPARE(m_server->requests().size(), 3);
}

void OpenAICompatibleProviderTest::leadingThinkBlockIsDropped_data() {
    QTest::addColumn<QStringList>("pieces");
    QTest::addColumn<QString>("completed"); // null: "Empty model response"
    QTest::addColumn<QString>("firstPartial");
    QTest::newRow("block, then the text")
        << QStringList{"<think>", "reasoning about it", "</think>", "\n\n", "The ", "cat."}
        << "The cat."
        << "The ";
    QTest::newRow("tags cut into pieces")
        << QStringList{"\n<th", "ink>reasoning</th", "ink>  Fixed", " text"} << "Fixed text"
        << "Fixed";
    QTest::newRow("all in one piece") << QStringList{"<think>reasoning</think>Done."} << "Done."
                                      << "Done.";
    QTest::newRow("never closed") << QStringList{"<think>", "reasoning forever"} << QString()
                                  << QString();
    QTest::newRow("a block later on stays")
        << QStringList{"Keep ", "<think>this</think>"} << "Keep <think>this</think>"
        << "Keep ";
    QTest::newRow("a look-alike start stays") << QStringList{"<thin", "g> tag"} << "<thing> tag"
                                              << "<thing> tag";
}

void OpenAICompatibleProviderTest::leadingThinkBlockIsDropped() {
    QFETCH(QStringList, pieces);
    QFETCH(QString, completed);
    QFETCH(QString, firstPartial);
    m_server->setHandler([&](const ScriptedHttpServer::Request&) {
        return ScriptedHttpServer::eventStream(sse(pieces), true, 5, 1);
    });
    OpenAICompatibleProvider provider(endpoint(), *m_keys);
    const StreamRun result = run(provider);
    for (const QString& partial : result.partials)
        QVERIFY2(!partial.contains(QStringLiteral("reasoning")), qPrintable(partial));
    if (completed.isNull()) {
        QVERIFY(result.partials.isEmpty());
        QCOMPARE(*result.end, std::optional(TransformFailure::rewrite(
                                  RewriteError::modelFailed("Empty model response"))));
        return;
    }
    QCOMPARE(*result.end, std::optional<TransformFailure>());
    QCOMPARE(result.completed, std::optional(completed));
    QVERIFY(!result.partials.isEmpty());
    QCOMPARE(result.partials.first(), firstPartial);
}

QTEST_GUILESS_MAIN(OpenAICompatibleProviderTest)
#include "tst_OpenAICompatibleProvider.moc"
