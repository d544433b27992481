#pragma once

#include "providers/APIKeyProviding.h"
#include "providers/SecretStore.h"

#include <QHash>
#include <QObject>
#include <functional>

namespace scrivel {

// Reads, saves and deletes API keys, one per provider account, and keeps the
// keys it has seen for the rest of the process. Two secret stores may exist:
// the modern one (used when the system offers it) and a legacy one; keys
// found only in the legacy store move to the modern store when first read.
class APIKeyStore : public QObject, public APIKeyProviding {
    Q_OBJECT

public:
    // Every item's service.
    static QString service() { return QStringLiteral("com.scrivel.app"); }

    // modernAvailable answers whether the modern store is usable; it is asked
    // before each operation and is expected to remember its answer.
    APIKeyStore(SecretStore& modern, SecretStore& legacy,
                std::function<Future<bool>()> modernAvailable, QObject* parent = nullptr);

    Future<KeyResult> readKey(const QString& account) override;
    Future<VoidResult> saveKey(const QString& key, const QString& account) override;
    Future<VoidResult> deleteKey(const QString& account) override;

private:
    Future<KeyResult> readItem(SecretStore& store, const QString& account);
    Future<KeyResult> readModernFirst(const QString& account);
    Future<VoidResult> saveTrimmed(const QString& key, const QString& account, bool modern);
    Future<VoidResult> deleteFrom(bool modern, const QString& account);

    SecretStore& m_modern;
    SecretStore& m_legacy;
    std::function<Future<bool>()> m_modernAvailable;
    QHash<QString, QString> m_sessionCache;
};

} // namespace scrivel
