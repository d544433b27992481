#pragma once

#include "core/presets/Preset.h"
#include "core/providers/ProviderEndpoint.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QUrl>
#include <optional>

namespace scrivel {

// The identifier of endpoints made from a user's own base URL.
inline QString customProviderID() {
    return QStringLiteral("custom");
}

// The six well-known services, in picker order.
const QList<ProviderEndpoint>& catalogEndpoints();
// The catalogue entry with exactly this identifier.
std::optional<ProviderEndpoint> catalogEndpoint(const QString& providerID);
// Where the user creates an API key for a catalogue provider.
std::optional<QUrl> apiKeyPage(const QString& providerID);

// The endpoint a preset talks to, or nothing: for the on-device model, an
// unknown identifier, or a custom provider without a usable base URL.
std::optional<ProviderEndpoint> resolveEndpoint(const QString& providerID,
                                                const std::optional<QString>& customBaseURL);

// The picker: the on-device model, the catalogue, then "Custom…".
QList<PresetProviderChoice> providerChoices();

// The key-store account of an endpoint: its identifier for catalogue
// providers; scheme, host, port and path for custom endpoints.
QString credentialAccount(const ProviderEndpoint& endpoint);
// The older host-only account of a custom endpoint, from which keys migrate.
std::optional<QString> legacyCredentialAccount(const ProviderEndpoint& endpoint);

// Whether a request may go to url (or a response or redirect arrive from
// it) for this endpoint: same scheme, host and port as the base URL, only the
// chat-completions and models paths, no credentials, query or fragment, and
// plain http only on loopback names.
bool allowsRequestURL(const ProviderEndpoint& endpoint, const QUrl& url);
// The base URL with one path component appended ("chat/completions",
// "models").
QUrl endpointURL(const ProviderEndpoint& endpoint, const QString& component);

// Header fields that carry the key.
QMap<QByteArray, QByteArray> authorizationHeaders(const ProviderEndpoint& endpoint,
                                                  const QString& key);

// The name of a preset's provider for lists and rows.
QString providerDisplayName(const Preset& preset);

} // namespace scrivel
