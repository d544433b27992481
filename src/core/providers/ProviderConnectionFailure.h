#pragma once

#include "core/transform/RewriteError.h"

#include <QCoreApplication>
#include <QString>

namespace scrivel {

// The classified failure of a provider request.
class ProviderConnectionFailure {
    Q_DECLARE_TR_FUNCTIONS(ProviderConnectionFailure)

public:
    enum class Kind {
        status,
        invalidEndpoint,
        missingCredential,
        keychain,
        unauthorized,
        forbidden,
        notFound,
        timedOut,
        network,
        invalidResponse,
        emptyModels,
        responseTooLarge,
        // The body of a streamed reply ended before the stream said the
        // reply was complete.
        interruptedReply,
        // A streamed reply held a data line that is not UTF-8.
        unreadableReply,
    };

    static ProviderConnectionFailure status(int code) {
        ProviderConnectionFailure failure(Kind::status);
        failure.m_code = code;
        return failure;
    }
    static ProviderConnectionFailure of(Kind kind) { return ProviderConnectionFailure(kind); }
    // 401, 403 and 404 have cases of their own; other codes are status(code).
    static ProviderConnectionFailure forHTTPStatus(int code);

    Kind kind() const { return m_kind; }
    int code() const { return m_code; }

    // The sentence the editor shows.
    QString message() const;
    // The pipeline's error for a failed rewrite.
    RewriteError rewriteError(const QString& displayName) const;
    // Short form for log lines.
    QString logDescription() const;

    friend bool operator==(const ProviderConnectionFailure&,
                           const ProviderConnectionFailure&) = default;

private:
    explicit ProviderConnectionFailure(Kind kind) : m_kind(kind) {}

    Kind m_kind;
    int m_code = 0;
};

} // namespace scrivel
