#include "providers/KeychainError.h"

namespace scrivel {

QString KeychainError::logDescription() const {
    switch (m_kind) {
    case Kind::readFailed:
        return QStringLiteral("readFailed(%1)").arg(m_status);
    case Kind::saveFailed:
        return QStringLiteral("saveFailed(%1)").arg(m_status);
    case Kind::deleteFailed:
        return QStringLiteral("deleteFailed(%1)").arg(m_status);
    case Kind::migrationFailed:
        return QStringLiteral("migrationFailed(%1)").arg(m_status);
    case Kind::invalidData:
        return QStringLiteral("invalidData");
    }
    return {};
}

} // namespace scrivel
