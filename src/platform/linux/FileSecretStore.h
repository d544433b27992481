#pragma once

#include "core/storage/SecretStore.h"

#include <QHash>
#include <QString>
#include <expected>
#include <functional>

namespace scrivel {

// The legacy secret store for systems where no Secret Service runs: one file
// in a directory only the user can enter (0700), itself readable only by the
// user (0600), replaced atomically on every change so a crash never leaves
// half a file. Changes hold a lock file beside it while they re-read, change
// and replace the file, so two processes (the app and the CLI) writing at
// once never lose each other's keys.
//
// A file that exists but cannot be read is left as it is: every call fails
// with KeychainError::unreadableStore, and the damage handler hears of it
// once, with the file's path.
class FileSecretStore : public SecretStore {
public:
    static constexpr int ioError = -36;

    // The default directory is the application's data directory.
    FileSecretStore();
    explicit FileSecretStore(const QString& directory);

    QString filePath() const;

    // Told once per store which file is damaged. By default a warning in the
    // log.
    void setDamageHandler(std::function<void(const QString& path)> handler);
    // How long a change waits for another process's change to end.
    void setLockTimeout(int milliseconds) { m_lockTimeoutMs = milliseconds; }

    Future<ReadResult> read(const QString& account) override;
    Future<WriteResult> write(const QString& account, const QByteArray& value) override;
    Future<WriteResult> remove(const QString& account) override;

private:
    using Items = QHash<QString, QByteArray>;

    std::expected<Items, int> load();
    bool store(const Items& items) const;
    // Re-reads the file under the lock, applies change, and writes the result
    // when change says so.
    WriteResult change(const std::function<bool(Items&)>& change);

    QString m_directory;
    std::function<void(const QString&)> m_onDamage;
    bool m_damageReported = false;
    int m_lockTimeoutMs = 5000;
};

} // namespace scrivel
