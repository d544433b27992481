#pragma once

#include "core/storage/SecretStore.h"

#include <QHash>

namespace scrivel {

// Secret items in memory, with counters and injectable failures for tests.
class InMemorySecretStore : public SecretStore {
public:
    Future<ReadResult> read(const QString& account) override;
    Future<WriteResult> write(const QString& account, const QByteArray& value) override;
    Future<WriteResult> remove(const QString& account) override;

    QHash<QString, QByteArray> items;
    int reads = 0;
    int writes = 0;
    int removals = 0;
    // A non-zero status makes every call of that kind fail with it.
    int readFailure = 0;
    int writeFailure = 0;
    int removeFailure = 0;
};

} // namespace scrivel
