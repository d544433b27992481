#include "platform/linux/QSettingsStore.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace scrivel {

QSettingsStore::QSettingsStore()
    : m_settings(std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                             QStringLiteral("Scrivel"),
                                             QStringLiteral("Scrivel"))) {
    checkReadable();
}

QSettingsStore::QSettingsStore(const QString& iniFilePath)
    : m_settings(std::make_unique<QSettings>(iniFilePath, QSettings::IniFormat)) {
    checkReadable();
}

void QSettingsStore::checkReadable() {
    // No file yet is simply no settings. QSettings' own status cannot tell a
    // file it could not read from one it could not write (another store on
    // the same file may have left a change pending), so the file is asked
    // directly, and only a parse failure is taken from QSettings.
    const QString path = fileName();
    const QFileInfo info(path);
    if (!info.exists())
        return;
    QFile file(path);
    if (!info.isFile() || !file.open(QIODevice::ReadOnly) ||
        m_settings->status() == QSettings::FormatError)
        m_readError = SettingsStoreError(SettingsStoreError::Kind::unreadable, path);
}

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

SettingsStore::WriteResult QSettingsStore::change(const std::function<void(QSettings&)>& apply) {
    if (m_readError)
        return std::unexpected(*m_readError);
    if (m_lastWriteFailed) {
        // The fresh instance shares the file's pending changes with the old
        // one (QSettings keeps one cache per file), so the new one is made
        // before the old one goes.
        auto fresh = std::make_unique<QSettings>(fileName(), m_settings->format());
        m_settings = std::move(fresh);
    }
    apply(*m_settings);
    m_settings->sync();
    m_lastWriteFailed = m_settings->status() != QSettings::NoError;
    if (m_lastWriteFailed)
        return std::unexpected(
            SettingsStoreError(SettingsStoreError::Kind::unwritable, fileName()));
    return {};
}

SettingsStore::WriteResult QSettingsStore::setData(const QString& key, const QByteArray& value) {
    return change([&](QSettings& settings) { settings.setValue(key, value); });
}

SettingsStore::WriteResult QSettingsStore::setText(const QString& key, const QString& value) {
    return change([&](QSettings& settings) { settings.setValue(key, value); });
}

SettingsStore::WriteResult QSettingsStore::setBoolean(const QString& key, bool value) {
    return change([&](QSettings& settings) { settings.setValue(key, value); });
}

SettingsStore::WriteResult QSettingsStore::remove(const QString& key) {
    return change([&](QSettings& settings) { settings.remove(key); });
}

std::expected<QString, SettingsStoreError> QSettingsStore::keepCopy(const QString& prefix,
                                                                    const QByteArray& bytes) {
    const QDir folder = QFileInfo(fileName()).absoluteDir();
    // The same data found damaged again (at every start until the list is
    // saved) is copied once.
    const QStringList earlier =
        folder.entryList({prefix + QStringLiteral("-*.json")}, QDir::Files, QDir::Name);
    for (const QString& name : earlier) {
        QFile copy(folder.filePath(name));
        if (copy.size() == bytes.size() && copy.open(QIODevice::ReadOnly) &&
            copy.readAll() == bytes)
            return copy.fileName();
    }

    const QString stamp =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd-HHmmss"));
    QString path = folder.filePath(QStringLiteral("%1-%2.json").arg(prefix, stamp));
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = folder.filePath(QStringLiteral("%1-%2-%3.json").arg(prefix, stamp).arg(n));
    QSaveFile copy(path);
    if (!folder.mkpath(QStringLiteral(".")) || !copy.open(QIODevice::WriteOnly) ||
        copy.write(bytes) != bytes.size() || !copy.commit())
        return std::unexpected(SettingsStoreError(SettingsStoreError::Kind::unwritable, path));
    return path;
}

} // namespace scrivel
