#pragma once

#include "core/support/Future.h"

#include <QByteArray>
#include <QString>
#include <expected>
#include <optional>

namespace scrivel {

// A per-user store of secret items, one item per account, under one service.
// Failures carry a status code (KeychainError's codes: 0 success, -25300 not
// found, -25299 duplicate; adapters map their own failures to other
// negative codes).
class SecretStore {
public:
    // The item's bytes, nothing when there is no item, or a failure status.
    using ReadResult = std::expected<std::optional<QByteArray>, int>;
    using WriteResult = std::expected<void, int>;

    virtual ~SecretStore() = default;

    virtual Future<ReadResult> read(const QString& account) = 0;
    // Updates the account's item, or adds it when there is none.
    virtual Future<WriteResult> write(const QString& account, const QByteArray& value) = 0;
    // Removes the account's item; an absent item is no failure.
    virtual Future<WriteResult> remove(const QString& account) = 0;
};

} // namespace scrivel
