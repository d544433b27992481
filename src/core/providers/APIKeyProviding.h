#pragma once

#include "core/providers/KeychainError.h"
#include "core/support/Future.h"

#include <QString>
#include <expected>
#include <optional>

namespace scrivel {

// Where clients, the hub and the editor read and save API keys.
class APIKeyProviding {
public:
    using KeyResult = std::expected<std::optional<QString>, KeychainError>;
    using VoidResult = std::expected<void, KeychainError>;

    virtual ~APIKeyProviding() = default;

    // The key of an account, or nothing when none is stored.
    virtual Future<KeyResult> readKey(const QString& account) = 0;
    // Stores a key; a key that is blank once trimmed deletes the account's key.
    virtual Future<VoidResult> saveKey(const QString& key, const QString& account) = 0;
    // Removes the account's key; an absent key is no error.
    virtual Future<VoidResult> deleteKey(const QString& account) = 0;
};

} // namespace scrivel
