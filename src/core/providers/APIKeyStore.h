#pragma once

#include "core/providers/APIKeyProviding.h"
#include "core/storage/SecretStore.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QObject>
#include <chrono>
#include <deque>
#include <functional>

namespace scrivel {

// Reads, saves and deletes API keys, one per provider account, and keeps the
// keys it has seen for the rest of the process. Two secret stores may exist:
// the modern one (used when the system offers it) and a legacy one; keys
// found only in the legacy store move to the modern store when first read.
// A key that cannot be moved (the modern store refuses it) is still read:
// it stays in the legacy store, and a later read tries the move again, at
// most once per retry interval, while the key is answered from memory.
//
// The operations on one account take effect in the order they were called:
// each waits until the account's previous one has ended, so a slow read can
// never bring back a key that a later save replaced or a later delete
// removed, and a read called after a save sees the saved key. A save or
// delete, once called, runs to its end even when its caller stops waiting;
// a read that nobody waits for any more is skipped.
class APIKeyStore : public QObject, public APIKeyProviding {
    Q_OBJECT

public:
    // Every item's service.
    static QString service() { return QStringLiteral("com.scrivel.app"); }

    // Whether a key can go into a request header as it is: no control
    // characters (a pasted line break, a tab) and no line separators.
    static bool isStorableKey(const QString& trimmedKey);

    // modernAvailable answers whether the modern store is usable; it is asked
    // before each operation and is expected to remember its answer.
    APIKeyStore(SecretStore& modern, SecretStore& legacy,
                std::function<Future<bool>()> modernAvailable, QObject* parent = nullptr);

    // How long after a failed move of a legacy key the next read may try it
    // again (each try may ask the user to unlock the modern store).
    void setMoveRetryInterval(std::chrono::milliseconds interval) {
        m_moveRetryInterval = interval;
    }

    Future<KeyResult> readKey(const QString& account) override;
    // Fails with KeychainError::invalidKey, saving nothing, when the trimmed
    // key holds a control character.
    Future<VoidResult> saveKey(const QString& key, const QString& account) override;
    Future<VoidResult> deleteKey(const QString& account) override;

Q_SIGNALS:
    // A save or delete of the account's key ended, whether or not it
    // succeeded: what a read answers may have changed.
    void keyChanged(const QString& account);

private:
    struct AccountQueue {
        bool running = false;
        std::deque<std::function<void()>> waiting;
    };

    template <typename T>
    Future<T> enqueue(const QString& account, bool skipWhenAbandoned,
                      std::function<Future<T>()> operation);
    void startNext(const QString& account);
    void operationEnded(const QString& account);

    Future<KeyResult> readNow(const QString& account);
    Future<VoidResult> saveNow(const QString& trimmedKey, const QString& account);
    Future<VoidResult> deleteNow(const QString& account);
    Future<VoidResult> announcingChange(const QString& account, Future<VoidResult> change);
    Future<KeyResult> readItem(SecretStore& store, const QString& account);
    Future<KeyResult> readModernFirst(const QString& account);
    Future<VoidResult> saveTrimmed(const QString& key, const QString& account, bool modern);
    Future<VoidResult> deleteFrom(bool modern, const QString& account);
    // Queues another try at moving the account's legacy key, when one is due.
    void retryMoveIfDue(const QString& account);
    Future<KeyResult> retryMoveNow(const QString& account);

    SecretStore& m_modern;
    SecretStore& m_legacy;
    std::function<Future<bool>()> m_modernAvailable;
    QHash<QString, QString> m_sessionCache;
    QHash<QString, AccountQueue> m_queues;
    // Accounts whose key is only in the legacy store because moving it
    // failed, each with when the move may be tried again.
    QHash<QString, QDeadlineTimer> m_unmoved;
    std::chrono::milliseconds m_moveRetryInterval{std::chrono::minutes(10)};
};

} // namespace scrivel
