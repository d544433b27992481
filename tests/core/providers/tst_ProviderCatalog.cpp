#include "core/providers/ProviderCatalog.h"

#include <QtTest>

using namespace scrivel;

namespace {

ProviderEndpoint custom(const QString& url) {
    return *resolveEndpoint(customProviderID(), url);
}

// One table row on one line.
template <typename... Columns>
void row(const char* name, const Columns&... columns) {
    (QTest::newRow(name) << ... << columns);
}

} // namespace

class ProviderCatalogTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void catalogueAndChoices();
    void resolve_data();
    void resolve();
    void accounts_data();
    void accounts();
    void allowsRequestURL_data();
    void allowsRequestURL();
    void headersAndNames();
    void endpointsAsKeys();
};

void ProviderCatalogTest::catalogueAndChoices() {
    QStringList entries;
    for (const ProviderEndpoint& endpoint : catalogEndpoints()) {
        const QUrl chat = endpointURL(endpoint, "chat/completions");
        entries << chat.toString() + QLatin1Char(' ') +
                       apiKeyPage(endpoint.id).value_or(QUrl()).toString();
        QCOMPARE(endpoint.authenticationPolicy, EndpointAuthenticationPolicy::required);
        // Every catalogue endpoint accepts its own chat and model URLs.
        QVERIFY(scrivel::allowsRequestURL(endpoint, chat));
        QVERIFY(scrivel::allowsRequestURL(endpoint, endpointURL(endpoint, "models")));
    }
    QCOMPARE(entries,
             QStringList({
                 "https://api.openai.com/v1/chat/completions https://platform.openai.com/api-keys",
                 "https://api.anthropic.com/v1/chat/completions "
                 "https://console.anthropic.com/settings/keys",
                 "https://generativelanguage.googleapis.com/v1beta/openai/chat/completions "
                 "https://aistudio.google.com/apikey",
                 "https://api.x.ai/v1/chat/completions https://console.x.ai/",
                 "https://api.groq.com/openai/v1/chat/completions https://console.groq.com/keys",
                 "https://api.cerebras.ai/v1/chat/completions https://cloud.cerebras.ai/",
             }));
    QVERIFY(!apiKeyPage("custom"));

    QStringList choices;
    for (const PresetProviderChoice& choice : providerChoices())
        choices << choice.id + QLatin1Char(' ') + choice.name;
    QCOMPARE(choices, QStringList({"onDevice On Device", "openai OpenAI", "anthropic Anthropic",
                                   "google Google", "xai xAI", "groq Groq", "cerebras Cerebras",
                                   QStringLiteral("custom Custom\u2026")}));
}

void ProviderCatalogTest::resolve_data() {
    QTest::addColumn<QString>("providerID");
    QTest::addColumn<QString>("typed");    // null: no base URL
    QTest::addColumn<QString>("resolved"); // the base URL; empty: no endpoint

    row("groq, a base URL ignored", "groq", "https://x.example/v1",
        "https://api.groq.com/openai/v1");
    row("OpenAI in capitals", "OpenAI", QString(), "");
    row("onDevice", "onDevice", QString(), "");
    row("unknown", "mistral", QString(), "");
    row("custom without a base URL", "custom", QString(), "");
    row("spaces, upper-case host, trailing slash", "custom", "  https://API.Example.COM/v1/ \n",
        "https://api.example.com/v1");
    row("upper-case scheme", "custom", "HTTPS://example.com/v1", "https://example.com/v1");
    row("two trailing slashes", "custom", "https://example.com/v1//", "https://example.com/v1");
    row("path of two slashes", "custom", "https://example.com//", "https://example.com/");
    row("root path stays", "custom", "https://example.com/", "https://example.com/");
    row("empty path stays", "custom", "https://example.com", "https://example.com");
    row("http LOCALHOST", "custom", "http://LocalHost:8080/v1", "http://localhost:8080/v1");
    row("http 127.0.0.1", "custom", "http://127.0.0.1/v1", "http://127.0.0.1/v1");
    row("http 127.0.0.1 with an empty port", "custom", "http://127.0.0.1:/v1",
        "http://127.0.0.1/v1");
    row("explicit 443 kept", "custom", "https://example.com:443/v1", "https://example.com:443/v1");
    row("https IPv6 loopback", "custom", "https://[::1]:8443/v1", "https://[::1]:8443/v1");
    row("http IPv6 loopback", "custom", "http://[::1]:8080/v1", "");
    // A shorthand for 127.0.0.1 is still not the loopback name as written.
    row("http 127.1", "custom", "http://127.1:8080/v1", "");
    row("http private address", "custom", "http://192.168.1.20:8080/v1", "");
    row("ftp", "custom", "ftp://example.com/v1", "");
    row("no scheme", "custom", "example.com/v1", "");
    row("user name", "custom", "https://user@example.com/v1", "");
    row("empty user name", "custom", "https://@example.com/v1", "");
    row("empty query", "custom", "https://example.com/v1?", "");
    row("fragment", "custom", "https://example.com/v1#x", "");
    row("blank", "custom", " \n ", "");
    row("not a URL", "custom", "https://exa mple.com/v1", "");
}

void ProviderCatalogTest::resolve() {
    QFETCH(QString, providerID);
    QFETCH(QString, typed);
    QFETCH(QString, resolved);
    const auto endpoint =
        resolveEndpoint(providerID, typed.isNull() ? std::nullopt : std::optional(typed));
    QCOMPARE(endpoint.has_value(), !resolved.isEmpty());
    if (!endpoint)
        return;
    QCOMPARE(endpoint->baseURL.toString(QUrl::FullyEncoded), resolved);
    if (providerID == customProviderID())
        QCOMPARE(*endpoint, (ProviderEndpoint{"custom", "Custom", QUrl(resolved),
                                              EndpointAuthenticationPolicy::optional}));
    else
        QCOMPARE(endpoint, catalogEndpoint(providerID));
}

void ProviderCatalogTest::accounts_data() {
    QTest::addColumn<QString>("url"); // empty: the catalogue's groq
    QTest::addColumn<QString>("account");
    QTest::addColumn<QString>("legacy");

    row("catalogue", "", "groq", "");
    row("https default port", " https://API.Example.com/v1/ ",
        "custom:https://api.example.com:443/v1", "custom:api.example.com");
    row("explicit 443 is the same account", "https://api.example.com:443/v1",
        "custom:https://api.example.com:443/v1", "custom:api.example.com");
    row("local server", "http://localhost:11434/v1", "custom:http://localhost:11434/v1",
        "custom:localhost");
    row("http default port", "http://127.0.0.1/v1", "custom:http://127.0.0.1:80/v1",
        "custom:127.0.0.1");
    row("empty path", "https://example.com", "custom:https://example.com:443/",
        "custom:example.com");
    row("IPv6", "https://[::1]:8443/v1", "custom:https://[::1]:8443/v1", "custom:[::1]");
}

void ProviderCatalogTest::accounts() {
    QFETCH(QString, url);
    QFETCH(QString, account);
    QFETCH(QString, legacy);
    const ProviderEndpoint endpoint = url.isEmpty() ? *catalogEndpoint("groq") : custom(url);
    QCOMPARE(credentialAccount(endpoint), account);
    QCOMPARE(legacyCredentialAccount(endpoint),
             legacy.isEmpty() ? std::nullopt : std::optional(legacy));
}

void ProviderCatalogTest::allowsRequestURL_data() {
    QTest::addColumn<QString>("base"); // a provider id or a custom URL
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("allowed");

    row("openai chat", "openai", "https://api.openai.com/v1/chat/completions", true);
    row("openai models", "openai", "https://api.openai.com/v1/models", true);
    row("upper-case host", "openai", "https://API.OPENAI.COM/v1/models", true);
    row("explicit 443", "openai", "https://api.openai.com:443/v1/models", true);
    row("other version", "openai", "https://api.openai.com/v2/chat/completions", false);
    row("other host", "openai", "https://evil.example/v1/chat/completions", false);
    row("plain http", "openai", "http://api.openai.com/v1/chat/completions", false);
    row("query", "openai", "https://api.openai.com/v1/models?x=1", false);
    row("fragment", "openai", "https://api.openai.com/v1/models#f", false);
    row("user info", "openai", "https://u:p@api.openai.com/v1/models", false);
    row("empty user info", "openai", "https://@api.openai.com/v1/models", false);
    row("other port", "openai", "https://api.openai.com:8443/v1/models", false);
    row("no scheme", "openai", "//api.openai.com/v1/models", false);
    row("local: same port", "http://127.0.0.1:8080/v1", "http://127.0.0.1:8080/v1/models", true);
    row("local: port 80 is another port", "http://127.0.0.1:8080/v1", "http://127.0.0.1/v1/models",
        false);
    row("local: localhost is another host", "http://127.0.0.1:8080/v1",
        "http://localhost:8080/v1/models", false);
    row("local: to https", "http://127.0.0.1:8080/v1", "https://127.0.0.1:8080/v1/models", false);
    row("root base path", "https://example.com/", "https://example.com/models", true);
    row("empty base path", "https://example.com", "https://example.com/models", true);
    row("double slash is another path", "https://example.com/v1", "https://example.com/v1//models",
        false);
}

void ProviderCatalogTest::allowsRequestURL() {
    QFETCH(QString, base);
    QFETCH(QString, url);
    QFETCH(bool, allowed);
    const ProviderEndpoint endpoint =
        base.contains(QLatin1Char(':')) ? custom(base) : *catalogEndpoint(base);
    QCOMPARE(scrivel::allowsRequestURL(endpoint, QUrl(url)), allowed);
}

void ProviderCatalogTest::headersAndNames() {
    using Headers = QMap<QByteArray, QByteArray>;
    QCOMPARE(authorizationHeaders(*catalogEndpoint("openai"), "sk-1"),
             (Headers{{"Authorization", "Bearer sk-1"}}));
    QCOMPARE(authorizationHeaders(*catalogEndpoint("anthropic"), "k"),
             (Headers{{"Authorization", "Bearer k"},
                      {"x-api-key", "k"},
                      {"anthropic-version", "2023-06-01"}}));

    Preset preset;
    QStringList names;
    for (const char* id : {"onDevice", "xai", "custom", "somethingElse"}) {
        preset.providerID = QString::fromLatin1(id);
        preset.customBaseURL = QStringLiteral("http://localhost:1234/v1");
        names << providerDisplayName(preset);
    }
    QCOMPARE(names, QStringList({"On Device", "xAI", "Custom", "Custom"}));
}

void ProviderCatalogTest::endpointsAsKeys() {
    QHash<ProviderEndpoint, int> cache;
    cache.insert(custom("http://localhost:1234/v1/"), 1);
    cache.insert(custom(" http://LOCALHOST:1234/v1"), 2); // the same endpoint once normalised
    cache.insert(custom("http://localhost:1234/v2"), 3);
    cache.insert(*catalogEndpoint("groq"), 4);
    QCOMPARE(cache.size(), 3);
    QCOMPARE(cache.value(custom("http://localhost:1234/v1")), 2);
    QVERIFY(std::hash<ProviderEndpoint>()(custom("http://localhost:1234/v1")) ==
            std::hash<ProviderEndpoint>()(custom("http://localhost:1234/v1//")));
}

QTEST_GUILESS_MAIN(ProviderCatalogTest)
#include "tst_ProviderCatalog.moc"
