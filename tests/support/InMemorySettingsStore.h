#pragma once

#include "core/storage/SettingsStore.h"

#include <QHash>
#include <QVariant>

namespace scrivel {

// Settings kept in memory; counts writes so tests can prove that an operation
// wrote nothing.
class InMemorySettingsStore : public SettingsStore {
public:
    std::optional<QByteArray> data(const QString& key) const override;
    std::optional<QString> text(const QString& key) const override;
    std::optional<bool> boolean(const QString& key) const override;

    void setData(const QString& key, const QByteArray& value) override;
    void setText(const QString& key, const QString& value) override;
    void setBoolean(const QString& key, bool value) override;
    void remove(const QString& key) override;

    int writeCount() const { return m_writes; }
    bool contains(const QString& key) const override { return m_values.contains(key); }

private:
    QHash<QString, QVariant> m_values;
    int m_writes = 0;
};

} // namespace scrivel
