#pragma once

#include "core/storage/SettingsStore.h"

#include <QSettings>
#include <memory>

namespace scrivel {

// The user-defaults store on QSettings. Native format (an INI file under
// ~/.config/Scrivel on Linux, the real defaults domain on macOS); synced
// after every write so a crash loses nothing.
class QSettingsStore : public SettingsStore {
public:
    // The application's own store: organisation and application "Scrivel".
    QSettingsStore();
    // A store in the given INI file, for tests and tools.
    explicit QSettingsStore(const QString& iniFilePath);

    std::optional<QByteArray> data(const QString& key) const override;
    std::optional<QString> text(const QString& key) const override;
    std::optional<bool> boolean(const QString& key) const override;
    bool contains(const QString& key) const override { return m_settings->contains(key); }

    void setData(const QString& key, const QByteArray& value) override;
    void setText(const QString& key, const QString& value) override;
    void setBoolean(const QString& key, bool value) override;
    void remove(const QString& key) override;

    QString fileName() const { return m_settings->fileName(); }

private:
    void write(const QString& key, const QVariant& value);

    std::unique_ptr<QSettings> m_settings;
};

} // namespace scrivel
