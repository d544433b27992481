#include "core/providers/ProviderCatalog.h"

#include "core/support/UnicodeText.h"

#include <QCoreApplication>

namespace scrivel {

namespace {

ProviderEndpoint entry(const char* id, const char* name, const char* url) {
    return {QString::fromLatin1(id), QString::fromLatin1(name), QUrl(QString::fromLatin1(url)),
            EndpointAuthenticationPolicy::required};
}

bool isLoopbackName(const QString& host) {
    return host == QLatin1String("localhost") || host == QLatin1String("127.0.0.1");
}

int effectivePort(const QUrl& url) {
    if (url.port() >= 0)
        return url.port();
    return url.scheme().toLower() == QLatin1String("http") ? 80 : 443;
}

// Appending inserts exactly one "/" between the base path and the component.
QString appendedPath(const QString& basePath, const QString& component) {
    if (basePath.endsWith(QLatin1Char('/')))
        return basePath + component;
    return basePath + QLatin1Char('/') + component;
}

// The host exactly as typed in the authority of text (the part after "//"
// up to the path, query or fragment, without user info and port). QUrl
// rewrites IPv4 shorthands such as "127.1" or "2130706433" to dotted form;
// plain http is allowed only for the loopback names as written.
QString typedHost(const QString& text) {
    const qsizetype start = text.indexOf(QLatin1String("//"));
    if (start < 0)
        return {};
    QStringView authority = QStringView(text).mid(start + 2);
    for (qsizetype i = 0; i < authority.size(); ++i) {
        if (authority[i] == u'/' || authority[i] == u'?' || authority[i] == u'#') {
            authority = authority.left(i);
            break;
        }
    }
    const qsizetype at = authority.lastIndexOf(QLatin1Char('@'));
    if (at >= 0)
        authority = authority.mid(at + 1);
    if (authority.startsWith(QLatin1Char('['))) {
        const qsizetype close = authority.indexOf(QLatin1Char(']'));
        return (close < 0 ? authority : authority.left(close + 1)).toString().toLower();
    }
    const qsizetype colon = authority.lastIndexOf(QLatin1Char(':'));
    if (colon >= 0)
        authority = authority.left(colon);
    return authority.toString().toLower();
}

// An "@" before the host marks user info even when the name is empty; QUrl
// reports an empty name then but keeps the "@" in the URL.
bool hasUserInfo(const QUrl& url) {
    return !url.userInfo().isEmpty() ||
           url.authority(QUrl::FullyEncoded).contains(QLatin1Char('@'));
}

QString encodedPath(const QUrl& url) {
    return url.path(QUrl::FullyEncoded);
}

// The host as it stands in the URL's authority: IPv6 addresses keep their
// brackets so the port that follows stays unambiguous.
QString authorityHost(const QUrl& url) {
    const QString host = url.host(QUrl::FullyEncoded).toLower();
    return host.contains(QLatin1Char(':')) ? QLatin1Char('[') + host + QLatin1Char(']') : host;
}

} // namespace

const QList<ProviderEndpoint>& catalogEndpoints() {
    static const QList<ProviderEndpoint> endpoints = {
        entry("openai", "OpenAI", "https://api.openai.com/v1"),
        entry("anthropic", "Anthropic", "https://api.anthropic.com/v1"),
        entry("google", "Google", "https://generativelanguage.googleapis.com/v1beta/openai"),
        entry("xai", "xAI", "https://api.x.ai/v1"),
        entry("groq", "Groq", "https://api.groq.com/openai/v1"),
        entry("cerebras", "Cerebras", "https://api.cerebras.ai/v1"),
    };
    return endpoints;
}

std::optional<ProviderEndpoint> catalogEndpoint(const QString& providerID) {
    for (const ProviderEndpoint& endpoint : catalogEndpoints()) {
        if (endpoint.id == providerID)
            return endpoint;
    }
    return std::nullopt;
}

std::optional<QUrl> apiKeyPage(const QString& providerID) {
    static const QMap<QString, QString> pages = {
        {QStringLiteral("openai"), QStringLiteral("https://platform.openai.com/api-keys")},
        {QStringLiteral("anthropic"),
         QStringLiteral("https://console.anthropic.com/settings/keys")},
        {QStringLiteral("google"), QStringLiteral("https://aistudio.google.com/apikey")},
        {QStringLiteral("xai"), QStringLiteral("https://console.x.ai/")},
        {QStringLiteral("groq"), QStringLiteral("https://console.groq.com/keys")},
        {QStringLiteral("cerebras"), QStringLiteral("https://cloud.cerebras.ai/")},
    };
    const auto it = pages.constFind(providerID);
    if (it == pages.constEnd())
        return std::nullopt;
    return QUrl(*it);
}

std::optional<ProviderEndpoint> resolveEndpoint(const QString& providerID,
                                                const std::optional<QString>& customBaseURL) {
    if (providerID == Preset::onDeviceProviderID())
        return std::nullopt;
    if (providerID != customProviderID())
        return catalogEndpoint(providerID);

    if (!customBaseURL)
        return std::nullopt;
    const QString text = trimmedWhitespaceAndNewlines(*customBaseURL);
    if (text.isEmpty())
        return std::nullopt;
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid())
        return std::nullopt;

    const QString scheme = url.scheme().toLower();
    const QString host = url.host(QUrl::FullyEncoded).toLower();
    if (scheme.isEmpty() || host.isEmpty())
        return std::nullopt;
    if (hasUserInfo(url) || url.hasQuery() || url.hasFragment())
        return std::nullopt;
    if (scheme != QLatin1String("https") &&
        !(scheme == QLatin1String("http") && isLoopbackName(host) &&
          isLoopbackName(typedHost(text))))
        return std::nullopt;

    url.setScheme(scheme);
    url.setHost(host);
    QString path = encodedPath(url);
    while (path.size() >= 2 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    url.setPath(path, QUrl::TolerantMode);
    if (!url.isValid())
        return std::nullopt;

    return ProviderEndpoint{customProviderID(),
                            QCoreApplication::translate("ProviderCatalog", "Custom"), url,
                            EndpointAuthenticationPolicy::optional};
}

QList<PresetProviderChoice> providerChoices() {
    QList<PresetProviderChoice> choices;
    choices.append({Preset::onDeviceProviderID(),
                    QCoreApplication::translate("ProviderCatalog", "On Device")});
    for (const ProviderEndpoint& endpoint : catalogEndpoints())
        choices.append({endpoint.id, endpoint.displayName});
    choices.append({customProviderID(), QCoreApplication::translate("ProviderCatalog", "Custom…")});
    return choices;
}

QString credentialAccount(const ProviderEndpoint& endpoint) {
    if (endpoint.id != customProviderID())
        return endpoint.id;
    const QUrl& url = endpoint.baseURL;
    QString scheme = url.scheme().toLower();
    if (scheme.isEmpty())
        scheme = QStringLiteral("https");
    QString host = authorityHost(url);
    if (host.isEmpty())
        host = QStringLiteral("unknown");
    const int port = url.port() >= 0 ? url.port() : (scheme == QLatin1String("http") ? 80 : 443);
    QString path = encodedPath(url);
    if (path.isEmpty())
        path = QStringLiteral("/");
    return QStringLiteral("custom:%1://%2:%3%4").arg(scheme, host, QString::number(port), path);
}

std::optional<QString> legacyCredentialAccount(const ProviderEndpoint& endpoint) {
    if (endpoint.id != customProviderID())
        return std::nullopt;
    const QString host = authorityHost(endpoint.baseURL);
    if (host.isEmpty())
        return std::nullopt;
    return QStringLiteral("custom:") + host;
}

bool allowsRequestURL(const ProviderEndpoint& endpoint, const QUrl& url) {
    const QUrl& base = endpoint.baseURL;
    const QString scheme = url.scheme().toLower();
    if (scheme.isEmpty() || scheme != base.scheme().toLower())
        return false;
    const QString host = url.host(QUrl::FullyEncoded).toLower();
    if (scheme != QLatin1String("https") &&
        !(scheme == QLatin1String("http") && isLoopbackName(host)))
        return false;
    if (host != base.host(QUrl::FullyEncoded).toLower())
        return false;
    if (hasUserInfo(url))
        return false;
    if (effectivePort(url) != effectivePort(base))
        return false;
    const QString path = encodedPath(url);
    const QString basePath = encodedPath(base);
    if (path != appendedPath(basePath, QStringLiteral("chat/completions")) &&
        path != appendedPath(basePath, QStringLiteral("models")))
        return false;
    return !url.hasQuery() && !url.hasFragment();
}

QUrl endpointURL(const ProviderEndpoint& endpoint, const QString& component) {
    QUrl url = endpoint.baseURL;
    url.setPath(appendedPath(encodedPath(url), component), QUrl::TolerantMode);
    return url;
}

QMap<QByteArray, QByteArray> authorizationHeaders(const ProviderEndpoint& endpoint,
                                                  const QString& key) {
    QMap<QByteArray, QByteArray> headers;
    headers.insert("Authorization", "Bearer " + key.toUtf8());
    if (endpoint.id == QLatin1String("anthropic")) {
        headers.insert("x-api-key", key.toUtf8());
        headers.insert("anthropic-version", "2023-06-01");
    }
    return headers;
}

QString providerDisplayName(const Preset& preset) {
    if (preset.providerID == Preset::onDeviceProviderID())
        return QCoreApplication::translate("ProviderCatalog", "On Device");
    if (const auto endpoint = resolveEndpoint(preset.providerID, preset.customBaseURL))
        return endpoint->displayName;
    if (const auto entry = catalogEndpoint(preset.providerID))
        return entry->displayName;
    return QCoreApplication::translate("ProviderCatalog", "Custom");
}

} // namespace scrivel
