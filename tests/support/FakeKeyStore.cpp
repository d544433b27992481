#include "support/FakeKeyStore.h"

#include "core/pipeline/OutputCleaning.h"

namespace scrivel::test {

template <typename Result>
Future<Result> FakeKeyStore::answer(std::function<Result()> operation) {
    if (!holding)
        return Future<Result>::ready(operation());
    Promise<Result> promise;
    Future<Result> future = promise.future();
    m_held.append([promise, operation] { promise.resolve(operation()); });
    return future;
}

void FakeKeyStore::releaseHeld() {
    holding = false;
    const auto held = std::exchange(m_held, {});
    for (const auto& operation : held)
        operation();
}

Future<APIKeyProviding::KeyResult> FakeKeyStore::readKey(const QString& account) {
    log.append({Operation::Kind::read, account, {}});
    return answer<KeyResult>([this, account]() -> KeyResult {
        if (failReads)
            return std::unexpected(KeychainError::readFailed(-1));
        const auto found = keys.constFind(account);
        return found == keys.constEnd() ? std::optional<QString>() : std::optional(*found);
    });
}

Future<APIKeyProviding::VoidResult> FakeKeyStore::saveKey(const QString& key,
                                                          const QString& account) {
    log.append({Operation::Kind::save, account, key});
    return answer<VoidResult>([this, key, account]() -> VoidResult {
        if (failSaves)
            return std::unexpected(KeychainError::saveFailed(-1));
        if (key.contains(QLatin1Char('\n')))
            return std::unexpected(KeychainError::invalidKey());
        const QString trimmed = trimmedWhitespaceAndNewlines(key);
        if (trimmed.isEmpty())
            keys.remove(account);
        else
            keys.insert(account, trimmed);
        return {};
    });
}

Future<APIKeyProviding::VoidResult> FakeKeyStore::deleteKey(const QString& account) {
    log.append({Operation::Kind::remove, account, {}});
    return answer<VoidResult>([this, account]() -> VoidResult {
        if (failDeletes)
            return std::unexpected(KeychainError::deleteFailed(-1));
        keys.remove(account);
        return {};
    });
}

QList<FakeKeyStore::Operation> FakeKeyStore::operations(Operation::Kind kind) const {
    QList<Operation> matching;
    for (const Operation& operation : log)
        if (operation.kind == kind)
            matching.append(operation);
    return matching;
}

} // namespace scrivel::test
