#pragma once

#include "core/transform/UnavailableReason.h"

#include <QCoreApplication>
#include <QString>
#include <optional>

namespace scrivel {

// The failures of a rewrite, as the pipeline reports them to its callers.
class RewriteError {
    Q_DECLARE_TR_FUNCTIONS(RewriteError)

public:
    enum class Kind {
        outputRejected,
        modelUnavailable,
        modelFailed,
        emptyInput,
        inputTooLarge,
        cancelled,
        timeout,
    };

    // detail is one of "empty", "meta-prefix", "length-delta", "line-breaks";
    // it is for logs and tests, never shown to the user.
    static RewriteError outputRejected(const QString& detail) {
        return RewriteError(Kind::outputRejected, detail);
    }
    static RewriteError modelUnavailable(const UnavailableReason& reason) {
        RewriteError error(Kind::modelUnavailable, {});
        error.m_reason = reason;
        return error;
    }
    static RewriteError modelFailed(const QString& message) {
        return RewriteError(Kind::modelFailed, message);
    }
    static RewriteError emptyInput() { return RewriteError(Kind::emptyInput, {}); }
    static RewriteError inputTooLarge() { return RewriteError(Kind::inputTooLarge, {}); }
    static RewriteError cancelled() { return RewriteError(Kind::cancelled, {}); }
    static RewriteError timeout() { return RewriteError(Kind::timeout, {}); }

    Kind kind() const { return m_kind; }
    // The detail code of outputRejected or the message of modelFailed.
    const QString& text() const { return m_text; }
    // The reason of modelUnavailable.
    const std::optional<UnavailableReason>& reason() const { return m_reason; }

    // The panel's wording.
    QString panelMessage() const;
    // A short, non-private description for log lines ("modelFailed", ...).
    QString logDescription() const;

    friend bool operator==(const RewriteError& a, const RewriteError& b) {
        return a.m_kind == b.m_kind && a.m_text == b.m_text && a.m_reason == b.m_reason;
    }

private:
    RewriteError(Kind kind, QString text) : m_kind(kind), m_text(std::move(text)) {}

    Kind m_kind;
    QString m_text;
    std::optional<UnavailableReason> m_reason;
};

} // namespace scrivel
