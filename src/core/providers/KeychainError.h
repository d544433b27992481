#pragma once

#include <QString>

namespace scrivel {

// A failure of the key store. Carries the secret store's status code; never
// a key and never words for the user (callers word it).
class KeychainError {
public:
    enum class Kind {
        readFailed,
        saveFailed,
        deleteFailed,
        invalidData,
        invalidKey, // refused before saving: the key holds a control character
    };

    // Status codes with a meaning of their own.
    static constexpr int success = 0;
    static constexpr int itemNotFound = -25300;
    static constexpr int duplicateItem = -25299;
    // The store's data cannot be read at all (a damaged key file): nothing in
    // it can be found, and nothing is written over it.
    static constexpr int unreadableStore = -25295;
    // The store gave no answer in time: it waits on an unlock prompt that was
    // dismissed or never shown, or the service behind it hangs.
    static constexpr int noAnswer = -25308;

    static KeychainError readFailed(int status) { return {Kind::readFailed, status}; }
    static KeychainError saveFailed(int status) { return {Kind::saveFailed, status}; }
    static KeychainError deleteFailed(int status) { return {Kind::deleteFailed, status}; }
    static KeychainError invalidData() { return {Kind::invalidData, 0}; }
    static KeychainError invalidKey() { return {Kind::invalidKey, 0}; }

    Kind kind() const { return m_kind; }
    // The status code; invalidData and invalidKey have none.
    int status() const { return m_status; }
    bool hasStatus() const { return m_kind != Kind::invalidData && m_kind != Kind::invalidKey; }
    bool isNoAnswer() const { return hasStatus() && m_status == noAnswer; }

    // What a person saving a key is told: why the key was refused, or that
    // the credential store could not be reached.
    QString saveMessage() const;

    // For debug logs only.
    QString logDescription() const;

    friend bool operator==(const KeychainError&, const KeychainError&) = default;

private:
    KeychainError(Kind kind, int status) : m_kind(kind), m_status(status) {}

    Kind m_kind;
    int m_status;
};

} // namespace scrivel
