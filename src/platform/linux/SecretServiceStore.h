#pragma once

#include "core/storage/SecretStore.h"

#include <QObject>
#include <chrono>

namespace scrivel {

// Secret items in the freedesktop Secret Service (gnome-keyring, KWallet)
// through QtKeychain: one item per account under the given service. Never
// falls back to plain-text storage. Every job has a time-out, since a
// misbehaving session bus can leave a job waiting forever.
class SecretServiceStore : public QObject, public SecretStore {
    Q_OBJECT

public:
    // Status codes for failures QtKeychain reports.
    static constexpr int notAvailable = -25291;
    static constexpr int authorizationFailed = -25293;
    static constexpr int interactionNotAllowed = -25308; // also: the job timed out
    static constexpr int internalError = -26276;

    explicit SecretServiceStore(const QString& service, QObject* parent = nullptr);

    void setJobTimeout(std::chrono::milliseconds timeout) { m_timeout = timeout; }

    Future<ReadResult> read(const QString& account) override;
    Future<WriteResult> write(const QString& account, const QByteArray& value) override;
    Future<WriteResult> remove(const QString& account) override;

private:
    QString m_service;
    std::chrono::milliseconds m_timeout{15000};
};

} // namespace scrivel
