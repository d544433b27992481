#pragma once

#include "core/transform/RewriteError.h"
#include "core/transform/UnavailableReason.h"

#include <QCoreApplication>
#include <QString>
#include <optional>

namespace scrivel {

// The state of a run as the status item shows it.
class OperationUIState {
    Q_DECLARE_TR_FUNCTIONS(OperationUIState)

public:
    enum class Kind { idle, working, success, alreadyClean, error, modelUnavailable };

    static OperationUIState idle() { return OperationUIState(Kind::idle); }
    static OperationUIState working() { return OperationUIState(Kind::working); }
    static OperationUIState success() { return OperationUIState(Kind::success); }
    static OperationUIState alreadyClean() { return OperationUIState(Kind::alreadyClean); }
    static OperationUIState error(const QString& message) {
        OperationUIState state(Kind::error);
        state.m_message = message;
        return state;
    }
    static OperationUIState modelUnavailable(const UnavailableReason& reason) {
        OperationUIState state(Kind::modelUnavailable);
        state.m_reason = reason;
        return state;
    }

    // The status item's wording of a failed run: the state it is reported as.
    static OperationUIState forError(const RewriteError& error);

    Kind kind() const { return m_kind; }
    // The message of error.
    const QString& message() const { return m_message; }
    // The reason of modelUnavailable.
    const std::optional<UnavailableReason>& reason() const { return m_reason; }

    friend bool operator==(const OperationUIState& a, const OperationUIState& b) {
        return a.m_kind == b.m_kind && a.m_message == b.m_message && a.m_reason == b.m_reason;
    }

private:
    explicit OperationUIState(Kind kind) : m_kind(kind) {}

    Kind m_kind;
    QString m_message;
    std::optional<UnavailableReason> m_reason;
};

} // namespace scrivel
