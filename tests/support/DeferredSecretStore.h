#pragma once

#include "core/storage/SecretStore.h"

#include <QHash>
#include <QList>
#include <functional>

namespace scrivel::test {

// A secret store whose answers come only when the test says so, in any
// order. A read sees the items as they were when it was called (a slow
// lookup); a write or removal changes the items when it is answered. It
// records how many calls on one account were outstanding at once.
class DeferredSecretStore : public SecretStore {
public:
    Future<ReadResult> read(const QString& account) override;
    Future<WriteResult> write(const QString& account, const QByteArray& value) override;
    Future<WriteResult> remove(const QString& account) override;

    int pendingCount() const { return int(m_pending.size()); }
    // Answers the pending call at index (0 is the oldest).
    void answer(int index);

    QHash<QString, QByteArray> items;
    int mostOutstandingOnOneAccount = 0;

private:
    struct Pending {
        QString account;
        std::function<void()> answer;
    };
    void add(const QString& account, std::function<void()> answer);

    QList<Pending> m_pending;
};

} // namespace scrivel::test
