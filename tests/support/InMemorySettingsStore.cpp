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

SettingsStore::WriteResult InMemorySettingsStore::write(const QString& key, const QVariant& value) {
    ++m_writes;
    if (m_readError)
        return std::unexpected(*m_readError);
    if (m_failingWrites)
        return std::unexpected(
            SettingsStoreError(SettingsStoreError::Kind::unwritable, QStringLiteral("memory:")));
    if (value.isValid())
        m_values.insert(key, value);
    else
        m_values.remove(key);
    return {};
}

SettingsStore::WriteResult InMemorySettingsStore::setData(const QString& key,
                                                          const QByteArray& value) {
    return write(key, value);
}

SettingsStore::WriteResult InMemorySettingsStore::setText(const QString& key,
                                                          const QString& value) {
    return write(key, value);
}

SettingsStore::WriteResult InMemorySettingsStore::setBoolean(const QString& key, bool value) {
    return write(key, value);
}

SettingsStore::WriteResult InMemorySettingsStore::remove(const QString& key) {
    return write(key, QVariant());
}

std::expected<QString, SettingsStoreError>
InMemorySettingsStore::keepCopy(const QString& prefix, const QByteArray& bytes) {
    for (auto it = m_copies.cbegin(); it != m_copies.cend(); ++it) {
        if (it.value() == bytes)
            return it.key();
    }
    const QString name = QStringLiteral("memory:%1-%2.json").arg(prefix).arg(m_copies.size() + 1);
    if (m_failingCopies)
        return std::unexpected(SettingsStoreError(SettingsStoreError::Kind::unwritable, name));
    m_copies.insert(name, bytes);
    return name;
}

} // namespace scrivel
