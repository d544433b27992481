#pragma once

#include <QCoreApplication>
#include <QString>

namespace scrivel {

// Why a preset cannot run now. Three reasons carry a sentence chosen where the
// reason is found; the other three have a fixed sentence.
class UnavailableReason {
    Q_DECLARE_TR_FUNCTIONS(UnavailableReason)

public:
    enum class Kind {
        modelNotReady,
        misconfigured,
        other,
        missingAPIKey,
        keychainError,
        rejectedAPIKey,
    };

    static UnavailableReason modelNotReady(const QString& message) {
        return {Kind::modelNotReady, message};
    }
    static UnavailableReason misconfigured(const QString& message) {
        return {Kind::misconfigured, message};
    }
    static UnavailableReason other(const QString& message) { return {Kind::other, message}; }
    static UnavailableReason missingAPIKey() { return {Kind::missingAPIKey, {}}; }
    static UnavailableReason keychainError() { return {Kind::keychainError, {}}; }
    static UnavailableReason rejectedAPIKey() { return {Kind::rejectedAPIKey, {}}; }

    Kind kind() const { return m_kind; }
    // The sentence given with the first three kinds; empty for the others.
    const QString& payload() const { return m_payload; }
    // The user-facing sentence.
    QString message() const;

    friend bool operator==(const UnavailableReason& a, const UnavailableReason& b) {
        return a.m_kind == b.m_kind && a.m_payload == b.m_payload;
    }

private:
    UnavailableReason(Kind kind, QString payload) : m_kind(kind), m_payload(std::move(payload)) {}

    Kind m_kind;
    QString m_payload;
};

} // namespace scrivel
