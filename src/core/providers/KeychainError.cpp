#include "core/providers/KeychainError.h"

#include "core/providers/ProviderConnectionFailure.h"

#include <QCoreApplication>

namespace scrivel {

QString KeychainError::logDescription() const {
    switch (m_kind) {
    case Kind::readFailed:
        return QStringLiteral("readFailed(%1)").arg(m_status);
    case Kind::saveFailed:
        return QStringLiteral("saveFailed(%1)").arg(m_status);
    case Kind::deleteFailed:
        return QStringLiteral("deleteFailed(%1)").arg(m_status);
    case Kind::invalidData:
        return QStringLiteral("invalidData");
    case Kind::invalidKey:
        return QStringLiteral("invalidKey");
    }
    return {};
}

QString KeychainError::saveMessage() const {
    if (m_kind == Kind::invalidKey)
        return QCoreApplication::translate(
            "KeychainError",
            "This API key contains a line break or another control character. Paste the key "
            "again without them.");
    return ProviderConnectionFailure::of(ProviderConnectionFailure::Kind::keychain).message();
}

} // namespace scrivel
