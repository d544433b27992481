#pragma once

#include "core/providers/KeychainError.h"
#include "core/storage/SecretStore.h"

#include <QObject>
#include <chrono>
#include <expected>
#include <optional>

namespace scrivel {

// Secret items in the freedesktop Secret Service (gnome-keyring, KWallet)
// through QtKeychain: one item per account under the given service. Never
// falls back to plain-text storage. Every job has a time-out, since a
// misbehaving session bus can leave a job waiting forever.
//
// An item in a locked collection is read only once the collection is
// unlocked, which takes the user's answer to an unlock prompt. When that
// prompt is dismissed, or cannot be shown at all, QtKeychain reports the
// item as not found. So a "not found" from QtKeychain, and a removal it
// reports done, are checked with the service itself: an item that is still
// there, locked, makes the call fail with locked. "Not found" means that
// the service holds no item for the account.
class SecretServiceStore : public QObject, public SecretStore {
    Q_OBJECT

public:
    // Status codes for failures QtKeychain reports.
    static constexpr int notAvailable = -25291;
    static constexpr int authorizationFailed = -25293;
    static constexpr int interactionNotAllowed = KeychainError::noAnswer; // also: the job timed out
    static constexpr int internalError = -26276;
    // The account's item is in a collection that stayed locked.
    static constexpr int locked = -25315;

    explicit SecretServiceStore(const QString& service, QObject* parent = nullptr);

    void setJobTimeout(std::chrono::milliseconds timeout) { m_timeout = timeout; }

    Future<ReadResult> read(const QString& account) override;
    Future<WriteResult> write(const QString& account, const QByteArray& value) override;
    Future<WriteResult> remove(const QString& account) override;

private:
    struct Matches {
        bool unlocked = false;
        bool locked = false;
    };
    // Which items of the account the service holds, asked directly.
    Future<std::expected<Matches, int>> matchingItems(const QString& account);
    // Nothing when the service holds no item of the account, else why the
    // call that expected none must fail.
    Future<std::optional<int>> remainingItem(const QString& account);

    QString m_service;
    std::chrono::milliseconds m_timeout{15000};
};

} // namespace scrivel
