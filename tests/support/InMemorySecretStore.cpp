#include "support/InMemorySecretStore.h"

namespace scrivel {

Future<SecretStore::ReadResult> InMemorySecretStore::read(const QString& account) {
    ++reads;
    if (readFailure)
        return Future<ReadResult>::ready(std::unexpected(readFailure));
    const auto it = items.constFind(account);
    if (it == items.constEnd())
        return Future<ReadResult>::ready(std::optional<QByteArray>());
    return Future<ReadResult>::ready(std::optional<QByteArray>(*it));
}

Future<SecretStore::WriteResult> InMemorySecretStore::write(const QString& account,
                                                            const QByteArray& value) {
    ++writes;
    if (writeFailure)
        return Future<WriteResult>::ready(std::unexpected(writeFailure));
    items.insert(account, value);
    return Future<WriteResult>::ready({});
}

Future<SecretStore::WriteResult> InMemorySecretStore::remove(const QString& account) {
    ++removals;
    if (removeFailure)
        return Future<WriteResult>::ready(std::unexpected(removeFailure));
    items.remove(account);
    return Future<WriteResult>::ready({});
}

} // namespace scrivel
