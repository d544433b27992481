#include "core/providers/APIKeyStore.h"

#include "core/support/Log.h"
#include "core/support/UnicodeText.h"

#include <QStringDecoder>
#include <algorithm>

namespace scrivel {

namespace {

using KeyResult = APIKeyProviding::KeyResult;
using VoidResult = APIKeyProviding::VoidResult;

template <typename T>
Future<T> ready(T value) {
    return Future<T>::ready(std::move(value));
}

// A stored item must be non-empty UTF-8 text once trimmed.
std::optional<QString> keyFromBytes(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    const QString trimmed = trimmedWhitespaceAndNewlines(text);
    // A stored key that could not go into a header as it is counts as
    // unreadable rather than being sent.
    if (trimmed.isEmpty() || !APIKeyStore::isStorableKey(trimmed))
        return std::nullopt;
    return trimmed;
}

void logLegacyCleanupFailure(int status) {
    qCWarning(rewriteLog).noquote()
        << QStringLiteral("legacy key cleanup failed status=%1").arg(status);
}

void logMoveFailure(const KeychainError& error) {
    qCWarning(rewriteLog).noquote()
        << QStringLiteral("legacy key move failed %1").arg(error.logDescription());
}

} // namespace

bool APIKeyStore::isStorableKey(const QString& trimmedKey) {
    return std::none_of(trimmedKey.begin(), trimmedKey.end(), [](QChar c) {
        return c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
               c == QChar::ParagraphSeparator;
    });
}

APIKeyStore::APIKeyStore(SecretStore& modern, SecretStore& legacy,
                         std::function<Future<bool>()> modernAvailable, QObject* parent)
    : QObject(parent), m_modern(modern), m_legacy(legacy),
      m_modernAvailable(std::move(modernAvailable)) {}

Future<KeyResult> APIKeyStore::readItem(SecretStore& store, const QString& account) {
    return mapFuture(store.read(account), this, [](SecretStore::ReadResult result) -> KeyResult {
        if (!result)
            return std::unexpected(KeychainError::readFailed(result.error()));
        if (!*result)
            return std::optional<QString>();
        const auto key = keyFromBytes(**result);
        if (!key)
            return std::unexpected(KeychainError::invalidData());
        return key;
    });
}

template <typename T>
Future<T> APIKeyStore::enqueue(const QString& account, bool skipWhenAbandoned,
                               std::function<Future<T>()> operation) {
    Promise<T> promise;
    Future<T> future = promise.future();
    m_queues[account].waiting.push_back(
        [this, account, skipWhenAbandoned, promise, operation = std::move(operation)] {
            if (skipWhenAbandoned && promise.isCancelled()) {
                operationEnded(account);
                return;
            }
            // Detached: the operation runs to its end whatever the caller
            // does, so the next one never starts while it is under way.
            operation().detach(this, [this, account, promise](T value) {
                promise.resolve(std::move(value));
                operationEnded(account);
            });
        });
    startNext(account);
    return future;
}

void APIKeyStore::startNext(const QString& account) {
    const auto it = m_queues.find(account);
    if (it == m_queues.end() || it->running)
        return;
    if (it->waiting.empty()) {
        m_queues.erase(it);
        return;
    }
    it->running = true;
    const std::function<void()> next = std::move(it->waiting.front());
    it->waiting.pop_front();
    next(); // may end at once and start the one after it
}

void APIKeyStore::operationEnded(const QString& account) {
    const auto it = m_queues.find(account);
    if (it == m_queues.end())
        return;
    it->running = false;
    startNext(account);
}

Future<KeyResult> APIKeyStore::readKey(const QString& account) {
    // The cache answers at once only when nothing on the account is pending:
    // a save or delete called earlier must take effect first.
    if (!m_queues.contains(account)) {
        if (const auto it = m_sessionCache.constFind(account); it != m_sessionCache.constEnd()) {
            Future<KeyResult> cached = ready(KeyResult(*it));
            retryMoveIfDue(account);
            return cached;
        }
    }
    Future<KeyResult> read =
        enqueue<KeyResult>(account, true, [this, account] { return readNow(account); });
    retryMoveIfDue(account);
    return read;
}

void APIKeyStore::retryMoveIfDue(const QString& account) {
    const auto it = m_unmoved.find(account);
    if (it == m_unmoved.end() || !it->hasExpired())
        return;
    // One try per interval, whatever becomes of it.
    *it = QDeadlineTimer(m_moveRetryInterval);
    enqueue<KeyResult>(account, false, [this, account] {
        return retryMoveNow(account);
    }).detach(this, [](KeyResult) {});
}

Future<KeyResult> APIKeyStore::retryMoveNow(const QString& account) {
    // A save or delete since then has settled the account.
    if (!m_unmoved.contains(account))
        return ready(KeyResult(std::optional<QString>()));
    return chainFuture(m_modernAvailable(), this, [this, account](bool modern) {
        if (!modern)
            return ready(KeyResult(std::optional<QString>()));
        // The whole read again: a key that reached the modern store in the
        // meantime wins over the legacy one.
        return mapFuture(readModernFirst(account), this, [this, account](KeyResult result) {
            if (result && *result)
                m_sessionCache.insert(account, **result);
            return result;
        });
    });
}

Future<KeyResult> APIKeyStore::readNow(const QString& account) {
    if (const auto it = m_sessionCache.constFind(account); it != m_sessionCache.constEnd())
        return ready(KeyResult(*it));
    return chainFuture(m_modernAvailable(), this, [this, account](bool modern) {
        Future<KeyResult> read = modern ? readModernFirst(account) : readItem(m_legacy, account);
        return mapFuture(std::move(read), this, [this, account](KeyResult result) {
            if (result && *result)
                m_sessionCache.insert(account, **result);
            return result;
        });
    });
}

Future<KeyResult> APIKeyStore::readModernFirst(const QString& account) {
    return chainFuture(readItem(m_modern, account), this, [this, account](KeyResult modern) {
        if (!modern)
            return ready(modern);
        if (*modern) {
            // The modern item wins; a leftover legacy copy goes. The legacy
            // store is a fallback, never a gate: a failure there (a damaged
            // key file) must not hide the key the modern store holds.
            m_unmoved.remove(account);
            const QString key = **modern;
            return mapFuture(m_legacy.remove(account), this,
                             [key](SecretStore::WriteResult removed) -> KeyResult {
                                 if (!removed)
                                     logLegacyCleanupFailure(removed.error());
                                 return std::optional<QString>(key);
                             });
        }
        return chainFuture(readItem(m_legacy, account), this, [this, account](KeyResult legacy) {
            if (legacy && !*legacy)
                m_unmoved.remove(account);
            if (!legacy || !*legacy)
                return ready(legacy);
            const QString key = **legacy;
            // Already this account's turn: save directly, not through the
            // queue. The key has been read whatever becomes of the move; one
            // that fails leaves it in the legacy store for a later try.
            return mapFuture(saveNow(key, account), this,
                             [this, key, account](VoidResult saved) -> KeyResult {
                                 if (saved) {
                                     m_unmoved.remove(account);
                                 } else {
                                     logMoveFailure(saved.error());
                                     m_unmoved.insert(account, QDeadlineTimer(m_moveRetryInterval));
                                 }
                                 return std::optional<QString>(key);
                             });
        });
    });
}

Future<VoidResult> APIKeyStore::saveKey(const QString& key, const QString& account) {
    const QString trimmed = trimmedWhitespaceAndNewlines(key);
    if (trimmed.isEmpty())
        return deleteKey(account);
    if (!isStorableKey(trimmed))
        return ready(VoidResult(std::unexpected(KeychainError::invalidKey())));
    return enqueue<VoidResult>(account, false, [this, trimmed, account] {
        return announcingChange(account, saveNow(trimmed, account));
    });
}

Future<VoidResult> APIKeyStore::saveNow(const QString& trimmedKey, const QString& account) {
    return chainFuture(m_modernAvailable(), this, [this, trimmedKey, account](bool modern) {
        return saveTrimmed(trimmedKey, account, modern);
    });
}

Future<VoidResult> APIKeyStore::saveTrimmed(const QString& key, const QString& account,
                                            bool modern) {
    auto remember = [this, key, account, modern](VoidResult result) {
        if (result)
            m_sessionCache.insert(account, key);
        // In the modern store, with the legacy copy gone or never read again.
        if (result && modern)
            m_unmoved.remove(account);
        return result;
    };
    SecretStore& target = modern ? m_modern : m_legacy;
    auto written =
        mapFuture(target.write(account, key.toUtf8()), this,
                  [](SecretStore::WriteResult result) -> VoidResult {
                      if (!result)
                          return std::unexpected(KeychainError::saveFailed(result.error()));
                      return {};
                  });
    if (!modern)
        return mapFuture(std::move(written), this, remember);

    auto legacyRemoved = chainFuture(std::move(written), this, [this, account](VoidResult result) {
        if (!result)
            return ready(result);
        // The key is in the modern store, which is read first: a legacy copy
        // that cannot be removed never wins over it.
        return mapFuture(m_legacy.remove(account), this,
                         [](SecretStore::WriteResult removed) -> VoidResult {
                             if (!removed)
                                 logLegacyCleanupFailure(removed.error());
                             return {};
                         });
    });
    return mapFuture(std::move(legacyRemoved), this, remember);
}

Future<VoidResult> APIKeyStore::deleteKey(const QString& account) {
    return enqueue<VoidResult>(
        account, false, [this, account] { return announcingChange(account, deleteNow(account)); });
}

Future<VoidResult> APIKeyStore::announcingChange(const QString& account,
                                                 Future<VoidResult> change) {
    // Before the caller hears of it: a listener that reads the key at once
    // is queued behind the account's change and sees its outcome.
    return mapFuture(std::move(change), this, [this, account](VoidResult result) {
        Q_EMIT keyChanged(account);
        return result;
    });
}

Future<VoidResult> APIKeyStore::deleteNow(const QString& account) {
    // Gone from the cache whatever becomes of the removal.
    m_sessionCache.remove(account);
    return chainFuture(m_modernAvailable(), this, [this, account](bool modern) {
        return mapFuture(deleteFrom(modern, account), this, [this, account](VoidResult result) {
            if (result)
                m_unmoved.remove(account);
            return result;
        });
    });
}

Future<VoidResult> APIKeyStore::deleteFrom(bool modern, const QString& account) {
    auto removeFrom = [this](SecretStore& store, const QString& account) {
        return mapFuture(
            store.remove(account), this, [](SecretStore::WriteResult removed) -> VoidResult {
                if (!removed)
                    return std::unexpected(KeychainError::deleteFailed(removed.error()));
                return {};
            });
    };
    if (!modern)
        return removeFrom(m_legacy, account);
    return chainFuture(
        removeFrom(m_modern, account), this, [this, account, removeFrom](VoidResult result) {
            if (!result)
                return ready(result);
            // A legacy store that cannot be read at all holds
            // nothing that could come back.
            return mapFuture(
                removeFrom(m_legacy, account), this, [](VoidResult removed) -> VoidResult {
                    if (!removed && removed.error().status() == KeychainError::unreadableStore) {
                        logLegacyCleanupFailure(KeychainError::unreadableStore);
                        return {};
                    }
                    return removed;
                });
        });
}

} // namespace scrivel
