#include "providers/ProviderCatalog.h"

#include <QtTest>

using namespace scrivel;

namespace {

ProviderEndpoint custom(const QString& url) {
    return *resolveEndpoint(customProviderID(), url);
}

} // namespace

class ProviderCatalogTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void catalogueOrderAndHosts();
    void resolveCustom_data();
    void resolveCustom();
    void resolveByIdentifier_data();
    void resolveByIdentifier();
    void accounts_data();
    void accounts();
    void allowsRequestURL_data();
    void allowsRequestURL();
    void headers();
    void choicesAndNames();
    void endpointsAsKeys();
};

void ProviderCatalogTest::catalogueOrderAndHosts() {
    QStringList ids;
    for (const ProviderEndpoint& endpoint : catalogEndpoints()) {
        ids << endpoint.id;
        QCOMPARE(endpoint.baseURL.scheme(), QStringLiteral("https"));
        QCOMPARE(endpoint.authenticationPolicy, EndpointAuthenticationPolicy::required);
        QVERIFY(apiKeyPage(endpoint.id).has_value());
        // Every catalogue endpoint accepts its own chat and model URLs.
        QVERIFY(scrivel::allowsRequestURL(endpoint, endpointURL(endpoint, "chat/completions")));
        QVERIFY(scrivel::allowsRequestURL(endpoint, endpointURL(endpoint, "models")));
    }
    QCOMPARE(ids, QStringList({"openai", "anthropic", "google", "xai", "groq", "cerebras"}));
    QCOMPARE(catalogEndpoint("groq")->baseURL.path(), QStringLiteral("/openai/v1"));
    QCOMPARE(catalogEndpoint("google")->baseURL.path(), QStringLiteral("/v1beta/openai"));
    QCOMPARE(catalogEndpoint("openai")->baseURL.path(), QStringLiteral("/v1"));
    QCOMPARE(apiKeyPage("openai")->path(), QStringLiteral("/api-keys"));
    QCOMPARE(apiKeyPage("anthropic")->path(), QStringLiteral("/settings/keys"));
    QCOMPARE(apiKeyPage("google")->path(), QStringLiteral("/apikey"));
    QCOMPARE(apiKeyPage("groq")->path(), QStringLiteral("/keys"));
    QVERIFY(!apiKeyPage("custom"));
    QVERIFY(!apiKeyPage("onDevice"));
    QCOMPARE(endpointURL(*catalogEndpoint("groq"), "chat/completions").toString(),
             QStringLiteral("https://api.groq.com/openai/v1/chat/completions"));
}

void ProviderCatalogTest::resolveCustom_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("resolved"); // empty: no endpoint

    QTest::newRow("spaces, upper-case host, trailing slash") << "  https://API.Example.COM/v1/ \n"
                                                             << "https://api.example.com/v1";
    QTest::newRow("upper-case scheme") << "HTTPS://example.com/v1"
                                       << "https://example.com/v1";
    QTest::newRow("two trailing slashes") << "https://example.com/v1//"
                                          << "https://example.com/v1";
    QTest::newRow("path of two slashes") << "https://example.com//"
                                         << "https://example.com/";
    QTest::newRow("root path stays") << "https://example.com/"
                                     << "https://example.com/";
    QTest::newRow("empty path stays") << "https://example.com"
                                      << "https://example.com";
    QTest::newRow("http localhost with port") << "http://localhost:11434/v1"
                                              << "http://localhost:11434/v1";
    QTest::newRow("http LOCALHOST") << "http://LocalHost:8080/v1"
                                    << "http://localhost:8080/v1";
    QTest::newRow("http 127.0.0.1") << "http://127.0.0.1/v1"
                                    << "http://127.0.0.1/v1";
    QTest::newRow("explicit 443 kept") << "https://example.com:443/v1"
                                       << "https://example.com:443/v1";
    QTest::newRow("https IPv6 loopback") << "https://[::1]:8443/v1"
                                         << "https://[::1]:8443/v1";
    QTest::newRow("http IPv6 loopback") << "http://[::1]:8080/v1"
                                        << "";
    // Shorthand and padded IPv4 forms that mean 127.0.0.1 are still not the
    // loopback name as written.
    QTest::newRow("http 127.1") << "http://127.1:8080/v1"
                                << "";
    QTest::newRow("http decimal loopback") << "http://2130706433/v1"
                                           << "";
    QTest::newRow("http zero-padded loopback") << "http://127.000.000.001/v1"
                                               << "";
    QTest::newRow("http 127.0.0.1 with an empty port") << "http://127.0.0.1:/v1"
                                                       << "http://127.0.0.1/v1";
    QTest::newRow("empty user name") << "https://@example.com/v1"
                                     << "";
    QTest::newRow("http private address") << "http://192.168.1.20:8080/v1"
                                          << "";
    QTest::newRow("http other host") << "http://example.com/v1"
                                     << "";
    QTest::newRow("ftp") << "ftp://example.com/v1"
                         << "";
    QTest::newRow("no scheme") << "example.com/v1"
                               << "";
    QTest::newRow("user name") << "https://user@example.com/v1"
                               << "";
    QTest::newRow("user and password") << "https://user:pw@example.com/v1"
                                       << "";
    QTest::newRow("query") << "https://example.com/v1?key=1"
                           << "";
    QTest::newRow("empty query") << "https://example.com/v1?"
                                 << "";
    QTest::newRow("fragment") << "https://example.com/v1#x"
                              << "";
    QTest::newRow("blank") << " \n "
                           << "";
    QTest::newRow("not a URL") << "https://exa mple.com/v1"
                               << "";
}

void ProviderCatalogTest::resolveCustom() {
    QFETCH(QString, typed);
    QFETCH(QString, resolved);
    const auto endpoint = resolveEndpoint(customProviderID(), typed);
    QCOMPARE(endpoint.has_value(), !resolved.isEmpty());
    if (!endpoint)
        return;
    QCOMPARE(endpoint->baseURL.toString(QUrl::FullyEncoded), resolved);
    QCOMPARE(endpoint->id, QStringLiteral("custom"));
    QCOMPARE(endpoint->displayName, QStringLiteral("Custom"));
    QCOMPARE(endpoint->authenticationPolicy, EndpointAuthenticationPolicy::optional);
}

void ProviderCatalogTest::resolveByIdentifier_data() {
    QTest::addColumn<QString>("providerID");
    QTest::addColumn<bool>("resolves");
    QTest::newRow("groq") << "groq" << true;
    QTest::newRow("OpenAI in capitals") << "OpenAI" << false;
    QTest::newRow("onDevice") << "onDevice" << false;
    QTest::newRow("unknown") << "mistral" << false;
    QTest::newRow("custom without URL") << "custom" << false;
}

void ProviderCatalogTest::resolveByIdentifier() {
    QFETCH(QString, providerID);
    QFETCH(bool, resolves);
    // A base URL on a catalogue provider is ignored.
    QCOMPARE(resolveEndpoint(providerID, std::nullopt).has_value(), resolves);
    if (providerID != QLatin1String("custom"))
        QCOMPARE(resolveEndpoint(providerID, QStringLiteral("https://x.example/v1")).has_value(),
                 resolves);
}

void ProviderCatalogTest::accounts_data() {
    QTest::addColumn<QString>("providerID");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("account");
    QTest::addColumn<QString>("legacy");

    QTest::newRow("catalogue") << "groq"
                               << ""
                               << "groq"
                               << "";
    QTest::newRow("https default port") << "custom"
                                        << " https://API.Example.com/v1/ "
                                        << "custom:https://api.example.com:443/v1"
                                        << "custom:api.example.com";
    QTest::newRow("explicit 443 is the same account") << "custom"
                                                      << "https://api.example.com:443/v1"
                                                      << "custom:https://api.example.com:443/v1"
                                                      << "custom:api.example.com";
    QTest::newRow("local server") << "custom"
                                  << "http://localhost:11434/v1"
                                  << "custom:http://localhost:11434/v1"
                                  << "custom:localhost";
    QTest::newRow("http default port") << "custom"
                                       << "http://127.0.0.1/v1"
                                       << "custom:http://127.0.0.1:80/v1"
                                       << "custom:127.0.0.1";
    QTest::newRow("empty path") << "custom"
                                << "https://example.com"
                                << "custom:https://example.com:443/"
                                << "custom:example.com";
    QTest::newRow("IPv6") << "custom"
                          << "https://[::1]:8443/v1"
                          << "custom:https://[::1]:8443/v1"
                          << "custom:[::1]";
}

void ProviderCatalogTest::accounts() {
    QFETCH(QString, providerID);
    QFETCH(QString, url);
    QFETCH(QString, account);
    QFETCH(QString, legacy);
    const auto endpoint =
        resolveEndpoint(providerID, url.isEmpty() ? std::nullopt : std::optional(url));
    QVERIFY(endpoint);
    QCOMPARE(credentialAccount(*endpoint), account);
    QCOMPARE(legacyCredentialAccount(*endpoint),
             legacy.isEmpty() ? std::nullopt : std::optional(legacy));
}

void ProviderCatalogTest::allowsRequestURL_data() {
    QTest::addColumn<QString>("base"); // a provider id or a custom URL
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("allowed");

    QTest::newRow("openai chat") << "openai"
                                 << "https://api.openai.com/v1/chat/completions" << true;
    QTest::newRow("openai models") << "openai"
                                   << "https://api.openai.com/v1/models" << true;
    QTest::newRow("upper-case host") << "openai"
                                     << "https://API.OPENAI.COM/v1/models" << true;
    QTest::newRow("explicit 443") << "openai"
                                  << "https://api.openai.com:443/v1/models" << true;
    QTest::newRow("other version") << "openai"
                                   << "https://api.openai.com/v2/chat/completions" << false;
    QTest::newRow("other host") << "openai"
                                << "https://evil.example/v1/chat/completions" << false;
    QTest::newRow("plain http") << "openai"
                                << "http://api.openai.com/v1/chat/completions" << false;
    QTest::newRow("query") << "openai"
                           << "https://api.openai.com/v1/models?x=1" << false;
    QTest::newRow("fragment") << "openai"
                              << "https://api.openai.com/v1/models#f" << false;
    QTest::newRow("user info") << "openai"
                               << "https://u:p@api.openai.com/v1/models" << false;
    QTest::newRow("empty user info") << "openai"
                                     << "https://@api.openai.com/v1/models" << false;
    QTest::newRow("other port") << "openai"
                                << "https://api.openai.com:8443/v1/models" << false;
    QTest::newRow("other path") << "openai"
                                << "https://api.openai.com/v1/files" << false;
    QTest::newRow("no scheme") << "openai"
                               << "//api.openai.com/v1/models" << false;
    QTest::newRow("local: same port") << "http://127.0.0.1:8080/v1"
                                      << "http://127.0.0.1:8080/v1/models" << true;
    QTest::newRow("local: port 80 is another port") << "http://127.0.0.1:8080/v1"
                                                    << "http://127.0.0.1/v1/models" << false;
    QTest::newRow("local: localhost is another host") << "http://127.0.0.1:8080/v1"
                                                      << "http://localhost:8080/v1/models" << false;
    QTest::newRow("local: to https") << "http://127.0.0.1:8080/v1"
                                     << "https://127.0.0.1:8080/v1/models" << false;
    QTest::newRow("root base path") << "https://example.com/"
                                    << "https://example.com/models" << true;
    QTest::newRow("empty base path") << "https://example.com"
                                     << "https://example.com/models" << true;
    QTest::newRow("double slash is another path") << "https://example.com/v1"
                                                  << "https://example.com/v1//models" << false;
}

void ProviderCatalogTest::allowsRequestURL() {
    QFETCH(QString, base);
    QFETCH(QString, url);
    QFETCH(bool, allowed);
    const auto endpoint = base.contains(QLatin1Char(':')) ? resolveEndpoint("custom", base)
                                                          : resolveEndpoint(base, std::nullopt);
    QVERIFY(endpoint);
    QCOMPARE(scrivel::allowsRequestURL(*endpoint, QUrl(url)), allowed);
}

void ProviderCatalogTest::headers() {
    const auto openai = authorizationHeaders(*catalogEndpoint("openai"), "sk-1");
    QCOMPARE(openai.size(), 1);
    QCOMPARE(openai.value("Authorization"), QByteArray("Bearer sk-1"));
    const auto anthropic = authorizationHeaders(*catalogEndpoint("anthropic"), "k");
    QCOMPARE(anthropic.size(), 3);
    QCOMPARE(anthropic.value("Authorization"), QByteArray("Bearer k"));
    QCOMPARE(anthropic.value("x-api-key"), QByteArray("k"));
    QCOMPARE(anthropic.value("anthropic-version"), QByteArray("2023-06-01"));
}

void ProviderCatalogTest::choicesAndNames() {
    const auto choices = providerChoices();
    QCOMPARE(choices.size(), 8);
    QCOMPARE(choices.first(), (PresetProviderChoice{"onDevice", "On Device"}));
    QCOMPARE(choices[5], (PresetProviderChoice{"groq", "Groq"}));
    QCOMPARE(choices.last(), (PresetProviderChoice{"custom", QStringLiteral("Custom\u2026")}));

    Preset preset;
    preset.providerID = "onDevice";
    QCOMPARE(providerDisplayName(preset), QStringLiteral("On Device"));
    preset.providerID = "xai";
    QCOMPARE(providerDisplayName(preset), QStringLiteral("xAI"));
    preset.providerID = "custom";
    preset.customBaseURL = "http://localhost:1234/v1";
    QCOMPARE(providerDisplayName(preset), QStringLiteral("Custom"));
    preset.providerID = "somethingElse";
    preset.customBaseURL.reset();
    QCOMPARE(providerDisplayName(preset), QStringLiteral("Custom"));
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
