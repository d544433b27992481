#include "core/providers/ProviderConnectionFailure.h"

#include "core/storage/KeyStorePlace.h"

namespace scrivel {

ProviderConnectionFailure ProviderConnectionFailure::forHTTPStatus(int code) {
    switch (code) {
    case 401:
        return of(Kind::unauthorized);
    case 403:
        return of(Kind::forbidden);
    case 404:
        return of(Kind::notFound);
    default:
        return status(code);
    }
}

QString ProviderConnectionFailure::message() const {
    switch (m_kind) {
    case Kind::status:
        return tr("The provider returned error %1.").arg(m_code);
    case Kind::invalidEndpoint:
        return tr("Enter a valid provider base URL.");
    case Kind::missingCredential:
        return tr("Enter an API key to connect.");
    case Kind::keychain:
        return currentKeyStorePlace() == KeyStorePlace::privateKeyFile
                   ? tr("Couldn’t access the API key in Scrivel’s key file.")
                   : tr("Couldn’t access the API key in the desktop’s keyring.");
    case Kind::unauthorized:
        return tr("The API key was rejected. Check it and try again.");
    case Kind::forbidden:
        return tr("This API key doesn’t have access to the provider.");
    case Kind::notFound:
        return tr("Models weren’t found. Check that the base URL includes the API version, such "
                  "as /v1.");
    case Kind::timedOut:
        return tr("The provider timed out. Try again.");
    case Kind::network:
        return tr("Couldn’t reach the provider. Check the URL and your connection.");
    case Kind::invalidResponse:
        return tr("The provider returned an invalid model list.");
    case Kind::emptyModels:
        return tr("The provider returned no models.");
    case Kind::responseTooLarge:
        return tr("The provider response was too large.");
    case Kind::interruptedReply:
        return tr("The connection closed before the reply was complete. Try again.");
    case Kind::unreadableReply:
        return tr("The provider’s reply contained text that isn’t valid UTF-8. Try again.");
    }
    return {};
}

RewriteError ProviderConnectionFailure::rewriteError(const QString& displayName) const {
    switch (m_kind) {
    case Kind::status:
        return RewriteError::modelFailed(message());
    case Kind::invalidEndpoint:
        return RewriteError::modelUnavailable(UnavailableReason::misconfigured(message()));
    case Kind::missingCredential:
        return RewriteError::modelUnavailable(UnavailableReason::missingAPIKey());
    case Kind::keychain:
        return RewriteError::modelUnavailable(UnavailableReason::keychainError());
    case Kind::unauthorized:
    case Kind::forbidden:
        return RewriteError::modelUnavailable(UnavailableReason::rejectedAPIKey());
    case Kind::notFound:
    case Kind::timedOut:
    case Kind::network:
    case Kind::invalidResponse:
    case Kind::emptyModels:
    case Kind::interruptedReply:
    case Kind::unreadableReply:
        return RewriteError::modelFailed(message());
    case Kind::responseTooLarge:
        return RewriteError::modelFailed(tr("%1 response was too large").arg(displayName));
    }
    return RewriteError::modelFailed(message());
}

QString ProviderConnectionFailure::logDescription() const {
    static const char* names[] = {
        "status",      "invalidEndpoint",  "missingCredential", "keychain",       "unauthorized",
        "forbidden",   "notFound",         "timedOut",          "network",        "invalidResponse",
        "emptyModels", "responseTooLarge", "interruptedReply",  "unreadableReply"};
    QString name = QString::fromLatin1(names[int(m_kind)]);
    if (m_kind == Kind::status)
        name += QStringLiteral("(%1)").arg(m_code);
    return name;
}

} // namespace scrivel
