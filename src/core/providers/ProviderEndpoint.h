#pragma once

#include <QHash>
#include <QString>
#include <QUrl>
#include <functional>

namespace scrivel {

// Whether requests to an endpoint need an API key.
enum class EndpointAuthenticationPolicy { required, optional };

// A provider's identity, display name, API root and key policy. Compared and
// hashed by all four fields: it keys the client cache and the model-list
// cache.
struct ProviderEndpoint {
    QString id;
    QString displayName;
    QUrl baseURL;
    EndpointAuthenticationPolicy authenticationPolicy = EndpointAuthenticationPolicy::required;

    friend bool operator==(const ProviderEndpoint& a, const ProviderEndpoint& b) {
        return a.id == b.id && a.displayName == b.displayName && a.baseURL == b.baseURL &&
               a.authenticationPolicy == b.authenticationPolicy;
    }
};

size_t qHash(const ProviderEndpoint& endpoint, size_t seed = 0);

// Which key a request uses: one typed but not saved, the saved one, or none.
class EndpointCredential {
public:
    enum class Kind { candidate, stored, none };

    static EndpointCredential candidate(const QString& key) { return {Kind::candidate, key}; }
    static EndpointCredential stored() { return {Kind::stored, {}}; }
    static EndpointCredential none() { return {Kind::none, {}}; }

    Kind kind() const { return m_kind; }
    const QString& candidateKey() const { return m_key; }

private:
    EndpointCredential(Kind kind, QString key) : m_kind(kind), m_key(std::move(key)) {}

    Kind m_kind;
    QString m_key;
};

// One entry of the editor's provider picker.
struct PresetProviderChoice {
    QString id;
    QString name;

    friend bool operator==(const PresetProviderChoice&, const PresetProviderChoice&) = default;
};

} // namespace scrivel

template <>
struct std::hash<scrivel::ProviderEndpoint> {
    size_t operator()(const scrivel::ProviderEndpoint& endpoint) const noexcept {
        return scrivel::qHash(endpoint);
    }
};
