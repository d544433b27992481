#include "core/providers/OpenAICompatibleProvider.h"

#include "core/providers/ChatCompletionRequest.h"
#include "core/providers/ModelListResponse.h"
#include "core/providers/ModelRules.h"
#include "core/providers/ProviderCatalog.h"
#include "core/providers/ServerSentEventReader.h"
#include "core/providers/ThinkBlockFilter.h"
#include "core/support/Log.h"
#include "core/support/UnicodeText.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <algorithm>

namespace scrivel {

namespace {

using Kind = ProviderConnectionFailure::Kind;

template <typename T>
Future<T> ready(T value) {
    return Future<T>::ready(std::move(value));
}

qsizetype utf8Size(const QString& text) {
    return text.toUtf8().size();
}

// Case-sensitive order of whole identifiers by Unicode scalar values.
bool precedes(const QString& a, const QString& b) {
    const QList<uint> left = a.normalized(QString::NormalizationForm_C).toUcs4();
    const QList<uint> right = b.normalized(QString::NormalizationForm_C).toUcs4();
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end());
}

} // namespace

// One streamed completion: key, request, body reading. Lives until the
// stream ends or its consumer goes away.
class OpenAICompatibleProvider::ChatStream : public QObject {
public:
    ChatStream(OpenAICompatibleProvider& provider, ChatCompletionRequest request,
               qsizetype inputBytes, TransformStreamWriter writer)
        : QObject(&provider), m_provider(provider), m_request(std::move(request)),
          m_inputBytes(inputBytes), m_writer(std::move(writer)) {
        QPointer<ChatStream> self(this);
        m_writer.onCancel([self] {
            if (!self)
                return;
            if (self->m_exchange)
                self->m_exchange->cancel();
            self->deleteLater();
        });
    }

    void start() {
        m_key = m_provider.resolveAPIKey(EndpointCredential::stored());
        m_key.then(this, [this](KeyResult key) {
            if (!key) {
                failWith(key.error());
                return;
            }
            m_resolvedKey = *key;
            send(*key);
        });
    }

private:
    void send(const std::optional<QString>& key) {
        const ProviderEndpoint& endpoint = m_provider.m_endpoint;
        const QUrl url = endpointURL(endpoint, QStringLiteral("chat/completions"));
        qCDebug(rewriteLog).noquote()
            << privateValue(QStringLiteral("cloud stream endpoint=%1 model=%2 in=%3")
                                .arg(endpoint.id, m_request.model)
                                .arg(m_inputBytes));
        m_exchange =
            new ProviderRequest(m_provider.m_network, endpoint, m_provider.makeRequest(url, key),
                                "POST", m_request.encode(), true, m_provider.m_timeouts, this);
        m_exchange->onOpen = [this](int status) {
            qCDebug(rewriteLog).noquote() << privateValue(
                QStringLiteral("cloud stream open endpoint=%1 context=chat-stream status=%2")
                    .arg(m_provider.m_endpoint.id)
                    .arg(status));
        };
        m_exchange->onBytes = [this](QByteArrayView bytes) { return read(bytes); };
        m_exchange->onDone = [this](const ProviderRequest::Outcome& outcome) { done(outcome); };
        m_exchange->start();
    }

    bool read(QByteArrayView bytes) {
        if (m_reader.feed(bytes, [this] {
                if (m_thinkBlock.update(m_reader.reply()))
                    m_writer.push(
                        TransformStreamEvent::partial(m_thinkBlock.visible(m_reader.reply())));
            }))
            return true;
        if (m_reader.state() == ServerSentEventReader::State::serverError) {
            // The server's own words go to the debug log only.
            qCDebug(rewriteLog).noquote()
                << privateValue(QStringLiteral("cloud stream error endpoint=%1 message=%2")
                                    .arg(m_provider.m_endpoint.id, m_reader.serverMessage()));
            end(TransformFailure::rewrite(RewriteError::modelFailed(QCoreApplication::translate(
                "OpenAICompatibleProvider", "The provider stopped with an error. Try again."))));
            return false;
        }
        if (m_reader.state() == ServerSentEventReader::State::invalidText) {
            failWith(ProviderConnectionFailure::of(Kind::unreadableReply));
            return false;
        }
        end(TransformFailure::rewrite(RewriteError::modelFailed(
            QCoreApplication::translate("ProviderConnectionFailure", "%1 response was too large")
                .arg(m_provider.m_endpoint.displayName))));
        return false;
    }

    void done(const ProviderRequest::Outcome& outcome) {
        switch (outcome.kind) {
        case ProviderRequest::Outcome::Kind::failed:
            if (shouldResendWithCompletionTokens(outcome))
                return;
            failWith(outcome.failure);
            return;
        case ProviderRequest::Outcome::Kind::droppedOpen:
            end(TransformFailure::other(outcome.debugDescription));
            return;
        case ProviderRequest::Outcome::Kind::finished:
            break;
        }
        m_reader.finish();
        // A reply cut at the token budget is not a finished text: copying it
        // would replace the user's text with its first part.
        if (m_reader.finishReason() == QLatin1String("length")) {
            qCDebug(rewriteLog).noquote()
                << privateValue(QStringLiteral("cloud stream cut endpoint=%1 out=%2")
                                    .arg(m_provider.m_endpoint.id)
                                    .arg(m_reader.replyUtf8Size()));
            end(TransformFailure::rewrite(RewriteError::modelFailed(QCoreApplication::translate(
                "OpenAICompatibleProvider",
                "The reply was cut short by the provider’s length limit. Try a shorter text."))));
            return;
        }
        // Without "[DONE]" or a finish reason the body ended early: a proxy
        // or the server closed the connection, and what came is only the
        // start of the reply.
        if (!m_reader.isComplete()) {
            failWith(ProviderConnectionFailure::of(Kind::interruptedReply));
            return;
        }
        const QString reply =
            trimmedWhitespaceAndNewlines(m_thinkBlock.visible(m_reader.reply()).view().toString());
        if (reply.isEmpty()) {
            end(TransformFailure::rewrite(RewriteError::modelFailed(
                QCoreApplication::translate("RewriteCoordinator", "Empty model response"))));
            return;
        }
        qCDebug(rewriteLog).noquote()
            << privateValue(QStringLiteral("cloud stream done endpoint=%1 out=%2")
                                .arg(m_provider.m_endpoint.id)
                                .arg(utf8Size(reply)));
        m_writer.push(TransformStreamEvent::completed(reply));
        m_writer.finish();
        deleteLater();
    }

    // OpenAI's reasoning models answer 400 "unsupported_parameter" to
    // "max_tokens": the same request goes once more with the budget as
    // "max_completion_tokens", which the endpoint then keeps for this model.
    bool shouldResendWithCompletionTokens(const ProviderRequest::Outcome& outcome) {
        if (outcome.status != 400 || m_request.budgetAsMaxCompletionTokens ||
            !ChatCompletionRequest::refusesMaxTokens(outcome.body))
            return false;
        qCDebug(rewriteLog).noquote() << privateValue(
            QStringLiteral("cloud stream resend endpoint=%1 model=%2 budget=max_completion_tokens")
                .arg(m_provider.m_endpoint.id, m_request.model));
        m_request.budgetAsMaxCompletionTokens = true;
        m_provider.m_completionTokenModels.insert(m_request.model);
        if (m_exchange)
            m_exchange->deleteLater();
        send(m_resolvedKey);
        return true;
    }

    void failWith(const ProviderConnectionFailure& failure) {
        qCDebug(rewriteLog).noquote()
            << privateValue(QStringLiteral("cloud stream failed endpoint=%1 failure=%2")
                                .arg(m_provider.m_endpoint.id, failure.logDescription()));
        end(TransformFailure::rewrite(failure.rewriteError(m_provider.m_endpoint.displayName)));
    }

    void end(const TransformFailure& failure) {
        m_writer.fail(failure);
        deleteLater();
    }

    OpenAICompatibleProvider& m_provider;
    ChatCompletionRequest m_request;
    qsizetype m_inputBytes;
    TransformStreamWriter m_writer;
    Future<KeyResult> m_key;
    std::optional<QString> m_resolvedKey;
    QPointer<ProviderRequest> m_exchange;
    ServerSentEventReader m_reader;
    ThinkBlockFilter m_thinkBlock;
};

OpenAICompatibleProvider::OpenAICompatibleProvider(const ProviderEndpoint& endpoint,
                                                   APIKeyProviding& keys,
                                                   std::chrono::seconds timeout, QObject* parent)
    : QObject(parent), m_endpoint(endpoint), m_keys(keys) {
    const qint64 t = timeout.count();
    // Each request waits 60 s for data, within the session's own limits.
    m_timeouts.inactivity =
        std::chrono::milliseconds(std::min<qint64>(60, std::max<qint64>(t, 8)) * 1000);
    m_timeouts.deadline = std::chrono::milliseconds(std::max<qint64>(t + 2, 10) * 1000);
    // No cookies, no cache and no stored credentials: each request turns
    // them off (see ProviderRequest); the manager has no cache to begin with.
    m_network.setAutoDeleteReplies(false);
    m_network.setStrictTransportSecurityEnabled(false);
}

QNetworkRequest OpenAICompatibleProvider::makeRequest(const QUrl& url,
                                                      const std::optional<QString>& key) const {
    QNetworkRequest request(url);
    if (key) {
        const auto headers = authorizationHeaders(m_endpoint, *key);
        for (auto it = headers.begin(); it != headers.end(); ++it)
            request.setRawHeader(it.key(), it.value());
    }
    request.setRawHeader("Content-Type", "application/json");
    return request;
}

TransformStream OpenAICompatibleProvider::streamCompletion(const CompletionInput& input) {
    TransformStreamWriter writer;
    TransformStream stream = writer.stream();
    auto request = ChatCompletionRequest::make(input);
    if (!request) {
        writer.fail(TransformFailure::rewrite(request.error()));
        return stream;
    }
    request->budgetAsMaxCompletionTokens = m_completionTokenModels.contains(request->model);
    auto* job = new ChatStream(*this, std::move(*request), utf8Size(input.userText), writer);
    job->start();
    return stream;
}

OpenAICompatibleProvider::KeyResult
OpenAICompatibleProvider::keyOrMissing(const std::optional<QString>& key) const {
    if (key)
        return key;
    if (m_endpoint.authenticationPolicy == EndpointAuthenticationPolicy::optional)
        return std::optional<QString>();
    return std::unexpected(ProviderConnectionFailure::of(Kind::missingCredential));
}

Future<OpenAICompatibleProvider::KeyResult>
OpenAICompatibleProvider::resolveAPIKey(const EndpointCredential& credential) {
    switch (credential.kind()) {
    case EndpointCredential::Kind::candidate: {
        const QString key = trimmedWhitespaceAndNewlines(credential.candidateKey());
        return ready(keyOrMissing(key.isEmpty() ? std::nullopt : std::optional(key)));
    }
    case EndpointCredential::Kind::none:
        return ready(keyOrMissing(std::nullopt));
    case EndpointCredential::Kind::stored:
        break;
    }
    return mapFuture(storedAPIKey(), this, [this](KeyResult stored) -> KeyResult {
        if (!stored)
            return stored;
        return keyOrMissing(*stored);
    });
}

Future<OpenAICompatibleProvider::KeyResult> OpenAICompatibleProvider::storedAPIKey() {
    const QString account = credentialAccount(m_endpoint);
    const std::optional<QString> legacy = legacyCredentialAccount(m_endpoint);
    const bool hasLegacy = legacy && *legacy != account;
    const auto keychainFailure = [] {
        return std::unexpected(ProviderConnectionFailure::of(Kind::keychain));
    };

    return chainFuture(
        m_keys.readKey(account), this,
        [=, this](APIKeyProviding::KeyResult current) -> Future<KeyResult> {
            if (!current)
                return ready(KeyResult(keychainFailure()));
            if (*current) {
                if (!hasLegacy)
                    return ready(KeyResult(*current));
                // The current account wins; a leftover legacy key is removed,
                // whatever becomes of that removal.
                const QString key = **current;
                return mapFuture(m_keys.deleteKey(*legacy), this,
                                 [key](APIKeyProviding::VoidResult) { return KeyResult(key); });
            }
            if (!hasLegacy)
                return ready(KeyResult(std::optional<QString>()));
            return chainFuture(
                m_keys.readKey(*legacy), this,
                [=, this](APIKeyProviding::KeyResult old) -> Future<KeyResult> {
                    if (!old)
                        return ready(KeyResult(keychainFailure()));
                    if (!*old)
                        return ready(KeyResult(std::optional<QString>()));
                    const QString key = **old;
                    return chainFuture(
                        m_keys.saveKey(key, account), this,
                        [=, this](APIKeyProviding::VoidResult saved) -> Future<KeyResult> {
                            if (!saved)
                                return ready(KeyResult(keychainFailure()));
                            return mapFuture(m_keys.deleteKey(*legacy), this,
                                             [=](APIKeyProviding::VoidResult removed) -> KeyResult {
                                                 if (!removed)
                                                     return keychainFailure();
                                                 return key;
                                             });
                        });
                });
        });
}

Future<OpenAICompatibleProvider::ModelsResult>
OpenAICompatibleProvider::fetchModels(const EndpointCredential& credential) {
    return chainFuture(
        resolveAPIKey(credential), this, [this](KeyResult key) -> Future<ModelsResult> {
            if (!key)
                return ready(ModelsResult(std::unexpected(key.error())));
            Promise<ModelsResult> promise;
            Future<ModelsResult> future = promise.future();
            const QUrl url = endpointURL(m_endpoint, QStringLiteral("models"));
            auto* exchange = new ProviderRequest(m_network, m_endpoint, makeRequest(url, *key),
                                                 "GET", {}, false, m_timeouts, this);
            auto elapsed = std::make_shared<QElapsedTimer>();
            elapsed->start();
            QPointer<ProviderRequest> guard(exchange);
            promise.onCancel([guard] {
                if (guard) {
                    guard->cancel();
                    guard->deleteLater();
                }
            });
            exchange->onDone = [this, promise, exchange,
                                elapsed](const ProviderRequest::Outcome& outcome) {
                exchange->deleteLater();
                if (outcome.kind != ProviderRequest::Outcome::Kind::finished) {
                    promise.resolve(std::unexpected(outcome.failure));
                    return;
                }
                qCDebug(rewriteLog).noquote() << privateValue(
                    QStringLiteral(
                        "cloud done endpoint=%1 context=models status=%2 elapsed=%3ms bytes=%4")
                        .arg(m_endpoint.id)
                        .arg(outcome.status)
                        .arg(elapsed->elapsed())
                        .arg(outcome.body.size()));
                const auto list = ModelListResponse::decode(outcome.body);
                if (!list) {
                    promise.resolve(
                        std::unexpected(ProviderConnectionFailure::of(Kind::invalidResponse)));
                    return;
                }
                QStringList models = chatModels(list->ids);
                std::sort(models.begin(), models.end(), precedes);
                if (models.isEmpty()) {
                    promise.resolve(
                        std::unexpected(ProviderConnectionFailure::of(Kind::emptyModels)));
                    return;
                }
                promise.resolve(models);
            };
            exchange->start();
            return future;
        });
}

} // namespace scrivel
