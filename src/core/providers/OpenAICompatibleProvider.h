#pragma once

#include "core/providers/APIKeyProviding.h"
#include "core/providers/CompletionInput.h"
#include "core/providers/ProviderConnectionFailure.h"
#include "core/providers/ProviderEndpoint.h"
#include "core/providers/ProviderRequest.h"
#include "core/support/Future.h"
#include "core/transform/PresetTransforming.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <chrono>
#include <expected>
#include <optional>

namespace scrivel {

// The client of one OpenAI-compatible endpoint: streamed chat completions,
// the model list, and the endpoint's API key.
class OpenAICompatibleProvider : public QObject {
    Q_OBJECT

public:
    using KeyResult = std::expected<std::optional<QString>, ProviderConnectionFailure>;
    using ModelsResult = std::expected<QStringList, ProviderConnectionFailure>;

    // timeout is the session time-out (the hub gives 120 s): requests then
    // wait at most max(t, 8) s without data and max(t + 2, 10) s in all,
    // and each request at most 60 s without data.
    OpenAICompatibleProvider(const ProviderEndpoint& endpoint, APIKeyProviding& keys,
                             std::chrono::seconds timeout = std::chrono::seconds(120),
                             QObject* parent = nullptr);

    const ProviderEndpoint& endpoint() const { return m_endpoint; }
    // Tests shorten the waits.
    void setTimeouts(ProviderRequest::Timeouts timeouts) { m_timeouts = timeouts; }
    ProviderRequest::Timeouts timeouts() const { return m_timeouts; }

    // partial events with the whole reply so far, then one completed event
    // with the reply trimmed; or a failure.
    TransformStream streamCompletion(const CompletionInput& input);
    // The endpoint's chat models, sorted.
    Future<ModelsResult> fetchModels(const EndpointCredential& credential);
    Future<KeyResult> resolveAPIKey(const EndpointCredential& credential);
    // The stored key, moving a key found under the legacy account.
    Future<KeyResult> storedAPIKey();

private:
    class ChatStream;

    QNetworkRequest makeRequest(const QUrl& url, const std::optional<QString>& key) const;
    KeyResult keyOrMissing(const std::optional<QString>& key) const;

    ProviderEndpoint m_endpoint;
    APIKeyProviding& m_keys;
    ProviderRequest::Timeouts m_timeouts;
    QNetworkAccessManager m_network;
    // Models of this endpoint that refused "max_tokens" and took
    // "max_completion_tokens" instead; remembered for the process.
    QSet<QString> m_completionTokenModels;
};

} // namespace scrivel
