#include "support/FakeKeyStore.h"

#include "core/pipeline/OutputCleaning.h"

namespace scrivel::test {

Future<APIKeyProviding::KeyResult> FakeKeyStore::readKey(const QString& account) {
    log.append({Operation::Kind::read, account, {}});
    if (failReads)
        return Future<KeyResult>::ready(std::unexpected(KeychainError::readFailed(-1)));
    const auto found = keys.constFind(account);
    return Future<KeyResult>::ready(found == keys.constEnd() ? std::optional<QString>()
                                                             : std::optional(*found));
}

Future<APIKeyProviding::VoidResult> FakeKeyStore::saveKey(const QString& key,
                                                          const QString& account) {
    log.append({Operation::Kind::save, account, key});
    if (failSaves)
        return Future<VoidResult>::ready(std::unexpected(KeychainError::saveFailed(-1)));
    if (key.contains(QLatin1Char('\n')))
        return Future<VoidResult>::ready(std::unexpected(KeychainError::invalidKey()));
    const QString trimmed = trimmedWhitespaceAndNewlines(key);
    if (trimmed.isEmpty())
        keys.remove(account);
    else
        keys.insert(account, trimmed);
    return Future<VoidResult>::ready({});
}

Future<APIKeyProviding::VoidResult> FakeKeyStore::deleteKey(const QString& account) {
    log.append({Operation::Kind::remove, account, {}});
    if (failDeletes)
        return Future<VoidResult>::ready(std::unexpected(KeychainError::deleteFailed(-1)));
    keys.remove(account);
    return Future<VoidResult>::ready({});
}

QList<FakeKeyStore::Operation> FakeKeyStore::operations(Operation::Kind kind) const {
    QList<Operation> matching;
    for (const Operation& operation : log)
        if (operation.kind == kind)
            matching.append(operation);
    return matching;
}

} // namespace scrivel::test
