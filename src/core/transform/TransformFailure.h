#pragma once

#include "core/transform/RewriteError.h"

#include <QString>
#include <optional>

namespace scrivel {

// Why a transform ended without a reply: a classified RewriteError, a
// cancellation, or an unclassified failure (a connection dropped mid-reply,
// say) that the coordinator words generically. The description of an
// unclassified failure is for the debug log only.
class TransformFailure {
public:
    enum class Kind { rewrite, cancelled, other };

    static TransformFailure rewrite(const RewriteError& error) {
        TransformFailure failure(Kind::rewrite);
        failure.m_error = error;
        return failure;
    }
    static TransformFailure cancelled() { return TransformFailure(Kind::cancelled); }
    static TransformFailure other(const QString& debugDescription) {
        TransformFailure failure(Kind::other);
        failure.m_description = debugDescription;
        return failure;
    }

    Kind kind() const { return m_kind; }
    const std::optional<RewriteError>& error() const { return m_error; }
    const QString& debugDescription() const { return m_description; }

    friend bool operator==(const TransformFailure& a, const TransformFailure& b) {
        return a.m_kind == b.m_kind && a.m_error == b.m_error && a.m_description == b.m_description;
    }

private:
    explicit TransformFailure(Kind kind) : m_kind(kind) {}

    Kind m_kind;
    std::optional<RewriteError> m_error;
    QString m_description;
};

} // namespace scrivel
