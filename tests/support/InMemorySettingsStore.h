#pragma once

#include "core/storage/SettingsStore.h"

#include <QHash>
#include <QMap>
#include <QVariant>

namespace scrivel {

// Settings kept in memory; counts writes so tests can prove that an operation
// wrote nothing, and can be told to fail the way a real file does.
class InMemorySettingsStore : public SettingsStore {
public:
    std::optional<SettingsStoreError> readError() const override { return m_readError; }
    std::optional<QByteArray> data(const QString& key) const override;
    std::optional<QString> text(const QString& key) const override;
    std::optional<bool> boolean(const QString& key) const override;

    WriteResult setData(const QString& key, const QByteArray& value) override;
    WriteResult setText(const QString& key, const QString& value) override;
    WriteResult setBoolean(const QString& key, bool value) override;
    WriteResult remove(const QString& key) override;
    // Copies live in copies(), under "memory:<prefix>-<n>.json".
    std::expected<QString, SettingsStoreError> keepCopy(const QString& prefix,
                                                        const QByteArray& bytes) override;

    int writeCount() const { return m_writes; }
    bool contains(const QString& key) const override { return m_values.contains(key); }
    const QMap<QString, QByteArray>& copies() const { return m_copies; }

    // From now on: the settings read as unreadable (and every write fails
    // with that), writes fail and store nothing, copies fail.
    void setReadError(std::optional<SettingsStoreError> error) { m_readError = std::move(error); }
    void setFailingWrites(bool failing) { m_failingWrites = failing; }
    void setFailingCopies(bool failing) { m_failingCopies = failing; }

private:
    WriteResult write(const QString& key, const QVariant& value);

    QHash<QString, QVariant> m_values;
    QMap<QString, QByteArray> m_copies;
    std::optional<SettingsStoreError> m_readError;
    bool m_failingWrites = false;
    bool m_failingCopies = false;
    int m_writes = 0;
};

} // namespace scrivel
