#include "core/storage/ReportingSettingsStore.h"

namespace scrivel {

ReportingSettingsStore::ReportingSettingsStore(SettingsStore& store, QObject* parent)
    : QObject(parent), m_store(store), m_failure(store.readError()) {}

template <typename T>
T ReportingSettingsStore::noted(T result, bool isSettingsWrite) {
    const bool unreadable = m_failure && m_failure->kind() == SettingsStoreError::Kind::unreadable;
    if (!result) {
        if (!m_failure) {
            m_failure = result.error();
            Q_EMIT failed(*m_failure);
        }
    } else if (m_failure && !unreadable && isSettingsWrite) {
        m_failure.reset();
        Q_EMIT recovered();
    }
    return result;
}

SettingsStore::WriteResult ReportingSettingsStore::setData(const QString& key,
                                                           const QByteArray& value) {
    return noted(m_store.setData(key, value));
}

SettingsStore::WriteResult ReportingSettingsStore::setText(const QString& key,
                                                           const QString& value) {
    return noted(m_store.setText(key, value));
}

SettingsStore::WriteResult ReportingSettingsStore::setBoolean(const QString& key, bool value) {
    return noted(m_store.setBoolean(key, value));
}

SettingsStore::WriteResult ReportingSettingsStore::remove(const QString& key) {
    return noted(m_store.remove(key));
}

std::expected<QString, SettingsStoreError>
ReportingSettingsStore::keepCopy(const QString& prefix, const QByteArray& bytes) {
    // A copy that could be made says nothing about the settings file itself.
    return noted(m_store.keepCopy(prefix, bytes), false);
}

} // namespace scrivel
