#pragma once

#include "core/storage/SettingsStore.h"

#include <QSettings>
#include <functional>
#include <memory>

namespace scrivel {

// The user-defaults store on QSettings. Native format (an INI file under
// ~/.config/Scrivel on Linux, the real defaults domain on macOS); synced
// after every write, which reports whether the file was really written.
//
// A file that exists but cannot be read (permissions, a folder in its place,
// contents QSettings cannot parse) reads as empty and is never written over:
// every write reports it unreadable. A write that fails keeps its value in
// memory, and the next write stores everything again.
class QSettingsStore : public SettingsStore {
public:
    // The application's own store: organisation and application "Scrivel".
    QSettingsStore();
    // A store in the given INI file, for tests and tools.
    explicit QSettingsStore(const QString& iniFilePath);

    std::optional<SettingsStoreError> readError() const override { return m_readError; }
    std::optional<QByteArray> data(const QString& key) const override;
    std::optional<QString> text(const QString& key) const override;
    std::optional<bool> boolean(const QString& key) const override;
    bool contains(const QString& key) const override { return m_settings->contains(key); }

    WriteResult setData(const QString& key, const QByteArray& value) override;
    WriteResult setText(const QString& key, const QString& value) override;
    WriteResult setBoolean(const QString& key, bool value) override;
    WriteResult remove(const QString& key) override;
    // The copy goes into the settings file's folder, named
    // <prefix>-<yyyy-MM-dd>-<HHmmss>.json after the local time.
    std::expected<QString, SettingsStoreError> keepCopy(const QString& prefix,
                                                        const QByteArray& bytes) override;

    QString fileName() const { return m_settings->fileName(); }

private:
    void checkReadable();
    WriteResult change(const std::function<void(QSettings&)>& change);

    std::unique_ptr<QSettings> m_settings;
    std::optional<SettingsStoreError> m_readError;
    // QSettings keeps reporting an error once it has had one; after a failed
    // write the next one starts from a fresh QSettings over the same file.
    bool m_lastWriteFailed = false;
};

} // namespace scrivel
