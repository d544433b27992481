#include "platform/linux/QSettingsStore.h"

namespace scrivel {

QSettingsStore::QSettingsStore()
    : m_settings(std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                             QStringLiteral("Scrivel"),
                                             QStringLiteral("Scrivel"))) {}

QSettingsStore::QSettingsStore(const QString& iniFilePath)
    : m_settings(std::make_unique<QSettings>(iniFilePath, QSettings::IniFormat)) {}

std::optional<QByteArray> QSettingsStore::data(const QString& key) const {
    const QVariant value = m_settings->value(key);
    if (!value.isValid() || value.typeId() != QMetaType::QByteArray)
        return std::nullopt;
    return value.toByteArray();
}

std::optional<QString> QSettingsStore::text(const QString& key) const {
    const QVariant value = m_settings->value(key);
    if (!value.isValid())
        return std::nullopt;
    // INI files keep no types: a text reads back as a QString.
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

std::optional<bool> QSettingsStore::boolean(const QString& key) const {
    const QVariant value = m_settings->value(key);
    if (!value.isValid())
        return std::nullopt;
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    // Booleans come back from an INI file as the texts "true" and "false".
    const QString text = value.toString();
    if (text == QLatin1String("true"))
        return true;
    if (text == QLatin1String("false"))
        return false;
    return std::nullopt;
}

void QSettingsStore::write(const QString& key, const QVariant& value) {
    m_settings->setValue(key, value);
    m_settings->sync();
}

void QSettingsStore::setData(const QString& key, const QByteArray& value) {
    write(key, value);
}
void QSettingsStore::setText(const QString& key, const QString& value) {
    write(key, value);
}
void QSettingsStore::setBoolean(const QString& key, bool value) {
    write(key, value);
}

void QSettingsStore::remove(const QString& key) {
    m_settings->remove(key);
    m_settings->sync();
}

} // namespace scrivel
