#pragma once

#include "providers/SecretStore.h"

#include <QHash>
#include <QString>

namespace scrivel {

// The legacy secret store for systems where no Secret Service runs: one file
// in a directory only the user can enter (0700), itself readable only by the
// user (0600), replaced atomically on every change so a crash never leaves
// half a file.
class FileSecretStore : public SecretStore {
public:
    static constexpr int ioError = -36;

    // The default directory is the application's data directory.
    FileSecretStore();
    explicit FileSecretStore(const QString& directory);

    QString filePath() const;

    Future<ReadResult> read(const QString& account) override;
    Future<WriteResult> write(const QString& account, const QByteArray& value) override;
    Future<WriteResult> remove(const QString& account) override;

private:
    std::optional<QHash<QString, QByteArray>> load() const;
    bool store(const QHash<QString, QByteArray>& items) const;

    QString m_directory;
};

} // namespace scrivel
