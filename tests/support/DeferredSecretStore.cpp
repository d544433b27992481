#include "support/DeferredSecretStore.h"

#include <algorithm>

namespace scrivel::test {

void DeferredSecretStore::add(const QString& account, std::function<void()> answer) {
    m_pending.append({account, std::move(answer)});
    const auto outstanding = std::count_if(m_pending.begin(), m_pending.end(),
                                           [&](const Pending& p) { return p.account == account; });
    mostOutstandingOnOneAccount = std::max(mostOutstandingOnOneAccount, int(outstanding));
}

void DeferredSecretStore::answer(int index) {
    const Pending pending = m_pending.takeAt(index);
    pending.answer();
}

Future<SecretStore::ReadResult> DeferredSecretStore::read(const QString& account) {
    Promise<ReadResult> promise;
    const auto it = items.constFind(account);
    const ReadResult seen =
        it == items.constEnd() ? ReadResult(std::nullopt) : ReadResult(std::optional(*it));
    add(account, [promise, seen] { promise.resolve(seen); });
    return promise.future();
}

Future<SecretStore::WriteResult> DeferredSecretStore::write(const QString& account,
                                                            const QByteArray& value) {
    Promise<WriteResult> promise;
    add(account, [this, promise, account, value] {
        items.insert(account, value);
        promise.resolve({});
    });
    return promise.future();
}

Future<SecretStore::WriteResult> DeferredSecretStore::remove(const QString& account) {
    Promise<WriteResult> promise;
    add(account, [this, promise, account] {
        items.remove(account);
        promise.resolve({});
    });
    return promise.future();
}

} // namespace scrivel::test
