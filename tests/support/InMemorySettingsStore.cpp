#include "support/InMemorySettingsStore.h"

namespace scrivel {

std::optional<QByteArray> InMemorySettingsStore::data(const QString& key) const {
    const auto it = m_values.constFind(key);
    if (it == m_values.constEnd() || it->typeId() != QMetaType::QByteArray)
        return std::nullopt;
    return it->toByteArray();
}

std::optional<QString> InMemorySettingsStore::text(const QString& key) const {
    const auto it = m_values.constFind(key);
    if (it == m_values.constEnd() || it->typeId() != QMetaType::QString)
        return std::nullopt;
    return it->toString();
}

std::optional<bool> InMemorySettingsStore::boolean(const QString& key) const {
    const auto it = m_values.constFind(key);
    if (it == m_values.constEnd() || it->typeId() != QMetaType::Bool)
        return std::nullopt;
    return it->toBool();
}

void InMemorySettingsStore::setData(const QString& key, const QByteArray& value) {
    m_values.insert(key, value);
    ++m_writes;
}

void InMemorySettingsStore::setText(const QString& key, const QString& value) {
    m_values.insert(key, value);
    ++m_writes;
}

void InMemorySettingsStore::setBoolean(const QString& key, bool value) {
    m_values.insert(key, value);
    ++m_writes;
}

void InMemorySettingsStore::remove(const QString& key) {
    m_values.remove(key);
    ++m_writes;
}

} // namespace scrivel
