#pragma once

#include "core/storage/SettingsStoreError.h"

#include <QByteArray>
#include <QString>
#include <expected>
#include <optional>

namespace scrivel {

// The user-defaults store: small values under string keys. Every write is
// durable when it reports success; a write that fails leaves the value held
// in memory, and the next write tries to store everything again.
class SettingsStore {
public:
    using WriteResult = std::expected<void, SettingsStoreError>;

    virtual ~SettingsStore() = default;

    // Why the stored settings could not be read when the store was opened.
    // An unreadable store reads as empty but is not: nothing must be written
    // over it as though it were.
    virtual std::optional<SettingsStoreError> readError() const { return std::nullopt; }

    virtual std::optional<QByteArray> data(const QString& key) const = 0;
    virtual std::optional<QString> text(const QString& key) const = 0;
    virtual std::optional<bool> boolean(const QString& key) const = 0;
    // Whether anything at all is stored under the key, readable or not.
    virtual bool contains(const QString& key) const {
        return data(key) || text(key) || boolean(key);
    }

    virtual WriteResult setData(const QString& key, const QByteArray& value) = 0;
    virtual WriteResult setText(const QString& key, const QString& value) = 0;
    virtual WriteResult setBoolean(const QString& key, bool value) = 0;
    virtual WriteResult remove(const QString& key) = 0;

    // Writes bytes, unchanged, to a new file beside the settings whose name
    // starts with prefix and ends in ".json", and returns its path. When a
    // copy with the same bytes already exists there, that one is returned and
    // nothing is written.
    virtual std::expected<QString, SettingsStoreError> keepCopy(const QString& prefix,
                                                                const QByteArray& bytes) = 0;
};

} // namespace scrivel
